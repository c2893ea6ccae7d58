/// Moves the discs' centres to where the grey values put them.
#include "finder/Refinement.h"

#include <array>
#include <cmath>
#include <cstdint>

#include "finder/DiscWindow.h"

namespace velmora::finder {

namespace {

constexpr int ROUNDS = 2;

/// One round; false when paper and ink cannot be told apart.
bool Recentre(const cv::Mat& grey, DiscWindow& window, double& area) {
  // Whole numbers add up faster.
  constexpr double UNIT = 1 << 20;
  const std::vector<Span> spans = SpansOf(window, grey.size());
  Histogram all;
  Tones tones;
  if (!TonesIn(grey, window, spans, all, tones)) return false;
  std::array<std::int64_t, 256> weights;
  area = 0.0;
  for (size_t value = 0; value < 256; ++value) {
    const double grade = static_cast<double>(value);
    area += all.Of(value) * std::min(1.0, std::max(0.0, tones.Darkness(grade)));
    weights[value] = cvRound(UNIT * tones.Weight(grade));
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

void RefineDiscs(const GridProjection& projection, const cv::Mat& grey, LabelledDiscs& discs) {
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (!discs.Has(k)) continue;
    const double radius = discs.radii[k];
    DiscWindow window = WindowOf(projection, discs, k);
    double area = 0.0;
    bool refined = true;
    for (int round = 0; round < ROUNDS && refined; ++round) refined = Recentre(grey, window, area);
    if (!refined || cv::norm(window.centre - discs.centres[k]) > 0.25 * radius + 0.5) continue;
    discs.centres[k] = window.centre;
    discs.radii[k] = std::sqrt(area / CV_PI);
  }
}

}  // namespace velmora::finder
