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

void MovedWindow::CountPixels() {
  for (size_t k = 0; k < spans_.all.size(); ++k) {
    const Span& all = spans_.all[k];
    const Span& hole = spans_.hole[k];
    const unsigned char* pixels = grey_.ptr(all.row);
    paper_.Add(pixels, all.from, hole.from);
    hole_.Add(pixels, hole.from, hole.to);
    paper_.Add(pixels, hole.to, all.to);
    core_.Add(pixels, spans_.core[k].from, spans_.core[k].to);
  }
}

void MovedWindow::CountChanges() {
  const auto change = [&](Histogram& histogram, const Span& span, bool added) {
    const unsigned char* pixels = grey_.ptr(span.row);
    if (added) {
      histogram.Add(pixels, span.from, span.to);
    } else {
      histogram.Remove(pixels, span.from, span.to);
    }
  };
  VisitChanges(before_.all, spans_.all, [&](const Span& span, bool added) { change(paper_, span, added); });
  VisitChanges(before_.hole, spans_.hole, [&](const Span& span, bool added) {
    change(hole_, span, added);
    change(paper_, span, !added);
  });
  VisitChanges(before_.core, spans_.core, [&](const Span& span, bool added) { change(core_, span, added); });
}

bool MovedWindow::MoveTo(const DiscWindow& window) {
  // Nobody asked for the moments of the window that it comes from.
  if (unasked_) weighed_ = false;
  unasked_ = true;
  std::swap(before_, spans_);
  FindSpans(window, grey_.size(), spans_);
  if (before_.all.empty()) {
    CountPixels();
  } else {
    CountChanges();
  }
  if (paper_.Empty()) return false;
  tones_.paper = paper_.Median();
  tones_.ink = core_.Empty() ? Darkest() : core_.Median();
  return tones_.AreApart();
}

void MovedWindow::WeighFrom(int darkest) {
  // One thing after the other: compilers divide several at once then.
  for (int value = darkest; value < known_; ++value) {
    shares_[static_cast<size_t>(value)] = std::min(1.0, std::max(0.0, tones_.Darkness(value)));
  }
  for (int value = darkest; value < known_; ++value) {
    const size_t k = static_cast<size_t>(value);
    weights_[k] = cvRound(UNIT * Tones::WeightOf(shares_[k]));
  }
  known_ = std::min(known_, darkest);
}

void MovedWindow::AddMoments(const Span& span, std::int64_t sign) {
  const unsigned char* pixels = grey_.ptr(span.row);
  std::int64_t weight = 0;
  // Each pixel's weight as often as columns are left from it on: sums of sums take no multiplications.
  std::int64_t left = 0;
  for (int column = span.from; column < span.to; ++column) {
    weight += weights_[pixels[column]];
    left += weight;
  }
  moments_.weight += sign * weight;
  moments_.x += sign * (weight * span.to - left);
  moments_.y += sign * weight * span.row;
}

bool MovedWindow::FindMiddle(cv::Point2d& middle, double& area) {
  const bool same = weighed_ && weighedTones_.paper == tones_.paper && weighedTones_.ink == tones_.ink;
  // What is as bright as the paper has no weight, and there is nothing below the darkest pixel.
  const int paper = cvCeil(tones_.paper);
  const int darkest = Darkest();
  if (!same) {
    std::fill(weights_.begin() + paper, weights_.end(), 0);
    known_ = paper;
    moments_ = {};
  }
  WeighFrom(darkest);
  area = 0.0;
  for (int value = darkest; value < paper; ++value) {
    area += Count(static_cast<size_t>(value)) * shares_[static_cast<size_t>(value)];
  }
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
