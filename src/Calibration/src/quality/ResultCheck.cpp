/// Whether a camera is still as its calibration found it.
#include "velmora/ResultCheck.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <utility>

#include "model/TargetGeometry.h"
#include "quality/CheckFit.h"
#include "quality/CheckWords.h"
#include "quality/ProjectionUncertainty.h"
#include "quality/ResultLens.h"
#include "quality/SheetChoice.h"
#include "solver/KnownSheet.h"
#include "solver/Outliers.h"
#include "solver/Target.h"

namespace velmora {

namespace {

using Answer = ResultCheck::Answer;
using Eigen::Index;
using Eigen::MatrixXd;

constexpr size_t FEWEST_POINTS = 6;
/// Nobody minds less, pixels.
constexpr double LEAST_TOLERANCE = 0.05;
/// A principal point that moves by this share of the focal length turns all rays by that angle: a millimetre
/// at a metre. Rotations of the poses make up for most of it, so that projections hardly show it.
constexpr double LARGEST_CENTRE_MOVE = 0.001;
/// Standard deviations beyond which a shift, and a move of the principal point, are taken for known.
constexpr double FAIRLY_SURE_OF = 2.0;
constexpr double SURE_OF = 3.0;
/// What must not go unnoticed where nothing else is asked for, in focal lengths.
constexpr double LARGEST_UNSEEN = 0.0015;

void Require(bool condition, const std::string& text) {
  if (!condition) throw std::invalid_argument(text);
}

bool IsPositive(double number) {
  return std::isfinite(number) && number > 0.0;
}

void CheckPoints(const CheckImage& image, size_t count, const std::string& name) {
  Require(image.points.size() == count, name + " has " + std::to_string(image.points.size()) +
                                            " points, the grid " + std::to_string(count) + ".");
  Require(image.weights.empty() || image.weights.size() == count, name + " has another number of weights.");
  Require(image.deviations.empty() || image.deviations.size() == count,
          name + " has another number of deviations.");
  size_t seen = 0;
  for (size_t k = 0; k < count; ++k) {
    const double weight = image.weights.empty() ? 1.0 : image.weights[k];
    Require(weight == 0.0 || weight == 1.0, "A weight of " + name + " is neither 0 nor 1.");
    if (weight == 0.0) continue;
    ++seen;
    Require(image.deviations.empty() || (std::isfinite(image.deviations[k]) && image.deviations[k] >= 0.0),
            "A deviation of " + name + " is negative or not finite.");
    Require(std::isfinite(image.points[k].x) && std::isfinite(image.points[k].y),
            "A point of " + name + " is not finite.");
  }
  Require(seen >= FEWEST_POINTS, "Fewer than six circles of " + name + " are seen.");
}

void CheckArguments(const CameraResult& result, const std::vector<CheckImage>& images,
                    const CheckOptions& options) {
  result.Check();
  Require(!images.empty(), "There are no images to check the result by.");
  Require(options.grid.width >= 2 && options.grid.height >= 2,
          "Each side of the grid has two circles or more.");
  Require(IsPositive(options.unit), "The distance of the grid's rows is not positive.");
  Require(std::isfinite(options.discRadius) && options.discRadius >= 0.0, "The discs' radius is negative.");
  Require(std::isfinite(options.tolerance) && options.tolerance >= 0.0, "The tolerance is negative.");
  const auto count = static_cast<size_t>(options.grid.area());
  Require(options.sheetPoints.empty() || options.sheetPoints.size() == count,
          "The known shape of the sheet is that of another grid.");
  for (size_t i = 0; i < images.size(); ++i) CheckPoints(images[i], count, "image " + std::to_string(i));
}

/// What is seen of the grid in the images: points that are not are left out.
solver::Target TargetFrom(const std::vector<CheckImage>& images, const std::vector<cv::Point3d>& grid) {
  solver::ObjectPoints object;
  solver::ImagePoints points;
  solver::PointDeviations deviations;
  for (const CheckImage& image : images) {
    object.push_back(grid);
    points.push_back(image.points);
    deviations.push_back(image.deviations);
    // What is said of circles that are not seen may be anything.
    for (size_t k = 0; k < grid.size() && !image.weights.empty(); ++k) {
      if (image.weights[k] != 0.0) continue;
      points.back()[k] = {};
      if (!image.deviations.empty()) deviations.back()[k] = 0.0;
    }
  }
  solver::Target target = solver::TargetOf(object, points, deviations);
  for (size_t i = 0; i < images.size(); ++i) {
    if (images[i].weights.empty()) continue;
    Observation& observation = target.views[i].observations.front();
    Observation seen;
    for (size_t k = 0; k < grid.size(); ++k) {
      if (images[i].weights[k] == 0.0) continue;
      seen.object.push_back(observation.object[k]);
      seen.image.push_back(observation.image[k]);
      if (!observation.deviations.empty()) seen.deviations.push_back(observation.deviations[k]);
    }
    observation = std::move(seen);
  }
  return target;
}

MatrixXd MatrixFrom(const cv::Mat& matrix, Index size) {
  if (matrix.type() != CV_64F || matrix.rows != size || matrix.cols != size || !cv::checkRange(matrix))
    return {};
  MatrixXd copy(size, size);
  for (int i = 0; i < matrix.rows; ++i) {
    for (int k = 0; k < matrix.cols; ++k) copy(i, k) = matrix.at<double>(i, k);
  }
  return copy;
}

class Check {
 public:
  Check(const CameraResult& result, const CalibrationVerdict& verdict, const std::vector<CheckImage>& images,
        const CheckOptions& options)
      : result_(result), verdict_(verdict), images_(images), options_(options) {
    problem_.lens = IntrinsicsOf(result);
    problem_.imageSize = result.imageSize;
    problem_.discRadius = options.discRadius;
    TakeUncertainty();
    const auto grid = MakeObjectTemplate(options.grid, static_cast<float>(options.unit));
    target_ = TargetFrom(images, grid);
    problem_.views = target_.views;
    TakeSheet(grid);
  }

