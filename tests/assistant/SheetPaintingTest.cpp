/// The drawing of the target against a painting told from geometry alone.
#include "assistant/SheetPainting.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "assistant/AssistantDrawing.h"

using namespace velmora;

namespace {

using unit::SheetPainting;

struct PaintingCase {
  const char* name;
  cv::Matx33d homography;
  cv::Size frame;
  float scale;
  double age;     ///< seconds
  double weight;  ///< of the figure at that age
};

std::ostream& operator<<(std::ostream& out, const PaintingCase& c) {
  return out << c.name << " at " << c.age << " s";
}

class Painting : public ::testing::TestWithParam<PaintingCase> {
 protected:
  Painting() : drawn_(GetParam().frame, CV_8UC3, cv::Scalar(BACKGROUND)) {
    const std::vector<cv::Point2f> circles = unit::SheetCircles();
    const std::vector<cv::Point2f> outline = unit::SheetOutline();
    DrawTarget({circles, outline, cv::Mat(GetParam().homography), 4, GetParam().scale, 150.0F, drawn_.size(),
                GetParam().age},
               drawn_, layers_);
  }

  cv::Vec3d At(const cv::Point& pixel) const { return drawn_.at<cv::Vec3b>(pixel); }
  bool Shows(const cv::Point& pixel) const {
    // The score bar's place, one pixel long here, is left out.
    return cv::Rect(cv::Point(), drawn_.size()).contains(pixel) && pixel.y < drawn_.rows - 5;
  }

  static constexpr int RADIUS_AT_ONE = 9;
  const cv::Vec3b BACKGROUND{100, 110, 120};
  DrawingLayers layers_;
  cv::Mat drawn_;
  const SheetPainting painting_{GetParam().homography, static_cast<int>(GetParam().scale* RADIUS_AT_ONE),
                                BACKGROUND, GetParam().weight};
};

TEST_P(Painting, AgreesInEveryPixelThatGeometryDecides) {
  std::array<int, 5> seen = {};
  std::array<int, 5> wrong = {};
  for (int y = 0; y < drawn_.rows; ++y) {
    for (int x = 0; x < drawn_.cols; ++x) {
      if (!Shows({x, y})) continue;
      const SheetPainting::Part part = painting_.PartAt(cv::Point2d(x, y));
      if (part == SheetPainting::Part::Unsure) continue;
      const auto index = static_cast<std::size_t>(part);
      ++seen[index];
      // The middle of a line may miss the pixel's middle by its rounding; plain parts are exact.
      const double tolerance = part == SheetPainting::Part::Edge ? 100.0 : 1.0;
      if (cv::norm(At({x, y}) - painting_.ColourOf(part), cv::NORM_INF) > tolerance) ++wrong[index];
    }
  }
  EXPECT_GT(seen[0], 1000) << "outside";
  EXPECT_GT(seen[1], 10000) << "paper";
  EXPECT_GT(seen[2], 50) << "corner";
  EXPECT_GT(seen[3], 100) << "edges";
  for (std::size_t part = 0; part < 3; ++part) EXPECT_EQ(wrong[part], 0) << "part " << part;
  EXPECT_LE(wrong[3], seen[3] / 50) << "edges";
}

TEST_P(Painting, HasTheRimOfEachCircleInTheColourOfItsRow) {
  const int radius = static_cast<int>(GetParam().scale * RADIUS_AT_ONE);
  for (std::size_t i = 0; i < painting_.Circles().size(); ++i) {
    const cv::Point centre(cvRound(painting_.Circles()[i].x), cvRound(painting_.Circles()[i].y));
    for (const cv::Point& away : {cv::Point(1, 0), cv::Point(-1, 0), cv::Point(0, 1), cv::Point(0, -1)}) {
      const cv::Point rim = centre + radius * away;
      ASSERT_TRUE(Shows(rim));
      const double paper = cv::norm(painting_.ColourOf(SheetPainting::Part::Paper) - painting_.RimColour(i));
      EXPECT_LT(cv::norm(At(rim) - painting_.RimColour(i)), 0.3 * paper) << "circle " << i;
    }
    EXPECT_LE(cv::norm(At(centre) - painting_.ColourOf(SheetPainting::Part::Paper), cv::NORM_INF), 1.0)
        << "the circles are not filled";
  }
}

const cv::Matx33d IDENTITY = cv::Matx33d::eye();
const cv::Size WHOLE_SHEET(1800, 1280);
const cv::Matx33d TILTED(0.29, 0.03, 60.4, -0.02, 0.30, 50.7, 6e-5, -4e-5, 1.0);
const cv::Matx33d TURNED(0.22, -0.14, 210.3, 0.12, 0.24, 20.6, -3e-5, 8e-5, 1.0);
const cv::Size VGA(640, 480);
// cos(5 t) is 1, 0, -1 and 0.0707 at these times.
const double START = 0.0;
const double QUARTER = CV_PI / 10.0;
const double HALF = CV_PI / 5.0;
const double LATER = 0.3;

INSTANTIATE_TEST_SUITE_P(Sheets, Painting,
                         ::testing::Values(PaintingCase{"flat", IDENTITY, WHOLE_SHEET, 1.0F, START, 0.5},
                                           PaintingCase{"flat", IDENTITY, WHOLE_SHEET, 1.0F, QUARTER, 1.0},
                                           PaintingCase{"flat", IDENTITY, WHOLE_SHEET, 1.5F, HALF, 1.5},
                                           PaintingCase{"tilted", TILTED, VGA, 1.0F, START, 0.5},
                                           PaintingCase{"tilted", TILTED, VGA, 0.6F, QUARTER, 1.0},
                                           PaintingCase{"tilted", TILTED, VGA, 1.0F, HALF, 1.5},
                                           PaintingCase{"tilted", TILTED, VGA, 1.0F, LATER,
                                                        1.0 - 0.5 * std::cos(1.5)},
                                           PaintingCase{"turned", TURNED, VGA, 0.8F, START, 0.5},
                                           PaintingCase{"turned", TURNED, VGA, 0.8F, 2.0 * HALF, 0.5}));

TEST(SheetPaintingItself, KnowsItsParts) {
  const SheetPainting painting(IDENTITY, 9, {100, 100, 100}, 1.0);
  EXPECT_EQ(painting.PartAt({1780, 600}), SheetPainting::Part::Outside);
  EXPECT_EQ(painting.PartAt({900, 100}), SheetPainting::Part::Paper);
  EXPECT_EQ(painting.PartAt({30, 1210}), SheetPainting::Part::Corner);
  EXPECT_EQ(painting.PartAt({1753, 600}), SheetPainting::Part::Edge);
  EXPECT_EQ(painting.PartAt({1753 - 1.5, 600}), SheetPainting::Part::Unsure);
  EXPECT_EQ(painting.PartAt({1467 + 9, 206}), SheetPainting::Part::Unsure);
}

}  // namespace
