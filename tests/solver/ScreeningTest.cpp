/// Which views are taken for pictures of a plane grid before the lens is known, and which are once it is.
#include "solver/Screening.h"

#include <gtest/gtest.h>

#include <set>

#include "Calibrator.h"
#include "solver/KnownLens.h"
#include "solver/Readmission.h"
#include "solver/Start.h"
#include "solver/Target.h"
#include "solver/WideViews.h"

using namespace velmora;

namespace {

std::vector<solver::View> ViewsOf(const unit::PointLists& points) {
  return solver::TargetOf(unit::FlatTargets(points.size()), points).views;
}

struct Wide {
  const char* name;
  world::Camera camera;
  int model;
  int close;
  double smallTo;
};

/// Lenses whose distortion bends views that fill the image by more than what small ones are measured against.
std::vector<Wide> WideLenses() {
  constexpr int CLASSIC = Calibrator::MODEL_CLASSIC;
  constexpr int RATIONAL = Calibrator::MODEL_RATIONAL;
  const auto classic = [](double degrees, double k1, double k2) {
    return world::CameraFromFieldOfView(unit::FRAME, degrees, {k1, k2, 0.0, 0.0});
  };
  return {{"60 degrees", classic(60.0, -0.2, 0.05), CLASSIC, 6, 0.3},
          {"70 degrees", classic(70.0, -0.3, 0.1), CLASSIC, 6, 0.3},
          {"80 degrees", classic(80.0, -0.28, 0.08), CLASSIC, 6, 0.2},
          {"fisheye of 90 degrees", unit::FisheyeCamera(90.0), RATIONAL, 6, 0.3},
          {"fisheye of 120 degrees", unit::FisheyeCamera(120.0), RATIONAL, 9, 0.2}};
}

std::set<size_t> ViewsLeftOut(const std::vector<solver::Rejected>& rejected) {
  std::set<size_t> views;
  for (const solver::Rejected& item : rejected) {
    if (item.point == solver::Rejected::WHOLE_VIEW) views.insert(item.view);
  }
  return views;
}

SparseResult Robustly(const unit::PointLists& views, int model, bool robust = true) {
  SparseOptions options;
  options.robust = robust;
  return SolveIntrinsicsSparsely(unit::FlatTargets(views.size()), views, unit::FRAME, model, options);
}

TEST(Screening, KeepsViewsThatFillTheImageOfAWideLens) {
  for (const Wide& wide : WideLenses()) {
    size_t screened = 0;
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
      const auto views = ViewsOf(unit::CloseAndSmallViews(wide.camera, wide.close, wide.smallTo, seed));
      screened += solver::Screened(views, unit::FRAME).rejected.size();
    }
    EXPECT_LE(screened, 1U) << wide.name << ", of 100";
  }
}

TEST(Screening, LeavesThoseViewsToTheCamera) {
  for (const Wide& wide : WideLenses()) {
    const auto views = unit::CloseAndSmallViews(wide.camera, wide.close, wide.smallTo, 6);
    const SparseResult robust = Robustly(views, wide.model);
    EXPECT_EQ(ViewsLeftOut(robust.rejected), std::set<size_t>()) << wide.name;
    EXPECT_LT(unit::TrueErrorOf(robust, wide.camera, views),
              1.5 * unit::TrueErrorOf(Robustly(views, wide.model, false), wide.camera, views) + 0.02)
        << wide.name;
  }
}

TEST(Screening, FindsViewsInAWrongOrderBesideThem) {
  for (const Wide& wide : WideLenses()) {
    auto views = unit::CloseAndSmallViews(wide.camera, wide.close, wide.smallTo, 7);
    std::reverse(views[1].begin(), views[1].end());
    std::reverse(views[15].begin(), views[15].end());
    std::rotate(views[7].begin(), views[7].begin() + 1, views[7].end());
    EXPECT_EQ(ViewsLeftOut(Robustly(views, wide.model).rejected), (std::set<size_t>{1, 7, 15})) << wide.name;
  }
}

TEST(Screening, OfThreeViewsKeepsAllAndSaysSo) {
  auto points = unit::CloseAndSmallViews(unit::DistortedCamera(), 3, 0.2, 8);
  points.resize(3);
  std::rotate(points[1].begin(), points[1].begin() + 1, points[1].end());
  const solver::Selection selection = solver::Screened(ViewsOf(points), unit::FRAME);
  EXPECT_EQ(selection.kept, (std::vector<size_t>{0, 1, 2}));
  EXPECT_TRUE(selection.rejected.empty());
  EXPECT_TRUE(selection.tooFewAgree);
}

