/// The windows around discs, and their tones.
#include "finder/DiscWindow.h"

#include <gtest/gtest.h>

#include "finder/FinderScenes.h"
#include "finder/FlatDiscs.h"

using namespace velmora;

namespace {

using finder::DiscWindow;
using finder::GridProjection;
using finder::Histogram;
using finder::LabelledDiscs;
using finder::Span;
using finder::Tones;
using unit::FLAT_GRID;
using unit::FLAT_STEP;

const cv::Matx33d OBLIQUE(38.0, 6.0, 120.0, -9.0, 20.0, 100.0, 0.01, 0.03, 1.0);
constexpr int PAPER = 235;
constexpr int INK = 25;

DiscWindow FlatWindow(double radius) {
  LabelledDiscs discs = unit::FlatDiscs();
  std::fill(discs.radii.begin(), discs.radii.end(), radius * FLAT_STEP);
  return finder::WindowOf(unit::PlaneOf(discs), discs, 17);
}

bool TonesOf(const cv::Mat& image, const DiscWindow& window, Tones& tones) {
  return finder::TonesIn(image, window, tones);
}

std::vector<Span> SpansOf(const DiscWindow& window, const cv::Size& size) {
  finder::WindowSpans spans;
  finder::FindSpans(window, size, spans);
  return spans.all;
}

TEST(DiscWindow, OfAFlatGridIsACircleThatEndsBeforeTheNeighbours) {
  const DiscWindow window = FlatWindow(0.4);
  EXPECT_EQ(window.centre, unit::FlatDiscs().centres[17]);
  EXPECT_LT(cv::norm(window.toSteps - cv::Matx22d::eye() * (1.0 / FLAT_STEP)), 1e-10);
  EXPECT_NEAR(window.disc, 0.4, 1e-9);
  // Half of the distance of two neighbours.
  EXPECT_NEAR(window.outer, std::sqrt(0.5), 1e-9);
}

TEST(DiscWindow, HasPaperAroundDiscsOfAnySize) {
  EXPECT_NEAR(FlatWindow(0.1).outer, 0.42, 1e-9);
  EXPECT_NEAR(FlatWindow(0.65).outer, 0.75, 1e-9);
}

TEST(DiscWindow, HasTheFormOfTheViewThere) {
  const LabelledDiscs discs = unit::DiscsProjectedBy(OBLIQUE, FLAT_GRID);
  const GridProjection projection = unit::PlaneOf(discs);
  for (const size_t k : {size_t{0}, size_t{20}, size_t{43}}) {
    const DiscWindow window = finder::WindowOf(projection, discs, k);
    EXPECT_NEAR(window.disc, 0.4, 1e-6);
    const cv::Point2d gridIndex = discs.gridIndices[k];
    for (const cv::Point2d& step :
         {cv::Point2d(1e-4, 0.0), cv::Point2d(0.0, 1e-4), cv::Point2d(7e-5, -7e-5)}) {
      const cv::Point2d apart = projection.Project(gridIndex + step) - projection.Project(gridIndex);
      const cv::Vec2d back = window.toSteps * cv::Vec2d(apart.x, apart.y);
      EXPECT_LT(cv::norm(back - cv::Vec2d(step.x, step.y)), 1e-8) << k << step;
      EXPECT_NEAR(cv::Vec2d(apart.x, apart.y).dot(window.form * cv::Vec2d(apart.x, apart.y)), step.dot(step),
                  1e-11);
    }
  }
}

TEST(DiscWindow, SpansAreThePixelsWithinItAndInThePicture) {
  const LabelledDiscs discs = unit::DiscsProjectedBy(OBLIQUE, FLAT_GRID, 0.3);
  const GridProjection projection = unit::PlaneOf(discs);
  for (const cv::Point2d& moved :
       {cv::Point2d(0.0, 0.0), cv::Point2d(-115.3, 0.0), cv::Point2d(0.0, -95.7)}) {
    DiscWindow window = finder::WindowOf(projection, discs, 0);
    window.centre += moved;
    // Ends in the midst of the window.
    const cv::Size size(cvRound(window.centre.x) + 9, cvRound(window.centre.y) + 5);
    cv::Mat covered = cv::Mat::zeros(size, CV_8UC1);
    for (const Span& span : SpansOf(window, size)) {
      ASSERT_TRUE(span.row >= 0 && span.row < size.height && span.from >= 0 && span.to <= size.width);
      for (int x = span.from; x < span.to; ++x) ++covered.at<unsigned char>(span.row, x);
    }
    int inside = 0;
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) {
        const cv::Vec2d steps = window.toSteps * cv::Vec2d(x - window.centre.x, y - window.centre.y);
        const int expected = cv::norm(steps) <= window.outer ? 1 : 0;
        EXPECT_EQ(covered.at<unsigned char>(y, x), expected) << x << ", " << y;
        inside += expected;
      }
    }
    EXPECT_GT(inside, 100);
  }
}

