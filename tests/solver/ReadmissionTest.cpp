/// Which views come back once the camera is known.
#include "solver/Readmission.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "Calibrator.h"
#include "solver/Initialisation.h"
#include "solver/OpenCvMatrices.h"
#include "solver/Target.h"
#include "solver/WideViews.h"

using namespace velmora;

namespace {

std::vector<TargetView> ViewsOf(const unit::PointLists& points) {
  return solver::TargetOf(unit::FlatTargets(points.size()), points).views;
}

std::set<size_t> RejectedViews(const std::vector<Rejected>& rejected) {
  std::set<size_t> views;
  for (const Rejected& item : rejected) {
    if (item.point == Rejected::WHOLE_VIEW) views.insert(item.view);
  }
  return views;
}

/// The camera that all of the points show.
Camera CameraOf(const unit::PointLists& points) {
  Camera camera;
  camera.imageSize = unit::FRAME;
  camera.intrinsics = solver::IntrinsicsOf(SolveIntrinsicsSparsely(unit::FlatTargets(points.size()), points,
                                                                   unit::FRAME, Calibrator::MODEL_CLASSIC));
  return camera;
}

/// All views of the camera, some of them rejected.
struct LeftOut {
  std::vector<TargetView> views;
  solver::Selection selection;
};

LeftOut Without(const unit::PointLists& points, const std::set<size_t>& out, const Camera& camera) {
  LeftOut left;
  left.views = ViewsOf(points);
  for (size_t i = 0; i < left.views.size(); ++i) {
    if (out.count(i) > 0) {
      left.selection.rejected.push_back({i, Rejected::WHOLE_VIEW, 9.0, "no grid"});
      continue;
    }
    left.selection.kept.push_back(i);
    left.selection.views.push_back(left.views[i]);
    left.selection.views.back().rigFromTarget =
        solver::StartPoseOf(left.views[i].observations.front(), camera.intrinsics);
  }
  return left;
}

TEST(Readmission, TakesBackViewsThatFitTheCameraAndNoOthers) {
  auto points = unit::CloseAndSmallViews(unit::DistortedCamera(), 6, 0.3, 9);
  const Camera camera = CameraOf(points);
  std::reverse(points[4].begin(), points[4].end());
  LeftOut left = Without(points, {2, 4, 19}, camera);
  ASSERT_TRUE(solver::Readmit(left.views, camera, left.selection));
  EXPECT_EQ(RejectedViews(left.selection.rejected), (std::set<size_t>{4}));
  EXPECT_EQ(left.selection.kept.size(), 19U);
  EXPECT_TRUE(std::is_sorted(left.selection.kept.begin(), left.selection.kept.end()));
  ASSERT_EQ(left.selection.views.size(), 19U);
  EXPECT_EQ(left.selection.views[2].observations[0].image, left.views[2].observations[0].image);
  // The poses taken along are those of the views: the last one's is where its own start is, nearly.
  const RigidTransform start = solver::StartPoseOf(left.views[19].observations.front(), camera.intrinsics);
  EXPECT_LT(cv::norm(left.selection.views.back().rigFromTarget.t - start.t), 0.1);
}

TEST(Readmission, IsNoneWhereNothingFits) {
  auto points = unit::CloseAndSmallViews(unit::DistortedCamera(), 6, 0.3, 9);
  const Camera camera = CameraOf(points);
  std::reverse(points[4].begin(), points[4].end());
  LeftOut left = Without(points, {4}, camera);
  EXPECT_FALSE(solver::Readmit(left.views, camera, left.selection));
  EXPECT_EQ(left.selection.kept.size(), 19U);
}

}  // namespace
