/// What is computed from points of which some are known better than others.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <opencv2/calib3d.hpp>

#include "Calibrator.h"
#include "Matchers.h"
#include "Views.h"
#include "solver/PairViews.h"
#include "solver/SheetCalibration.h"
#include "solver/SparseIntrinsics.h"
#include "solver/SparsePair.h"
#include "unit/Collection.h"

using namespace velmora;
using solver::PointDeviations;

namespace {

constexpr int VIEWS = 12;
constexpr double WELL = 0.05;
constexpr double HARDLY = 0.6;

/// What one camera sees, with the standard deviation of each point.
struct Seen {
  unit::PointLists views;
  PointDeviations deviations;
};

/// Adds noise, of which every third point has much more than the others.
Seen WithNoise(unit::PointLists centres, std::uint64_t seed) {
  cv::RNG random(seed + 31);
  Seen seen{std::move(centres), {}};
  for (std::vector<cv::Point2d>& view : seen.views) {
    seen.deviations.emplace_back();
    for (size_t k = 0; k < view.size(); ++k) {
      const double deviation = k % 3 == 0 ? HARDLY : WELL;
      view[k] += cv::Point2d(random.gaussian(deviation), random.gaussian(deviation));
      seen.deviations.back().push_back(deviation);
    }
  }
  return seen;
}

Seen NoisyViewsOf(const world::Camera& camera, std::uint64_t seed) {
  unit::PointLists centres;
  for (const world::Pose& pose : world::SampleViews(camera, VIEWS, seed, unit::Paper())) {
    centres.push_back(world::TrueCentres(camera.lens, unit::Paper(), pose));
  }
  return WithNoise(std::move(centres), seed);
}

SparseResult SolvedFrom(const Seen& seen, bool weighted, bool robust = false,
                        int model = Calibrator::MODEL_CLASSIC) {
  SparseOptions options;
  options.robust = robust;
  if (weighted) options.deviations = seen.deviations;
  return SolveIntrinsicsSparsely(unit::Targets(seen.views.size()), seen.views, unit::FRAME, model, options);
}

double RootMeanSquare(const std::vector<double>& errors) {
  return std::sqrt(std::inner_product(errors.begin(), errors.end(), errors.begin(), 0.0) /
                   static_cast<double>(errors.size()));
}

TEST(DeviatingPoints, CountAsMuchAsTheyAreKnown) {
  const world::Camera camera = unit::DistortedCamera();
  for (const bool robust : {false, true}) {
    std::vector<double> weighted;
    std::vector<double> alike;
    for (std::uint64_t seed = 1; seed <= 6; ++seed) {
      const Seen seen = NoisyViewsOf(camera, seed);
      weighted.push_back(SolvedFrom(seen, true, robust).K.at<double>(0, 0) - camera.lens.K()(0, 0));
      alike.push_back(SolvedFrom(seen, false).K.at<double>(0, 0) - camera.lens.K()(0, 0));
    }
    EXPECT_LT(RootMeanSquare(weighted), RootMeanSquare(alike) / 3.0) << robust;
  }
}

TEST(DeviatingPoints, AreNoOutliersWithinTheirDeviations) {
  const Seen seen = NoisyViewsOf(unit::DistortedCamera(), 3);
  EXPECT_LT(SolvedFrom(seen, true, true).rejected.size(), 6U);
  EXPECT_GT(SolvedFrom(seen, false, true).rejected.size(), 60U);
}

TEST(DeviatingPoints, AreOutliersByMoreThanThat) {
  Seen seen = NoisyViewsOf(unit::DistortedCamera(), 3);
  seen.views[4][7] += cv::Point2d(1.5, 0.0);  // one of those that are known well
  const SparseResult result = SolvedFrom(seen, true, true);
  const auto named = std::find_if(result.rejected.begin(), result.rejected.end(),
                                  [](const Rejected& item) { return item.view == 4 && item.point == 7; });
  ASSERT_NE(named, result.rejected.end());
  EXPECT_NEAR(named->residual, 1.5, 0.3) << "pixels";
}

TEST(DeviatingPoints, LeaveTheRmsOnesOfPixels) {
  const Seen seen = NoisyViewsOf(unit::DistortedCamera(), 5);
  for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL}) {
    const SparseResult result = SolvedFrom(seen, true, false, model);
    double all = 0.0;
    for (int i = 0; i < VIEWS; ++i) {
      std::vector<cv::Point2d> projected;
      cv::projectPoints(unit::Targets(1).front(), result.rvecs.at<cv::Vec3d>(i),
                        result.tvecs.at<cv::Vec3d>(i), result.K, result.D, projected);
      double squares = 0.0;
      const std::vector<cv::Point2d>& observed = seen.views[static_cast<size_t>(i)];
      for (size_t k = 0; k < observed.size(); ++k) {
        const cv::Point2d off = projected[k] - observed[k];
        squares += off.dot(off);
      }
      all += squares;
      EXPECT_NEAR(result.perViewErrors.at<double>(i), std::sqrt(squares / 44.0), 1e-4);
    }
    EXPECT_NEAR(result.rms, std::sqrt(all / (44.0 * VIEWS)), 1e-4);
    EXPECT_GT(result.rms, 0.4);
  }
}

