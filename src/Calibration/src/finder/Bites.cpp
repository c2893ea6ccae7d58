/// Discs beside something that hides others.
#include "finder/Bites.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "finder/Grey.h"
#include "finder/Sights.h"
#include "finder/Surroundings.h"
#include "foundation/Median.h"

namespace velmora::finder {

namespace {

/// Discs up to this far from a missing one, along each axis, are looked at: steps.
constexpr int NEAR = 4;
constexpr int DIRECTIONS = 16;
constexpr int SAMPLES = 4;
/// Nothing is asked of the rim's own blur, pixels to both sides, nor of half a small disc.
constexpr double BLUR = 1.5;
/// The paper around a disc that is looked at, steps.
constexpr double AROUND = 0.25;
/// Half the distance between the centres of the nearest discs, steps.
const double HALF_WAY = std::sqrt(0.5);
/// By which share of the contrast ink and paper may differ from those of the nearest discs, and along a disc
/// from its own, beyond the noise.
constexpr double UNLIKE = 0.3;
constexpr double UNEVEN = 0.1;
/// Discs beside a gap are bitten when they are farther off the others than both: pixels, and a multiple of
/// the usual distance.
constexpr double CLOSE = 0.1;
constexpr double USUAL = 4.0;

/// The mean darkness along a stretch in a direction from the middle, steps; `otherwise` beyond the image.
double DarknessAlong(const cv::Mat& grey, const ExpectedDisc& disc, const Tones& tones,
                     const cv::Vec2d& direction, double from, double to, double otherwise) {
  double sum = 0.0;
  int count = 0;
  for (int k = 0; k < SAMPLES; ++k) {
    const double distance = from + (to - from) * k / (SAMPLES - 1);
    const cv::Point2d at = disc.centre + cv::Point2d(disc.slope * direction * distance);
    if (at.x < 0.0 || at.y < 0.0 || at.x > grey.cols - 1 || at.y > grey.rows - 1) continue;
    sum += tones.Darkness(GreyAt(grey, at));
    ++count;
  }
  return count > 0 ? sum / count : otherwise;
}

/// True when the values, in order around a disc, are about `expected` all of them, and the same but for
/// noise.
bool AreEven(const std::vector<double>& values, double expected) {
  std::vector<double> changes;
  for (size_t k = 0; k < values.size(); ++k) {
    changes.push_back(std::abs(values[k] - values[(k + 1) % values.size()]));
  }
  const double middle = MedianOf(values);
  const double most = std::min(UNLIKE, UNEVEN + 3.0 * MedianOf(changes));
  return std::abs(middle - expected) <= UNLIKE &&
         std::all_of(values.begin(), values.end(),
                     [&](double value) { return std::abs(value - middle) <= most; });
}

bool IsSeenWhole(const cv::Mat& grey, const ExpectedDisc& disc, const Tones& tones) {
  std::vector<double> ink;
  std::vector<double> paper;
  for (int k = 0; k < DIRECTIONS; ++k) {
    const double angle = 2.0 * CV_PI * k / DIRECTIONS;
    const cv::Vec2d direction(std::cos(angle), std::sin(angle));
    const double blur = BLUR / std::max(1e-6, cv::norm(disc.slope * direction));
    const double inside = disc.radius - std::min(blur, 0.5 * disc.radius);
    ink.push_back(DarknessAlong(grey, disc, tones, direction, 0.3 * inside, inside, 1.0));
    const double outside = disc.radius + blur;
    const double end = std::min(outside + AROUND, 2.0 * HALF_WAY - outside);
    if (end > outside) paper.push_back(DarknessAlong(grey, disc, tones, direction, outside, end, 0.0));
  }
  return AreEven(ink, 1.0) && (paper.empty() || AreEven(paper, 0.0));
}

/// The disc where it was found, in the size and shape that the others, or the projection where they are too
/// few, expect of it: those beside a gap know too little of where it is.
ExpectedDisc Expected(const GridProjection& projection, const LabelledDiscs& discs, size_t k) {
  ExpectedDisc expected;
  if (!ExpectDisc(projection, discs, k, expected)) {
    expected.slope = projection.Slope(discs.gridIndices[k]);
    expected.radius = discs.MedianRadius() / projection.Step(discs.gridIndices[k]);
  }
  expected.centre = discs.centres[k];
  return expected;
}

std::vector<cv::Point> Gaps(const Sights& sights, const LabelledDiscs& discs) {
  std::vector<cv::Point> gaps;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (!discs.Has(k) && !sights.IsBeyond(discs.gridIndices[k])) gaps.push_back(discs.gridIndices[k]);
  }
  return gaps;
}

bool IsBeside(const cv::Point& gridIndex, const cv::Point& gap) {
  const cv::Point apart = gridIndex - gap;
  return std::max(std::abs(apart.x), std::abs(apart.y)) <= NEAR;
}

/// The disc beside a gap that is most certainly off the others; as many as there are discs when none is.
size_t FarthestOff(const GridProjection& projection, const LabelledDiscs& discs,
                   const std::vector<cv::Point>& gaps) {
  std::vector<double> off(discs.gridIndices.size(), 0.0);
  std::vector<double> ofKnown;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (!discs.Has(k)) continue;
    off[k] = projection.ScaledResidual(discs, k) * projection.Step(discs.gridIndices[k]);
    ofKnown.push_back(off[k]);
  }
  double most = ofKnown.empty() ? 0.0 : std::max(CLOSE, USUAL * MedianOf(ofKnown));
  size_t farthest = discs.gridIndices.size();
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    const cv::Point& gridIndex = discs.gridIndices[k];
    if (off[k] <= most) continue;
    if (std::none_of(gaps.begin(), gaps.end(),
                     [&](const cv::Point& gap) { return IsBeside(gridIndex, gap); })) {
      continue;
    }
    most = off[k];
    farthest = k;
  }
  return farthest;
}

}  // namespace

void DropBitten(const GridProjection& flat, const cv::Mat& grey, LabelledDiscs& discs) {
  GridProjection projection = flat;
  const Sights sights(projection, discs, grey);
  std::vector<cv::Point> gaps = Gaps(sights, discs);
  std::vector<bool> known(discs.gridIndices.size(), false);
  // Each one that is dropped may have others beside it.
  for (size_t next = 0; next < gaps.size(); ++next) {
    const LabelledDiscs before = discs;
    for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
      if (known[k] || !before.Has(k) || !IsBeside(discs.gridIndices[k], gaps[next])) continue;
      known[k] = true;
      Tones tones;
      if (sights.TonesAround(discs.gridIndices[k], tones) &&
          IsSeenWhole(grey, Expected(projection, before, k), tones)) {
        continue;
      }
      discs.radii[k] = 0.0;
      gaps.push_back(discs.gridIndices[k]);
    }
  }
  while (projection.FitDistortion(discs)) {
    const size_t farthest = FarthestOff(projection, discs, gaps);
    if (farthest == discs.gridIndices.size()) break;
    discs.radii[farthest] = 0.0;
    gaps.push_back(discs.gridIndices[farthest]);
  }
}

}  // namespace velmora::finder
