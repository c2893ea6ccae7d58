/// The records of a calibrator as the solver takes them.
#include "solver/Target.h"

#include <gtest/gtest.h>

#include <cmath>

#include "model/TargetGeometry.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

std::vector<std::vector<cv::Point3d>> Targets(size_t count) {
  return std::vector<std::vector<cv::Point3d>>(count, MakeObjectTemplate(unit::GRID, unit::UNIT));
}

TEST(Target, IsCentredAndHasItsPixelsInSinglePrecision) {
  const auto views = unit::NoisyViews(2);
  const solver::Target target = solver::TargetOf(Targets(2), views);
  cv::Point3d sum;
  for (const cv::Point3d& point : target.views[1].observations[0].object) sum += point;
  EXPECT_LT(cv::norm(sum), 1e-14);
  EXPECT_NEAR(target.middles[1][0], 3.5 * static_cast<double>(unit::UNIT), 0.1);
  EXPECT_EQ(target.views[1].observations[0].image[3].x,
            static_cast<double>(static_cast<float>(views[1][3].x)));
}

TEST(Target, FarFromItsOriginIsTheSameTarget) {
  const auto views = unit::NoisyViews(1);
  auto far = Targets(1);
  for (cv::Point3d& point : far.front()) point += cv::Point3d(1e5, -1e5, 0.0);
  const auto near = solver::TargetOf(Targets(1), views).views[0].observations[0].object;
  const solver::Target target = solver::TargetOf(far, views);
  EXPECT_NEAR(target.middles[0][0], 1e5 + 3.5 * static_cast<double>(unit::UNIT), 0.1);
  for (size_t k = 0; k < near.size(); ++k) {
    EXPECT_LT(cv::norm(target.views[0].observations[0].object[k] - near[k]), 1e-9);
  }
}

TEST(Target, RaisesForRecordsThatNoCameraHas) {
  const auto views = unit::NoisyViews(5);
  auto uneven = views;
  uneven.back().pop_back();
  auto endless = views;
  endless.back().back().x = std::nan("");
  auto bent = Targets(5);
  bent.back().back().z = 0.01;
  EXPECT_THROW(solver::TargetOf({}, solver::ImagePoints()), cv::Exception);
  EXPECT_THROW(solver::TargetOf(Targets(4), views), cv::Exception);
  EXPECT_THROW(solver::TargetOf(Targets(5), uneven), cv::Exception);
  EXPECT_THROW(solver::TargetOf(Targets(5), endless), cv::Exception);
  EXPECT_THROW(solver::TargetOf(bent, views), cv::Exception);
}

TEST(Target, OfSeveralCamerasHasEmptyObservationsWhereOneDidNotSeeAView) {
  const auto views = unit::NoisyViews(3);
  solver::ImagePoints second = views;
  second[1].clear();
  const solver::Target target = solver::TargetOf(Targets(3), std::vector<solver::ImagePoints>{views, second});
  ASSERT_EQ(target.views.size(), 3U);
  ASSERT_EQ(target.views[1].observations.size(), 2U);
  EXPECT_EQ(target.views[1].observations[0].Count(), 44.0);
  EXPECT_TRUE(target.views[1].observations[1].IsEmpty());
  EXPECT_EQ(target.views[2].observations[1].Count(), 44.0);
  solver::ImagePoints first = views;
  first[1].clear();
  EXPECT_THROW(solver::TargetOf(Targets(3), std::vector<solver::ImagePoints>{first, second}), cv::Exception);
  EXPECT_THROW(solver::TargetOf(Targets(3), first), cv::Exception);
}

TEST(Target, HasTheDeviationsOfPointsBesideEachOther) {
  const auto views = unit::NoisyViews(3);
  solver::PointDeviations deviations(3, std::vector<double>(44, 0.02));
  deviations[1][7] = 0.2;
  deviations[2].clear();
  const solver::Target target = solver::TargetOf(Targets(3), views, deviations);
  EXPECT_EQ(target.deviations, std::vector<solver::PointDeviations>{deviations});
  EXPECT_EQ(target.views[0].observations[0].deviations, std::vector<double>(44, 1.0));
  EXPECT_GT(target.views[1].observations[0].deviations[7], 5.0);
  EXPECT_EQ(target.views[1].observations[0].Weight(6), 1.0);
  EXPECT_TRUE(target.views[2].observations[0].deviations.empty());
  EXPECT_TRUE(solver::TargetOf(Targets(3), views).views[0].observations[0].deviations.empty());
}

TEST(Target, RaisesForDeviationsThatAreNotThoseOfItsPoints) {
  const auto views = unit::NoisyViews(3);
  const solver::PointDeviations right(3, std::vector<double>(44, 0.02));
  solver::PointDeviations wrong = right;
  wrong[1].pop_back();
  EXPECT_THROW(solver::TargetOf(Targets(3), views, wrong), cv::Exception);
  wrong = right;
  wrong.pop_back();
  EXPECT_THROW(solver::TargetOf(Targets(3), views, wrong), cv::Exception);
  wrong = right;
  wrong[0][0] = -0.01;
  EXPECT_THROW(solver::TargetOf(Targets(3), views, wrong), cv::Exception);
  EXPECT_THROW(solver::PairTargetOf(Targets(3), views, views, {right, right, right}), cv::Exception);
}

TEST(Target, OfAPairLeavesOutImagePointsBeyondTheObjectPoints) {
  const auto views = unit::NoisyViews(2);
  auto longer = views;
  longer[0].emplace_back(1.0, 2.0);
  const solver::Target target = solver::PairTargetOf(Targets(2), views, longer);
  EXPECT_EQ(target.views[0].observations[1].image.size(), 44U);
  const solver::PointDeviations deviations = {std::vector<double>(45, 0.02), std::vector<double>(44, 0.02)};
  const solver::Target known = solver::PairTargetOf(Targets(2), views, longer, {{}, deviations});
  EXPECT_EQ(known.views[0].observations[1].deviations.size(), 44U);
  auto shorter = views;
  shorter[1].pop_back();
  EXPECT_THROW(solver::PairTargetOf(Targets(2), views, shorter), cv::Exception);
  shorter[1].clear();
  EXPECT_THROW(solver::PairTargetOf(Targets(2), views, shorter), cv::Exception);
}

TEST(Target, RaisesForFewerThanFourPoints) {
  auto objects = Targets(1);
  objects[0].resize(4);
  auto views = unit::NoisyViews(1);
  views[0].resize(4);
  EXPECT_EQ(solver::TargetOf(objects, views).views.size(), 1U);
  objects[0].resize(3);
  views[0].resize(3);
  EXPECT_THROW(solver::TargetOf(objects, views), cv::Exception);
}

}  // namespace
