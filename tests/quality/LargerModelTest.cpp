/// Which larger lens model a result is advised to take.
#include "quality/LargerModel.h"

#include <gtest/gtest.h>

#include "Calibrator.h"
#include "solver/WideViews.h"

using namespace velmora;

namespace {

constexpr int CLASSIC = Calibrator::MODEL_CLASSIC;
constexpr int RATIONAL = Calibrator::MODEL_RATIONAL;

SparseResult Solve(const unit::PointLists& views, int model, bool robust = false) {
  SparseOptions options;
  options.robust = robust;
  return SolveIntrinsicsSparsely(unit::FlatTargets(views.size()), views, unit::FRAME, model, options);
}

unit::PointLists FisheyeViews() {
  return unit::CloseAndSmallViews(unit::FisheyeCamera(100.0), 9, 0.4, 1);
}

TEST(LargerModel, IsThatOfTheChoice) {
  const auto name = [](const unit::PointLists& views, int model) {
    const auto targets = unit::FlatTargets(views.size());
    return LargerModel(targets, views, unit::FRAME, Solve(views, model, true), 0.0).Name();
  };
  EXPECT_EQ(name(FisheyeViews(), CLASSIC), "rational");
  EXPECT_EQ(name(FisheyeViews(), RATIONAL), "");
  const auto classic = unit::CloseAndSmallViews(unit::DistortedCamera(), 9, 0.4, 1);
  EXPECT_EQ(name(classic, CLASSIC), "");
  EXPECT_EQ(name(classic, RATIONAL), "");
}

TEST(LargerModel, IsAskedForOnce) {
  unit::PointLists views = FisheyeViews();
  const auto targets = unit::FlatTargets(views.size());
  LargerModel larger(targets, views, unit::FRAME, Solve(views, CLASSIC), 0.0);
  EXPECT_EQ(larger.Name(), "rational");
  views.clear();
  EXPECT_EQ(larger.Name(), "rational");
}

TEST(LargerModel, LeavesOutWhatDisagreesAsTheResultDid) {
  unit::PointLists views = FisheyeViews();
  std::reverse(views[3].begin(), views[3].end());
  std::reverse(views[12].begin(), views[12].end());
  const auto targets = unit::FlatTargets(views.size());
  const SparseResult robust = Solve(views, CLASSIC, true);
  ASSERT_FALSE(robust.rejected.empty());
  EXPECT_EQ(LargerModel(targets, views, unit::FRAME, robust, 0.0).Name(), "rational");
}

TEST(LargerModel, IsNoneWhereNothingCanBeComputed) {
  const unit::PointLists views = FisheyeViews();
  const auto targets = unit::FlatTargets(views.size() - 1);  // not those of the views
  EXPECT_EQ(LargerModel(targets, views, unit::FRAME, Solve(views, CLASSIC), 0.0).Name(), "");
}

}  // namespace
