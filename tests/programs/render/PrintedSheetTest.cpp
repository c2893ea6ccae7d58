/// The sheet to print: its marks are where they say, have their true size, and disturb no search.
#include "render/PrintedSheet.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "Calibrator.h"
#include "Process.h"
#include "Views.h"

namespace {

constexpr double STEP = world::Sheet::STEP;

/// True where the printed sheet differs from the plain one.
cv::Mat MarksOf(const world::Sheet& sheet) {
  return render::DrawPrintedSheet(sheet) != sheet.Draw();
}

/// Where the strokes are that cross a row of the printed sheet: their middles, in drawing units.
std::vector<double> StrokesAcross(const world::Sheet& sheet, double y) {
  const cv::Mat marks = sheet.Draw() - render::DrawPrintedSheet(sheet);
  const auto row = static_cast<int>(y);
  std::vector<double> strokes;
  double ink = 0.0;
  double moment = 0.0;
  for (int x = 0; x < marks.cols; ++x) {
    const double dark = marks.at<uchar>(row, x);
    ink += dark;
    moment += dark * (x + 0.5);
    if (dark > 0.0 || ink == 0.0) continue;
    strokes.push_back(moment / ink);
    ink = moment = 0.0;
  }
  return strokes;
}

TEST(PrintedSheet, HasAnArrowAcrossItsRowIntervals) {
  for (const cv::Size grid : {cv::Size(4, 11), cv::Size(4, 9), cv::Size(4, 5)}) {
    const world::Sheet sheet(grid);
    const std::vector<double> ends = StrokesAcross(sheet, 75.0);
    ASSERT_EQ(ends.size(), 2U) << grid;
    EXPECT_NEAR(ends[0], sheet.DrawingFromSteps({0.0, grid.height - 1.0}).x, 0.1) << grid;
    EXPECT_NEAR(ends[1], sheet.DrawingFromSteps({0.0, 0.0}).x, 0.1) << grid;
  }
}

TEST(PrintedSheet, HasARulerOfAHundredMillimetresWhereThereIsRoom) {
  for (const double unit : {0.02, 0.025}) {
    const world::Sheet sheet(cv::Size(4, 11), unit);
    const std::vector<double> marks = StrokesAcross(sheet, 1146.0);
    ASSERT_EQ(marks.size(), 11U) << unit;
    for (std::size_t k = 0; k < marks.size(); ++k) {
      EXPECT_NEAR((marks[k] - marks[0]) / render::PixelsPerMetre(sheet), 0.01 * static_cast<double>(k), 2e-5);
    }
    EXPECT_NEAR(marks[5], 0.5 * sheet.PaperSize().width, 0.1) << unit;
  }
  const world::Sheet small(cv::Size(4, 11), 0.004);
  EXPECT_EQ(cv::countNonZero(MarksOf(small).rowRange(1089, 1239)), 0);
}

TEST(PrintedSheet, HasItsMarksFarFromTheDiscsAndTheEdge) {
  for (const cv::Size grid :
       {cv::Size(4, 11), cv::Size(4, 9), cv::Size(7, 13), cv::Size(4, 2), cv::Size(2, 1)}) {
    const world::Sheet sheet(grid);
    const cv::Mat marks = MarksOf(sheet);
    const int width = marks.cols;
    const int height = marks.rows;
    const double lowest =
        sheet.DrawingFromSteps({2.0 * (grid.width - 1) + (grid.height > 1 ? 1.0 : 0.0), 0.0}).y;
    const auto below = static_cast<int>(lowest + 0.65 * STEP);
    EXPECT_EQ(cv::countNonZero(marks.rowRange(static_cast<int>(206.25 - 0.65 * STEP), below)), 0) << grid;
    EXPECT_EQ(cv::countNonZero(marks.rowRange(0, 35)), 0) << grid;
    EXPECT_EQ(cv::countNonZero(marks.rowRange(height - 45, height)), 0) << grid;
    EXPECT_EQ(cv::countNonZero(marks.colRange(0, 35)), 0) << grid;
    EXPECT_EQ(cv::countNonZero(marks.colRange(width - 35, width)), 0) << grid;
    EXPECT_EQ(cv::countNonZero(marks) > 0, grid.height > 1) << grid;
  }
}

/// Pictures of a flat drawing as a camera without distortion sees it, each point of the paper smeared over
/// the pixel that it falls into.
class Photographs {
 public:
  explicit Photographs(cv::Size size) : camera_(world::CameraFromFieldOfView(size, 60.0)) {}

  std::vector<world::Pose> Poses(int count) const { return world::SpreadViews(camera_, count, sheet_); }

  cv::Mat Of(const cv::Mat& drawing, const world::Pose& pose) const {
    constexpr int FINE = 4;
    const std::vector<cv::Point3d> corners = sheet_.OutlinePoints();
    const std::vector<cv::Point2d> seen = world::ProjectPoints(camera_.lens, corners, pose);
    std::vector<cv::Point2f> from;
    std::vector<cv::Point2f> to;
    for (const std::size_t k : {0U, 1U, 2U, 4U}) {
      from.push_back(cv::Point2f(sheet_.Outline()[k] - cv::Point2d(0.5, 0.5)));
      to.push_back(cv::Point2f((seen[k] + cv::Point2d(0.5, 0.5)) * FINE - cv::Point2d(0.5, 0.5)));
    }
    cv::Mat fine;
    cv::warpPerspective(drawing, fine, cv::getPerspectiveTransform(from, to), camera_.size * FINE,
                        cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar(110));
    cv::Mat picture;
    cv::resize(fine, picture, camera_.size, 0.0, 0.0, cv::INTER_AREA);
    cv::cvtColor(picture, picture, cv::COLOR_GRAY2BGR);
    return picture;
  }

