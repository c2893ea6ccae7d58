/// Assesses a computed camera.
#include "quality/Assessment.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <opencv2/core/eigen.hpp>
#include <opencv2/imgproc.hpp>
#include <set>

#include "quality/LargerModel.h"
#include "quality/OtherCamera.h"
#include "quality/ProjectionUncertainty.h"
#include "quality/SearchEnd.h"
#include "quality/SheetRemarks.h"
#include "quality/SystematicErrors.h"
#include "quality/SystematicRemarks.h"
#include "solver/Covariance.h"
#include "solver/OpenCvMatrices.h"
#include "solver/PoseGroups.h"
#include "solver/Target.h"

namespace velmora {

namespace {

using Grade = CalibrationVerdict::Grade;
using LargerModelName = std::function<std::string()>;

constexpr double WORTHLESS_FOCAL = 0.03;  // relative standard deviation
constexpr double CAREFUL_FOCAL = 0.01;
constexpr double WORTHLESS_PROJECTION = 0.01;  // standard deviation in widths of the image
/// In focal lengths: a millimetre at a metre.
constexpr double CAREFUL_PROJECTION = 0.001;
/// Systematic errors below this share of the focal length are not worth a word.
constexpr double LEAST_SYSTEMATIC = 0.0002;
constexpr double WORTHLESS_PRINCIPAL_POINT = 0.1;  // deviation in focal lengths
constexpr double CAREFUL_PRINCIPAL_POINT = 0.03;
constexpr double SURE_PRINCIPAL_POINT = 0.01;  // and so where it is outside the image
constexpr double MANY_LEFT_OUT = 0.2;          // share of the views
constexpr double FAR_WORSE = 10.0;             // outside the data than within
/// Jackknife over formal. Of right sets of four to six views one in fifty is beyond the first, of eight and
/// more less than one in a hundred beyond the second.
constexpr double DISAGREEMENT_OF_FEW = 2.5;
constexpr double DISAGREEMENT = 2.0;
constexpr int MANY_POSES = 8;
constexpr double SMALL_COVERAGE = 0.4;
constexpr int FEW_VIEWS = 10;
constexpr int FEWEST_POSES = 5;
constexpr int POSES_OF_NOTHING = 2;
constexpr int FEWEST_AGREEING = 5;  // of those that outvoted others

double RelativeFocal(const Eigen::MatrixXd& covariance, const Intrinsics& intrinsics) {
  return std::max(std::sqrt(covariance(FX, FX)) / intrinsics.values[FX],
                  std::sqrt(covariance(FY, FY)) / intrinsics.values[FY]);
}

double FocalLengthOf(const Solution& solution, size_t camera) {
  const auto& values = solution.rig.cameras[camera].intrinsics.values;
  return std::sqrt(std::abs(values[FX] * values[FY]));
}

double PrincipalPointDeviation(const Eigen::MatrixXd& covariance) {
  if (covariance.size() == 0) return std::numeric_limits<double>::infinity();
  return std::sqrt(std::max(covariance(CX, CX), covariance(CY, CY)));
}

int ViewsOf(const Solution& solution, size_t camera) {
  return static_cast<int>(
      std::count_if(solution.views.begin(), solution.views.end(),
                    [camera](const TargetView& view) { return !view.observations[camera].IsEmpty(); }));
}

/// Views in which the target was in like places count once.
int PosesOf(const Solution& solution, size_t camera) {
  const std::vector<size_t> groups = solver::GroupsOf(solution.views, solution.rig);
  std::set<size_t> observed;
  for (size_t i = 0; i < groups.size(); ++i) {
    if (!solution.views[i].observations[camera].IsEmpty()) observed.insert(groups[i]);
  }
  return static_cast<int>(observed.size());
}

void Measure(const Solution& solution, size_t camera, CalibrationVerdict& verdict) {
  const cv::Size& imageSize = solution.rig.cameras[camera].imageSize;
  const Layout::Block block = LayoutOf(solution).cameras[camera];
  const Intrinsics& intrinsics = solution.rig.cameras[camera].intrinsics;
  verdict.views = ViewsOf(solution, camera);
  verdict.poses = PosesOf(solution, camera);
  verdict.dataArea = DataAreaOf(solution.views, camera);
  verdict.coverage = std::min(1.0, cv::contourArea(verdict.dataArea) / imageSize.area());
  const ProjectionUncertainty uncertainty(intrinsics, imageSize, verdict.dataArea);
  const double unknown = std::numeric_limits<double>::infinity();
  const Eigen::MatrixXd formal = solver::IntrinsicsCovariance(solver::SharedCovariance(solution), block);
  const Eigen::MatrixXd jackknife =
      solver::IntrinsicsCovariance(solver::JackknifeCovariance(solution), block);
  const bool hasFormal = formal.size() > 0;
  const bool hasJackknife = jackknife.size() > 0;
  if (hasFormal) cv::eigen2cv(formal, verdict.covariance);
  if (hasJackknife) cv::eigen2cv(jackknife, verdict.jackknifeCovariance);
  verdict.focalDeviation = hasFormal ? RelativeFocal(formal, intrinsics) : unknown;
  verdict.focalJackknife = hasJackknife ? RelativeFocal(jackknife, intrinsics) : unknown;
  verdict.deviationInData = hasFormal ? uncertainty.InArea(formal) : unknown;
  verdict.principalPointDeviation =
      std::max(PrincipalPointDeviation(formal), PrincipalPointDeviation(jackknife));
  verdict.imageWithoutRay = uncertainty.ShareWithoutRay();
  verdict.deviationInImage =
      hasFormal && verdict.imageWithoutRay == 0.0 ? uncertainty.InImage(formal) : unknown;
  verdict.jackknifeInData = hasJackknife ? uncertainty.InArea(jackknife) : unknown;
  if (hasFormal) verdict.deviationMap = uncertainty.Map(formal);
}

void AddRemark(CalibrationVerdict& verdict, Grade grade, const std::string& reason,
               const std::string& advice) {
  verdict.grade = std::max(verdict.grade, grade);
  verdict.remarks.push_back({reason, advice});
}

void AssessFocal(CalibrationVerdict& verdict) {
  const double focal = std::max(verdict.focalDeviation, verdict.focalJackknife);
  if (!(focal <= WORTHLESS_FOCAL)) {
    AddRemark(verdict, Grade::Worthless, "The views do not determine the focal length.",
              "Tilt the sheet more, by 20 to 40 degrees and to all sides.");
  } else if (focal > CAREFUL_FOCAL) {
    AddRemark(verdict, Grade::WithCare,
              "The focal length is known only to within " + Decimal(100.0 * focal, 1) + " %.",
              "Tilt the sheet more, and take more views.");
  }
}

/// By how well it is known, not by where it is: an image that was cropped may be without it.
void AssessPrincipalPoint(const Camera& camera, double focalLength, CalibrationVerdict& verdict) {
  const Intrinsics& intrinsics = camera.intrinsics;
  const double deviation = verdict.principalPointDeviation / focalLength;
  const cv::Rect2d image(0.0, 0.0, camera.imageSize.width, camera.imageSize.height);
  if (!image.contains({intrinsics.values[CX], intrinsics.values[CY]}) &&
      !(deviation <= SURE_PRINCIPAL_POINT)) {
    AddRemark(verdict, Grade::Worthless, "The principal point is outside the image.",
              "Tilt the sheet more, to all sides, and check that the grid is the right one.");
  } else if (intrinsics.estimated == FULL_PARAMETERS) {
    return;  // the sensor's tilt makes up for any of its places
  } else if (!(deviation <= WORTHLESS_PRINCIPAL_POINT)) {
    AddRemark(verdict, Grade::Worthless, "The views do not determine the principal point.",
              "Tilt the sheet more, to all sides.");
  } else if (deviation > CAREFUL_PRINCIPAL_POINT) {
    AddRemark(
        verdict, Grade::WithCare,
        "The principal point is known only to within " + Decimal(verdict.principalPointDeviation, 0) + " px.",
        "Tilt the sheet more, to all sides, and take more views.");
  }
}

void AssessProjection(const cv::Size& imageSize, double focalLength, CalibrationVerdict& verdict) {
  const double inData = std::max(verdict.deviationInData, verdict.jackknifeInData);
  if (!(inData <= WORTHLESS_PROJECTION * imageSize.width)) {
    AddRemark(verdict, Grade::Worthless,
              "Projections are uncertain by more than a hundredth of the image's width.",
              "Take more views, tilted to all sides, near and far.");
  } else if (inData > CAREFUL_PROJECTION * focalLength) {
    AddRemark(verdict, Grade::WithCare, "Projections are uncertain by " + Decimal(inData, 1) + " px.",
              verdict.views < FEW_VIEWS ? "There are few views: take ten or more."
                                        : "Tilt the sheet more, and hold it still.");
  }
  if (verdict.imageWithoutRay > 0.0) {
    AddRemark(verdict, Grade::WithCare,
              "The lens has no ray for " + Decimal(100.0 * verdict.imageWithoutRay, 1) + " % of the image.",
              "Come closer to the corners of the image with the sheet, or choose a larger lens model.");
  }
  const bool farWorse = !(verdict.deviationInImage <= FAR_WORSE * verdict.deviationInData);
  if (farWorse || verdict.coverage < SMALL_COVERAGE) {
    AddRemark(verdict, Grade::WithCare, "The result is valid only where there is data.",
              "Come closer to the corners of the image with the sheet.");
  }
}

/// Whether there are enough poses of the target to believe how far they agree.
void AssessPoses(CalibrationVerdict& verdict) {
  const bool repeated = verdict.poses < verdict.views;
  const std::string count = std::to_string(verdict.poses);
  const std::string poses = verdict.poses == 1 ? "one pose" : count + " different poses";
  const std::string reason =
      repeated ? "There are " + std::to_string(verdict.views) + " views, but only " + poses + "."
               : "There " + (verdict.poses == 1 ? std::string("is only one view.")
                                                : "are only " + count + " views.");
  const char* const advice = "Take more: ten or more poses, tilted to all sides, near and far.";
  if (verdict.poses <= POSES_OF_NOTHING) {
    AddRemark(verdict, Grade::Worthless, reason, advice);
  } else if (verdict.poses < (repeated ? MANY_POSES : FEWEST_POSES)) {
    AddRemark(verdict, Grade::WithCare, reason, advice);
  } else if (repeated && verdict.poses < FEW_VIEWS) {
    AddRemark(verdict, Grade::Good, reason, advice);
  }
}

/// Whether enough views are left to believe that the rejected ones are wrong.
void AssessSelection(const Solution& solution, const OtherCamera& other, CalibrationVerdict& verdict) {
  const auto leftOut = std::count_if(verdict.leftOut.begin(), verdict.leftOut.end(),
                                     [](const CalibrationVerdict::LeftOut& left) { return left.point < 0; });
  const auto all = static_cast<double>(verdict.views + leftOut);
  if (solution.tooFewAgree) {
    AddRemark(verdict, Grade::WithCare,
              "Too few views agree with each other to tell which of the others are wrong.",
              "Look at the views with the largest errors, and take more.");
  } else if (leftOut > 0 && verdict.views < FEWEST_AGREEING) {
    AddRemark(verdict, Grade::WithCare,
              "Only " + std::to_string(verdict.views) + " views agree, and the others were left out.",
              "Take more views, to be sure that it is the others that are wrong.");
  }
  if (other.views > 0) {
    AddRemark(verdict, Grade::WithCare, other.reason, other.advice);
  } else if (static_cast<double>(leftOut) >= MANY_LEFT_OUT * all && leftOut > 1) {
    AddRemark(verdict, Grade::WithCare,
              std::to_string(leftOut) + " of " + std::to_string(static_cast<int>(all)) +
                  " views disagree with the others, and were left out.",
              "Look at them: are they of this camera, at this focus and zoom?");
  }
}

/// Whether the search came to its end. Other solvers' results do not say.
void AssessSearch(const Solution& solution, CalibrationVerdict& verdict) {
  if (!EndedEarly(solution)) return;
  AddRemark(verdict, Grade::WithCare, EARLY_END, EARLY_END_ADVICE);
}

/// The remark on a systematic error; the reason is empty when its cause is none after all.
CalibrationVerdict::Remark RemarkOn(const SystematicError& error, const Solution& solution, size_t camera,
                                    const LargerModelName& larger, CalibrationVerdict& verdict) {
  if (error.cause == SystematicError::Cause::Radial && larger() == "fisheye")
    return {"The lens is not of this model", "Try the fisheye model."};
  if (error.cause != SystematicError::Cause::LensTerms) return RemarkOn(error, solution, camera, verdict);
  if (larger().empty()) return {};
  return {"The lens does not fit this model", "Try the " + larger() + " model."};
}

/// "0.55 to 8.40 px" where a change made two cameras of one, and the result is near one of them.
std::string SizeOf(const SystematicError& error) {
  const bool isNear = error.nearer < 0.5 * error.shift;
  return (isNear ? Decimal(error.nearer, 2) + " to " : "") + Decimal(error.shift, 2) + " px";
}

/// By how much projections are moved at most; 0 when there is nothing to tell. Steps from a worthless result
/// lead nowhere.
double AssessSystematicError(const Solution& solution, size_t camera, const LargerModelName& larger,
                             CalibrationVerdict& verdict) {
  using Cause = SystematicError::Cause;
  if (verdict.grade == Grade::Worthless) return 0.0;
  double shift = 0.0;
  const double least = std::max(LEAST_SYSTEMATIC * FocalLengthOf(solution, camera), verdict.deviationInData);
  for (const SystematicError& error : SystematicErrorsOf(solution, camera, verdict.dataArea, least)) {
    // Discs beside their places hide what bends or stretches the sheet as a whole, and are no part of it.
    const bool isOfSheet = error.cause == Cause::Bend || error.cause == Cause::Proportions;
    if (shift > 0.0 && !(isOfSheet && error.shift > 0.5 * shift)) continue;
    const CalibrationVerdict::Remark remark = RemarkOn(error, solution, camera, larger, verdict);
    if (remark.reason.empty()) continue;
    verdict.systematicInData = std::max(verdict.systematicInData, error.nearer);
    const bool isFarOff = error.shift > WORTHLESS_PROJECTION * solution.rig.cameras[camera].imageSize.width;
    AddRemark(verdict, isFarOff ? Grade::Worthless : Grade::WithCare,
              remark.reason + ": projections are off by about " + SizeOf(error) + ".", remark.advice);
    const bool isWhole = shift > 0.0 || error.cause != Cause::PrintErrors;
    shift = std::max(shift, error.shift);
    if (isWhole) break;
  }
  if (shift > 0.0) return shift;
  // What is too little to be told, or too unsure, may be there all the same: the forecast has it. Few poses
  // hint at anything.
  if (verdict.poses >= MANY_POSES) verdict.systematicInData = HintedShift(solution, camera, verdict.dataArea);
  return 0.0;
}

void AssessAgreement(const LargerModelName& larger, CalibrationVerdict& verdict) {
  // Repeated views may share all of their errors: the formal deviations then are too small by so much.
  const double most = (verdict.poses < MANY_POSES ? DISAGREEMENT_OF_FEW : DISAGREEMENT) *
                      std::sqrt(static_cast<double>(verdict.views) / std::max(verdict.poses, 1));
  if (verdict.focalJackknife > most * verdict.focalDeviation ||
      verdict.jackknifeInData > most * verdict.deviationInData) {
    AddRemark(verdict, Grade::WithCare,
              "The views disagree more than noise explains: there is a model error.",
              larger().empty() ? "Check that the sheet is flat, and that focus and zoom stay as they are."
                               : "Check that the sheet is flat, then try the " + larger() + " model.");
  }
}

}  // namespace

CalibrationVerdict AssessCamera(const Solution& solution, size_t camera, const LargerModelName& largerModel,
                                const std::vector<Observation>& leftOut) {
  const cv::Size& imageSize = solution.rig.cameras[camera].imageSize;
  CalibrationVerdict verdict;
  verdict.grade = Grade::Good;
  for (const Rejected& rejected : solution.rejected) {
    if (rejected.camera != camera) continue;
    verdict.leftOut.push_back({rejected.view, rejected.point, rejected.residual, rejected.reason});
  }
  Measure(solution, camera, verdict);
  AssessFocal(verdict);
  AssessPrincipalPoint(solution.rig.cameras[camera], FocalLengthOf(solution, camera), verdict);
  AssessProjection(imageSize, FocalLengthOf(solution, camera), verdict);
  AssessPoses(verdict);
  AssessSelection(solution, OtherCameraAmong(leftOut, solution, camera), verdict);
  AssessSearch(solution, verdict);
  const double shift = AssessSystematicError(solution, camera, largerModel, verdict);
  if (!(verdict.jackknifeInData < shift)) AssessAgreement(largerModel, verdict);
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
  const solver::Target target = solver::TargetOf(objectPoints, imagePoints, result.deviations);
  const auto solution =
      result.solution != nullptr
          ? result.solution
          : std::make_shared<const Solution>(solver::SolutionFrom(target, result, imageSize, discRadius));
  std::vector<Observation> leftOut;
  for (const Rejected& rejected : solution->rejected) {
    if (rejected.point == Rejected::WHOLE_VIEW)
      leftOut.push_back(target.views[rejected.view].observations.front());
  }
  LargerModel larger(objectPoints, imagePoints, imageSize, result, discRadius);
  CalibrationVerdict verdict = AssessCamera(
      *solution, 0, [&larger] { return larger.Name(); }, leftOut);
  AssessShape(*solution, LEAST_SYSTEMATIC * FocalLengthOf(*solution, 0), verdict);
  for (cv::Point3d& point : verdict.sheet.points) point += cv::Point3d(target.middles.front());
  return verdict;
}

}  // namespace velmora
