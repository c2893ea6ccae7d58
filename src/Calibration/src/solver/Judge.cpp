/// Judges a computed camera.
#include "solver/Judge.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "solver/Covariance.h"
#include "solver/OmittedEffects.h"
#include "solver/ProjectionUncertainty.h"
#include "solver/SolutionMatrices.h"
#include "solver/Target.h"

namespace {

using Grade = CalibrationVerdict::Grade;

constexpr double WORTHLESS_FOCAL = 0.03;  // relative deviation
constexpr double CAREFUL_FOCAL = 0.01;
constexpr double WORTHLESS_PROJECTION = 0.01;  // deviation in widths of the image
constexpr double CAREFUL_PROJECTION = 0.0025;
/// Systematic errors below this share of the width are not worth a word.
constexpr double LEAST_SYSTEMATIC = 0.0002;
constexpr double FAR_WORSE = 10.0;    // outside the data than within
constexpr double DISAGREEMENT = 2.5;  // jackknife over formal
constexpr double SMALL_COVERAGE = 0.4;
constexpr int FEW_VIEWS = 10;

std::vector<cv::Point2f> HullOf(const std::vector<sparse::View>& views) {
  std::vector<cv::Point2f> points;
  for (const sparse::View& view : views) points.insert(points.end(), view.image.begin(), view.image.end());
  std::vector<cv::Point2f> hull;
  cv::convexHull(points, hull);
  return hull;
}

double RelativeFocal(const cv::Mat& covariance, const sparse::Lens& lens) {
  return std::max(std::sqrt(covariance.at<double>(0, 0)) / lens.values[0],
                  std::sqrt(covariance.at<double>(1, 1)) / lens.values[1]);
}

void Measure(const sparse::Solved& solved, const cv::Size& imageSize, CalibrationVerdict& verdict) {
  const sparse::Lens& lens = solved.staged.solution.estimate.lens;
  verdict.views = static_cast<int>(solved.views.size());
  verdict.dataArea = HullOf(solved.views);
  verdict.coverage = std::min(1.0, cv::contourArea(verdict.dataArea) / imageSize.area());
  const sparse::ProjectionUncertainty uncertainty(lens, imageSize, verdict.dataArea);
  const double nothing = std::numeric_limits<double>::infinity();
  const cv::Mat formal = sparse::LensCovariance(solved.staged, solved.views);
  const cv::Mat jackknife = sparse::JackknifeCovariance(solved.staged);
  verdict.focalDeviation = formal.empty() ? nothing : RelativeFocal(formal, lens);
  verdict.focalJackknife = jackknife.empty() ? nothing : RelativeFocal(jackknife, lens);
  verdict.deviationInData = formal.empty() ? nothing : uncertainty.InArea(formal);
  verdict.deviationInImage = formal.empty() ? nothing : uncertainty.InImage(formal);
  verdict.jackknifeInData = jackknife.empty() ? nothing : uncertainty.InArea(jackknife);
  if (!formal.empty()) verdict.deviationMap = uncertainty.Map(formal);
}

/// How far a change of the lens' parameters moves projections where there are data.
double ShiftInArea(const sparse::Solved& solved, const cv::Mat& lensShift, const cv::Size& imageSize,
                   const std::vector<cv::Point2f>& area) {
  sparse::Lens lens = solved.staged.solution.estimate.lens;
  lens.free = lensShift.rows;
  return sparse::ProjectionUncertainty(lens, imageSize, area).InArea(lensShift * lensShift.t());
}

std::string Decimal(double value, int digits) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(digits) << value;
  return text.str();
}

/// What takes most off the residuals, if any does more than noise would. Each looks a little like the others.
struct Systematic {
  sparse::OmittedEffect effect;
  CalibrationVerdict::Remark remark;
};

Systematic SystematicErrorOf(const sparse::Solved& solved, CalibrationVerdict& verdict) {
  const sparse::OmittedEffect bend = sparse::OmittedBend(solved);
  const sparse::OmittedEffect proportions = sparse::OmittedProportions(solved);
  const sparse::OmittedEffect lens = sparse::OmittedLensTerms(solved);
  const double most = std::max({bend.Excess(), proportions.Excess(), lens.Excess()});
  if (bend.significant && bend.Excess() == most) {
    verdict.sheetBend = sparse::DepthOfBend(bend, solved.views.front());
    return {bend,
            {"The sheet is bent by about " + Decimal(1e3 * verdict.sheetBend, 1) + " mm",
             "Mount the sheet on a flat, stiff board."}};
  }
  if (proportions.significant && proportions.Excess() == most) {
    verdict.sheetStretch = proportions.values.at<double>(0);
    const double skew = proportions.values.at<double>(1);
    return {proportions,
            {std::abs(skew) > std::abs(verdict.sheetStretch)
                 ? "The sheet is out of proportion, skewed by " + Decimal(100.0 * skew, 2) + " %"
                 : "The sheet is out of proportion, its length off by " +
                       Decimal(100.0 * verdict.sheetStretch, 2) + " %",
             "Print it without any fitting to the page, and measure it both ways."}};
  }
  if (lens.significant && lens.Excess() == most) {
    return {lens, {"The lens is not of this model", "Choose a larger lens model."}};
  }
  return {};
}

