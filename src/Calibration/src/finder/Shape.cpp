/// Tells discs from other shapes at the grid's points.
#include "finder/Shape.h"

#include <array>
#include <cmath>
#include <complex>

#include "finder/DiscWindow.h"

namespace velmora::finder {

namespace {

/// The number of rows across a window that determine its spot's shape.
constexpr int ROWS = 24;

using Moments = std::array<std::complex<double>, 3>;

/// The spot's moments of second, third and fourth order. Blur hardly changes them: the mean of a harmonic
/// function over a circle is its value in the middle.
bool MomentsOf(const cv::Mat& grey, const DiscWindow& window, Moments& moments) {
  const std::vector<Span> spans = SpansOf(window, grey.size());
  Histogram all;
  Tones tones;
  if (!TonesIn(grey, window, spans, all, tones)) return false;
  const size_t stride = 1 + spans.size() / ROWS;
  moments = {};
  double area = 0.0;
  for (size_t k = 0; k < spans.size(); k += stride) {
    const Span& span = spans[k];
    const unsigned char* pixels = grey.ptr(span.row);
    for (int x = span.from; x < span.to; x += static_cast<int>(stride)) {
      const double weight = tones.Weight(pixels[x]);
      if (weight <= 0.0) continue;
      const cv::Vec2d at = window.toSteps * cv::Vec2d(x - window.centre.x, span.row - window.centre.y);
      const std::complex<double> z(at[0], at[1]);
      const std::complex<double> square = z * z;
      moments[0] += weight * square;
      moments[1] += weight * square * z;
      moments[2] += weight * square * square;
      area += weight;
    }
  }
  if (!(area > 0.0)) return false;
  // A pixel's share of the sheet, and the darkest one's weight.
  const double unit = std::abs(cv::determinant(window.toSteps)) * static_cast<double>(stride * stride);
  const double radius = std::sqrt(area * unit / tones.Weight(tones.ink) / CV_PI);
  for (size_t k = 0; k < moments.size(); ++k) {
    const double order = static_cast<double>(k) + 2.0;
    const double ofDisc = area * std::pow(radius, order) * 2.0 / (order + 2.0);
    moments[k] /= ofDisc;
  }
  return true;
}

}  // namespace

ShapeMoments MeanShape(const GridProjection& projection, const cv::Mat& grey, const LabelledDiscs& discs) {
  Moments sum = {};
  int count = 0;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    Moments moments;
    if (!discs.Has(k) || !MomentsOf(grey, WindowOf(projection, discs, k), moments)) continue;
    for (size_t order = 0; order < sum.size(); ++order) sum[order] += moments[order];
    ++count;
  }
  if (count == 0) return {};
  return {std::abs(sum[0]) / count, std::abs(sum[1]) / count, std::abs(sum[2]) / count};
}

bool AreDiscs(const GridProjection& projection, const cv::Mat& grey, const LabelledDiscs& discs) {
  const ShapeMoments shape = MeanShape(projection, grey, discs);
  // Blur is no longer round in the plane of an oblique sheet: it gives small discs a second moment, and a
  // smaller fourth one.
  return shape.second < 0.5 && shape.third < 0.2 && shape.fourth < 0.2 + shape.second;
}

}  // namespace velmora::finder
