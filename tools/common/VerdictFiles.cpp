/// The files that tell what a result is worth.
#include "common/VerdictFiles.h"

#include <fstream>
#include <opencv2/imgcodecs.hpp>

#include "common/UncertaintyPicture.h"

namespace tools {

namespace {

bool WriteText(const std::string& text, const std::string& path, OutputFiles& files) {
  files.Announce(path);
  std::ofstream file(path);
  file << text << "\n";
  file.close();
  if (file.fail()) return false;
  files.Written(path);
  return true;
}

bool WritePicture(const cv::Mat& picture, const std::string& path, OutputFiles& files) {
  files.Announce(path);
  try {
    if (!cv::imwrite(path, picture)) return false;
  } catch (const cv::Exception&) {
    return false;
  }
  files.Written(path);
  return true;
}

}  // namespace

std::string SaveVerdict(const CalibrationVerdict& verdict, const cv::Size& frame,
                        const std::vector<std::vector<cv::Point2d>>& seen, const std::string& name,
                        OutputFiles& files) {
  const VerdictFiles names(name);
  if (!WriteText(verdict.ToJson(), names.text, files)) return names.text;
  return WritePicture(DrawUncertainty(verdict, frame, seen), names.picture, files) ? "" : names.picture;
}

std::string SaveVerdict(const PairVerdict& verdict, const std::string& name, OutputFiles& files) {
  const VerdictFiles names(name);
  return WriteText(verdict.ToJson(), names.text, files) ? "" : names.text;
}

}  // namespace tools
