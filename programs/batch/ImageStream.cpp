/// The images that the headless tool works on.
#include "batch/ImageStream.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <utility>

#include "batch/ImageFile.h"

namespace batch {

namespace fs = std::filesystem;

int SamplingStep(const SamplingOptions& options, double frameCount) {
  if (options.every > 0) return options.every;
  if (!(frameCount > AUTOMATIC_FRAMES)) return 1;
  return static_cast<int>(std::min(1e6, std::ceil(frameCount / AUTOMATIC_FRAMES)));
}

ImageStream::ImageStream(std::vector<std::string> files, const SamplingOptions& options)
    : files_(std::move(files)), options_(options) {
  const bool imagesOnly = std::all_of(files_.begin(), files_.end(), [](const std::string& file) {
    return !IsUrl(file) && HasImageExtension(file);
  });
  if (imagesOnly) expected_ = static_cast<int>(files_.size());
}

void Read(NamedImage& input) {
  if (input.unread.empty()) return;
  ImageFile read = ReadImageFile(std::exchange(input.unread, ""));
  input.image = std::move(read.image);
  input.endsTooEarly = read.endsTooEarly;
  input.orientationIgnored = !input.image.empty() && read.orientationIgnored;
}

bool ImageStream::Next(NamedImage& input) {
  if (video_ != nullptr) {
    if (NextFrame(input)) return true;
    video_.reset();
  }
  if (next_ == files_.size()) return false;
  const std::string file = files_[next_++];
  input = {fs::path(file).filename().string()};
  if (!IsUrl(file)) {
    input.unread = file;
    input.file = file;
    if (HasImageExtension(file)) return true;
    Read(input);  // which tells whether it is an image
    if (!input.image.empty()) return true;
  }
  if (!OpenVideo(file)) throw InputError("'" + file + "' is neither an image nor a video that can be read");
  return Next(input);
}

cv::Size FirstSize(const std::vector<std::string>& files, const SamplingOptions& options) {
  ImageStream stream(files, options);
  NamedImage input;
  while (stream.Next(input)) {
    Read(input);
    if (!input.image.empty()) return input.image.size();
  }
  return {};
}

std::string OrientationsText(int images) {
  if (images == 0) return "";
  return "EXIF orientation ignored in " + std::to_string(images) + (images == 1 ? " image" : " images") +
         ": the sensor is what is calibrated\n";
}

bool ImageStream::OpenVideo(const std::string& file) {
  auto video = common::NewVideoCapture();
  if (!video->Open({file, cv::CAP_ANY, {}, file})) return false;
  video_ = std::move(video);
  const double count = video_->Get(cv::CAP_PROP_FRAME_COUNT);
  const bool known = !IsUrl(file) && count > 0 && count < 1e9;
  videoName_ = IsUrl(file) ? file : fs::path(file).filename().string();
  videoFile_ = IsUrl(file) ? "" : file;
  step_ = SamplingStep(options_, known ? count : 0.0);
  frame_ = 0;
  framesLeft_ = known || options_.maxFrames <= 0 ? std::numeric_limits<int>::max() : options_.maxFrames;
  if (known && files_.size() == 1) expected_ = static_cast<int>(std::ceil(count / step_));
  return true;
}

bool ImageStream::NextFrame(NamedImage& input) {
  if (framesLeft_-- <= 0) return false;
  // Skipped frames are grabbed only: decoding them fully would be wasted.
  while (frame_ % step_ != 0) {
    if (!video_->Skip()) return false;
    ++frame_;
  }
  cv::Mat frame;
  if (!video_->Read(frame) || frame.empty()) return false;
  input = {videoName_ + "#" + std::to_string(frame_), frame.clone()};
  input.file = videoFile_;
  input.frame = frame_;
  ++frame_;
  return true;
}

}  // namespace batch
