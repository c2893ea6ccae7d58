/// How good the calibration of a pair is, in words and as JSON.
#include "PairVerdict.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace {

/// JSON has no number for what is not finite.
nlohmann::json Number(double value) {
  return std::isfinite(value) ? nlohmann::json(value) : nlohmann::json();
}

nlohmann::json Object(const PairVerdict::Deviations& deviations) {
  return {{"rotation", Number(deviations.rotation)},
          {"baseline", Number(deviations.baseline)},
          {"direction", Number(deviations.direction)}};
}

nlohmann::json Object(const PairVerdict::Camera& camera) {
  nlohmann::json views = nlohmann::json::array();
  for (const double rms : camera.viewRms) views.push_back(rms < 0.0 ? nlohmann::json() : Number(rms));
  return {{"rms", Number(camera.rms)},
          {"viewRms", views},
          {"deviationInData", Number(camera.deviationInData)},
          {"deviationInImage", Number(camera.deviationInImage)},
          {"coverage", Number(camera.coverage)}};
}

}  // namespace

void PairVerdict::Consider(const CalibrationVerdict& camera, const std::string& side) {
  if (grade == Grade::None || lensesRefined || camera.grade <= Grade::Good) return;
  grade = std::max(grade, camera.grade);
  remarks.push_back({"The " + side + " camera by itself is " + camera.ToString() + ".",
                     "See its own verdict, and calibrate it again."});
}

std::string PairVerdict::ToString() const {
  CalibrationVerdict verdict;
  verdict.grade = grade;
  return verdict.ToString();
}

std::string PairVerdict::ToJson() const {
  nlohmann::json text;
  text["grade"] = ToString();
  text["views"] = views;
  text["poses"] = poses;
  text["lensesRefined"] = lensesRefined;
  text["lensesKnown"] = lensesKnown;
  text["formal"] = Object(formal);
  text["jackknife"] = Object(jackknife);
  text["withLenses"] = Object(withLenses);
  text["disagreement"] = Number(disagreement);
  text["disagreements"] = nlohmann::json::array();
  for (const Disagreement& item : disagreements) {
    text["disagreements"].push_back({{"view", item.view}, {"factor", Number(item.factor)}});
  }
  text["left"] = Object(left);
  text["right"] = Object(right);
  text["leftOut"] = nlohmann::json::array();
  for (const LeftOut& item : leftOut) {
    text["leftOut"].push_back({{"view", item.view},
                               {"camera", item.right ? "right" : "left"},
                               {"point", item.point},
                               {"residual", Number(item.residual)},
                               {"reason", item.reason}});
  }
  text["recounted"] = nlohmann::json::array();
  for (const Recounted& item : recounted) {
    text["recounted"].push_back({{"view", item.view}, {"camera", item.right ? "right" : "left"}});
  }
  text["sheetBend"] = Number(sheetBend);
  if (!sheet.points.empty()) text["sheet"] = nlohmann::json::parse(sheet.ToJson());
  text["remarks"] = nlohmann::json::array();
  for (const Remark& remark : remarks) {
    text["remarks"].push_back({{"reason", remark.reason}, {"advice", remark.advice}});
  }
  return text.dump();
}
