/// Sheets as sums of terms.
#include "model/Sheet.h"

#include <gtest/gtest.h>

#include <limits>

#include "model/Codes.h"

using namespace velmora;

namespace {

/// Two points; the first term moves the first one along x, the second one both up.
SheetTerms Terms() {
  SheetTerms terms;
  terms.columns = Eigen::MatrixXd::Zero(6, 2);
  terms.columns(0, 0) = 1.0;
  terms.columns(2, 1) = terms.columns(5, 1) = 0.5;
  terms.deviations = Eigen::Vector2d(0.1, std::numeric_limits<double>::infinity());
  return terms;
}

TEST(Sheet, HasItsPointsWhereItsTermsPutThem) {
  const std::vector<cv::Point3d> target = {{1.0, 2.0, 0.0}, {3.0, 4.0, 0.0}};
  const std::vector<cv::Point3d> moved = Moved(target, MovesOf(Terms(), Eigen::Vector2d(0.25, 2.0)));
  EXPECT_EQ(moved[0], cv::Point3d(1.25, 2.0, 1.0));
  EXPECT_EQ(moved[1], cv::Point3d(3.0, 4.0, 1.0));
  EXPECT_EQ(Moved(target, MovesOf(Terms(), {})), target);
  EXPECT_EQ(Moved(target, MovesOf({}, {})), target);
}

TEST(Sheet, IsPulledByWhatIsKnownOfItBeforehand) {
  const Eigen::VectorXd pulls = PullsOf(Terms(), 0.04);
  EXPECT_DOUBLE_EQ(pulls(0), 4.0);
  EXPECT_EQ(pulls(1), 0.0);
}

TEST(Sheet, HasLevelsThatAreWithinEachOther) {
  EXPECT_FALSE(HasBend(SheetLevel::Proportions));
  EXPECT_TRUE(HasBend(SheetLevel::Bent));
  EXPECT_TRUE(HasBend(SheetLevel::FreePoints));
  EXPECT_FALSE(HasProportions(SheetLevel::FreePoints));
  EXPECT_TRUE(HasProportions(SheetLevel::FreePointsProportions));
  EXPECT_FALSE(HasFreePoints(SheetLevel::BentProportions));
}

TEST(Sheet, HasShapesByTheirNumbers) {
  EXPECT_EQ(SheetShapeOf(SHEET_FLAT), SheetShape::Flat);
  EXPECT_EQ(SheetShapeOf(SHEET_BENT), SheetShape::Bent);
  EXPECT_EQ(SheetShapeOf(SHEET_FREE), SheetShape::Free);
  EXPECT_EQ(SheetShapeOf(SHEET_AUTO), SheetShape::Auto);
  EXPECT_EQ(SheetShapeOf(77), SheetShape::Flat);
}

}  // namespace
