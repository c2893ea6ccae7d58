/// The window of a disc whose centre is looked for: it moves, and most of its pixels stay the same.
#include "finder/MovedWindow.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmora::finder {

namespace {

/// Whole numbers add up faster.
constexpr double UNIT = 1 << 20;

/// Calls `change(span, added)` for the pixels that only one of two lists of spans has.
template <typename Change>
void VisitChanges(const std::vector<Span>& before, const std::vector<Span>& now, Change change) {
  constexpr int NONE = std::numeric_limits<int>::max();
  size_t i = 0;
  size_t j = 0;
  while (i < before.size() || j < now.size()) {
    const int old = i < before.size() ? before[i].row : NONE;
    const int row = j < now.size() ? now[j].row : NONE;
    if (old < row) {
      change(before[i++], false);
    } else if (row < old) {
      change(now[j++], true);
    } else {
      const Span& a = before[i++];
      const Span& b = now[j++];
      if (a.to <= b.from || b.to <= a.from) {
        change(a, false);
        change(b, true);
        continue;
      }
      if (a.from != b.from) {
        change({row, std::min(a.from, b.from), std::max(a.from, b.from)}, b.from < a.from);
      }
      if (a.to != b.to) change({row, std::min(a.to, b.to), std::max(a.to, b.to)}, b.to > a.to);
    }
  }
}

}  // namespace

bool MovedWindow::MoveTo(const DiscWindow& window) {
  // Nobody asked for the moments of the window that it comes from.
  if (unasked_) weighed_ = false;
  unasked_ = true;
  std::swap(before_, spans_);
  FindSpans(window, grey_.size(), spans_);
  const auto count = [&](Histogram& histogram) {
    return [&](const Span& span, bool added) {
      const unsigned char* pixels = grey_.ptr(span.row);
      if (added) {
        histogram.Add(pixels, span.from, span.to);
      } else {
        histogram.Remove(pixels, span.from, span.to);
      }
    };
  };
  VisitChanges(before_.all, spans_.all, count(all_));
  VisitChanges(before_.hole, spans_.hole, count(hole_));
  VisitChanges(before_.core, spans_.core, count(core_));
  Histogram paper = all_;
  paper.Remove(hole_);
  if (paper.Empty()) return false;
  tones_.paper = paper.Median();
  tones_.ink = core_.Empty() ? all_.Darkest() : core_.Median();
  return tones_.AreApart();
}

void MovedWindow::Weigh(double& area) {
  area = 0.0;
  // What is as bright as the paper has no weight, and there is nothing below the darkest pixel.
  const size_t paper = static_cast<size_t>(std::ceil(tones_.paper));
  for (size_t value = static_cast<size_t>(all_.Darkest()); value < paper; ++value) {
    const int count = all_.Of(value);
    if (count == 0) continue;
    // Those of values that were in the window before are known.
    double& share = shares_[value];
    if (share < 0.0) {
      const double darkness = tones_.Darkness(static_cast<double>(value));
      share = std::min(1.0, std::max(0.0, darkness));
      weights_[value] = cvRound(UNIT * Tones::WeightOf(darkness));
    }
    area += count * share;
  }
}

void MovedWindow::AddMoments(const Span& span, std::int64_t sign) {
  const unsigned char* pixels = grey_.ptr(span.row);
  std::int64_t weight = 0;
  std::int64_t x = 0;
  for (int column = span.from; column < span.to; ++column) {
    weight += weights_[pixels[column]];
    x += weights_[pixels[column]] * column;
  }
  moments_.weight += sign * weight;
  moments_.x += sign * x;
  moments_.y += sign * weight * span.row;
}

bool MovedWindow::FindMiddle(cv::Point2d& middle, double& area) {
  const bool same = weighed_ && weighedTones_.paper == tones_.paper && weighedTones_.ink == tones_.ink;
  if (!same) {
    shares_.fill(-1.0);
    weights_ = {};
    moments_ = {};
  }
  Weigh(area);
  if (same) {
    VisitChanges(before_.all, spans_.all,
                 [&](const Span& span, bool added) { AddMoments(span, added ? 1 : -1); });
  } else {
    for (const Span& span : spans_.all) AddMoments(span, 1);
  }
  weighed_ = true;
  unasked_ = false;
  weighedTones_ = tones_;
  if (moments_.weight <= 0) return false;
  middle = cv::Point2d(static_cast<double>(moments_.x), static_cast<double>(moments_.y)) /
           static_cast<double>(moments_.weight);
  return true;
}

}  // namespace velmora::finder
