/// Moves the discs' centres to where the grey values put them.
#include "finder/Refinement.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace finder {

namespace {

constexpr int ROUNDS = 2;
/// Darkness up to this share is the paper's noise.
constexpr double PAPER = 0.12;
constexpr double LEAST_CONTRAST = 4.0;
/// Half the distance between the centres of the nearest discs, steps.
const double HALF_WAY = std::sqrt(0.5);

/// An elliptic window around a disc, seen as a circle in steps.
struct Window {
  cv::Point2d centre;
  cv::Matx22d form;    ///< of the square of the distance, in steps, of a point from the centre
  double disc = 0.0;   ///< radius of the disc, steps
  double outer = 0.0;  ///< radius of the window, steps
};

/// The pixels `from` to `to`, not included, of a row.
struct Span {
  int row, from, to;
};

/// The pixels of a row within a radius of the window's centre.
Span SpanOf(const Window& window, double radius, int row, int width) {
  const double a = window.form(0, 0);
  const double b = window.form(0, 1);
  const double y = row - window.centre.y;
  const double square = b * b * y * y - a * (window.form(1, 1) * y * y - radius * radius);
  if (square < 0.0) return {row, 0, 0};
  const double middle = window.centre.x - b * y / a;
  const double half = std::sqrt(square) / a;
  const int from = std::max(0, cvCeil(middle - half));
  return {row, from, std::max(from, std::min(width, cvFloor(middle + half) + 1))};
}

std::vector<Span> SpansOf(const Window& window, double radius, const cv::Size& size) {
  const double half = radius * std::sqrt(window.form(0, 0) / cv::determinant(window.form));
  const int bottom = std::min(size.height - 1, cvFloor(window.centre.y + half));
  std::vector<Span> spans;
  for (int row = std::max(0, cvCeil(window.centre.y - half)); row <= bottom; ++row) {
    spans.push_back(SpanOf(window, radius, row, size.width));
  }
  return spans;
}

/// How many pixels have which value.
class Histogram {
 public:
  void Add(const unsigned char* pixels, int from, int to) {
    for (int x = from; x < to; ++x) ++counts_[pixels[x]];
    total_ += std::max(0, to - from);
  }
  bool Empty() const { return total_ == 0; }
  int Of(size_t value) const { return counts_[value]; }
  /// The smallest value that more than so many are not above.
  int Above(int below) const {
    int value = 0;
    for (int sum = counts_[0]; sum <= below && value < 255;) sum += counts_[static_cast<size_t>(++value)];
    return value;
  }
  int Median() const { return Above(total_ / 2); }
  int Darkest() const { return Above(0); }

 private:
  std::array<int, 256> counts_ = {};
  int total_ = 0;
};

/// The grey values of paper and ink.
struct Tones {
  double paper = 0.0;
  double ink = 0.0;
};

/// `all` becomes the histogram of the window. False when they cannot be told apart.
bool TonesIn(const cv::Mat& grey, const Window& window, const std::vector<Span>& spans, Histogram& all,
             Tones& tones) {
  const double ring = 0.45 * window.disc + 0.55 * window.outer;
  Histogram paper;
  Histogram core;
  for (const Span& span : spans) {
    const unsigned char* pixels = grey.ptr(span.row);
    const Span hole = SpanOf(window, ring, span.row, grey.cols);
    const Span ink = SpanOf(window, 0.4 * window.disc, span.row, grey.cols);
    all.Add(pixels, span.from, span.to);
    core.Add(pixels, ink.from, ink.to);
    if (hole.from == hole.to) {
      paper.Add(pixels, span.from, span.to);
    } else {
      paper.Add(pixels, span.from, hole.from);
      paper.Add(pixels, hole.to, span.to);
    }
  }
  if (paper.Empty()) return false;
  tones.paper = paper.Median();
  tones.ink = core.Empty() ? all.Darkest() : core.Median();
  return tones.paper - tones.ink >= LEAST_CONTRAST;
}

/// One round; false when paper and ink cannot be told apart.
bool Recentre(const cv::Mat& grey, Window& window, double& area) {
  // Whole numbers add up faster.
  constexpr double UNIT = 1 << 20;
  const std::vector<Span> spans = SpansOf(window, window.outer, grey.size());
  Histogram all;
  Tones tones;
  if (!TonesIn(grey, window, spans, all, tones)) return false;
  std::array<std::int64_t, 256> weights;
  area = 0.0;
  for (size_t value = 0; value < 256; ++value) {
    const double dark = (tones.paper - static_cast<double>(value)) / (tones.paper - tones.ink);
    area += all.Of(value) * std::min(1.0, std::max(0.0, dark));
    weights[value] = cvRound(UNIT * std::min(1.0 - PAPER, std::max(0.0, dark - PAPER)));
  }
  cv::Point2d sum;
  double total = 0.0;
  for (const Span& span : spans) {
    const unsigned char* pixels = grey.ptr(span.row);
    std::int64_t moment = 0;
    std::int64_t ofRow = 0;
    for (int x = span.from; x < span.to; ++x) {
      moment += weights[pixels[x]] * x;
      ofRow += weights[pixels[x]];
    }
    sum += cv::Point2d(static_cast<double>(moment), static_cast<double>(ofRow) * span.row);
    total += static_cast<double>(ofRow);
  }
  if (!(total > 0.0)) return false;
  window.centre = sum / total;
  return true;
}

}  // namespace

void RefineDiscs(const SheetPlane& plane, const cv::Mat& grey, PlacedDiscs& discs) {
  for (size_t k = 0; k < discs.places.size(); ++k) {
    const cv::Matx22d slope = plane.Slope(discs.places[k]);
    const double step = plane.Step(discs.places[k]);
    const double radius = discs.radii[k];
    Window window;
    window.centre = discs.centres[k];
    const cv::Matx22d toSteps = slope.inv();
    window.form = toSteps.t() * toSteps;
    window.disc = radius / step;
    window.outer = window.disc + std::min(0.32, std::max(0.1, HALF_WAY - window.disc));
    double area = 0.0;
    bool refined = true;
    for (int round = 0; round < ROUNDS && refined; ++round) refined = Recentre(grey, window, area);
    if (!refined || cv::norm(window.centre - discs.centres[k]) > 0.25 * radius + 0.5) continue;
    discs.centres[k] = window.centre;
    discs.radii[k] = std::sqrt(area / CV_PI);
  }
}

}  // namespace finder
