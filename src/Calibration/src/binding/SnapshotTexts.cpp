/// A calibrator's snapshots as JSON, as programs on numbers have them.
#include "binding/SnapshotTexts.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "binding/GivenText.h"
#include "session/JsonFields.h"
#include "session/SnapshotDocument.h"

namespace velmora {

namespace {

using nlohmann::json;

/// NaN, which JSON has not, becomes null.
json JsonOf(const std::vector<cv::Point2d>& points) {
  json list = json::array();
  for (const cv::Point2d& point : points) {
    if (std::isnan(point.x)) {
      list.push_back(nullptr);
    } else {
      list.push_back({point.x, point.y});
    }
  }
  return list;
}

}  // namespace

std::string AnswerOf(const GridSnapshot& snapshot) {
  json cameras = json::array();
  for (const GridSnapshot::Camera& camera : snapshot.cameras) {
    cameras.push_back({{"centres", JsonOf(camera.centres)},
                       {"weights", camera.weights},
                       {"deviations", camera.deviations},
                       {"radii", json::array()}});
  }
  return json{{"cameras", cameras}}.dump();
}

GridSnapshot GridSnapshotFrom(const std::string& text) {
  return FromGiven(text, "the snapshot", [](const json& document) {
    GridSnapshot snapshot;
    for (const json& camera : FieldOf(document, "cameras")) {
      SessionObservation seen = ObservationIn(camera);
      snapshot.cameras.push_back(
          {std::move(seen.centres), std::move(seen.weights), std::move(seen.deviations)});
    }
    return snapshot;
  });
}

std::string AnswerOf(const SnapshotFit& fit) {
  json cameras = json::array();
  for (const SnapshotFit::Camera& camera : fit.cameras) {
    cameras.push_back(
        {{"rms", camera.rms}, {"residuals", JsonOf(camera.residuals)}, {"outliers", camera.outliers}});
  }
  return json{{"rejected", fit.rejected}, {"reason", fit.reason}, {"cameras", cameras}}.dump();
}

}  // namespace velmora
