/// Assesses a computed camera.
#include "quality/Assessment.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <limits>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "quality/LargerModel.h"
#include "quality/ProjectionUncertainty.h"
#include "quality/SystematicErrors.h"
#include "solver/Covariance.h"
#include "solver/OpenCvMatrices.h"
#include "solver/Target.h"

namespace velmora {

namespace {

using Grade = CalibrationVerdict::Grade;
using LargerModelName = std::function<std::string()>;

constexpr double WORTHLESS_FOCAL = 0.03;  // relative standard deviation
constexpr double CAREFUL_FOCAL = 0.01;
constexpr double WORTHLESS_PROJECTION = 0.01;  // standard deviation in widths of the image
constexpr double CAREFUL_PROJECTION = 0.0025;
/// Systematic errors below this share of the width are not worth a word.
constexpr double LEAST_SYSTEMATIC = 0.0002;
constexpr double FAR_WORSE = 10.0;    // outside the data than within
constexpr double DISAGREEMENT = 2.5;  // jackknife over formal
constexpr double SMALL_COVERAGE = 0.4;
constexpr int FEW_VIEWS = 10;
constexpr int FEWEST_AGREEING = 5;  // of those that outvoted others

double RelativeFocal(const Eigen::MatrixXd& covariance, const Intrinsics& intrinsics) {
  return std::max(std::sqrt(covariance(FX, FX)) / intrinsics.values[FX],
                  std::sqrt(covariance(FY, FY)) / intrinsics.values[FY]);
}

int ViewsOf(const Solution& solution, size_t camera) {
  return static_cast<int>(
      std::count_if(solution.views.begin(), solution.views.end(),
                    [camera](const TargetView& view) { return !view.observations[camera].IsEmpty(); }));
}

void Measure(const Solution& solution, size_t camera, CalibrationVerdict& verdict) {
  const cv::Size& imageSize = solution.rig.cameras[camera].imageSize;
  const Layout::Block block = LayoutOf(solution.rig, solution.estimated).cameras[camera];
  const Intrinsics& intrinsics = solution.rig.cameras[camera].intrinsics;
  verdict.views = ViewsOf(solution, camera);
  verdict.dataArea = DataAreaOf(solution.views, camera);
  verdict.coverage = std::min(1.0, cv::contourArea(verdict.dataArea) / imageSize.area());
  const ProjectionUncertainty uncertainty(intrinsics, imageSize, verdict.dataArea);
  const double unknown = std::numeric_limits<double>::infinity();
  const Eigen::MatrixXd formal = solver::IntrinsicsCovariance(solver::SharedCovariance(solution), block);
  const Eigen::MatrixXd jackknife =
      solver::IntrinsicsCovariance(solver::JackknifeCovariance(solution), block);
  const bool hasFormal = formal.size() > 0;
  const bool hasJackknife = jackknife.size() > 0;
  verdict.focalDeviation = hasFormal ? RelativeFocal(formal, intrinsics) : unknown;
  verdict.focalJackknife = hasJackknife ? RelativeFocal(jackknife, intrinsics) : unknown;
  verdict.deviationInData = hasFormal ? uncertainty.InArea(formal) : unknown;
  verdict.deviationInImage = hasFormal ? uncertainty.InImage(formal) : unknown;
  verdict.jackknifeInData = hasJackknife ? uncertainty.InArea(jackknife) : unknown;
  if (hasFormal) verdict.deviationMap = uncertainty.Map(formal);
}

std::string Decimal(double value, int digits) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(digits) << value;
  return text.str();
}

void AddRemark(CalibrationVerdict& verdict, Grade grade, const std::string& reason,
               const std::string& advice) {
  verdict.grade = std::max(verdict.grade, grade);
  verdict.remarks.push_back({reason, advice});
}

void AssessFocal(const Intrinsics& intrinsics, const cv::Size& imageSize, CalibrationVerdict& verdict) {
  const double focal = std::max(verdict.focalDeviation, verdict.focalJackknife);
  if (!(focal <= WORTHLESS_FOCAL)) {
    AddRemark(verdict, Grade::Worthless, "The views do not determine the focal length.",
              "Tilt the sheet more, by 20 to 40 degrees and to all sides.");
  } else if (focal > CAREFUL_FOCAL) {
    AddRemark(verdict, Grade::WithCare,
              "The focal length is known only to within " + Decimal(100.0 * focal, 1) + " %.",
              "Tilt the sheet more, and take more views.");
  }
  const cv::Rect2d image(0.0, 0.0, imageSize.width, imageSize.height);
  if (!image.contains({intrinsics.values[CX], intrinsics.values[CY]})) {
    AddRemark(verdict, Grade::Worthless, "The principal point is outside the image.",
              "Tilt the sheet more, to all sides, and check that the grid is the right one.");
  }
}

void AssessProjection(const cv::Size& imageSize, CalibrationVerdict& verdict) {
  const double inData = std::max(verdict.deviationInData, verdict.jackknifeInData) / imageSize.width;
  if (!(inData <= WORTHLESS_PROJECTION)) {
    AddRemark(verdict, Grade::Worthless,
              "Projections are uncertain by more than a hundredth of the image's width.",
              "Take more views, tilted to all sides, near and far.");
  } else if (inData > CAREFUL_PROJECTION) {
    AddRemark(verdict, Grade::WithCare,
              "Projections are uncertain by " + Decimal(inData * imageSize.width, 1) + " px.",
              verdict.views < FEW_VIEWS ? "There are few views: take ten or more."
                                        : "Tilt the sheet more, and hold it still.");
  }
  const bool farWorse = !(verdict.deviationInImage <= FAR_WORSE * verdict.deviationInData);
  if (farWorse || verdict.coverage < SMALL_COVERAGE) {
    AddRemark(verdict, Grade::WithCare, "The result is valid only where there is data.",
              "Come closer to the corners of the image with the sheet.");
  }
}

/// Whether enough views are left to believe that the rejected ones are wrong.
void AssessSelection(const Solution& solution, CalibrationVerdict& verdict) {
  const bool leftOut =
      std::any_of(solution.rejected.begin(), solution.rejected.end(),
                  [](const Rejected& rejected) { return rejected.point == Rejected::WHOLE_VIEW; });
  if (solution.tooFewAgree) {
    AddRemark(verdict, Grade::WithCare,
              "Too few views agree with each other to tell which of the others are wrong.",
              "Look at the views with the largest errors, and take more.");
  } else if (leftOut && verdict.views < FEWEST_AGREEING) {
    AddRemark(verdict, Grade::WithCare,
              "Only " + std::to_string(verdict.views) + " views agree, and the others were left out.",
              "Take more views, to be sure that it is the others that are wrong.");
  }
}

/// Those of the first camera that saw the target.
const std::vector<cv::Point3d>& PointsOf(const TargetView& view) {
  const auto& images = view.observations;
  return std::find_if(images.begin(), images.end(), [](const Observation& image) { return !image.IsEmpty(); })
      ->object;
}

CalibrationVerdict::Remark RemarkOnBend(const SystematicError& error, const Solution& solution,
                                        CalibrationVerdict& verdict) {
  verdict.sheetBend = DepthOfBend(error.effect, PointsOf(solution.views.front()));
  return {"The sheet is bent by about " + Decimal(1e3 * verdict.sheetBend, 1) + " mm",
          "Mount the sheet on a flat, stiff board."};
}

CalibrationVerdict::Remark RemarkOnProportions(const SystematicError& error, CalibrationVerdict& verdict) {
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

/// The remark on a systematic error; the reason is empty when its cause is none after all.
CalibrationVerdict::Remark RemarkOn(const SystematicError& error, const Solution& solution,
                                    const LargerModelName& larger, CalibrationVerdict& verdict) {
  using Cause = SystematicError::Cause;
  if (error.cause == Cause::Bend) return RemarkOnBend(error, solution, verdict);
  if (error.cause == Cause::Proportions) return RemarkOnProportions(error, verdict);
  if (larger().empty()) return {};
  return {"The lens does not fit this model", "Try the " + larger() + " model."};
}

/// True when there is something to tell. Steps from a worthless result lead nowhere.
bool AssessSystematicError(const Solution& solution, size_t camera, const LargerModelName& larger,
                           CalibrationVerdict& verdict) {
  if (verdict.grade == Grade::Worthless) return false;
  const double least =
      std::max(LEAST_SYSTEMATIC * solution.rig.cameras[camera].imageSize.width, verdict.deviationInData);
  for (const SystematicError& error : SystematicErrorsOf(solution, camera, verdict.dataArea, least)) {
    const CalibrationVerdict::Remark remark = RemarkOn(error, solution, larger, verdict);
    if (remark.reason.empty()) continue;
    verdict.systematicInData = error.shift;
    AddRemark(verdict, Grade::WithCare,
              remark.reason + ": projections are off by about " + Decimal(error.shift, 2) + " px.",
              remark.advice);
    return true;
  }
  return false;
}

void AssessAgreement(const LargerModelName& larger, CalibrationVerdict& verdict) {
  if (verdict.focalJackknife > DISAGREEMENT * verdict.focalDeviation ||
      verdict.jackknifeInData > DISAGREEMENT * verdict.deviationInData) {
    AddRemark(verdict, Grade::WithCare,
              "The views disagree more than noise explains: there is a model error.",
              larger().empty() ? "Check that the sheet is flat, and that focus and zoom stay as they are."
                               : "Check that the sheet is flat, then try the " + larger() + " model.");
  }
}

}  // namespace

CalibrationVerdict AssessCamera(const Solution& solution, size_t camera, const LargerModelName& largerModel) {
  const cv::Size& imageSize = solution.rig.cameras[camera].imageSize;
  CalibrationVerdict verdict;
  verdict.grade = Grade::Good;
  for (const Rejected& rejected : solution.rejected) {
    if (rejected.camera != camera) continue;
    verdict.leftOut.push_back({rejected.view, rejected.point, rejected.residual, rejected.reason});
  }
  Measure(solution, camera, verdict);
  AssessFocal(solution.rig.cameras[camera].intrinsics, imageSize, verdict);
  AssessProjection(imageSize, verdict);
  AssessSelection(solution, verdict);
  const bool explained = AssessSystematicError(solution, camera, largerModel, verdict) &&
                         verdict.jackknifeInData < verdict.systematicInData;
  if (!explained) AssessAgreement(largerModel, verdict);
  return verdict;
}

CalibrationVerdict AssessIntrinsics(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                    const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                    const cv::Size& imageSize, const SparseResult& result,
                                    double discRadius) {
  if (result.K.empty() || result.D.empty() || objectPoints.empty() ||
      static_cast<size_t>(result.rvecs.rows) != objectPoints.size() ||
      result.tvecs.rows != result.rvecs.rows) {
    return {};
  }
  const auto solution =
      result.solution != nullptr
          ? result.solution
          : std::make_shared<const Solution>(solver::SolutionFrom(solver::TargetOf(objectPoints, imagePoints),
                                                                  result, imageSize, discRadius));
  LargerModel larger(objectPoints, imagePoints, imageSize, result, discRadius);
  return AssessCamera(*solution, 0, [&larger] { return larger.Name(); });
}

}  // namespace velmora