  ResultCheck Run() {
    fit_ = FitCheck(problem_);
    Require(!fit_.kept.empty(), "In none of the images is the grid where this camera could see it.");
    check_.images.resize(images_.size());
    for (size_t i = 0; i < fit_.kept.size(); ++i) Describe(i, check_.images[fit_.kept[i]]);
    check_.rms = RmsOf(fit_.held);
    check_.noise = RmsOf(fit_.moved);
    if (fit_.area.size() > 2)
      check_.coverage = std::min(1.0, cv::contourArea(fit_.area) / result_.imageSize.area());
    Measure();
    Decide();
    return std::move(check_);
  }

 private:
  /// How sure the lens is: the formal covariance or that of the jackknife, the one that says less.
  void TakeUncertainty() {
    const Index rows = verdict_.covariance.rows;
    const bool isOfModel =
        problem_.lens.IsFisheye()
            ? rows == FISHEYE_PARAMETERS
            : rows == CLASSIC_PARAMETERS || rows == RATIONAL_PARAMETERS || rows == FULL_PARAMETERS;
    if (isOfModel && rows >= problem_.lens.estimated) problem_.lens.estimated = static_cast<int>(rows);
    const Intrinsics lens = problem_.lens;
    const MatrixXd formal = MatrixFrom(verdict_.covariance, lens.estimated);
    const MatrixXd jackknife = MatrixFrom(verdict_.jackknifeCovariance, lens.estimated);
    problem_.uncertainty = [this, lens, formal, jackknife](const std::vector<cv::Point2f>& area) -> MatrixXd {
      if (formal.size() == 0 || jackknife.size() == 0) return MatrixXd(formal);
      const ProjectionUncertainty uncertainty(lens, result_.imageSize, area);
      return uncertainty.InArea(jackknife) > uncertainty.InArea(formal) ? jackknife : formal;
    };
  }

  /// The shape that was given, or that of the verdict where it is one of this grid.
  void TakeSheet(const std::vector<cv::Point3d>& grid) {
    const bool given = !options_.sheetPoints.empty();
    const std::vector<cv::Point3d>& known = given ? options_.sheetPoints : verdict_.sheet.points;
    if (!solver::IsShapeOf(grid, known)) {
      Require(!given, "The known shape of the sheet is that of another grid.");
      return;
    }
    SheetAssumption sheet;
    sheet.known = known;
    problem_.known = AboutMiddle(sheet, target_.middles.front()).known;
  }

  /// One of the images that were used.
  void Describe(size_t number, ResultCheck::Image& image) const {
    const TargetView& view = fit_.held.views[number];
    const RigidTransform& pose = view.rigFromTarget;
    const size_t given = fit_.kept[number];
    image.used = true;
    image.rms = RmsOfImage(fit_.held, number, 0);
    const auto residuals = solver::ResidualsOf({view}, fit_.held.rig).front().front();
    const Observation& observation = view.observations.front();
    for (size_t k = 0; k < residuals.size(); ++k) {
      const double residual = residuals[k] * observation.Deviation(k);
      if (observation.Weight(k) == 0.0) ++image.outliers;
      if (image.largestPoint >= 0 && !(residual > image.largest)) continue;
      image.largest = residual;
      image.largestPoint = PointOf(given, k);
    }
    const cv::Vec3d normal = pose.R * cv::Vec3d(0.0, 0.0, 1.0);
    image.tilt = std::acos(std::min(1.0, std::abs(normal.dot(pose.t)) / cv::norm(pose.t))) * 180.0 / CV_PI;
    cv::Rodrigues(pose.R, image.rvec);
    image.tvec = pose.t - pose.R * target_.middles[given];
  }

