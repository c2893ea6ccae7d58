/// The files that tell what a camera's result is worth.
#include "common/VerdictFiles.h"

#include <fstream>
#include <opencv2/imgcodecs.hpp>

#include "common/UncertaintyPicture.h"

namespace tools {

namespace {

bool WriteText(const std::string& text, const std::string& path) {
  std::ofstream file(path);
  file << text << "\n";
  file.close();
  return !file.fail();
}

bool WritePicture(const cv::Mat& picture, const std::string& path) {
  try {
    return cv::imwrite(path, picture);
  } catch (const cv::Exception&) {
    return false;
  }
}

}  // namespace

std::string SaveVerdict(const CalibrationVerdict& verdict, const cv::Size& frame,
                        const std::vector<std::vector<cv::Point2d>>& seen, const std::string& name) {
  const std::string text = name + "_verdict.json";
  const std::string picture = name + "_uncertainty.png";
  if (!WriteText(verdict.ToJson(), text)) return text;
  return WritePicture(DrawUncertainty(verdict, frame, seen), picture) ? "" : picture;
}

}  // namespace tools
