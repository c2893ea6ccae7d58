/// A video device of the operating system, asked about itself. It may be in use by a capture meanwhile.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "guided/CameraList.h"

namespace guided {

/// A number that the user of a camera can set, such as its focus.
struct CameraControl {
  int value = 0;
  int usual = 0;  ///< the driver's default
};

/// An open device. One thread at a time may use it.
class VideoDevice {
 public:
  explicit VideoDevice(const std::string& path);
  ~VideoDevice();
  VideoDevice(const VideoDevice&) = delete;
  VideoDevice& operator=(const VideoDevice&) = delete;

  /// Of errno, why it did not open; 0 when it is open.
  int Fault() const { return fault_; }

  /// True of what delivers pictures: other devices carry metadata or convert pictures.
  bool Captures() const;
  /// As the device calls itself.
  std::string Name() const;
  /// True when another program reads it.
  bool InUse() const;
  /// The sizes that it offers in any format of pixels, as the driver lists them.
  CameraSizes Sizes() const;

  /// One of V4L2_CID_...; nothing where the driver has no such control, or does not let it be read.
  std::optional<CameraControl> Control(unsigned id) const;
  /// False where the driver refuses.
  bool SetControl(unsigned id, int value) const;

 private:
  bool Ask(unsigned long request, void* argument) const;
  unsigned Capabilities() const;
  unsigned BufferType() const;
  void AddSizes(unsigned pixelFormat, CameraSizes& sizes) const;
  double FastestRate(unsigned pixelFormat, const cv::Size& size) const;

  int descriptor_ = -1;
  int fault_ = 0;
};

/// The cameras of the machine, by number: devices video0, video1, ... of the folder. Those that may not be
/// used are among them, those that are there but are no cameras are not.
std::vector<CameraDevice> FindCameras(const std::string& folder);

/// Whether there is a device of that number, whoever may use it.
bool DeviceExists(const std::string& folder, int number);

/// Its file.
std::string DevicePath(const std::string& folder, int number);

}  // namespace guided
