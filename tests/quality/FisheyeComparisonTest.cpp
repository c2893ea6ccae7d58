/// When a fisheye is better than other lenses.
#include "quality/FisheyeComparison.h"

#include <gtest/gtest.h>

#include <limits>

#include "Calibrator.h"
#include "quality/ModelComparison.h"
#include "unit/FisheyeViews.h"

using namespace velmora;

namespace {

constexpr int RATIONAL = Calibrator::MODEL_RATIONAL;

FisheyeComparison Compared(const unit::PointLists& views, bool robust = false) {
  SparseOptions options;
  options.robust = robust;
  return CompareWithFisheye({views.size(), MakeObjectTemplate(unit::GRID, unit::UNIT)}, views,
                            unit::FISHEYE_FRAME, RATIONAL, options);
}

TEST(FisheyeComparison, TellsThatAWideLensIsOne) {
  const unit::PointLists views = unit::FisheyeViews(180.0, 15, 0.1, 1);
  const FisheyeComparison compared = Compared(views);
  ASSERT_TRUE(compared.computed);
  EXPECT_NEAR(compared.fisheye.rms, 0.14, 0.02);
  EXPECT_NEAR(compared.widest, unit::WidestAngleOf(180.0, views), 0.1);
  if (compared.planeComputed) {
    EXPECT_LT(compared.fisheye.criterion, compared.plane.criterion);
  }
}

TEST(FisheyeComparison, IsOfTheSamePointsForBoth) {
  unit::PointLists views = unit::FisheyeViews(110.0, 15, 0.1, 2);
  for (size_t i = 0; i < 4; ++i) views[i][5 * i] += cv::Point2d(7.0, 6.0);
  const FisheyeComparison compared = Compared(views, true);
  ASSERT_TRUE(compared.computed);
  ASSERT_TRUE(compared.planeComputed);
  EXPECT_NEAR(compared.fisheye.rms, 0.14, 0.02);
  EXPECT_NEAR(compared.plane.rms, 0.14, 0.03);
}

TEST(FisheyeComparison, IsNoneOfViewsThatAreNoImagesOfAGrid) {
  unit::PointLists views = unit::FisheyeViews(110.0, 6, 0.1, 3);
  cv::RNG random(5);
  for (auto& view : views) {
    for (cv::Point2d& point : view) point = {random.uniform(0.0, 1280.0), random.uniform(0.0, 960.0)};
  }
  const FisheyeComparison compared = Compared(views);
  EXPECT_TRUE(!compared.computed || compared.fisheye.rms > 50.0);
}

FisheyeComparison Numbers(double criterion, double unseen, double widest) {
  FisheyeComparison compared;
  compared.computed = true;
  compared.planeComputed = true;
  compared.fisheye = {0, 0.1, criterion, unseen, true};
  compared.plane = {RATIONAL, 0.2, 0.0, 1.0, true};
  compared.widest = widest;
  return compared;
}

ModelChoice Rational() {
  ModelChoice choice;
  choice.model = RATIONAL;
  return choice;
}

TEST(FisheyeComparison, DecidesByTheCriterionAndByViewsThatWereNotSeen) {
  EXPECT_TRUE(ChooseWithFisheye(Rational(), Numbers(-1.0, 0.9, 70.0)).prefersFisheye);
  EXPECT_FALSE(ChooseWithFisheye(Rational(), Numbers(1.0, 0.9, 70.0)).prefersFisheye);
  EXPECT_FALSE(ChooseWithFisheye(Rational(), Numbers(-1.0, 1.1, 70.0)).prefersFisheye);
  const ModelChoice chosen = ChooseWithFisheye(Rational(), Numbers(-1.0, 0.9, 70.0));
  EXPECT_EQ(chosen.Name(), "fisheye");
  EXPECT_EQ(chosen.model, RATIONAL);
  EXPECT_EQ(
      chosen.reasons.back(),
      "The fisheye model is better than the rational one: RMS 0.1000 instead of 0.2000 px, of views that it "
      "did not see 0.9000 instead of 1.0000 px.");
}

TEST(FisheyeComparison, LeavesNarrowLensesToOtherModels) {
  const ModelChoice choice = ChooseWithFisheye(Rational(), Numbers(-100.0, 0.5, 31.4));
  EXPECT_FALSE(choice.prefersFisheye);
  EXPECT_EQ(choice.reasons.back(),
            "The fisheye model is not better than the rational one: no point is more than 31 degrees off the "
            "axis.");
}

TEST(FisheyeComparison, TakesTheFisheyeWhereTheOtherModelCannotBeComputed) {
  FisheyeComparison compared = Numbers(0.0, std::numeric_limits<double>::infinity(), 80.0);
  compared.planeComputed = false;
  const ModelChoice choice = ChooseWithFisheye(Rational(), compared);
  EXPECT_TRUE(choice.prefersFisheye);
  EXPECT_EQ(choice.reasons.back(), "The views fit a fisheye, but no rational model.");
  EXPECT_FALSE(ChooseWithFisheye(Rational(), {}).prefersFisheye);
}

}  // namespace
