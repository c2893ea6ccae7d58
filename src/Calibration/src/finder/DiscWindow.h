/// The pixels around a disc, and the grey values of its ink and its paper.
#pragma once

#include <algorithm>
#include <array>
#include <opencv2/core.hpp>
#include <vector>

#include "finder/GridProjection.h"

namespace velmora::finder {

/// The pixels `from` to `to`, not included, of a row.
struct Span {
  int row, from, to;
};

/// An elliptic window around a disc, taken as a circle in steps.
struct DiscWindow {
  cv::Point2d centre;
  cv::Matx22d toSteps;  ///< from pixels
  cv::Matx22d form;     ///< of the square of the distance, in steps, of a point from the centre
  double disc = 0.0;    ///< radius of the disc, steps
  double outer = 0.0;   ///< radius of the window, steps
};

/// The window of a disc that is not missing: it ends before its neighbours begin.
DiscWindow WindowOf(const GridProjection& projection, const LabelledDiscs& discs, size_t k);

/// The pixels of a window, and those of two parts of it: where there may be ink, the rest being paper, and
/// where there is nothing but ink. Of all three the spans of each row of the window; one without pixels
/// ends where it begins.
struct WindowSpans {
  std::vector<Span> all, hole, core;
};
void FindSpans(const DiscWindow& window, const cv::Size& size, WindowSpans& spans);

/// How many pixels have which value.
class Histogram {
 public:
  void Add(const unsigned char* pixels, int from, int to);
  /// Takes pixels away again.
  void Remove(const unsigned char* pixels, int from, int to);
  bool Empty() const { return total_ == 0; }
  int Of(size_t value) const { return even_[value] + odd_[value]; }
  int Median() const { return Above(total_ / 2); }
  int Darkest() const { return Above(0); }

 private:
  /// The smallest value that more than `below` pixels do not exceed.
  int Above(int below) const;

  /// Neighbouring pixels are mostly of one value: counted in turn, neither has to wait for the other.
  std::array<int, 256> even_ = {};
  std::array<int, 256> odd_ = {};
  int total_ = 0;
};

/// The grey values of paper and ink.
struct Tones {
  double paper = 0.0;
  double ink = 0.0;

  bool AreApart() const { return paper - ink >= LEAST_CONTRAST; }

  double Darkness(double value) const { return (paper - value) / (paper - ink); }
  /// The darkness without the paper's noise: 0 to 0.88.
  double Weight(double value) const { return WeightOf(Darkness(value)); }
  static double WeightOf(double darkness) { return std::min(1.0 - PAPER, std::max(0.0, darkness - PAPER)); }

 private:
  /// Darkness up to this share is the paper's noise.
  static constexpr double PAPER = 0.12;
  static constexpr double LEAST_CONTRAST = 4.0;
};

/// The tones around a disc. False when paper and ink cannot be told apart.
bool TonesIn(const cv::Mat& grey, const WindowSpans& spans, Tones& tones);
bool TonesIn(const cv::Mat& grey, const DiscWindow& window, Tones& tones);

}  // namespace velmora::finder
