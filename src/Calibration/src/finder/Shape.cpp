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
  Tones tones;
  if (!TonesIn(grey, window, spans, tones)) return false;
  const size_t stride = 1 + spans.size() / ROWS;
  // In numbers of their own: a product of complex ones asks each time whether it became none.
  double re2 = 0.0, im2 = 0.0, re3 = 0.0, im3 = 0.0, re4 = 0.0, im4 = 0.0, area = 0.0;
  const cv::Matx22d& toSteps = window.toSteps;
  for (size_t k = 0; k < spans.size(); k += stride) {
    const Span& span = spans[k];
    const unsigned char* pixels = grey.ptr(span.row);
    const double row = span.row - window.centre.y;
    for (int x = span.from; x < span.to; x += static_cast<int>(stride)) {
      if (pixels[x] >= tones.paper) continue;
      const double weight = tones.Weight(pixels[x]);
      if (weight <= 0.0) continue;
      const double column = x - window.centre.x;
      const double u = toSteps(0, 0) * column + toSteps(0, 1) * row;
      const double v = toSteps(1, 0) * column + toSteps(1, 1) * row;
      // The powers of u + iv.
      const double u2 = u * u - v * v;
      const double v2 = u * v + v * u;
      re2 += weight * u2;
      im2 += weight * v2;
      re3 += weight * (u2 * u - v2 * v);
      im3 += weight * (u2 * v + v2 * u);
      re4 += weight * (u2 * u2 - v2 * v2);
      im4 += weight * (u2 * v2 + v2 * u2);
      area += weight;
    }
  }
  moments = {std::complex<double>(re2, im2), std::complex<double>(re3, im3), std::complex<double>(re4, im4)};
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