  /// From a number among the points that are seen to that on the grid.
  int PointOf(size_t image, size_t seen) const {
    const std::vector<double>& weights = images_[image].weights;
    size_t point = 0;
    if (weights.empty()) return static_cast<int>(seen);
    for (size_t left = seen; weights[point] == 0.0 || left-- > 0; ++point) {
    }
    return static_cast<int>(point);
  }

  void Measure() {
    const double unknown = std::numeric_limits<double>::infinity();
    check_.unseen = check_.shiftDeviation = check_.focalDeviation = unknown;
    check_.principalPointDeviation = {unknown, unknown};
    if (!fit_.determined) return;
    const LensMove& move = fit_.move;
    const auto deviation = [&move](Index i) { return std::sqrt(std::max(move.covariance(i, i), 0.0)); };
    check_.evidence = move.evidence;
    check_.focalChange = move.move(MoveColumns::FOCAL);
    check_.focalDeviation = deviation(MoveColumns::FOCAL);
    check_.principalPointChange = {move.move(MoveColumns::CENTRE_X), move.move(MoveColumns::CENTRE_Y)};
    check_.principalPointDeviation = {deviation(MoveColumns::CENTRE_X), deviation(MoveColumns::CENTRE_Y)};
    termsMoved_ = std::abs(move.move(MoveColumns::FIRST_TERM)) / deviation(MoveColumns::FIRST_TERM);
    MatrixXd products;
    if (!Products(products)) return;
    check_.shift = std::sqrt(std::max(move.move.dot(products * move.move), 0.0));
    const Eigen::VectorXd slope = products * move.move / std::max(check_.shift, 1e-9);
    check_.shiftDeviation = std::sqrt(std::max(slope.dot(move.covariance * slope), 0.0));
    check_.unseen = 2.0 * std::sqrt(std::max((products * move.covariance).trace(), 0.0));
  }

  /// The mean square of what moves do to projections is a form of them; false where it is not known.
  bool Products(MatrixXd& products) const {
    const ProjectionUncertainty uncertainty(problem_.lens, result_.imageSize, fit_.area);
    const MatrixXd& columns = fit_.columns.columns;
    // Both coordinates.
    const auto square = [&uncertainty](const Eigen::VectorXd& moved) {
      return 2.0 * std::pow(uncertainty.InArea(moved * moved.transpose()), 2.0);
    };
    products.resize(columns.cols(), columns.cols());
    for (Index i = 0; i < columns.cols(); ++i) products(i, i) = square(columns.col(i));
    for (Index i = 0; i < columns.cols(); ++i) {
      for (Index k = 0; k < i; ++k) {
        products(i, k) = 0.5 * (square(columns.col(i) + columns.col(k)) - products(i, i) - products(k, k));
        products(k, i) = products(i, k);
      }
    }
    return products.allFinite();
  }

  void Decide() {
    const double systematic = std::isfinite(verdict_.systematicInData) ? verdict_.systematicInData : 0.0;
    const bool asked = options_.tolerance > 0.0;
    check_.tolerance = asked ? options_.tolerance : std::max(LEAST_TOLERANCE, systematic);
    const auto& lens = problem_.lens.values;
    const double focal = std::sqrt(lens[FX] * lens[FY]);
    const double mostUnseen = asked ? options_.tolerance : LARGEST_UNSEEN * focal;
    const bool moved = check_.evidence > 1.0;
    // Beyond chance, but all in directions that are hardly known, is nothing to go by.
    const bool shiftIsKnown = check_.shift > FAIRLY_SURE_OF * check_.shiftDeviation;
    const bool projectionsMoved = check_.shift > check_.tolerance && shiftIsKnown;
    const bool centreMoved = !asked && cv::norm(check_.principalPointChange) > LARGEST_CENTRE_MOVE * focal &&
                             CentreSureness(check_) > SURE_OF;
    if (verdict_.grade == CalibrationVerdict::Grade::Worthless) {
      check_.answer = Answer::CannotTell;
    } else if (moved && (projectionsMoved || centreMoved)) {
      check_.answer = Answer::NotCalibrated;
    } else {
      check_.answer = check_.unseen <= mostUnseen ? Answer::Calibrated : Answer::CannotTell;
    }
    PutIntoWords({moved, termsMoved_, result_.rms, verdict_.grade == CalibrationVerdict::Grade::Worthless},
                 check_);
  }

  const CameraResult& result_;
  const CalibrationVerdict& verdict_;
  const std::vector<CheckImage>& images_;
  const CheckOptions& options_;
  solver::Target target_;
  CheckProblem problem_;
  CheckFit fit_;
  double termsMoved_ = 0.0;
  ResultCheck check_;
};

}  // namespace

ResultCheck CheckResult(const CameraResult& result, const CalibrationVerdict& verdict,
                        const std::vector<CheckImage>& images, const CheckOptions& options) {
  CheckArguments(result, images, options);
  return Check(result, verdict, images, options).Run();
}

}  // namespace velmora
