/// Which views are taken for images of a plane grid before the intrinsics are known.
#include "solver/Screening.h"

#include <gtest/gtest.h>

#include <set>

#include "Calibrator.h"
#include "solver/Target.h"
#include "solver/WideViews.h"

using namespace velmora;

namespace {

std::vector<TargetView> ViewsOf(const unit::PointLists& points) {
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

std::set<size_t> RejectedViews(const std::vector<Rejected>& rejected) {
  std::set<size_t> views;
  for (const Rejected& item : rejected) {
    if (item.point == Rejected::WHOLE_VIEW) views.insert(item.view);
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
    EXPECT_EQ(RejectedViews(robust.rejected), std::set<size_t>()) << wide.name;
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
    EXPECT_EQ(RejectedViews(Robustly(views, wide.model).rejected), (std::set<size_t>{1, 7, 15})) << wide.name;
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

}  // namespace
