/// What the sparse solver rejects of damaged collections, and what is left then.
#include "solver/OutlierRejection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "Calibrator.h"
#include "Matchers.h"
#include "Views.h"
#include "model/TargetGeometry.h"
#include "solver/SparseIntrinsics.h"
#include "solver/WideViews.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

constexpr int VIEWS = 20;

unit::PointLists CleanViews(std::uint64_t seed) {
  const world::Camera camera = unit::DistortedCamera();
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  cv::RNG random(seed + 100);
  unit::PointLists views;
  for (const world::Pose& pose : world::SampleViews(camera, VIEWS, seed, sheet)) {
    views.push_back(world::TrueCentres(camera.lens, sheet, pose));
    for (cv::Point2d& centre : views.back()) {
      centre += cv::Point2d(random.gaussian(0.1), random.gaussian(0.1));
    }
  }
  return views;
}

SparseResult Robustly(const unit::PointLists& views, bool robust = true) {
  SparseOptions options;
  options.robust = robust;
  return SolveIntrinsicsSparsely({views.size(), MakeObjectTemplate(unit::GRID, unit::UNIT)}, views,
                                 unit::FRAME, Calibrator::MODEL_CLASSIC, options);
}

std::set<size_t> RejectedViews(const SparseResult& result) {
  std::set<size_t> views;
  for (const Rejected& rejected : result.rejected) {
    if (rejected.point == Rejected::WHOLE_VIEW) views.insert(rejected.view);
  }
  return views;
}

void AddNoise(std::vector<cv::Point2d>& points, double standardDeviation) {
  cv::RNG random(7);
  for (cv::Point2d& point : points) {
    point += cv::Point2d(random.gaussian(standardDeviation), random.gaussian(standardDeviation));
  }
}

class Damage : public ::testing::TestWithParam<std::uint64_t> {
 protected:
  unit::PointLists views_ = CleanViews(GetParam());
};

TEST_P(Damage, OfWholeViewsIsNamedAndWithoutEffect) {
  std::reverse(views_[3].begin(), views_[3].end());
  std::rotate(views_[8].begin(), views_[8].begin() + 1, views_[8].end());
  AddNoise(views_[12], 3.0);
  AddNoise(views_[17], 1.0);
  const SparseResult damaged = Robustly(views_);
  EXPECT_EQ(RejectedViews(damaged), (std::set<size_t>{3, 8, 12, 17}));
  EXPECT_EQ(damaged.rvecs.rows, VIEWS);
  EXPECT_EQ(damaged.perViewErrors.rows, VIEWS);
  EXPECT_GT(damaged.perViewErrors.at<double>(12), 2.0);

  unit::PointLists rest;
  for (size_t i = 0; i < views_.size(); ++i) {
    if (RejectedViews(damaged).count(i) == 0) rest.push_back(views_[i]);
  }
  const SparseResult without = Robustly(rest, false);
  if (damaged.rejected.size() == 4) {
    EXPECT_SAME_MAT(damaged.K, without.K);
    EXPECT_EQ(damaged.rms, without.rms);
  }
  EXPECT_MAT_NEAR(damaged.K, without.K, 0.3);
}

TEST_P(Damage, OfPointsIsNamedAndWithoutEffect) {
  const SparseResult clean = Robustly(views_, false);
  std::swap(views_[5][10], views_[5][11]);
  for (size_t k = 0; k < 5; ++k) views_[9][7 * k] += cv::Point2d(2.1, -2.1);
  const SparseResult damaged = Robustly(views_);
  std::set<std::pair<size_t, int>> named;
  for (const Rejected& rejected : damaged.rejected) named.insert({rejected.view, rejected.point});
  const std::set<std::pair<size_t, int>> expected = {{5, 10}, {5, 11}, {9, 0}, {9, 7},
                                                     {9, 14}, {9, 21}, {9, 28}};
  EXPECT_TRUE(std::includes(named.begin(), named.end(), expected.begin(), expected.end()));
  EXPECT_LE(named.size(), expected.size() + 1);  // of a thousand good points one may be beyond 4.5 deviations
  EXPECT_MAT_NEAR(damaged.K, clean.K, 0.3);
}

