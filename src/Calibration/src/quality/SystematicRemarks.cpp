/// What is said of causes that are no noise.
#include "quality/SystematicRemarks.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace velmora {

namespace {

using Remark = CalibrationVerdict::Remark;
using Kind = Change::Kind;

constexpr size_t MOST_NUMBERS = 6;

Remark OnBend(const SystematicError& error, const Solution& solution, CalibrationVerdict& verdict) {
  verdict.sheetBend = DepthOfBend(error.effect, MostPointsOf(solution.views));
  return {"The sheet is bent by about " + Decimal(1e3 * verdict.sheetBend, 1) + " mm",
          "Mount the sheet on a flat, stiff board."};
}

Remark OnProportions(const SystematicError& error, CalibrationVerdict& verdict) {
  const double stretch = error.effect.values(0);
  const double skew = error.effect.values(1);
  verdict.sheetStretch = stretch;
  const char* const advice =
      "Print it at full size, without fitting it to the page, and measure it both ways.";
  if (std::abs(skew) > std::abs(stretch)) {
    return {"The print is distorted, skewed by " + Decimal(100.0 * skew, 2) + " %", advice};
  }
  return {"The print is distorted, " + Decimal(100.0 * std::abs(stretch), 2) + " % too " +
              (stretch < 0.0 ? "short" : "long") + " along its columns",
          advice};
}

Remark OnPrintErrors(const SystematicError& error, CalibrationVerdict& verdict) {
  verdict.printError = error.effect.values(0);
  return {"The discs are printed off by about " + Decimal(1e3 * verdict.printError, 2) + " mm",
          "Print the sheet again, on another printer if need be, and measure it."};
}

Remark OnMotion(const SystematicError& error, const Solution& solution, size_t camera,
                CalibrationVerdict& verdict) {
  const Camera& own = solution.rig.cameras[camera];
  const double rows = own.imageSize.height / own.intrinsics.values[FY];
  verdict.movedWhileRead = rows * error.effect.values.norm();
  return {"The sheet or the camera moved by about " + Decimal(1e3 * verdict.movedWhileRead, 1) +
              " mm while an image was read row by row",
          "Hold both still, or use a camera that takes all rows at the same time."};
}

size_t NumberOf(const Solution& solution, size_t view) {
  return view < solution.kept.size() ? solution.kept[view] : view;
}

std::string Percent(double share) {
  const double percent = 100.0 * std::abs(share);
  return Decimal(percent, percent < 0.95 ? 2 : 1) + " %";
}

/// What one does who does not want it to happen again.
std::string AdviceOn(const Change& change, bool focal) {
  if (change.kind == Kind::Mixture) {
    return "Leave these views out: are they of this camera, at this focus and zoom?";
  }
  if (!focal) return "Switch the stabiliser of lens and image off, and do not touch the lens.";
  if (change.kind == Kind::Distance) return "Switch the autofocus off.";
  if (change.kind == Kind::Drift) return "Switch the autofocus off, and let the camera get warm first.";
  return "Leave focus and zoom as they are, and calibrate each setting from views of its own.";
}

Remark OnChange(const Change& change, const Solution& solution, size_t camera, CalibrationVerdict& verdict) {
  const double focal = change.effect.values(0);
  cv::Point2d moved;
  if (change.effect.values.size() > 1) moved = {change.effect.values(1), change.effect.values(2)};
  verdict.focalChange = focal;
  verdict.principalPointChange = moved;
  if (change.kind == Kind::Step) verdict.changedAfter = static_cast<int>(NumberOf(solution, change.last));
  // What either does at half the width from the middle.
  const Camera& own = solution.rig.cameras[camera];
  const bool isFocal = std::abs(focal) * 0.5 * own.imageSize.width > 0.5 * cv::norm(moved);
  const std::string when = WhenOf(change, solution);
  const std::string advice = AdviceOn(change, isFocal);
  if (change.kind == Kind::Mixture) {
    return {
        when + (isFocal ? ", the focal length is " + Percent(focal) + (focal > 0.0 ? " longer" : " shorter")
                        : ", the principal point is " + Decimal(cv::norm(moved), 1) + " px away"),
        advice};
  }
  if (isFocal) return {"The focal length changed by " + Percent(focal) + " " + when, advice};
  return {"The principal point moved by " + Decimal(cv::norm(moved), 1) + " px " + when, advice};
}

}  // namespace

std::string Decimal(double value, int digits) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(digits) << value;
  return text.str();
}

std::string WhenOf(const Change& change, const Solution& solution) {
  std::ostringstream text;
  switch (change.kind) {
    case Kind::Step:
      text << "between view " << NumberOf(solution, change.last) << " and "
           << NumberOf(solution, change.last + 1);
      break;
    case Kind::Drift:
      text << "from the first view to the last";
      break;
    case Kind::Distance:
      text << "from the farthest view to the nearest";
      break;
    case Kind::Mixture:
      text << "In " << change.apart.size() << " of " << solution.views.size() << " views (";
      for (size_t i = 0; i < std::min(change.apart.size(), MOST_NUMBERS); ++i) {
        text << (i > 0 ? ", " : "") << NumberOf(solution, change.apart[i]);
      }
      text << (change.apart.size() > MOST_NUMBERS ? ", ...)" : ")");
      break;
  }
  return text.str();
}

Remark RemarkOn(const SystematicError& error, const Solution& solution, size_t camera,
                CalibrationVerdict& verdict) {
  using Cause = SystematicError::Cause;
  switch (error.cause) {
    case Cause::Bend:
      return OnBend(error, solution, verdict);
    case Cause::Proportions:
      return OnProportions(error, verdict);
    case Cause::PrintErrors:
      return OnPrintErrors(error, verdict);
    case Cause::Motion:
      return OnMotion(error, solution, camera, verdict);
    case Cause::Change:
      return OnChange(error.change, solution, camera, verdict);
    case Cause::Radial:
      return {"Far from its middle the image is not that of a lens of this model",
              "Use only what is nearer to the middle of the image: no model holds it."};
    case Cause::LensTerms:
      break;
  }
  return {};
}

}  // namespace velmora
