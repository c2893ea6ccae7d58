/// The files of a result's verdict.
#include "common/VerdictFiles.h"

#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>

#include "common/UncertaintyPicture.h"

namespace common {

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

/// What a picture shows of a camera of a pair.
CalibrationVerdict ShownOf(const PairVerdict::Camera& camera) {
  CalibrationVerdict shown;
  shown.deviationMap = camera.deviationMap;
  shown.dataArea = camera.dataArea;
  return shown;
}

/// Lenses that were held may be better known than the picture tells.
std::string TitleOf(const std::string& side, const PairVerdict& verdict) {
  return "Standard deviation of projections, " + side + " camera" +
         (verdict.lensesRefined ? ". Verdict on the pair: " + verdict.ToString()
                                : ", were it known by these views only");
}

}  // namespace

std::string SaveVerdict(const CalibrationVerdict& verdict, const cv::Size& frame,
                        const std::vector<std::vector<cv::Point2d>>& seen, const std::string& name,
                        OutputFiles& files) {
  const VerdictFiles names(name);
  if (!WriteText(verdict.ToJson(), names.text, files)) return names.text;
  return WritePicture(DrawUncertainty(verdict, frame, seen), names.picture, files) ? "" : names.picture;
}

CalibrationVerdict VerdictBeside(const std::string& resultFile) {
  std::ifstream file(VerdictFiles(WithoutExtension(resultFile)).text);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  try {
    return CalibrationVerdict::FromJson(text);
  } catch (const std::invalid_argument&) {
    return {};
  }
}

std::string SaveVerdict(const PairVerdict& verdict, const SeenByPair& seen, const std::string& name,
                        OutputFiles& files) {
  const VerdictFiles names(name);
  if (!WriteText(verdict.ToJson(), names.text, files)) return names.text;
  const auto draw = [&](const PairVerdict::Camera& camera, const std::string& side,
                        const std::vector<std::vector<cv::Point2d>>& points) {
    const std::string file = names.PictureOf(side);
    const cv::Mat picture = DrawUncertainty(ShownOf(camera), seen.frame, points, TitleOf(side, verdict));
    return WritePicture(picture, file, files) ? "" : file;
  };
  const std::string unwritten = draw(verdict.left, "left", seen.left);
  return unwritten.empty() ? draw(verdict.right, "right", seen.right) : unwritten;
}

std::string SavePictureOf(size_t camera, const CalibrationVerdict& verdict, const cv::Size& frame,
                          const std::vector<std::vector<cv::Point2d>>& seen, const std::string& name,
                          OutputFiles& files) {
  const std::string number = std::to_string(camera);
  const std::string file = VerdictFiles(name).PictureOf(number);
  const std::string title =
      "Standard deviation of projections, camera " + number + ". Verdict: " + verdict.ToString();
  return WritePicture(DrawUncertainty(verdict, frame, seen, title), file, files) ? "" : file;
}

}  // namespace common