TEST_P(Damage, IsNotSeenWhereThereIsNone) {
  const SparseResult robust = Robustly(views_);
  EXPECT_TRUE(RejectedViews(robust).empty());
  EXPECT_LE(robust.rejected.size(), 1U);
  if (robust.rejected.empty()) {
    EXPECT_SAME_MAT(robust.K, Robustly(views_, false).K);
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Damage, ::testing::Values(11U, 12U, 13U));

TEST(OutlierRejection, NeverLeavesOutMostOfTheViews) {
  unit::PointLists views = CleanViews(14);
  views.resize(6);
  for (size_t i = 0; i < 4; ++i) std::reverse(views[i].begin(), views[i].end());
  const SparseResult result = Robustly(views);
  EXPECT_TRUE(RejectedViews(result).empty());
}

TEST(OutlierRejection, SaysWhenHalfOfAFewViewsStandAgainstTheOthers) {
  unit::PointLists views = CleanViews(14);
  views.resize(6);
  EXPECT_FALSE(Robustly(views).tooFewAgree);
  for (size_t i = 0; i < 3; ++i) AddNoise(views[i], 3.0);
  const SparseResult result = Robustly(views);
  EXPECT_TRUE(result.tooFewAgree);
  EXPECT_LE(RejectedViews(result).size(), 2U);
}

/// Moves a share of all points by some twenty pixels.
void Scatter(unit::PointLists& views, double share, std::uint64_t seed) {
  cv::RNG random(seed);
  for (auto& view : views) {
    for (cv::Point2d& point : view) {
      if (random.uniform(0.0, 1.0) < share)
        point += cv::Point2d(random.gaussian(20.0), random.gaussian(20.0));
    }
  }
}

class ScatteredOutliers : public ::testing::TestWithParam<double> {};

TEST_P(ScatteredOutliers, AreRejectedPointByPoint) {
  for (const std::uint64_t seed : {21U, 22U, 23U}) {
    const unit::PointLists clean = CleanViews(seed);
    unit::PointLists views = clean;
    Scatter(views, GetParam(), seed);
    const SparseResult result = Robustly(views);
    EXPECT_LT(unit::TrueErrorOf(result, unit::DistortedCamera(), clean), 0.25) << seed;
    EXPECT_LE(RejectedViews(result).size(), static_cast<size_t>(VIEWS) / 2) << seed;
    EXPECT_FALSE(result.tooFewAgree) << seed;
    const auto points = static_cast<double>(result.rejected.size());
    EXPECT_GT(points, 0.5 * GetParam() * VIEWS * unit::GRID.area()) << seed;
  }
}

INSTANTIATE_TEST_SUITE_P(Shares, ScatteredOutliers, ::testing::Values(0.1, 0.2, 0.3, 0.4));

struct FewViews {
  size_t views;
  size_t wrong;
};

class WrongViewsOfAFew : public ::testing::TestWithParam<FewViews> {};

TEST_P(WrongViewsOfAFew, AreOutvotedByTheOthers) {
  for (const std::uint64_t seed : {31U, 32U, 33U}) {
    unit::PointLists views = CleanViews(seed);
    views.resize(GetParam().views);
    const unit::PointLists clean = views;
    std::set<size_t> wrong;
    for (size_t i = 0; i < GetParam().wrong; ++i) {
      std::reverse(views[i].begin(), views[i].end());
      wrong.insert(i);
    }
    const SparseResult result = Robustly(views);
    EXPECT_EQ(RejectedViews(result), wrong) << seed;
    EXPECT_LT(unit::TrueErrorOf(result, unit::DistortedCamera(), clean), 1.0) << seed;
  }
}

INSTANTIATE_TEST_SUITE_P(Counts, WrongViewsOfAFew,
                         ::testing::Values(FewViews{5, 1}, FewViews{6, 1}, FewViews{6, 2}, FewViews{7, 3}));

TEST(OutlierRejection, IsTheSameForAnyNumberOfThreads) {
  unit::PointLists views = unit::CloseAndSmallViews(unit::FisheyeCamera(100.0), 6, 0.3, 5);
  std::reverse(views[3].begin(), views[3].end());
  Scatter(views, 0.1, 5);
  SparseOptions options;
  options.robust = true;
  const auto solve = [&](int threads) {
    options.threads = threads;
    return SolveIntrinsicsSparsely(unit::FlatTargets(views.size()), views, unit::FRAME,
                                   Calibrator::MODEL_RATIONAL, options);
  };
  const SparseResult one = solve(1);
  for (const int threads : {2, 5}) {
    const SparseResult many = solve(threads);
    EXPECT_SAME_MAT(one.K, many.K);
    EXPECT_SAME_MAT(one.D, many.D);
    EXPECT_EQ(one.rejected.size(), many.rejected.size());
  }
}

TEST(OutlierRejection, IsToldByACalibrator) {
  unit::PointLists views = CleanViews(11);
  views.resize(8);
  std::reverse(views[2].begin(), views[2].end());
  const auto calibrator = unit::CalibratorWith(views);
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC); }), "");
  const float plain = calibrator->GetRMS();
  calibrator->SetRobust(true);
  const std::string printed =
      unit::PrintedBy([&] { calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC); });
  EXPECT_NE(printed.find("WARN  : View 2 is left out: not the picture of a plane grid"), std::string::npos)
      << printed;
  EXPECT_LT(calibrator->GetRMS(), 0.3F);
  EXPECT_GT(plain, 1.0F);
  EXPECT_EQ(calibrator->GetPerViewErrors().rows, 8);
}

}  // namespace
