/// What programs on texts exchange with the comparison and the check of results, as JSON.
#include "binding/ResultTexts.h"

#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "binding/GivenText.h"
#include "session/JsonFields.h"
#include "session/SnapshotDocument.h"

namespace velmora {

namespace {

using nlohmann::json;

json PairOf(const cv::Point2d& point) {
  return {point.x, point.y};
}

json TripleOf(const cv::Vec3d& vector) {
  return {vector[0], vector[1], vector[2]};
}

json DifferencesOf(const cv::Mat& map) {
  json list = json::array();
  for (const cv::Vec2d& difference : cv::Mat_<cv::Vec2d>(map)) {
    if (std::isnan(difference[0])) {
      list.push_back(nullptr);
    } else {
      list.push_back({difference[0], difference[1]});
    }
  }
  return list;
}

const char* WordOf(ResultCheck::Answer answer) {
  switch (answer) {
    case ResultCheck::Answer::Calibrated:
      return "calibrated";
    case ResultCheck::Answer::NotCalibrated:
      return "not calibrated";
    default:
      return "cannot tell";
  }
}

json JsonOf(const ResultCheck::Image& image) {
  return {{"used", image.used},           {"rms", image.rms},
          {"largest", image.largest},     {"largestPoint", image.largestPoint},
          {"outliers", image.outliers},   {"tilt", image.tilt},
          {"rvec", TripleOf(image.rvec)}, {"tvec", TripleOf(image.tvec)}};
}

CheckImage CheckImageIn(const json& image) {
  SessionObservation seen = ObservationIn(image);
  return {std::move(seen.centres), std::move(seen.weights), std::move(seen.deviations)};
}

}  // namespace

CameraResult ResultFrom(const std::string& text, const std::string& what) {
  try {
    return CameraResult::FromJson(text);
  } catch (const std::invalid_argument& fault) {
    throw std::invalid_argument("The " + what + " " + fault.what() + ".");
  }
}

ComparisonOptions ComparisonOptionsFrom(const std::string& text) {
  return FromGiven(text, "the options", [](const json& document) {
    ComparisonOptions options;
    options.step = FieldOf<double>(document, "step");
    const auto corners = FieldOf<std::vector<std::array<float, 2>>>(document, "area");
    options.area.reserve(corners.size());
    for (const auto& corner : corners) options.area.emplace_back(corner[0], corner[1]);
    return options;
  });
}

std::string AnswerOf(const ResultComparison& comparison) {
  return json{{"mean", comparison.mean},
              {"rms", comparison.rms},
              {"largest", comparison.largest},
              {"where", PairOf(comparison.where)},
              {"rotation", comparison.rotation.val},
              {"angle", comparison.angle},
              {"compared", comparison.compared},
              {"incomparable", comparison.incomparable},
              {"stepX", comparison.stepX},
              {"stepY", comparison.stepY},
              {"rows", comparison.map.rows},
              {"columns", comparison.map.cols},
              {"differences", DifferencesOf(comparison.map)}}
      .dump();
}

CheckRequest CheckRequestFrom(const std::string& text) {
  return FromGiven(text, "the request", [](const json& document) {
    CheckRequest request;
    for (const json& image : FieldOf(document, "images")) request.images.push_back(CheckImageIn(image));
    CheckOptions& options = request.options;
    const json& grid = FieldOf(document, "grid");
    options.grid = {FieldOf<int>(grid, "columns"), FieldOf<int>(grid, "rows")};
    options.unit = FieldOf<double>(document, "unit");
    options.discRadius = FieldOf<double>(document, "discRadius");
    options.tolerance = FieldOf<double>(document, "tolerance");
    const auto points = FieldOf<std::vector<std::array<double, 3>>>(document, "sheetPoints");
    options.sheetPoints.reserve(points.size());
    for (const auto& point : points) options.sheetPoints.emplace_back(point[0], point[1], point[2]);
    return request;
  });
}

std::string AnswerOf(const ResultCheck& check) {
  json images = json::array();
  for (const ResultCheck::Image& image : check.images) images.push_back(JsonOf(image));
  return json{{"answer", WordOf(check.answer)},
              {"sentence", check.sentence},
              {"advice", check.advice},
              {"images", images},
              {"rms", check.rms},
              {"noise", check.noise},
              {"shift", check.shift},
              {"shiftDeviation", check.shiftDeviation},
              {"tolerance", check.tolerance},
              {"unseen", check.unseen},
              {"evidence", check.evidence},
              {"focalChange", check.focalChange},
              {"focalDeviation", check.focalDeviation},
              {"principalPointChange", PairOf(check.principalPointChange)},
              {"principalPointDeviation", PairOf(check.principalPointDeviation)},
              {"coverage", check.coverage}}
      .dump();
}

}  // namespace velmora
