/// What is said of a sheet whose shape was estimated.
#include "quality/SheetRemarks.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <opencv2/calib3d.hpp>
#include <string>
#include <utility>

#include "quality/PoseDeviations.h"
#include "quality/ProjectionUncertainty.h"
#include "quality/SystematicRemarks.h"
#include "solver/Covariance.h"

namespace velmora {

namespace {

using Eigen::Index;

/// Smaller ones hardly any printer avoids: 10 um of 100 mm.
constexpr double LEAST_MISPRINT = 1e-4;
/// 0.1 mm of 200: less than anybody sees.
constexpr double LEAST_BEND = 1e-3;
constexpr double SURE_OF_A_BEND = 3.0;    // deviations
constexpr double DOUBTFUL_PRINT = 0.001;  // share of a length
/// Beyond this ratio the dots' places go by rows rather than by columns, or the other way round.
constexpr double CLEARLY_MORE = 1.3;
constexpr size_t ENOUGH_FOR_FREE_POINTS = 8;
/// A quarter of what makes a result one to use with care.
constexpr PairVerdict::Deviations WORTH_TELLING = {0.05, 0.0025, 0.125};

/// Half the longer side of the target.
double HalfSideOf(const Sheet& sheet) {
  const auto [left, right] = std::minmax_element(sheet.target.begin(), sheet.target.end(),
                                                 [](const auto& a, const auto& b) { return a.x < b.x; });
  const auto [top, bottom] = std::minmax_element(sheet.target.begin(), sheet.target.end(),
                                                 [](const auto& a, const auto& b) { return a.y < b.y; });
  return 0.5 * std::max(right->x - left->x, bottom->y - top->y);
}

/// The distance of the two points that are nearest to each other in the order of the target.
double StepOf(const Sheet& sheet) {
  double least = 2.0 * HalfSideOf(sheet);
  for (size_t i = 1; i < sheet.target.size(); ++i) {
    least = std::min(least, cv::norm(sheet.target[i] - sheet.target[0]));
  }
  return least;
}

/// The rows of the terms' columns that are heights.
Eigen::MatrixXd HeightRowsOf(const SheetTerms& terms) {
  Eigen::MatrixXd heights(terms.columns.rows() / 3, terms.Count());
  for (Index i = 0; i < heights.rows(); ++i) heights.row(i) = terms.columns.row(3 * i + 2);
  return heights;
}

/// From the lowest point to the highest, and how sure that is.
void MeasureBend(const Solution& solution, const Eigen::MatrixXd& covariance,
                 CalibrationVerdict::Sheet& measured) {
  const SheetTerms& terms = solution.sheet.terms;
  if (solution.sheet.IsKnown()) {
    const auto [lowest, highest] =
        std::minmax_element(measured.points.begin(), measured.points.end(),
                            [](const auto& a, const auto& b) { return a.z < b.z; });
    measured.bend = highest->z - lowest->z;
  }
  if (terms.Count() == 0) return;
  const Eigen::MatrixXd rows = HeightRowsOf(terms);
  const Eigen::VectorXd heights = rows * solution.sheet.values;
  Index lowest = 0;
  Index highest = 0;
  measured.bend = heights.maxCoeff(&highest) - heights.minCoeff(&lowest);
  if (covariance.size() == 0) return;
  const Eigen::RowVectorXd apart = rows.row(highest) - rows.row(lowest);
  const auto own = covariance.bottomRightCorner(terms.Count(), terms.Count());
  measured.bendDeviation = std::sqrt(std::max((apart * own * apart.transpose())(0), 0.0));
}

/// The proportions are the last two terms of those that have them.
void MeasurePrint(const Solution& solution, CalibrationVerdict::Sheet& measured) {
  const Sheet& sheet = solution.sheet;
  Eigen::VectorXd values = sheet.values;
  if (HasProportions(sheet.level)) {
    measured.stretch = values.tail(2)(0) / HalfSideOf(sheet);
    measured.skew = values.tail(2)(1) / HalfSideOf(sheet);
    values.tail(2).setZero();
  }
  if (!HasFreePoints(sheet.level)) return;
  const Eigen::VectorXd moves = MovesOf(sheet.terms, values);
  double squares = 0.0;
  for (Index i = 0; i < moves.size(); i += 3) squares += moves.segment(i, 2).squaredNorm();
  measured.misprint = std::sqrt(3.0 * squares / static_cast<double>(moves.size()));
}

/// The root of the mean square of the heights that the views' own bends give to the points.
double ChangeOf(const Solution& solution) {
  double squares = 0.0;
  double count = 0.0;
  for (const TargetView& view : solution.views) {
    const Eigen::VectorXd moves =
        MovesOf(solution.sheet.ownBend, Eigen::Map<const Eigen::Vector3d>(view.bend.val));
    squares += moves.squaredNorm();
    count += static_cast<double>(moves.size()) / 3.0;
  }
  return std::sqrt(squares / std::max(count, 1.0));
}

/// The root of the mean square of the mean moves of points that share a coordinate of the target.
double CommonMoves(const Sheet& sheet, double cv::Point3d::*shared) {
  const Eigen::VectorXd moves = MovesOf(sheet.terms, sheet.values);
  std::map<double, std::pair<Eigen::Vector2d, double>> sums;
  for (size_t i = 0; i < sheet.target.size(); ++i) {
    auto& [sum, count] =
        sums.try_emplace(sheet.target[i].*shared, Eigen::Vector2d::Zero(), 0.0).first->second;
    sum += moves.segment<2>(static_cast<Index>(3 * i));
    count += 1.0;
  }
  double squares = 0.0;
  for (const auto& [place, of] : sums) squares += (of.first / of.second).squaredNorm();
  return std::sqrt(squares / static_cast<double>(sums.size()));
}

/// ", rows more than columns", or the other way round, or nothing.
std::string WhichMore(const Sheet& sheet) {
  const double rows = CommonMoves(sheet, &cv::Point3d::y);
  const double columns = CommonMoves(sheet, &cv::Point3d::x);
  if (rows > CLEARLY_MORE * columns) return ", rows more than columns";
  if (columns > CLEARLY_MORE * rows) return ", columns more than rows";
  return "";
}

std::string Millimetres(double metres, int digits) {
  return Decimal(1e3 * metres, digits) + " mm";
}

class Remarks {
 public:
  Remarks(const Solution& solution, const CalibrationVerdict::Sheet& measured,
          std::vector<CalibrationVerdict::Remark>& remarks)
      : solution_(solution), measured_(measured), remarks_(remarks) {}