TEST(DiscWindow, BeyondThePictureHasNoSpans) {
  DiscWindow window = FlatWindow(0.4);
  window.centre = {-100.0, -100.0};
  EXPECT_TRUE(SpansOf(window, {300, 360}).empty());
  window.centre = {-100.0, 100.0};
  for (const Span& span : SpansOf(window, {300, 360})) EXPECT_EQ(span.from, span.to);
}

TEST(DiscWindow, HasSpansOfAllOfItOfWhatMayBeInkAndOfWhatIs) {
  const cv::Mat image = unit::FlatGrid(FLAT_GRID, 0.4, FLAT_STEP);
  const DiscWindow window = FlatWindow(0.4);
  finder::WindowSpans spans;
  finder::FindSpans(window, image.size(), spans);
  const std::vector<Span> all = SpansOf(window, image.size());
  ASSERT_EQ(spans.all.size(), all.size());
  ASSERT_EQ(spans.hole.size(), all.size());
  ASSERT_EQ(spans.core.size(), all.size());
  Histogram paper;
  Histogram core;
  for (size_t k = 0; k < all.size(); ++k) {
    EXPECT_EQ(spans.all[k].row, all[k].row);
    EXPECT_EQ(spans.all[k].from, all[k].from);
    EXPECT_EQ(spans.all[k].to, all[k].to);
    const unsigned char* pixels = image.ptr(all[k].row);
    paper.Add(pixels, all[k].from, all[k].to);
    paper.Remove(pixels, spans.hole[k].from, spans.hole[k].to);
    core.Add(pixels, spans.core[k].from, spans.core[k].to);
  }
  EXPECT_EQ(paper.Darkest(), PAPER);
  EXPECT_EQ(core.Median(), INK);
}

TEST(DiscWindow, HasNoHoleBeyondThePicture) {
  const cv::Size size(300, 360);
  DiscWindow window = FlatWindow(0.4);
  for (const double x : {-15.0, 0.0, 150.0, 299.0, 315.0}) {
    SCOPED_TRACE(x);
    window.centre = {x, 100.0};
    finder::WindowSpans spans;
    finder::FindSpans(window, size, spans);
    int pixels = 0;
    for (size_t k = 0; k < spans.all.size(); ++k) {
      EXPECT_LE(spans.all[k].from, spans.hole[k].from);
      EXPECT_LE(spans.hole[k].from, spans.hole[k].to);
      EXPECT_LE(spans.hole[k].to, spans.all[k].to);
      pixels += spans.all[k].to - spans.all[k].from;
    }
    EXPECT_GT(pixels, 0);
  }
}

TEST(Histogram, IsWhatItWasOncePixelsAreTakenAway) {
  const std::vector<unsigned char> pixels = {90, 10, 10, 20, 30, 40, 250};
  Histogram histogram;
  histogram.Add(pixels.data(), 0, 3);
  histogram.Add(pixels.data(), 2, 7);
  EXPECT_EQ(histogram.Of(10), 3);
  histogram.Remove(pixels.data(), 2, 7);
  EXPECT_EQ(histogram.Of(10), 2);
  EXPECT_EQ(histogram.Of(250), 0);
  histogram.Remove(pixels.data(), 0, 3);
  EXPECT_TRUE(histogram.Empty());
}

TEST(Histogram, CountsValuesAndKnowsTheirMiddle) {
  Histogram histogram;
  EXPECT_TRUE(histogram.Empty());
  const std::vector<unsigned char> pixels = {90, 10, 10, 20, 30, 40, 250};
  histogram.Add(pixels.data(), 3, 3);
  histogram.Add(pixels.data(), 5, 2);
  EXPECT_TRUE(histogram.Empty()) << "nothing lies between";
  histogram.Add(pixels.data(), 1, 6);
  EXPECT_FALSE(histogram.Empty());
  EXPECT_EQ(histogram.Of(10), 2);
  EXPECT_EQ(histogram.Of(90), 0);
  EXPECT_EQ(histogram.Median(), 20);
  EXPECT_EQ(histogram.Darkest(), 10);
  histogram.Add(pixels.data(), 0, 1);
  histogram.Add(pixels.data(), 6, 7);
  EXPECT_EQ(histogram.Median(), 30);
}

