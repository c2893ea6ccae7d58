/// Cameras of the machine that show what a test gives them.
#include "cameras/FakeCameras.h"

#include <cstdio>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>

namespace cameras {

FakeCameras::FakeCameras() : variable_("VELMORA_FAKE_CAMERAS", folder_.Path()) {
}

std::string FakeCameras::FolderOf(int camera) const {
  return folder_.File(std::to_string(camera));
}

void FakeCameras::Provide(int camera, const std::vector<cv::Mat>& images) {
  Provide(camera, images.at(0).size(), images);
}

void FakeCameras::Provide(int camera, const cv::Size& size, const std::vector<cv::Mat>& images) {
  const std::string folder = FolderOf(camera) + cv::format("/%dx%d", size.width, size.height);
  std::filesystem::create_directories(folder);
  int number = 0;
  for (const cv::Mat& image : images) {
    cv::imwrite(folder + cv::format("/%03d.jpg", number++), image, {cv::IMWRITE_JPEG_QUALITY, 95});
  }
}

// In one step, for the device may be reading.
void FakeCameras::Behave(int camera, const std::string& behaviour) {
  const std::string path = FolderOf(camera) + "/behaviour";
  support::WriteText(path + ".new", behaviour);
  std::rename((path + ".new").c_str(), path.c_str());
}

int CameraTest::CountOf(const std::string& text) const {
  const std::string printed = Printed();
  int count = 0;
  for (auto at = printed.find(text); at != std::string::npos; at = printed.find(text, at + 1)) ++count;
  return count;
}

}  // namespace cameras
