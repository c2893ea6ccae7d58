/// Shapes of sheets that are estimated beside those that the views were made with.
#include "solver/SheetLadder.h"

#include <gtest/gtest.h>

#include <Eigen/Cholesky>
#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "LensError.h"
#include "solver/CameraCalibration.h"
#include "solver/ShapedViews.h"
#include "solver/Target.h"

using namespace velmora;
using solver::SheetRung;
using unit::ShapedSheet;

namespace {

solver::BundleOptions Options() {
  solver::BundleOptions options;
  options.parameters = CLASSIC_PARAMETERS;
  return options;
}

Solution FlatSolution(const unit::PointLists& views, bool robust = false) {
  return solver::CalibrateCamera(solver::TargetOf(unit::Targets(views), views).views, unit::FRAME, robust,
                                 Options());
}

std::vector<SheetRung> Rungs(const unit::PointLists& views) {
  return solver::ClimbSheet(FlatSolution(views), SheetLevel::FreePointsProportions, Options());
}

unit::PointLists Views(const ShapedSheet& sheet, std::uint64_t seed, int count = 15, double noise = 0.1) {
  return unit::ViewsOf(sheet, unit::DistortedCamera(), count, noise, seed);
}

/// How far projections are off where the views are, pixels.
double ErrorOf(const Solution& solution, const unit::PointLists& views) {
  const auto& values = solution.rig.cameras.front().intrinsics.values;
  const world::Lens lens(cv::Matx33d(values[FX], 0.0, values[CX], 0.0, values[FY], values[CY], 0.0, 0.0, 1.0),
                         std::vector<double>(values.begin() + K1, values.begin() + CLASSIC_PARAMETERS));
  return world::MeanProjectionDistance(unit::DistortedCamera().lens, lens, unit::FRAME,
                                       world::CoveredRegion(views), world::Alignment::Rotated)
      .rms;
}

const SheetRung& RungOf(const std::vector<SheetRung>& rungs, SheetLevel level, bool ownBends = false) {
  for (const SheetRung& rung : rungs) {
    if (rung.level == level && rung.ownBends == ownBends) return rung;
  }
  throw std::runtime_error("there is no such rung");
}

bool IsAllowed(const std::vector<SheetRung>& rungs, SheetLevel level, bool ownBends = false) {
  for (const size_t i : solver::AllowedOf(rungs)) {
    if (rungs[i].level == level && rungs[i].ownBends == ownBends) return true;
  }
  return false;
}

/// The heights of points about the plane that fits them best, by terms that know no more than that.
Eigen::VectorXd HeightsOf(const std::vector<cv::Point3d>& points) {
  const auto count = static_cast<Eigen::Index>(points.size());
  Eigen::MatrixXd plane(count, 3);
  Eigen::VectorXd heights(count);
  for (Eigen::Index i = 0; i < count; ++i) {
    const cv::Point3d& point = points[static_cast<size_t>(i)];
    plane.row(i) << 1.0, point.x, point.y;
    heights(i) = point.z;
  }
  return heights - plane * (plane.transpose() * plane).ldlt().solve(plane.transpose() * heights);
}

TEST(SheetLadder, FindsNoShapeOfAFlatSheet) {
  for (std::uint64_t seed = 1; seed <= 8; ++seed) {
    const std::vector<SheetRung> rungs = Rungs(Views({}, seed));
    EXPECT_EQ(rungs.size(), 8U);
    EXPECT_EQ(solver::AllowedOf(rungs), std::vector<size_t>{0}) << seed;
  }
}

TEST(SheetLadder, FindsTheBendThatIsThere) {
  ShapedSheet sheet;
  sheet.bend = {0.0004, -0.0003, 0.001};
  for (std::uint64_t seed = 1; seed <= 4; ++seed) {
    const unit::PointLists views = Views(sheet, seed);
    const std::vector<SheetRung> rungs = Rungs(views);
    ASSERT_TRUE(IsAllowed(rungs, SheetLevel::Bent)) << seed;
    const Solution& bent = RungOf(rungs, SheetLevel::Bent).solution;
    EXPECT_TRUE(bent.converged);
    cv::RNG random(0);
    const Eigen::VectorXd truth = HeightsOf(unit::PointsOf(sheet, random));
    const Eigen::VectorXd found = HeightsOf(bent.views.front().observations.front().object);
    EXPECT_LT((found - truth).norm() / truth.norm(), 0.1) << seed;
    EXPECT_LT(ErrorOf(bent, views), 0.25 * ErrorOf(rungs.front().solution, views)) << seed;
    EXPECT_NEAR(std::sqrt(NoiseVariance(bent)), 0.1, 0.01);
    EXPECT_FALSE(IsAllowed(rungs, SheetLevel::FreePoints)) << seed;
  }
}

TEST(SheetLadder, FindsProportionsAndPointsBesideTheirPlaces) {
  ShapedSheet sheet;
  sheet.bend = {0.0, 0.0005, 0.0005};
  sheet.stretch = 0.004;
  sheet.misprint = 0.0001;
  for (std::uint64_t seed = 1; seed <= 4; ++seed) {
    const unit::PointLists views = Views(sheet, seed, 20, 0.05);
    const std::vector<SheetRung> rungs = Rungs(views);
    ASSERT_TRUE(IsAllowed(rungs, SheetLevel::FreePointsProportions)) << seed;
    const SheetRung& free = RungOf(rungs, SheetLevel::FreePointsProportions);
    EXPECT_LT(ErrorOf(free.solution, views), 0.3 * ErrorOf(rungs.front().solution, views)) << seed;
    EXPECT_NEAR(std::sqrt(NoiseVariance(free.solution)), 0.05, 0.005) << seed;
    const double half = 0.1;
    EXPECT_NEAR(free.solution.sheet.values.tail(2)(0) / half, 0.004, 0.001) << seed;
    // What is known of the points beforehand takes off some of their numbers.
    EXPECT_LT(free.solution.sheet.counted, 125.0);
    EXPECT_GT(free.solution.sheet.counted, 60.0);
  }
}

TEST(SheetLadder, FindsHowFarThePrintIsBesideItsPlaces) {
  for (const double misprint : {0.00003, 0.00015}) {
    ShapedSheet sheet;
    sheet.misprint = misprint;
    const auto rungs = Rungs(Views(sheet, 21, 25, 0.03));
    const SheetTerms& terms = RungOf(rungs, SheetLevel::FreePoints).solution.sheet.terms;
    ASSERT_GT(terms.freePlaces, 0);
    const double found = terms.deviations(terms.firstFreePlace);
    EXPECT_GT(found, 0.75 * misprint);
    EXPECT_LT(found, 1.3 * misprint);
  }
}

TEST(SheetLadder, FindsNoPrintBesideItsPlacesWhereThereIsNone) {
  const auto rungs = Rungs(Views({}, 22, 25, 0.03));
  const SheetTerms& terms = RungOf(rungs, SheetLevel::FreePoints).solution.sheet.terms;
  EXPECT_LT(terms.deviations(terms.firstFreePlace), 0.00001);
}

TEST(SheetLadder, FindsThatTheBendChangesFromViewToView) {
  ShapedSheet sheet;
  sheet.bend = {0.0, 0.0, 0.0005};
  sheet.changing = 0.0003;
  for (std::uint64_t seed = 1; seed <= 4; ++seed) {
    const unit::PointLists views = Views(sheet, seed, 24);
    const std::vector<SheetRung> rungs = Rungs(views);
    const size_t best = static_cast<size_t>(
        std::min_element(rungs.begin(), rungs.end(),
                         [](const SheetRung& a, const SheetRung& b) { return a.criterion < b.criterion; }) -
        rungs.begin());
    ASSERT_TRUE(rungs[best].ownBends) << seed;
    const Solution& changing = rungs[best].solution;
    EXPECT_NEAR(changing.sheet.ownBend.deviations.norm(), std::sqrt(3.0) * 0.0003, 0.00018) << seed;
    EXPECT_LT(ErrorOf(changing, views), 0.4 * ErrorOf(rungs.front().solution, views)) << seed;
    EXPECT_NEAR(std::sqrt(NoiseVariance(changing)), 0.1, 0.015) << seed;
  }
}

TEST(SheetLadder, IsOfTargetsThatShowPartsOfOneAnother) {
  ShapedSheet sheet;
  sheet.bend = {0.0, 0.0, 0.001};
  unit::PointLists views = Views(sheet, 3);
  auto targets = unit::Targets(views);
  for (size_t i = 0; i < views.size(); i += 3) {
    targets[i].erase(targets[i].begin() + 2, targets[i].begin() + 6);
    views[i].erase(views[i].begin() + 2, views[i].begin() + 6);
  }
  solver::Target target = solver::TargetOf(targets, views);
  ASSERT_TRUE(solver::HasOneTarget(target.views));
  const Solution flat = solver::CalibrateCamera(target.views, unit::FRAME, false, Options());
  const auto rungs = solver::ClimbSheet(flat, SheetLevel::Bent, Options());
  const Solution& bent = RungOf(rungs, SheetLevel::Bent).solution;
  EXPECT_NEAR(std::sqrt(NoiseVariance(bent)), 0.1, 0.01);
  target.views.front().observations.front().object.front().x += 0.001;
  EXPECT_FALSE(solver::HasOneTarget(target.views));
  EXPECT_FALSE(solver::HasOneTarget({}));
}

TEST(SheetLadder, EndsSoonOnceItIsGivenUp) {
  ShapedSheet sheet;
  sheet.bend = {0.0, 0.0, 0.001};
  const Solution flat = FlatSolution(Views(sheet, 1));
  solver::BundleOptions options = Options();
  int told = 0;
  options.progress = [&](int, double) { return ++told < 3; };
  solver::ClimbSheet(flat, SheetLevel::FreePointsProportions, options);
  EXPECT_EQ(told, 3);
}

}  // namespace
