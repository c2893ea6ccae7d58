/// The shapes of spots at the grid's points.
#include "finder/Shape.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "finder/Pattern.h"

using namespace velmora;

namespace {

constexpr double STEP = 40.0;
constexpr double MARGIN = 80.0;
const cv::Size GRID(4, 11);

/// A sheet with a spot of that number of corners, or of none, at each grid point; its projection and its
/// spots.
struct Sheet {
  explicit Sheet(int corners, double radius = 16.0) : image(560, 480, CV_8UC1, cv::Scalar(235)) {
    discs.grid = GRID;
    discs.gridIndices = finder::PatternIndices(GRID);
    for (const cv::Point& gridIndex : discs.gridIndices) {
      const cv::Point2d at(MARGIN + STEP * gridIndex.x, MARGIN + STEP * gridIndex.y);
      discs.centres.push_back(at);
      discs.radii.push_back(radius);
      std::vector<cv::Point> outline;
      const int points = corners > 0 ? corners : 64;
      for (int k = 0; k < points; ++k) {
        const double angle = 0.4 + 2.0 * CV_PI * k / points;
        outline.emplace_back(cvRound(16.0 * (at.x + radius * std::cos(angle))),
                             cvRound(16.0 * (at.y + radius * std::sin(angle))));
      }
      cv::fillConvexPoly(image, outline, cv::Scalar(25), cv::LINE_AA, 4);
    }
  }

  finder::ShapeMoments Shape() const {
    finder::GridProjection projection;
    EXPECT_TRUE(projection.Fit(discs));
    return finder::MeanShape(projection, image, discs);
  }
  bool Discs() const {
    finder::GridProjection projection;
    EXPECT_TRUE(projection.Fit(discs));
    return finder::AreDiscs(projection, image, discs);
  }

  cv::Mat image;
  finder::LabelledDiscs discs;
};

TEST(Shape, OfDiscsHasNoHarmonicMoments) {
  const Sheet sheet(0);
  const finder::ShapeMoments shape = sheet.Shape();
  // The polygon is not drawn quite evenly.
  EXPECT_LT(shape.second, 0.05);
  EXPECT_LT(shape.third, 0.05);
  EXPECT_LT(shape.fourth, 0.05);
  EXPECT_TRUE(sheet.Discs());
}

TEST(Shape, OfTrianglesHasTheThird) {
  const Sheet sheet(3);
  const finder::ShapeMoments shape = sheet.Shape();
  EXPECT_LT(shape.second, 0.15);
  EXPECT_GT(shape.third, 0.5);
  EXPECT_FALSE(sheet.Discs());
}

TEST(Shape, OfSquaresHasTheFourthAtAnyBlur) {
  for (const double blur : {0.4, 2.0, 4.0}) {
    Sheet sheet(4);
    cv::GaussianBlur(sheet.image, sheet.image, cv::Size(), blur);
    EXPECT_NEAR(sheet.Shape().fourth, 0.49, 0.13) << blur;
    EXPECT_FALSE(sheet.Discs());
  }
}

TEST(Shape, OfEllipsesOnASheetSeenFromTheFrontHasTheSecond) {
  Sheet sheet(0);
  cv::Mat stretched;
  cv::resize(sheet.image, stretched, cv::Size(), 2.0, 1.0, cv::INTER_LINEAR);
  for (size_t k = 0; k < sheet.discs.centres.size(); ++k) {
    // The middle of a pixel stays where it is.
    sheet.discs.centres[k].x = 2.0 * sheet.discs.centres[k].x + 0.5;
    sheet.discs.radii[k] *= std::sqrt(2.0);
  }
  sheet.image = stretched;
  EXPECT_LT(sheet.Shape().second, 0.05) << "the plane explains it";
  Sheet upright(0, 9.0);
  for (size_t k = 0; k < upright.discs.centres.size(); ++k) {
    cv::ellipse(upright.image, upright.discs.centres[k], cv::Size(18, 8), 0.0, 0.0, 360.0, cv::Scalar(25),
                cv::FILLED, cv::LINE_AA);
    upright.discs.radii[k] = 12.0;
  }
  EXPECT_GT(upright.Shape().second, 0.5) << "nothing explains it";
  EXPECT_FALSE(upright.Discs());
}

}  // namespace