void Grant(CalibrationVerdict& verdict, Grade grade, const std::string& reason, const std::string& advice) {
  verdict.grade = std::max(verdict.grade, grade);
  verdict.remarks.push_back({reason, advice});
}

void JudgeFocal(const sparse::Lens& lens, const cv::Size& imageSize, CalibrationVerdict& verdict) {
  const double focal = std::max(verdict.focalDeviation, verdict.focalJackknife);
  if (!(focal <= WORTHLESS_FOCAL)) {
    Grant(verdict, Grade::Worthless, "The views do not determine the focal length.",
          "Tilt the sheet more, by 20 to 40 degrees and to all sides.");
  } else if (focal > CAREFUL_FOCAL) {
    Grant(verdict, Grade::WithCare, "The focal length is known to more than one percent only.",
          "Tilt the sheet more, and take more views.");
  }
  const cv::Rect2d image(0.0, 0.0, imageSize.width, imageSize.height);
  if (!image.contains({lens.values[2], lens.values[3]})) {
    Grant(verdict, Grade::Worthless, "The principal point is outside the image.",
          "Tilt the sheet more, to all sides, and check that the grid is the right one.");
  }
}

void JudgeProjection(const cv::Size& imageSize, CalibrationVerdict& verdict) {
  const double inData = std::max(verdict.deviationInData, verdict.jackknifeInData) / imageSize.width;
  if (!(inData <= WORTHLESS_PROJECTION)) {
    Grant(verdict, Grade::Worthless, "Projections are unsure by more than a hundredth of the image's width.",
          "Take more views, tilted to all sides, near and far.");
  } else if (inData > CAREFUL_PROJECTION) {
    Grant(verdict, Grade::WithCare, "Projections are unsure by some pixels.",
          verdict.views < FEW_VIEWS ? "There are few views: take ten or more."
                                    : "Tilt the sheet more, and hold it still.");
  }
  const bool farWorse = !(verdict.deviationInImage <= FAR_WORSE * verdict.deviationInData);
  if (farWorse || verdict.coverage < SMALL_COVERAGE) {
    Grant(verdict, Grade::WithCare, "The result is valid only where there is data.",
          "Come closer to the corners of the image with the sheet.");
  }
}

/// True when there is something to tell. Steps from a worthless result lead nowhere.
bool JudgeSystematicError(const sparse::Solved& solved, const cv::Size& imageSize,
                          CalibrationVerdict& verdict) {
  if (verdict.grade == Grade::Worthless) return false;
  const Systematic systematic = SystematicErrorOf(solved, verdict);
  if (systematic.effect.lensShift.empty()) return false;
  verdict.systematicInData = ShiftInArea(solved, systematic.effect.lensShift, imageSize, verdict.dataArea);
  const double least = std::max(LEAST_SYSTEMATIC * imageSize.width, verdict.deviationInData);
  if (!(verdict.systematicInData > least)) return false;
  Grant(verdict, Grade::WithCare,
        systematic.remark.reason + ": projections are off by about " + Decimal(verdict.systematicInData, 2) +
            " px.",
        systematic.remark.advice);
  return true;
}

void JudgeAgreement(CalibrationVerdict& verdict) {
  if (verdict.focalJackknife > DISAGREEMENT * verdict.focalDeviation ||
      verdict.jackknifeInData > DISAGREEMENT * verdict.deviationInData) {
    Grant(verdict, Grade::WithCare, "The views disagree by more than their noise: a model error.",
          "Check that the sheet is flat, or choose a larger lens model.");
  }
}

}  // namespace

CalibrationVerdict JudgeIntrinsics(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                   const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                   const cv::Size& imageSize, const SparseResult& result, double discRadius) {
  CalibrationVerdict verdict;
  if (result.K.empty() || result.D.empty() || objectPoints.empty() ||
      static_cast<size_t>(result.rvecs.rows) != objectPoints.size() ||
      result.tvecs.rows != result.rvecs.rows) {
    return verdict;
  }
  const sparse::Solved solved =
      sparse::SolvedFrom(sparse::TargetOf(objectPoints, imagePoints), result, discRadius);
  verdict.grade = Grade::Good;
  for (const sparse::Rejected& rejected : result.rejected) {
    verdict.leftOut.push_back({rejected.view, rejected.point, rejected.residual, rejected.reason});
  }
  Measure(solved, imageSize, verdict);
  JudgeFocal(solved.staged.solution.estimate.lens, imageSize, verdict);
  JudgeProjection(imageSize, verdict);
  const bool explained =
      JudgeSystematicError(solved, imageSize, verdict) && verdict.jackknifeInData < verdict.systematicInData;
  if (!explained) JudgeAgreement(verdict);
  return verdict;
}