TEST(Histogram, FindsItsMiddleWhereverItIs) {
  for (int value = 0; value < 256; ++value) {
    const std::vector<unsigned char> pixels = {0, static_cast<unsigned char>(value), 255};
    Histogram histogram;
    histogram.Add(pixels.data(), 0, 3);
    EXPECT_EQ(histogram.Median(), value);
    EXPECT_EQ(histogram.Darkest(), 0);
    histogram.Remove(pixels.data(), 0, 1);
    EXPECT_EQ(histogram.Darkest(), value);
  }
}

TEST(Histogram, OfTheBrightestPixelsOnlyEndsThere) {
  Histogram histogram;
  const std::vector<unsigned char> pixels(5, 255);
  histogram.Add(pixels.data(), 0, 5);
  EXPECT_EQ(histogram.Median(), 255);
  EXPECT_EQ(histogram.Darkest(), 255);
}

TEST(Tones, AreThoseOfPaperAndInk) {
  const cv::Mat image = unit::FlatGrid(FLAT_GRID, 0.4, FLAT_STEP);
  Tones tones;
  ASSERT_TRUE(TonesOf(image, FlatWindow(0.4), tones));
  EXPECT_EQ(tones.paper, PAPER);
  EXPECT_EQ(tones.ink, INK);
}

TEST(Tones, OfASpeckAreItsDarkestPixelAndThePaper) {
  cv::Mat image(360, 300, CV_8UC1, cv::Scalar(PAPER));
  LabelledDiscs discs = unit::FlatDiscs();
  std::fill(discs.radii.begin(), discs.radii.end(), 0.8);
  DiscWindow window = finder::WindowOf(unit::PlaneOf(discs), discs, 17);
  // Between four pixels: none of them is in the innermost part.
  window.centre += cv::Point2d(0.5, 0.5);
  image.at<unsigned char>(cvFloor(window.centre.y), cvFloor(window.centre.x)) = 60;
  Tones tones;
  ASSERT_TRUE(TonesOf(image, window, tones));
  EXPECT_EQ(tones.paper, PAPER);
  EXPECT_EQ(tones.ink, 60);
}

TEST(Tones, CannotBeToldApartWithoutContrastOrPaper) {
  Tones tones;
  EXPECT_FALSE(TonesOf(cv::Mat(360, 300, CV_8UC1, cv::Scalar(100)), FlatWindow(0.4), tones));
  cv::Mat faint = unit::FlatGrid(FLAT_GRID, 0.4, FLAT_STEP);
  faint = 200 + faint / 70;  // paper 203, ink 200
  EXPECT_FALSE(TonesOf(faint, FlatWindow(0.4), tones));
  EXPECT_FALSE(TonesOf(255 - unit::FlatGrid(FLAT_GRID, 0.4, FLAT_STEP), FlatWindow(0.4), tones)) << "light";
  DiscWindow outside = FlatWindow(0.4);
  outside.centre = {-100.0, -100.0};
  EXPECT_FALSE(TonesOf(unit::FlatGrid(FLAT_GRID, 0.4, FLAT_STEP), outside, tones));
}

TEST(Tones, WeighDarknessBeyondThePapersNoise) {
  Tones tones;
  tones.paper = 200.0;
  tones.ink = 100.0;
  EXPECT_DOUBLE_EQ(tones.Darkness(150.0), 0.5);
  EXPECT_EQ(tones.Weight(200.0), 0.0);
  EXPECT_EQ(tones.Weight(189.0), 0.0);
  EXPECT_NEAR(tones.Weight(150.0), 0.38, 1e-12);
  EXPECT_NEAR(tones.Weight(100.0), 0.88, 1e-12);
  EXPECT_NEAR(tones.Weight(20.0), 0.88, 1e-12) << "no pixel counts more than ink";
  EXPECT_EQ(tones.Weight(255.0), 0.0);
}

}  // namespace