TEST(DeviatingPoints, HaveFormalDeviationsOfTheUsualPoint) {
  // Were the pixels of all points taken for equally good, these would be several times as large.
  const Seen seen = NoisyViewsOf(unit::DistortedCamera(), 5);
  const double weighted = SolvedFrom(seen, true).stdDevIntrinsics.at<double>(0);
  const double alike = SolvedFrom(seen, false).stdDevIntrinsics.at<double>(0);
  EXPECT_LT(weighted, alike / 4.0);
  EXPECT_GT(weighted, alike / 10.0);
}

TEST(DeviatingPoints, ThatAreAllAlikeChangeNothing) {
  Seen seen = NoisyViewsOf(unit::DistortedCamera(), 2);
  for (std::vector<double>& view : seen.deviations) view.assign(view.size(), 0.02);
  for (const bool robust : {false, true}) {
    const SparseResult weighted = SolvedFrom(seen, true, robust);
    const SparseResult alike = SolvedFrom(seen, false, robust);
    EXPECT_SAME_MAT(weighted.K, alike.K);
    EXPECT_SAME_MAT(weighted.D, alike.D);
    EXPECT_SAME_MAT(weighted.stdDevIntrinsics, alike.stdDevIntrinsics);
    EXPECT_NEAR(weighted.rms, alike.rms, 1e-12);
    EXPECT_EQ(weighted.rejected.size(), alike.rejected.size());
  }
}

TEST(DeviatingPoints, CountInPairsToo) {
  const world::Pair rig = unit::RigFor(Calibrator::MODEL_CLASSIC);
  std::vector<double> weighted;
  std::vector<double> alike;
  std::vector<double> refined;
  std::vector<double> refinedAlike;
  for (std::uint64_t seed = 1; seed <= 4; ++seed) {
    const unit::PointPairs exact = unit::Observed(rig, VIEWS, seed, 0.0);
    const Seen left = WithNoise(exact.left, seed);
    const Seen right = WithNoise(exact.right, seed + 100);
    const auto targets = unit::Targets(left.views.size());
    const StereoIntrinsics lenses = unit::TruePairIntrinsics(rig);
    SparsePairOptions options;
    const auto errorOf = [&](const ExtrinsicsResult& result) { return cv::norm(result.T, cv::Mat(rig.T)); };
    const auto fixed = [&] {
      return SolveExtrinsicsSparsely(targets, left.views, right.views, lenses, Calibrator::MODEL_CLASSIC,
                                     options);
    };
    const auto moved = [&] {
      return RefinePairSparsely(targets, left.views, right.views, lenses, unit::FRAME,
                                Calibrator::MODEL_CLASSIC, options);
    };
    alike.push_back(errorOf(fixed()));
    refinedAlike.push_back(errorOf(moved()));
    options.deviations = {left.deviations, right.deviations};
    const ExtrinsicsResult result = fixed();
    weighted.push_back(errorOf(result));
    EXPECT_GT(result.rms, 0.4) << "of pixels";
    refined.push_back(errorOf(moved()));
  }
  EXPECT_LT(RootMeanSquare(weighted), RootMeanSquare(alike) / 2.0);
  EXPECT_LT(RootMeanSquare(refined), RootMeanSquare(refinedAlike) / 2.0);
}

TEST(DeviatingPoints, CountTheSameWhereTheShapeOfTheSheetIsKnown) {
  const Seen seen = NoisyViewsOf(unit::DistortedCamera(), 4);
  const SparseResult flat = SolvedFrom(seen, true);
  const solver::Target target =
      solver::TargetOf(unit::Targets(seen.views.size()), seen.views, seen.deviations);
  SparseOptions options;
  options.deviations = seen.deviations;
  const solver::BundleOptions bundle = solver::BundleOptionsOf(options, target, Calibrator::MODEL_CLASSIC);
  std::vector<cv::Point3d> known = unit::Targets(1).front();
  for (cv::Point3d& point : known) point -= cv::Point3d(target.middles.front());
  const solver::SheetShapes shapes = solver::KnownShapesOf(target.views, *flat.solution, known, bundle);
  ASSERT_GE(shapes.rungs.size(), 2U);
  const Solution& shaped = shapes.rungs[1].solution;
  EXPECT_NEAR(shaped.rig.cameras[0].intrinsics.values[FX], flat.K.at<double>(0, 0), 0.02);
  EXPECT_NEAR(shaped.cost, flat.solution->cost, 1e-4 * shaped.cost);
  EXPECT_NEAR(RmsOf(shaped), flat.rms, 1e-4);
  EXPECT_GT(RmsOf(shaped), 2.0 * std::sqrt(NoiseVariance(shaped)));
}

}  // namespace
