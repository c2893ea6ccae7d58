/// The pictures that the headless tool works on.
#include "batch/Pictures.h"

#include <glob.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <opencv2/imgcodecs.hpp>
#include <set>

#include "LibraryNoise.h"

namespace batch {

namespace {

namespace fs = std::filesystem;

bool IsUrl(const std::string& input) {
  return input.find("://") != std::string::npos;
}

/// Empty when the file cannot be decoded; OpenCV raises an exception for one that claims an enormous size.
cv::Mat ReadImage(const std::string& file) {
  try {
    return cv::imread(file, cv::IMREAD_COLOR);
  } catch (const cv::Exception&) {
    return {};
  }
}

bool HasImageExtension(const fs::path& file) {
  static const std::set<std::string> extensions = {".png", ".jpg", ".jpeg", ".bmp",  ".tif", ".tiff",
                                                   ".pgm", ".ppm", ".pbm",  ".webp", ".jp2"};
  std::string extension = file.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extensions.count(extension) > 0;
}

std::vector<std::string> ImagesIn(const std::string& folder) {
  std::vector<std::string> images;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (entry.is_regular_file() && HasImageExtension(entry.path())) images.push_back(entry.path().string());
  }
  if (images.empty()) throw InputError("no image in folder '" + folder + "'");
  std::sort(images.begin(), images.end());
  return images;
}

std::vector<std::string> Matches(const std::string& pattern) {
  glob_t found{};
  std::vector<std::string> files;
  if (glob(pattern.c_str(), GLOB_TILDE, nullptr, &found) == 0) {
    files.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
  }
  globfree(&found);
  if (files.empty()) throw InputError("nothing matches '" + pattern + "'");
  return files;
}

void Append(std::vector<std::string>& all, const std::vector<std::string>& more) {
  all.insert(all.end(), more.begin(), more.end());
}

std::vector<std::string> Expand(const std::string& input) {
  if (IsUrl(input)) return {input};
  std::error_code error;
  if (fs::is_directory(input, error)) return ImagesIn(input);
  if (fs::exists(input, error)) return {input};
  if (input.find_first_of("*?[") == std::string::npos) throw InputError("'" + input + "' does not exist");
  std::vector<std::string> files;
  for (const std::string& match : Matches(input)) {
    Append(files, fs::is_directory(match, error) ? ImagesIn(match) : std::vector<std::string>{match});
  }
  return files;
}

}  // namespace

int SamplingStep(const SamplingOptions& options, double frameCount) {
  if (options.every > 0) return options.every;
  if (!(frameCount > AUTOMATIC_FRAMES)) return 1;
  return static_cast<int>(std::min(1e6, std::ceil(frameCount / AUTOMATIC_FRAMES)));
}

std::vector<std::string> ExpandInputs(const std::vector<std::string>& inputs) {
  std::vector<std::string> files;
  for (const std::string& input : inputs) Append(files, Expand(input));
  return files;
}

PictureStream::PictureStream(std::vector<std::string> files, const SamplingOptions& options)
    : files_(std::move(files)), options_(options) {
  const bool imagesOnly = std::all_of(files_.begin(), files_.end(), [](const std::string& file) {
    return !IsUrl(file) && HasImageExtension(file);
  });
  if (imagesOnly) expected_ = static_cast<int>(files_.size());
}

bool PictureStream::Next(Picture& picture) {
  if (video_.isOpened()) {
    if (NextFrame(picture)) return true;
    video_.release();
  }
  if (next_ == files_.size()) return false;
  const std::string file = files_[next_++];
  picture.name = fs::path(file).filename().string();
  if (!IsUrl(file)) {
    picture.image = ReadImage(file);
    if (!picture.image.empty() || HasImageExtension(file)) return true;
  }
  if (!OpenVideo(file)) throw InputError("'" + file + "' is neither a picture nor a video that can be read");
  return Next(picture);
}

bool PictureStream::OpenVideo(const std::string& file) {
  {
    const app::MutedStandardError muted;  // a failure is told in our own words
    if (!video_.open(file)) return false;
  }
  const double count = video_.get(cv::CAP_PROP_FRAME_COUNT);
  const bool known = !IsUrl(file) && count > 0 && count < 1e9;
  videoName_ = IsUrl(file) ? file : fs::path(file).filename().string();
  step_ = SamplingStep(options_, known ? count : 0.0);
  frame_ = 0;
  framesLeft_ = known || options_.maxFrames <= 0 ? std::numeric_limits<int>::max() : options_.maxFrames;
  if (known && files_.size() == 1) expected_ = static_cast<int>(std::ceil(count / step_));
  return true;
}

bool PictureStream::NextFrame(Picture& picture) {
  if (framesLeft_-- <= 0) return false;
  // Skipped frames are grabbed only: decoding them fully would be wasted.
  while (frame_ % step_ != 0) {
    if (!video_.grab()) return false;
    ++frame_;
  }
  cv::Mat frame;
  if (!video_.read(frame) || frame.empty()) return false;
  picture.name = videoName_ + "#" + std::to_string(frame_);
  picture.image = frame.clone();
  ++frame_;
  return true;
}

}  // namespace batch
