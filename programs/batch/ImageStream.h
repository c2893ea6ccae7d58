/// The images that the headless tool works on: images, folders, patterns, videos, streams.
#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "batch/InputFiles.h"
#include "common/Captures.h"

namespace batch {

/// One image; once it is read, `image` is empty when it could not be decoded.
struct NamedImage {
  std::string name;  ///< file name, or file name and "#" and the frame number
  cv::Mat image{};
  bool endsTooEarly = false;        ///< the end of the file is missing
  bool orientationIgnored = false;  ///< it asks to be shown turned or mirrored, and is not
  std::string unread{};             ///< the file that it is still to be read from; empty once it is read
  std::string file{};               ///< the image file, or the video; empty for a stream
  int frame = -1;                   ///< of a video: its number
  /// By what a session knows the image again, whatever it is called: the hash of its file (see
  /// velmora::Session::ContentKey), with "#" and the frame's number, with "/left" or "/right" of a half.
  /// Empty: by nothing, or nobody has asked.
  std::string origin{};
  /// Size, time of change and path of the file when its hash was taken; empty as `origin` is.
  std::string stamp{};
  bool known = false;  ///< the session told what is in it
  int snapshot = 0;    ///< the number in the session; 0: in none
};

/// Reads the image, unless it is read. Thread-safe for different images.
void Read(NamedImage& input);

struct SamplingOptions {
  int every = 0;  ///< take every N-th frame of a video; 0: about AUTOMATIC_FRAMES of a file, all of a stream
  int maxFrames =
      300;  ///< frames taken at most of a video whose length is unknown, such as a stream; 0: no limit
};

constexpr int AUTOMATIC_FRAMES = 150;

/// Every how many frames a video of that many frames (0 or less: unknown) is sampled.
int SamplingStep(const SamplingOptions& options, double frameCount);

/// The size of the first of the files' images that can be decoded; empty when there is none.
cv::Size FirstSize(const std::vector<std::string>& files, const SamplingOptions& options);

/// A line about images whose orientation tag was not obeyed, as the sensor is calibrated; empty when there is
/// none.
std::string OrientationsText(int images);

/// Hands out the images of all inputs one after the other. Frames of videos are read; images may not be yet,
/// so that threads can share that work.
class ImageStream {
 public:
  /// Takes expanded inputs.
  ImageStream(std::vector<std::string> files, const SamplingOptions& options);

  /// False at the end. Raises InputError for a file that is neither image nor video.
  bool Next(NamedImage& input);

  /// How many images there are as far as is known; 0 when it is not.
  int ExpectedCount() const { return expected_; }

 private:
  bool NextFrame(NamedImage& input);
  bool OpenVideo(const std::string& file);

  std::vector<std::string> files_;
  SamplingOptions options_;
  size_t next_ = 0;
  int expected_ = 0;

  std::unique_ptr<common::Capture> video_;  ///< while one is open
  std::string videoName_;
  std::string videoFile_;  ///< empty for a stream
  int step_ = 1;
  int frame_ = 0;
  int framesLeft_ = 0;
};

}  // namespace batch
