/// What the image shows at grid indices where a disc could be, and where none is.
#include "finder/Sights.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <utility>

#include "finder/Grey.h"

namespace velmora::finder {

namespace {

/// How far the blur of a disc's rim reaches, pixels.
constexpr double BLUR = 2.0;
/// By how much a grid index beyond the known discs may be off, steps.
constexpr double UNSURE = 0.1;
/// The number of nearest discs that say what paper and ink look like.
constexpr size_t WITNESSES = 7;
/// By which share of the contrast blank paper may differ from that around the nearest discs.
constexpr double UNEVEN = 0.3;
/// The part of a disc that is looked at, in its radii: where there is none, and where there is one, whose rim
/// may be blurred; and the samples from its middle to the edge.
constexpr double LARGE_PART = 0.7;
constexpr double SMALL_PART = 0.35;
constexpr int SAMPLES = 4;

double Median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace

Sights::Sights(const GridProjection& projection, const LabelledDiscs& discs, const cv::Mat& grey)
    : projection_(projection), grey_(grey) {
  std::vector<double> radii;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (!discs.Has(k)) continue;
    radii.push_back(discs.radii[k] / projection.Step(discs.gridIndices[k]));
    gridIndices_.push_back(discs.gridIndices[k]);
    witnesses_.push_back({WindowOf(projection, discs, k), Told::NotYet, {}});
  }
  if (!radii.empty()) radius_ = Median(radii);
}

/// With the lens's bend, which is what counts at the border.
cv::Matx22d Sights::SlopeAt(const cv::Point& gridIndex) const {
  const cv::Point2d at = gridIndex;
  const cv::Point2d x =
      projection_.Predict(at + cv::Point2d(0.5, 0.0)) - projection_.Predict(at - cv::Point2d(0.5, 0.0));
  const cv::Point2d y =
      projection_.Predict(at + cv::Point2d(0.0, 0.5)) - projection_.Predict(at - cv::Point2d(0.0, 0.5));
  return {x.x, y.x, x.y, y.y};
}

bool Sights::IsCut(const cv::Point2d& centre, const cv::Point& gridIndex, double steps) const {
  const cv::Matx22d slope = SlopeAt(gridIndex);
  const double x = (radius_ + steps) * std::hypot(slope(0, 0), slope(0, 1)) + BLUR;
  const double y = (radius_ + steps) * std::hypot(slope(1, 0), slope(1, 1)) + BLUR;
  // What is no number is inside of nothing.
  return !(centre.x >= x && centre.y >= y && centre.x <= grey_.cols - 1 - x &&
           centre.y <= grey_.rows - 1 - y);
}

bool Sights::Ask(size_t k, Tones& tones) const {
  Witness& witness = witnesses_[k];
  if (witness.told == Told::NotYet) {
    witness.told = TonesIn(grey_, witness.window, witness.tones) ? Told::Yes : Told::No;
  }
  tones = witness.tones;
  return witness.told == Told::Yes;
}

bool Sights::TonesAround(const cv::Point& gridIndex, Tones& tones) const {
  std::vector<size_t> nearest(gridIndices_.size());
  std::iota(nearest.begin(), nearest.end(), size_t{0});
  const auto distance = [&](size_t k) {
    const cv::Point apart = gridIndices_[k] - gridIndex;
    return apart.dot(apart);
  };
  const size_t count = std::min(WITNESSES, nearest.size());
  std::partial_sort(
      nearest.begin(), nearest.begin() + static_cast<std::ptrdiff_t>(count), nearest.end(),
      [&](size_t a, size_t b) { return std::pair(distance(a), a) < std::pair(distance(b), b); });
  // Medians: one may be beside something else than paper.
  std::vector<double> papers;
  std::vector<double> inks;
  for (size_t k = 0; k < count; ++k) {
    if (!Ask(nearest[k], tones)) continue;
    papers.push_back(tones.paper);
    inks.push_back(tones.ink);
  }
  if (papers.empty()) return false;
  tones = {Median(papers), Median(inks)};
  return tones.paper > tones.ink;
}

/// True when the image is of that darkness all over an ellipse.
bool Sights::IsAll(double darkness, const cv::Point2d& centre, const cv::Matx22d& reach,
                   const Tones& tones) const {
  // By quarters of the disc: noise is mean there, and what covers a part of it is not.
  std::array<double, 4> sums = {};
  std::array<int, 4> counts = {};
  for (int v = -SAMPLES; v <= SAMPLES; ++v) {
    for (int u = -SAMPLES; u <= SAMPLES; ++u) {
      if (u == 0 || v == 0 || u * u + v * v > SAMPLES * SAMPLES) continue;
      const cv::Vec2d offset = reach * cv::Vec2d(u, v) * (1.0 / SAMPLES);
      const cv::Point2d at = centre + cv::Point2d(offset);
      if (at.x < 0.0 || at.y < 0.0 || at.x > grey_.cols - 1 || at.y > grey_.rows - 1) continue;
      const size_t quarter = (u > 0 ? 1U : 0U) + (v > 0 ? 2U : 0U);
      sums[quarter] += GreyAt(grey_, at);
      ++counts[quarter];
    }
  }
  bool any = false;
  for (size_t quarter = 0; quarter < sums.size(); ++quarter) {
    if (counts[quarter] == 0) continue;
    any = true;
    if (std::abs(tones.Darkness(sums[quarter] / counts[quarter]) - darkness) > UNEVEN) return false;
  }
  return any;
}

PointState Sights::At(const cv::Point& gridIndex) const {
  const cv::Point2d centre = projection_.Predict(gridIndex);
  const bool cut = IsCut(centre, gridIndex, UNSURE);
  const bool mostlyBeyond =
      !(centre.x >= 0.0 && centre.y >= 0.0 && centre.x <= grey_.cols - 1 && centre.y <= grey_.rows - 1);
  if (cut && mostlyBeyond) return PointState::Beyond;
  Tones tones;
  const bool blank =
      TonesAround(gridIndex, tones) && IsAll(0.0, centre, SlopeAt(gridIndex) * (LARGE_PART * radius_), tones);
  if (blank) return PointState::Paper;
  return cut ? PointState::Beyond : PointState::Other;
}

bool Sights::IsBeyond(const cv::Point& gridIndex) const {
  return IsCut(projection_.Predict(gridIndex), gridIndex, UNSURE) && At(gridIndex) == PointState::Beyond;
}

bool Sights::ShowsDisc(const cv::Point2d& centre, const cv::Point& gridIndex) const {
  Tones tones;
  return TonesAround(gridIndex, tones) &&
         IsAll(1.0, centre, SlopeAt(gridIndex) * (SMALL_PART * radius_), tones);
}

}  // namespace velmora::finder
