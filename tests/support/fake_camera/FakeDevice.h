/// A Video4Linux capture device that plays motion JPEG images from a folder.
#pragma once

#include <linux/videodev2.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace fake_camera {

/// Fresh memory, zeroed, that munmap gives back.
void* AnonymousMemory(std::size_t length);

/// One opened device. Its folder holds a folder of JPEG files per size, named such as "640x480", which are
/// delivered in the order of their names, over and over. A request for one of these sizes is honoured; any
/// other gets the last of them, by name.
///
/// The folder's file "behaviour", read again for each frame, may hold these words:
///   silent     no frame is delivered
///   empty      buffers without data are
///   gone       the device was unplugged: every call fails
///   metadata   it is no camera, but what tells of a camera's pictures
///   busy       another program reads it
///   forbidden  it may not be opened
/// Without the folder there is no such device.
///
/// The file "card" may hold the device's name. The file "controls" may hold a line for each control that the
/// device has, with its present value and its default: "focus_auto 1 1", "focus_absolute 40 0",
/// "zoom_absolute 100 100"; what is set is written into it. A control that is followed by "locked" cannot be
/// set.
///
/// Functions return 0, or a number of errno. One thread at a time may use a device.
class FakeDevice {
 public:
  /// `descriptor` is a timer's, which becomes readable as a frame is due.
  FakeDevice(std::string folder, int descriptor);

  static bool Exists(const std::string& folder);
  static bool MayBeOpened(const std::string& folder);

  /// Any request of ioctl; ENOTTY for those that the device does not know.
  int Control(unsigned long request, void* argument);
  /// The memory of the buffer with that offset.
  void* Map(std::size_t length, long offset);

 private:
  struct Buffer {
    void* memory = nullptr;
    bool queued = false;
  };

  bool Behaves(const char* word) const;
  int Describe(v4l2_capability& capability) const;
  int ListSize(v4l2_frmsizeenum& size) const;
  static int ListRate(v4l2_frmivalenum& rate);
  std::vector<std::string> Sizes() const;
  void SetFormat(v4l2_format& format);
  void FillFormat(v4l2_format& format) const;
  void RequestBuffers(v4l2_requestbuffers& request);
  int Queue(const v4l2_buffer& buffer);
  int Dequeue(v4l2_buffer& buffer);
  int Stream(bool on);
  std::chrono::nanoseconds FrameTime() const;
  int Pace(std::chrono::nanoseconds interval) const;
  std::size_t Fill(void* memory);

  const std::string folder_;
  const int descriptor_;
  unsigned width_ = 0;
  unsigned height_ = 0;
  unsigned rate_ = 30;
  bool silent_ = false;
  std::vector<Buffer> buffers_;
  std::size_t frame_ = 0;
};

}  // namespace fake_camera
