/// The pixels around a disc, and the grey values of its ink and its paper.
#include "finder/DiscWindow.h"

#include <cmath>

namespace velmora::finder {

namespace {

/// Darkness up to this share is the paper's noise.
constexpr double PAPER = 0.12;
constexpr double LEAST_CONTRAST = 4.0;
/// Half the distance between the centres of the nearest discs, steps.
const double HALF_WAY = std::sqrt(0.5);

/// The pixels of a row within a radius of the window's centre.
Span SpanOf(const DiscWindow& window, double radius, int row, int width) {
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

}  // namespace

DiscWindow WindowOf(const GridProjection& projection, const LabelledDiscs& discs, size_t k) {
  DiscWindow window;
  window.centre = discs.centres[k];
  window.toSteps = projection.Slope(discs.gridIndices[k]).inv();
  window.form = window.toSteps.t() * window.toSteps;
  window.disc = discs.radii[k] / projection.Step(discs.gridIndices[k]);
  window.outer = window.disc + std::min(0.32, std::max(0.1, HALF_WAY - window.disc));
  return window;
}

std::vector<Span> SpansOf(const DiscWindow& window, const cv::Size& size) {
  const double half = window.outer * std::sqrt(window.form(0, 0) / cv::determinant(window.form));
  const int bottom = std::min(size.height - 1, cvFloor(window.centre.y + half));
  std::vector<Span> spans;
  for (int row = std::max(0, cvCeil(window.centre.y - half)); row <= bottom; ++row) {
    spans.push_back(SpanOf(window, window.outer, row, size.width));
  }
  return spans;
}

int Histogram::Above(int below) const {
  int value = 0;
  for (int sum = counts_[0]; sum <= below && value < 255;) sum += counts_[static_cast<size_t>(++value)];
  return value;
}

double Tones::Weight(double value) const {
  return std::min(1.0 - PAPER, std::max(0.0, Darkness(value) - PAPER));
}

bool TonesIn(const cv::Mat& grey, const DiscWindow& window, const std::vector<Span>& spans, Histogram& all,
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

}  // namespace velmora::finder