  /// `otherwise` is what would be, had the sheet been taken for flat.
  void Tell(const std::string& otherwise) {
    const size_t before = remarks_.size();
    if (solution_.sheet.IsKnown() && measured_.flatRms > 0.0 && measured_.flatRms < RmsOf(solution_)) {
      Add("The given shape of the sheet fits worse than a flat one.",
          "Is it of this sheet? Else let it be estimated.");
      return;
    }
    TellBend();
    TellPrint();
    if (HasFreePoints(solution_.sheet.level) && solution_.views.size() < ENOUGH_FOR_FREE_POINTS) {
      Add("The sheet was measured by the same " + std::to_string(solution_.views.size()) +
              " views as the camera.",
          "Take ten or more.");
    }
    if (remarks_.size() > before) {
      remarks_[before].reason += " This is taken into account; " + otherwise + " otherwise.";
    }
  }

 private:
  void TellBend() {
    const bool isSure = measured_.bend > SURE_OF_A_BEND * measured_.bendDeviation;
    if (measured_.bend > LEAST_BEND * HalfSideOf(solution_.sheet) && isSure) {
      Add("The sheet is bent by " + Millimetres(measured_.bend, 1) + ".",
          "A flat, stiff board would make the result more precise still.");
    }
    if (measured_.bendChanges > 0.0) {
      Add("The sheet's bend changes from view to view by " + Millimetres(measured_.bendChanges, 1) + ".",
          "A stiff board would help.");
    }
  }

  void TellPrint() {
    if (measured_.misprint > LEAST_MISPRINT * HalfSideOf(solution_.sheet)) {
      Add("The dots are off their places by " + Millimetres(measured_.misprint, 2) + " (" +
              Decimal(100.0 * measured_.misprint / StepOf(solution_.sheet), 1) + " % of a step)" +
              WhichMore(solution_.sheet) + ".",
          "Print at the printer's own resolution.");
    }
    if (std::abs(measured_.stretch) > DOUBTFUL_PRINT) {
      Add("The print is " + Decimal(100.0 * std::abs(measured_.stretch), 1) + " % " +
              (measured_.stretch < 0.0 ? "short" : "long") + " along its columns.",
          "Measure it: the distance that was given may be off, too.");
    }
  }

