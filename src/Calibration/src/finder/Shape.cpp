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

/// A complex number; the library's own ask after each product whether it became none.
struct Number {
  double re, im;

  Number operator*(const Number& other) const {
    return {re * other.re - im * other.im, re * other.im + im * other.re};
  }
  Number operator*(double factor) const { return {factor * re, factor * im}; }
  Number operator+(const Number& other) const { return {re + other.re, im + other.im}; }
};

/// The sums over a row of pixels of their weights, times the powers of their numbers in the row.
using RowSums = std::array<double, 5>;

RowSums SumsOf(const unsigned char* pixels, int count, int stride, const Tones& tones) {
  const double perGrey = 1.0 / (tones.paper - tones.ink);
  double sum = 0.0, first = 0.0, second = 0.0, third = 0.0, fourth = 0.0;
  for (int k = 0; k < count; ++k) {
    const double weight = Tones::WeightOf((tones.paper - pixels[k * stride]) * perGrey);
    const double number = k;
    const double ofFirst = weight * number;
    const double ofSecond = ofFirst * number;
    const double ofThird = ofSecond * number;
    sum += weight;
    first += ofFirst;
    second += ofSecond;
    third += ofThird;
    fourth += ofThird * number;
  }
  return {sum, first, second, third, fourth};
}

/// The spot's moments of second, third and fourth order. Blur hardly changes them: the mean of a harmonic
/// function over a circle is its value in the middle.
bool MomentsOf(const cv::Mat& grey, const DiscWindow& window, WindowSpans& spans, Moments& moments) {
  FindSpans(window, grey.size(), spans);
  Tones tones;
  if (!TonesIn(grey, spans, tones)) return false;
  const size_t stride = 1 + spans.all.size() / ROWS;
  const int columns = static_cast<int>(stride);
  const cv::Matx22d& toSteps = window.toSteps;
  // Along a row the numbers u + iv are evenly apart, so their powers follow from sums over the row.
  const Number apart = Number{toSteps(0, 0), toSteps(1, 0)} * columns;
  const Number apart2 = apart * apart;
  const Number apart3 = apart2 * apart;
  const Number apart4 = apart2 * apart2;
  Number second = {0.0, 0.0}, third = {0.0, 0.0}, fourth = {0.0, 0.0};
  double area = 0.0;
  for (size_t k = 0; k < spans.all.size(); k += stride) {
    const Span& span = spans.all[k];
    if (span.from >= span.to) continue;
    const int count = (span.to - span.from + columns - 1) / columns;
    const RowSums sums = SumsOf(grey.ptr(span.row) + span.from, count, columns, tones);
    const double column = span.from - window.centre.x;
    const double row = span.row - window.centre.y;
    const Number from = {toSteps(0, 0) * column + toSteps(0, 1) * row,
                         toSteps(1, 0) * column + toSteps(1, 1) * row};
    const Number from2 = from * from;
    second = second + from2 * sums[0] + from * apart * (2.0 * sums[1]) + apart2 * sums[2];
    third = third + from2 * from * sums[0] + from2 * apart * (3.0 * sums[1]) +
            from * apart2 * (3.0 * sums[2]) + apart3 * sums[3];
    fourth = fourth + from2 * from2 * sums[0] + from2 * from * apart * (4.0 * sums[1]) +
             from2 * apart2 * (6.0 * sums[2]) + from * apart3 * (4.0 * sums[3]) + apart4 * sums[4];
    area += sums[0];
  }
  moments = {std::complex<double>(second.re, second.im), std::complex<double>(third.re, third.im),
             std::complex<double>(fourth.re, fourth.im)};
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
  WindowSpans spans;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    Moments moments;
    if (!discs.Has(k) || !MomentsOf(grey, WindowOf(projection, discs, k), spans, moments)) continue;
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
