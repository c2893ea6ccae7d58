/// Where views were kept, and where none was.
#include "guided/Coverage.h"

#include <gtest/gtest.h>

#include <limits>

#include "Drawn.h"

namespace {

using guided::DrawCoverage;
using guided::EmptyCells;
using guided::ImageView;

const cv::Size FRAME(640, 480);

/// Over the upper left quarter of the frame.
std::vector<cv::Point2d> UpperLeft() {
  return {{0, 0}, {319, 0}, {319, 239}, {0, 239}};
}

cv::Mat Covered(const cv::Mat& ground, const std::vector<std::vector<cv::Point2d>>& kept,
                bool mirrored = false) {
  cv::Mat drawn = ground.clone();
  DrawCoverage(kept, FRAME, ImageView(FRAME, {cv::Point(), ground.size()}, mirrored), drawn);
  return drawn;
}

TEST(Coverage, CellsAreNearlySquareAndEmptyWhereNoViewWas) {
  const cv::Mat cells = EmptyCells({UpperLeft()}, FRAME);
  ASSERT_EQ(cells.size(), cv::Size(8, 6));
  for (int row = 0; row < 6; ++row) {
    for (int column = 0; column < 8; ++column) {
      EXPECT_EQ(cells.at<unsigned char>(row, column) == 0, row < 3 && column < 4) << row << " " << column;
    }
  }
  EXPECT_EQ(EmptyCells({UpperLeft()}, {1000, 1600}).size(), cv::Size(5, 8));
}

TEST(Coverage, HasNoCellsBeforeTheFirstView) {
  EXPECT_TRUE(EmptyCells({}, FRAME).empty());
  for (const cv::Mat& ground : Grounds({800, 600})) {
    EXPECT_EQ(cv::norm(Covered(ground, {}), ground, cv::NORM_INF), 0.0);
  }
}

TEST(Coverage, ShowsEmptyCellsOnAnyGroundWithoutHidingIt) {
  const cv::Rect empty(420, 320, 360, 260);
  for (const cv::Mat& ground : Grounds({800, 600})) {
    const cv::Mat drawn = Covered(ground, {UpperLeft()});
    cv::Mat difference;
    cv::absdiff(drawn(empty), ground(empty), difference);
    cv::Mat grey;
    cv::cvtColor(difference, grey, cv::COLOR_BGR2GRAY);
    const double changed = cv::countNonZero(grey > 30) / static_cast<double>(empty.area());
    EXPECT_GT(changed, 0.01);
    EXPECT_LT(cv::countNonZero(grey) / static_cast<double>(empty.area()), 0.25)
        << "most of the image is as it was";
    EXPECT_LT(cv::norm(difference, cv::NORM_INF), 128.0);
  }
}

TEST(Coverage, TintsWhatWasCoveredThinly) {
  for (const cv::Mat& ground : Grounds({800, 600})) {
    const cv::Mat drawn = Covered(ground, {UpperLeft()});
    const cv::Rect covered(40, 40, 300, 200);
    const double change = cv::norm(drawn(covered), ground(covered), cv::NORM_L1) / (3.0 * covered.area());
    EXPECT_GT(change, 5.0);
    EXPECT_LT(change, 60.0);
  }
}

TEST(Coverage, IsMirroredWithTheImage) {
  const cv::Mat ground(600, 800, CV_8UC3, cv::Scalar::all(128));
  const cv::Mat plain = Covered(ground, {UpperLeft()});
  const cv::Mat mirrored = Covered(ground, {UpperLeft()}, true);
  const cv::Rect left(40, 40, 300, 200);
  const cv::Rect right(460, 40, 300, 200);
  EXPECT_EQ(plain.at<cv::Vec3b>(150, 200), mirrored.at<cv::Vec3b>(150, 599));
  EXPECT_NE(cv::mean(plain(left)), cv::mean(mirrored(left)));
  EXPECT_EQ(cv::mean(plain(left)), cv::mean(mirrored(right)));
}

TEST(Coverage, StandsViewsOfAFewPointsAndOfNone) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  const cv::Mat ground(600, 800, CV_8UC3, cv::Scalar::all(128));
  EXPECT_NO_THROW(Covered(ground, {{}, {{3.0, 3.0}}, {{none, none}, {1e30, 0.0}, {1.0, none}}}));
  EXPECT_EQ(cv::countNonZero(EmptyCells({{}}, FRAME)), 48);
}

}  // namespace
