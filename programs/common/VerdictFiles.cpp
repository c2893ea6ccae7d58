/// The files of a result's verdict.
#include "common/VerdictFiles.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>

#include "JSON.h"
#include "common/UncertaintyPicture.h"

namespace common {

namespace {

const char* const RESULT = "result";
/// The numbers of a result survive writing and reading but for the last digit.
constexpr double ROUNDING = 1e-12;

/// What tells a result from others: its RMS and its camera matrix. Empty where the file has none.
std::vector<double> NumbersOf(const std::string& resultFile) {
  try {
    JSON result;
    if (!result.load(resultFile)) return {};
    const cv::Mat K = result.readMat("cameraMatrix");
    std::vector<double> numbers = {result.readDouble("error")};
    for (const double value : cv::Mat_<double>(K)) numbers.push_back(value);
    return numbers;
  } catch (const std::exception&) {
    return {};
  }
}

/// The verdict's text, with the result that it is on.
std::string TextOf(const CalibrationVerdict& verdict, const std::string& name) {
  const std::vector<double> numbers = NumbersOf(name + ".json");
  nlohmann::json text = nlohmann::json::parse(verdict.ToJson());
  if (!numbers.empty()) {
    text[RESULT] = {{"error", numbers.front()},
                    {"cameraMatrix", std::vector<double>(numbers.begin() + 1, numbers.end())}};
  }
  return text.dump();
}

/// Whether a verdict's text says that it is on another result than the one in the file.
bool IsOnAnother(const std::string& text, const std::string& resultFile) {
  const nlohmann::json document = nlohmann::json::parse(text, nullptr, false);
  if (!document.is_object() || !document.contains(RESULT)) return false;
  std::vector<double> told;
  try {
    told = document[RESULT].at("cameraMatrix").get<std::vector<double>>();
    told.insert(told.begin(), document[RESULT].at("error").get<double>());
  } catch (const nlohmann::json::exception&) {
    return true;  // whatever it is on, it is not this one
  }
  const std::vector<double> numbers = NumbersOf(resultFile);
  return !std::equal(told.begin(), told.end(), numbers.begin(), numbers.end(), [](double a, double b) {
    return std::abs(a - b) <= ROUNDING * std::max(std::abs(a), std::abs(b));
  });
}

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
  if (!WriteText(TextOf(verdict, name), names.text, files)) return names.text;
  return WritePicture(DrawUncertainty(verdict, frame, seen), names.picture, files) ? "" : names.picture;
}

CalibrationVerdict VerdictBeside(const std::string& resultFile, std::string& warning) {
  const std::string path = VerdictFiles(WithoutExtension(resultFile)).text;
  std::ifstream file(path);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  CalibrationVerdict verdict;
  warning.clear();
  try {
    verdict = CalibrationVerdict::FromJson(text);
  } catch (const std::invalid_argument&) {
    return {};
  }
  if (!IsOnAnother(text, resultFile)) return verdict;
  warning = "Warning: '" + path + "' is not on the result in '" + resultFile +
            "', and is not used: how sure that camera's lens is remains unknown.\n";
  return {};
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
