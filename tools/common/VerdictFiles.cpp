/// The files that tell what a result is worth.
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
  const VerdictFiles files(name);
  if (!WriteText(verdict.ToJson(), files.text)) return files.text;
  return WritePicture(DrawUncertainty(verdict, frame, seen), files.picture) ? "" : files.picture;
}

std::string SaveVerdict(const PairVerdict& verdict, const std::string& name) {
  const VerdictFiles files(name);
  return WriteText(verdict.ToJson(), files.text) ? "" : files.text;
}

}  // namespace tools