 private:
  world::Camera camera_;
  world::Sheet sheet_;
};

/// What a search finds in a picture; empty when it finds nothing.
std::vector<cv::Point2d> Find(int finder, const cv::Mat& picture) {
  Calibrator calibrator(cv::Size(4, 11), 0.02F, Calibrator::MONOCULAR, picture.cols, picture.rows);
  calibrator.SetFinder(finder);
  cv::Mat frame = picture.clone();
  std::vector<cv::Point2d> points;
  return calibrator.DetectPoints(frame, points, false) ? points : std::vector<cv::Point2d>();
}

/// Compares what a search finds with and without marks; in how many pictures it found the grid.
int FoundAlike(int finder, cv::Size size, int count) {
  const Photographs photographs(size);
  const cv::Mat plainSheet = world::Sheet().Draw();
  const cv::Mat markedSheet = render::DrawPrintedSheet(world::Sheet());
  int found = 0;
  for (const world::Pose& pose : photographs.Poses(count)) {
    const auto plain = Find(finder, photographs.Of(plainSheet, pose));
    const auto marked = Find(finder, photographs.Of(markedSheet, pose));
    EXPECT_EQ(marked.size(), plain.size()) << size << pose.tvec;
    for (std::size_t k = 0; k < std::min(plain.size(), marked.size()); ++k) {
      EXPECT_LT(cv::norm(marked[k] - plain[k]), 0.01) << size << pose.tvec << " disc " << k;
    }
    found += plain.empty() ? 0 : 1;
  }
  return found;
}

TEST(PrintedSheet, IsFoundByBothSearchesAsIfItHadNoMarks) {
  EXPECT_EQ(FoundAlike(Calibrator::FINDER_ROBUST, {640, 480}, 16), 16);
  EXPECT_GE(FoundAlike(Calibrator::FINDER_STANDARD, {640, 480}, 16), 14);
  EXPECT_EQ(FoundAlike(Calibrator::FINDER_ROBUST, {1280, 960}, 6), 6);
  EXPECT_GE(FoundAlike(Calibrator::FINDER_STANDARD, {1280, 960}, 6), 2);
  EXPECT_GE(FoundAlike(Calibrator::FINDER_ROBUST, {320, 240}, 16), 12);
}

TEST(PrintedSheet, IsFoundInTheFileItselfToo) {
  const support::TemporaryFolder folder;
  render::WriteSheet(folder.File("sheet.png"), world::Sheet());
  const cv::Mat picture = cv::imread(folder.File("sheet.png"));
  const std::vector<cv::Point2d> centres = Find(Calibrator::FINDER_ROBUST, picture);
  ASSERT_EQ(centres.size(), 44U);
  for (std::size_t k = 0; k < centres.size(); ++k) {
    EXPECT_LT(cv::norm(centres[k] + cv::Point2d(0.5, 0.5) - world::Sheet().DrawingCentres()[k]), 0.05) << k;
  }
  cv::Mat half;
  cv::resize(picture, half, {}, 0.5, 0.5, cv::INTER_AREA);
  EXPECT_EQ(Find(Calibrator::FINDER_STANDARD, half).size(), 44U);
}

/// The pixels per metre in x and y that a PNG file says; zeros when it says none.
std::pair<unsigned, unsigned> ResolutionIn(const std::string& file) {
  const std::string bytes = support::ReadText(file);
  const std::size_t chunk = bytes.find("pHYs");
  if (chunk == std::string::npos || chunk > bytes.find("IDAT") || bytes.at(chunk + 12) != 1) return {0, 0};
  const auto number = [&](std::size_t at) {
    unsigned value = 0;
    for (std::size_t k = at; k < at + 4; ++k) value = value << 8U | static_cast<unsigned char>(bytes.at(k));
    return value;
  };
  return {number(chunk + 4), number(chunk + 8)};
}

TEST(PrintedSheet, SaysHowLargeItIsToBePrinted) {
  const support::TemporaryFolder folder;
  for (const double unit : {0.02, 0.03}) {
    const std::string file = folder.File(std::to_string(unit) + ".png");
    const world::Sheet sheet(cv::Size(4, 11), unit);
    render::WriteSheet(file, sheet);
    const auto [x, y] = ResolutionIn(file);
    EXPECT_EQ(x, y);
    EXPECT_NEAR(10.0 * STEP / x, 10.0 * unit, 10.0 * unit * 1e-4);
  }
  render::WriteSheet(folder.File("a4.png"), world::Sheet());
  EXPECT_EQ(ResolutionIn(folder.File("a4.png")).first, 5906U);
}

TEST(PrintedSheet, ComesWithAdvice) {
  const std::string usual = render::AdviceOn("sheet.png", world::Sheet());
  for (const std::string part :
       {"sheet.png: 296.8 x 209.8 mm, A4 in landscape\n", "at full size",
        "Measure the arrow, which is 0.200 m long", "velmora-guided --webcam 0 --hdist 0.200 "}) {
    EXPECT_NE(usual.find(part), std::string::npos) << usual;
  }
  const std::string other = render::AdviceOn("x.png", world::Sheet(cv::Size(4, 9), 0.03));
  for (const std::string part : {"x.png: 385.3 x 314.7 mm\n", "0.240 m long", "--grid 4x9 --hdist 0.240 "}) {
    EXPECT_NE(other.find(part), std::string::npos) << other;
  }
}

}  // namespace