TEST(AreEnough, AreHalfOfManyAndMostOfAFew) {
  EXPECT_TRUE(solver::AreEnough(10, 20));
  EXPECT_FALSE(solver::AreEnough(9, 20));
  EXPECT_TRUE(solver::AreEnough(5, 10));
  EXPECT_TRUE(solver::AreEnough(4, 5));
  EXPECT_TRUE(solver::AreEnough(4, 6));
  EXPECT_TRUE(solver::AreEnough(4, 7));
  EXPECT_FALSE(solver::AreEnough(4, 8));
  EXPECT_FALSE(solver::AreEnough(3, 6));
  EXPECT_TRUE(solver::AreEnough(3, 5));
  EXPECT_FALSE(solver::AreEnough(2, 3));
}

/// All views of a camera, some of them left out, and the true lens.
struct LeftOut {
  std::vector<solver::View> views;
  solver::Selection selection;
  solver::Estimate estimate;
};

LeftOut Without(const unit::PointLists& points, const std::set<size_t>& out, const SparseResult& lens) {
  LeftOut left;
  left.views = ViewsOf(points);
  for (int i = 0; i < 4; ++i) {
    left.estimate.lens.values[static_cast<size_t>(i)] = lens.K.at<double>(i % 2, i < 2 ? i : 2);
  }
  for (int i = 0; i < 5; ++i) left.estimate.lens.values[static_cast<size_t>(4 + i)] = lens.D.at<double>(i);
  for (size_t i = 0; i < left.views.size(); ++i) {
    if (out.count(i) > 0) {
      left.selection.rejected.push_back({i, solver::Rejected::WHOLE_VIEW, 9.0, "no grid"});
      continue;
    }
    left.selection.kept.push_back(i);
    left.selection.views.push_back(left.views[i]);
    left.estimate.poses.push_back(solver::StartPoseOf(left.views[i], left.estimate.lens));
  }
  return left;
}

TEST(Readmission, TakesBackViewsThatFitTheLensAndNoOthers) {
  auto points = unit::CloseAndSmallViews(unit::DistortedCamera(), 6, 0.3, 9);
  const SparseResult lens = Robustly(points, Calibrator::MODEL_CLASSIC, false);
  std::reverse(points[4].begin(), points[4].end());
  LeftOut left = Without(points, {2, 4, 19}, lens);
  ASSERT_TRUE(solver::Readmit(left.views, unit::FRAME, left.selection, left.estimate));
  EXPECT_EQ(ViewsLeftOut(left.selection.rejected), (std::set<size_t>{4}));
  EXPECT_EQ(left.selection.kept.size(), 19U);
  EXPECT_TRUE(std::is_sorted(left.selection.kept.begin(), left.selection.kept.end()));
  EXPECT_EQ(left.selection.views[2].image, left.views[2].image);
  ASSERT_EQ(left.estimate.poses.size(), 19U);
  // The poses taken along are those of the views: the last one's is where its own start is, nearly.
  EXPECT_LT(
      cv::norm(left.estimate.poses.back().t - solver::StartPoseOf(left.views[19], left.estimate.lens).t),
      0.1);
}

TEST(Readmission, IsNoneWhereNothingFits) {
  auto points = unit::CloseAndSmallViews(unit::DistortedCamera(), 6, 0.3, 9);
  const SparseResult lens = Robustly(points, Calibrator::MODEL_CLASSIC, false);
  std::reverse(points[4].begin(), points[4].end());
  LeftOut left = Without(points, {4}, lens);
  EXPECT_FALSE(solver::Readmit(left.views, unit::FRAME, left.selection, left.estimate));
  EXPECT_EQ(left.selection.kept.size(), 19U);
}

TEST(KnownLens, HasThePosesOfLeastSquares) {
  const auto points = unit::CloseAndSmallViews(unit::DistortedCamera(), 6, 0.3, 9);
  const SparseResult lens = Robustly(points, Calibrator::MODEL_CLASSIC, false);
  const LeftOut all = Without(points, {}, lens);
  const solver::Solution solution = solver::SolvePoses(all.views, all.estimate);
  ASSERT_TRUE(solution.usable);
  EXPECT_EQ(solution.estimate.lens.values, all.estimate.lens.values);
  EXPECT_NEAR(std::sqrt(solution.squares / (44.0 * 20.0)), lens.rms, 1e-6);
}

}  // namespace
