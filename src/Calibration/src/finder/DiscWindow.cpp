/// The pixels around a disc, and the grey values of its ink and its paper.
#include "finder/DiscWindow.h"

#include <cmath>

namespace velmora::finder {

namespace {

/// The part of a disc's radius within which there is nothing but ink.
constexpr double CORE = 0.4;
/// Half the distance between the centres of the nearest discs, steps.
const double HALF_WAY = std::sqrt(0.5);

/// A row of a window, whose pixels within any radius of the centre can be asked for.
class WindowRow {
 public:
  WindowRow(const DiscWindow& window, int row, int width) : row_(row), width_(width), a_(window.form(0, 0)) {
    const double b = window.form(0, 1);
    const double y = row - window.centre.y;
    slant_ = b * b * y * y;
    far_ = window.form(1, 1) * y * y;
    middle_ = window.centre.x - b * y / a_;
  }

  Span Within(double radius) const {
    const double square = slant_ - a_ * (far_ - radius * radius);
    if (square < 0.0) return {row_, 0, 0};
    const double half = std::sqrt(square) / a_;
    const int from = std::max(0, cvCeil(middle_ - half));
    return {row_, from, std::max(from, std::min(width_, cvFloor(middle_ + half) + 1))};
  }

 private:
  const int row_;
  const int width_;
  const double a_;
  double slant_, far_, middle_;
};

/// Where a disc and its blur end and paper begins, steps.
double RingOf(const DiscWindow& window) {
  return 0.45 * window.disc + 0.55 * window.outer;
}

/// The rows of an image that a window reaches.
cv::Range RowsOf(const DiscWindow& window, const cv::Size& size) {
  const double half = window.outer * std::sqrt(window.form(0, 0) / cv::determinant(window.form));
  return {std::max(0, cvCeil(window.centre.y - half)),
          std::min(size.height - 1, cvFloor(window.centre.y + half)) + 1};
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

void FindSpans(const DiscWindow& window, const cv::Size& size, WindowSpans& spans) {
  const cv::Range rows = RowsOf(window, size);
  const double ring = RingOf(window);
  const double core = CORE * window.disc;
  const size_t count = static_cast<size_t>(std::max(0, rows.size()));
  for (std::vector<Span>* part : {&spans.all, &spans.hole, &spans.core}) part->resize(count);
  for (size_t k = 0; k < count; ++k) {
    const int row = rows.start + static_cast<int>(k);
    const WindowRow ofRow(window, row, size.width);
    const Span all = ofRow.Within(window.outer);
    const Span hole = ofRow.Within(ring);
    const int from = std::min(all.to, std::max(all.from, hole.from));
    spans.all[k] = all;
    spans.hole[k] = {row, from, std::max(from, std::min(all.to, hole.to))};
    spans.core[k] = ofRow.Within(core);
  }
}

void Histogram::Add(const unsigned char* pixels, int from, int to) {
  int x = from;
  for (; x + 1 < to; x += 2) {
    ++even_[pixels[x]];
    ++odd_[pixels[x + 1]];
  }
  if (x < to) ++even_[pixels[x]];
  total_ += std::max(0, to - from);
}

void Histogram::Remove(const unsigned char* pixels, int from, int to) {
  for (int x = from; x < to; ++x) --even_[pixels[x]];
  total_ -= std::max(0, to - from);
}

int Histogram::Above(int below) const {
  // Many values at once first, then the one among them.
  constexpr size_t BLOCK = 16;
  size_t value = 0;
  int sum = 0;
  for (; value + BLOCK < even_.size(); value += BLOCK) {
    int more = 0;
    for (size_t k = value; k < value + BLOCK; ++k) more += Of(k);
    if (sum + more > below) break;
    sum += more;
  }
  for (sum += Of(value); sum <= below && value + 1 < even_.size();) sum += Of(++value);
  return static_cast<int>(value);
}

bool TonesIn(const cv::Mat& grey, const WindowSpans& spans, Tones& tones) {
  Histogram paper;
  Histogram core;
  for (size_t k = 0; k < spans.all.size(); ++k) {
    const Span& all = spans.all[k];
    const unsigned char* pixels = grey.ptr(all.row);
    paper.Add(pixels, all.from, spans.hole[k].from);
    paper.Add(pixels, spans.hole[k].to, all.to);
    core.Add(pixels, spans.core[k].from, spans.core[k].to);
  }
  if (paper.Empty()) return false;
  tones.paper = paper.Median();
  if (core.Empty()) {
    for (const Span& span : spans.all) core.Add(grey.ptr(span.row), span.from, span.to);
    tones.ink = core.Darkest();
  } else {
    tones.ink = core.Median();
  }
  return tones.AreApart();
}

bool TonesIn(const cv::Mat& grey, const DiscWindow& window, Tones& tones) {
  WindowSpans spans;
  FindSpans(window, grey.size(), spans);
  return TonesIn(grey, spans, tones);
}

}  // namespace velmora::finder