  void Add(const std::string& reason, const std::string& advice) { remarks_.push_back({reason, advice}); }

  const Solution& solution_;
  const CalibrationVerdict::Sheet& measured_;
  std::vector<CalibrationVerdict::Remark>& remarks_;
};

CalibrationVerdict::Sheet ShapeOf(const Solution& solution) {
  const Sheet& sheet = solution.sheet;
  CalibrationVerdict::Sheet measured;
  measured.model = sheet.IsKnown() ? "known" : HasFreePoints(sheet.level) ? "free" : "bent";
  measured.points = Moved(sheet.target, MovesOf(sheet.terms, sheet.values));
  MeasureBend(solution, solver::SharedCovariance(solution), measured);
  MeasurePrint(solution, measured);
  measured.parameters = sheet.counted;
  if (sheet.HasOwnBends()) {
    measured.bendChanges = ChangeOf(solution);
    for (const TargetView& view : solution.views) measured.bends.push_back(view.bend);
  }
  if (solution.flat != nullptr) measured.flatRms = RmsOf(*solution.flat);
  return measured;
}

/// How far projections of the flat sheet's camera are off, where there are data.
double ShiftOfFlat(const Solution& solution, size_t camera, const std::vector<cv::Point2f>& area) {
  if (solution.flat == nullptr) return 0.0;
  const Camera& own = solution.rig.cameras[camera];
  const auto count = static_cast<Index>(own.intrinsics.estimated);
  Eigen::VectorXd shift(count);
  for (Index i = 0; i < count; ++i) {
    const auto at = static_cast<size_t>(i);
    shift(i) = solution.flat->rig.cameras[camera].intrinsics.values[at] - own.intrinsics.values[at];
  }
  return ProjectionUncertainty(own.intrinsics, own.imageSize, area).InArea(shift * shift.transpose());
}

/// How far the cameras of the flat sheet's rig are elsewhere, as deviations are told: the most of any.
PairVerdict::Deviations MoveOfFlat(const Solution& solution) {
  PairVerdict::Deviations moved;
  for (size_t i = 1; i < solution.rig.cameras.size() && solution.flat != nullptr; ++i) {
    const RigidTransform& own = solution.rig.cameras[i].cameraFromRig;
    const RigidTransform& flat = solution.flat->rig.cameras[i].cameraFromRig;
    cv::Vec3d turn;
    cv::Rodrigues(flat.R * own.R.t(), turn);
    const cv::Vec3d away = flat.t - own.t;
    Eigen::VectorXd step(POSE_PARAMETERS);
    step << turn[0], turn[1], turn[2], away[0], away[1], away[2];
    moved = Larger(moved, DeviationsOf(step * step.transpose(), 0, own.t));
  }
  return moved;
}

}  // namespace

void AssessShape(const Solution& solution, double least, CalibrationVerdict& verdict) {
  if (solution.sheet.IsFlat()) return;
  verdict.sheet = ShapeOf(solution);
  verdict.sheet.shift = ShiftOfFlat(solution, 0, verdict.dataArea);
  if (!(verdict.sheet.shift > least)) return;
  Remarks(solution, verdict.sheet, verdict.remarks)
      .Tell("projections would be off by " + Decimal(verdict.sheet.shift, 1) + " px");
}

void AssessShapeOfRig(const Solution& solution, CalibrationVerdict::Sheet& sheet,
                      std::vector<CalibrationVerdict::Remark>& remarks) {
  if (solution.sheet.IsFlat()) return;
  sheet = ShapeOf(solution);
  for (size_t i = 0; i < solution.rig.cameras.size() && solution.estimated.intrinsics; ++i) {
    sheet.shift = std::max(sheet.shift, ShiftOfFlat(solution, i, DataAreaOf(solution.views, i)));
  }
  const PairVerdict::Deviations moved = MoveOfFlat(solution);
  if (!Beyond(moved, WORTH_TELLING)) return;
  Remarks(solution, sheet, remarks)
      .Tell("rotations would be off by " + Decimal(moved.rotation, 2) + " degrees, baselines by " +
            Decimal(100.0 * moved.baseline, 1) + " %");
}

}  // namespace velmora
