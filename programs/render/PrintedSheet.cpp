/// The sheet as a user prints it: with marks that say what to measure, and in its true size.
#include "render/PrintedSheet.h"

#include <cmath>
#include <filesystem>
#include <iomanip>
#include <opencv2/imgproc.hpp>
#include <sstream>
#include <stdexcept>

#include "render/PngFile.h"

namespace render {

namespace {

// Where the marks are, in drawing units from the upper and the lower edge; the discs begin at 159 units from
// either. What is nearer to the edge than 40 units (7 mm) may fall into what a printer leaves white.
constexpr double ARROW = 88.0;
constexpr double ARROW_WORDS = 64.0;
constexpr double RULER = 86.0;
constexpr double RULER_WORDS = 54.0;
/// Half the length of the strokes at the arrow's ends.
constexpr double STROKE = 14.0;

constexpr double LETTERS = 0.9;  ///< of the font's own size: 3 mm high
/// Lines are thin, so that no search takes them for a disc, even in pictures taken from afar.
constexpr int THICKNESS = 2;
const cv::Scalar INK(0);

constexpr double RULER_LENGTH = 0.1;  ///< metres
constexpr int RULER_PARTS = 10;
/// A ruler that is shorter than this is not worth drawing, drawing units.
constexpr double SHORTEST_RULER = 200.0;
/// The lower corner that is cut off leaves the ruler so much room at most, drawing units.
constexpr double BESIDE_RULER = 180.0;

double Hdist(const world::Sheet& sheet) {
  return sheet.Unit() * (sheet.Grid().height - 1);
}

std::string Metres(double length) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(3) << length << " m";
  return text.str();
}

/// A line between two points in drawing units; their fractions count, for lengths are measured on it.
void Line(cv::Mat& picture, const cv::Point2d& a, const cv::Point2d& b) {
  constexpr int SHIFT = 8;
  const auto fixed = [](const cv::Point2d& p) {
    const auto part = [](double x) { return static_cast<int>(std::lround((x - 0.5) * (1 << SHIFT))); };
    return cv::Point(part(p.x), part(p.y));
  };
  cv::line(picture, fixed(a), fixed(b), INK, THICKNESS, cv::LINE_AA, SHIFT);
}

/// Words whose middle is at x.
void Words(cv::Mat& picture, const std::string& words, double x, double baseline) {
  int below = 0;
  const cv::Size size = cv::getTextSize(words, cv::FONT_HERSHEY_SIMPLEX, LETTERS, THICKNESS, &below);
  const cv::Point corner(static_cast<int>(x - 0.5 * size.width), static_cast<int>(baseline));
  cv::putText(picture, words, corner, cv::FONT_HERSHEY_SIMPLEX, LETTERS, INK, THICKNESS, cv::LINE_AA);
}

/// The tip of an arrow: two strokes, for a filled one could be taken for a disc.
void Tip(cv::Mat& picture, const cv::Point2d& tip, double direction) {
  Line(picture, tip, {tip.x - 2.0 * STROKE * direction, tip.y - 0.6 * STROKE});
  Line(picture, tip, {tip.x - 2.0 * STROKE * direction, tip.y + 0.6 * STROKE});
}

void DrawArrow(cv::Mat& picture, const world::Sheet& sheet) {
  const double first = sheet.DrawingFromSteps({0.0, 0.0}).x;
  const double last = sheet.DrawingFromSteps({0.0, sheet.Grid().height - 1.0}).x;
  Line(picture, {last, ARROW}, {first, ARROW});
  Tip(picture, {last, ARROW}, -1.0);
  Tip(picture, {first, ARROW}, 1.0);
  for (const double end : {last, first}) Line(picture, {end, ARROW - STROKE}, {end, ARROW + STROKE});
  Words(picture, "HDIST " + Metres(Hdist(sheet)) + ": measure this", 0.5 * (first + last), ARROW_WORDS);
}

void DrawRuler(cv::Mat& picture, const world::Sheet& sheet) {
  const cv::Size2d paper = sheet.PaperSize();
  const double length = RULER_LENGTH * PixelsPerMetre(sheet);
  if (length < SHORTEST_RULER || length > paper.width - 2.0 * BESIDE_RULER) return;
  const double start = 0.5 * (paper.width - length);
  const double y = paper.height - RULER;
  Line(picture, {start, y}, {start + length, y});
  for (int k = 0; k <= RULER_PARTS; ++k) {
    const double x = start + length * k / RULER_PARTS;
    const bool longer = k % (RULER_PARTS / 2) == 0;
    Line(picture, {x, y}, {x, y - (longer ? 1.4 : 0.8) * STROKE});
  }
  Words(picture, "100 mm", 0.5 * paper.width, paper.height - RULER_WORDS);
}

}  // namespace

double PixelsPerMetre(const world::Sheet& sheet) {
  return world::Sheet::STEP / sheet.Unit();
}

cv::Mat DrawPrintedSheet(const world::Sheet& sheet) {
  cv::Mat picture = sheet.Draw();
  if (sheet.Grid().height > 1) DrawArrow(picture, sheet);
  DrawRuler(picture, sheet);
  return picture;
}

void CheckSheetName(const std::string& path) {
  if (std::filesystem::path(path).extension() != ".png") {
    throw std::invalid_argument("--sheet takes a file name that ends in .png");
  }
}

void WriteSheet(const std::string& path, const world::Sheet& sheet) {
  WritePng(path, DrawPrintedSheet(sheet), PixelsPerMetre(sheet));
}

std::string AdviceOn(const std::string& path, const world::Sheet& sheet) {
  constexpr double MILLIMETRES = 1000.0;
  const double perMetre = PixelsPerMetre(sheet);
  const cv::Size2d size = sheet.PaperSize() * (MILLIMETRES / perMetre);
  const bool fitsA4 = std::abs(size.width - 297.0) < 1.0 && std::abs(size.height - 210.0) < 1.0;
  const bool usual = sheet.Grid() == cv::Size(4, 11);
  std::ostringstream text;
  text << std::fixed << std::setprecision(1) << path << ": " << size.width << " x " << size.height << " mm"
       << (fitsA4 ? ", A4 in landscape" : "") << "\n"
       << "Print it at full size (\"actual size\" or 100 %, not \"fit to page\"), and glue it on something "
          "flat.\n";
  if (sheet.Grid().height < 2) return text.str();
  text << "Measure the arrow, which is " << Metres(Hdist(sheet))
       << " long on a true print, and calibrate with what you measured:\n"
       << (usual ? "  velmora-guided --webcam 0" : "  velmora-batch PICTURES --grid ");
  if (!usual) text << sheet.Grid().width << "x" << sheet.Grid().height;
  text << " --hdist " << std::setprecision(3) << Hdist(sheet) << " --output my_camera\n";
  return text.str();
}

}  // namespace render
