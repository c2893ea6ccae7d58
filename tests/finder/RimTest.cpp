/// The rims of discs.
#include "finder/Rim.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

using namespace velmora;

namespace {

using finder::ExpectedDisc;
using finder::FollowRim;
using finder::Rim;

constexpr double STEP = 36.0;
constexpr double RADIUS = 0.4;
constexpr int PAPER = 235;
constexpr int INK = 25;
const cv::Point2d CENTRE(80.3, 79.6);

/// An ellipse of ink, by the share of each pixel that it covers.
cv::Mat Painted(const cv::Matx22d& slope, const cv::Point2d& centre = CENTRE) {
  constexpr int PARTS = 8;
  const cv::Matx22d toSteps = slope.inv();
  cv::Mat image(160, 160, CV_8UC1);
  for (int y = 0; y < image.rows; ++y) {
    for (int x = 0; x < image.cols; ++x) {
      int covered = 0;
      for (int part = 0; part < PARTS * PARTS; ++part) {
        const cv::Point2d at(x - 0.5 + (part % PARTS + 0.5) / PARTS, y - 0.5 + (part / PARTS + 0.5) / PARTS);
        const cv::Vec2d steps = toSteps * cv::Vec2d(at.x - centre.x, at.y - centre.y);
        if (cv::norm(steps) < RADIUS) ++covered;
      }
      image.at<unsigned char>(y, x) =
          cv::saturate_cast<unsigned char>(PAPER + (INK - PAPER) * covered / (1.0 * PARTS * PARTS));
    }
  }
  cv::GaussianBlur(image, image, {}, 0.7);
  return image;
}

const cv::Matx22d UPRIGHT(STEP, 0.0, 0.0, STEP);
const cv::Matx22d SLANTED(40.0, 11.0, -6.0, 22.0);

ExpectedDisc Expected(const cv::Matx22d& slope, const cv::Point2d& off = {}) {
  ExpectedDisc expected;
  expected.centre = CENTRE + off;
  expected.slope = slope;
  expected.radius = RADIUS;
  expected.contrast = PAPER - INK;
  return expected;
}

TEST(Rim, OfAWholeDiscIsSeenAllAroundFromAnywhereNear) {
  for (const cv::Matx22d& slope : {UPRIGHT, SLANTED}) {
    const cv::Mat image = Painted(slope);
    for (double angle = 0.0; angle < 6.0; angle += 0.7) {
      // A third of the radius away, in steps.
      const cv::Vec2d off = slope * cv::Vec2d(std::cos(angle), std::sin(angle)) * (0.3 * RADIUS);
      const Rim rim = FollowRim(image, Expected(slope, {off[0], off[1]}));
      EXPECT_EQ(rim.visible, 1.0) << slope << angle;
      EXPECT_LT(cv::norm(rim.centre - CENTRE), 0.1) << slope << angle;
    }
  }
}

TEST(Rim, MayHaveARadiusThatIsNotQuiteTheExpectedOne) {
  for (const double share : {0.93, 1.07}) {
    ExpectedDisc expected = Expected(UPRIGHT, {2.0, 1.0});
    expected.radius *= share;
    const Rim rim = FollowRim(Painted(UPRIGHT), expected);
    EXPECT_GT(rim.visible, 0.95) << share;
    EXPECT_LT(cv::norm(rim.centre - CENTRE), 0.1) << share;
  }
}

TEST(Rim, OfAHalfDiscIsHalfSeenAndKnowsTheMiddleAllTheSame) {
  cv::Mat image = Painted(UPRIGHT);
  image.colRange(cvRound(CENTRE.x) + 2, image.cols).setTo(PAPER);
  const Rim rim = FollowRim(image, Expected(UPRIGHT, {0.0, 1.0}));
  EXPECT_GT(rim.visible, 0.35);
  EXPECT_LT(rim.visible, 0.75);
  EXPECT_LT(cv::norm(rim.centre - CENTRE), 0.3);
}

TEST(Rim, IsNotMovedByAShadowsEdge) {
  cv::Mat image = Painted(UPRIGHT);
  cv::Mat shadow = image.rowRange(cvRound(CENTRE.y) + 4, image.rows);
  shadow.convertTo(shadow, CV_8U, 0.4);
  cv::GaussianBlur(image, image, {}, 0.7);
  const Rim rim = FollowRim(image, Expected(UPRIGHT));
  EXPECT_GT(rim.visible, 0.9);
  EXPECT_LT(cv::norm(rim.centre - CENTRE), 0.5);
}

/// The shadow's own edge is the larger step, and near: the rim is the larger ratio.
TEST(Rim, InAShadowIsNotMistakenForTheShadowsEdge) {
  cv::Mat image = Painted(UPRIGHT);
  cv::Mat shadow = image.rowRange(cvRound(CENTRE.y - RADIUS * STEP) - 5, image.rows);
  shadow.convertTo(shadow, CV_8U, 0.4);
  cv::GaussianBlur(image, image, {}, 0.7);
  const Rim rim = FollowRim(image, Expected(UPRIGHT));
  EXPECT_EQ(rim.visible, 1.0);
  EXPECT_LT(cv::norm(rim.centre - CENTRE), 0.2);
}

/// Nothing draws: the equations have hardly more than the radius's firmness, and the middle stays.
TEST(Rim, IsNotSeenWhereThereIsNone) {
  const cv::Mat paper(160, 160, CV_8UC1, cv::Scalar(PAPER));
  const Rim rim = FollowRim(paper, Expected(UPRIGHT));
  EXPECT_EQ(rim.visible, 0.0);
  EXPECT_EQ(rim.centre, CENTRE);
  const Rim light = FollowRim(255 - Painted(UPRIGHT), Expected(UPRIGHT));
  EXPECT_LT(light.visible, 0.2) << "a light disc has none";
}

TEST(Rim, OfAFaintDiscIsAssessedByItsContrast) {
  cv::Mat faint;
  Painted(UPRIGHT).convertTo(faint, CV_8U, 0.15, 150.0);
  ExpectedDisc expected = Expected(UPRIGHT);
  EXPECT_LT(FollowRim(faint, expected).visible, 0.2);
  expected.contrast *= 0.15;
  EXPECT_EQ(FollowRim(faint, expected).visible, 1.0);
}

TEST(Rim, OfADiscThatThePictureCutsIsSeenInPart) {
  const cv::Mat image = Painted(UPRIGHT);
  const int left = cvRound(CENTRE.x - 4.0);
  const cv::Mat cut = image.colRange(left, image.cols).clone();
  const Rim rim = FollowRim(cut, Expected(UPRIGHT, {-1.0 * left, 0.0}));
  EXPECT_GT(rim.visible, 0.4);
  EXPECT_LT(rim.visible, 0.85);
}

/// The edges of one half see the radius and the middle in the same way: the equations are badly conditioned.
TEST(Rim, OfAQuarterDrawsTheMiddleNowhereFar) {
  cv::Mat image = Painted(UPRIGHT);
  image.colRange(cvRound(CENTRE.x), image.cols).setTo(PAPER);
  image.rowRange(cvRound(CENTRE.y), image.rows).setTo(PAPER);
  const Rim rim = FollowRim(image, Expected(UPRIGHT));
  EXPECT_LT(rim.visible, 0.6);
  EXPECT_LT(cv::norm(rim.centre - CENTRE), 0.25 * RADIUS * STEP);
}

}  // namespace
