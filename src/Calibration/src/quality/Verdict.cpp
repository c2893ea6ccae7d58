/// How good a calibration is, in words and as JSON.
#include "Verdict.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace {

/// JSON has no number for what is not finite.
nlohmann::json Number(double value) {
  return std::isfinite(value) ? nlohmann::json(value) : nlohmann::json();
}

}  // namespace

double CalibrationVerdict::ExpectedInData() const {
  return std::hypot(std::max(deviationInData, jackknifeInData), systematicInData);
}

std::string CalibrationVerdict::ToString() const {
  switch (grade) {
    case Grade::Good:
      return "good";
    case Grade::WithCare:
      return "usable with care";
    case Grade::Worthless:
      return "worthless";
    default:
      return "no result";
  }
}

std::string CalibrationVerdict::ToJson() const {
  nlohmann::json text;
  text["grade"] = ToString();
  text["views"] = views;
  text["focalDeviation"] = Number(focalDeviation);
  text["focalJackknife"] = Number(focalJackknife);
  text["deviationInData"] = Number(deviationInData);
  text["jackknifeInData"] = Number(jackknifeInData);
  text["systematicInData"] = Number(systematicInData);
  text["sheetBend"] = Number(sheetBend);
  text["sheetStretch"] = Number(sheetStretch);
  text["deviationInImage"] = Number(deviationInImage);
  text["coverage"] = Number(coverage);
  text["remarks"] = nlohmann::json::array();
  for (const Remark& remark : remarks) {
    text["remarks"].push_back({{"reason", remark.reason}, {"advice", remark.advice}});
  }
  text["leftOut"] = nlohmann::json::array();
  for (const LeftOut& left : leftOut) {
    text["leftOut"].push_back({{"view", left.view},
                               {"point", left.point},
                               {"residual", Number(left.residual)},
                               {"reason", left.reason}});
  }
  return text.dump();
}
