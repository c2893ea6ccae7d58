/// Writes the renderer's files.
#include "render/Files.h"

#include <fstream>
#include <iomanip>
#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace render {

void MakeFolder(const std::filesystem::path& folder) {
  std::error_code fault;
  std::filesystem::create_directories(folder, fault);
  if (fault)
    throw std::runtime_error("cannot make the folder \"" + folder.string() + "\": " + fault.message());
}

std::string PictureName(int number) {
  std::ostringstream name;
  name << "view" << std::setw(3) << std::setfill('0') << number << ".png";
  return name.str();
}

void SaveOwnTruth(world::Truth truth, const std::filesystem::path& folder) {
  for (world::TruthFrame& frame : truth.frames) {
    frame.file = std::filesystem::path(frame.file).filename().string();
  }
  world::SaveTruth(truth, (folder / "truth.json").string());
}

void WritePicture(const std::string& path, const cv::Mat& picture) {
  bool written = false;
  try {
    written = cv::imwrite(path, picture);
  } catch (const cv::Exception&) {
    written = false;
  }
  if (!written) throw std::runtime_error("cannot write \"" + path + "\"");
}

void CheckVideoName(const std::string& path) {
  if (std::filesystem::path(path).extension() != ".avi") {
    throw std::invalid_argument("--video wants a file name that ends in .avi");
  }
}

cv::VideoWriter OpenVideo(const std::string& path, double fps, cv::Size size) {
  // The video library would report an unwritable file in words of its own.
  if (!std::ofstream(path, std::ios::binary | std::ios::app))
    throw std::runtime_error("cannot write \"" + path + "\"");
  const int codec = cv::VideoWriter::fourcc('M', 'J', 'P', 'G');
  cv::VideoWriter video(path, cv::CAP_OPENCV_MJPEG, codec, fps, size, true);
  if (!video.isOpened()) video.open(path, codec, fps, size, true);
  if (!video.isOpened()) throw std::runtime_error("cannot open \"" + path + "\" as an MJPG video");
  video.set(cv::VIDEOWRITER_PROP_QUALITY, 95.0);
  return video;
}

std::string TruthName(const std::string& video) {
  return std::filesystem::path(video).replace_extension(".truth.json").string();
}

}  // namespace render
