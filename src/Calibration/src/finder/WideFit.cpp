/// Finds how much a wide lens bends the image of a grid.
#include "finder/WideFit.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmora::finder {

namespace {

/// Bends that are tried, from the least on. That of a fisheye of 180 degrees is about 1 where it is drawn
/// equidistantly, a half at 120 degrees.
constexpr double LEAST_BEND = 0.03;
constexpr double LARGEST_BEND = 3.0;
constexpr int BENDS = 14;
/// Rounds that each halve what is unknown of the bend.
constexpr int ROUNDS = 5;
/// How far discs may be off the plane, steps: the farthest one, and all together. At the rim of what lenses
/// of 180 degrees see they are off by 0.3 and 0.14 at the most; what is farther off is something else.
constexpr double FARTHEST_OFF = 0.4;
constexpr double OFF_TOGETHER = 0.18;
/// Discs that are no farther than this off a plane without any lens need none.
constexpr double NEAR_PLANE = 0.06;
/// A lens that bends the image puts discs far nearer to a plane than none does.
constexpr double NEARER = 0.5;

struct Off {
  double together = std::numeric_limits<double>::infinity();  ///< root of the mean square, steps
  double farthest = together;
};

/// How far the discs are off their plane through a lens.
Off OffThrough(const WideLens& lens, const LabelledDiscs& discs, GridProjection& projection) {
  if (!projection.Fit(discs, lens)) return {};
  Off off{0.0, 0.0};
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (!discs.Has(k)) continue;
    const double one = cv::norm(discs.centres[k] - projection.Project(discs.gridIndices[k])) /
                       projection.Step(discs.gridIndices[k]);
    off.together += one * one;
    off.farthest = std::max(off.farthest, one);
  }
  off.together = std::sqrt(off.together / (static_cast<double>(discs.gridIndices.size()) - discs.Missing()));
  return off;
}

}  // namespace

bool FitWide(GridProjection& projection, const LabelledDiscs& discs, const cv::Size& image) {
  const Off flat = OffThrough(WideLens(), discs, projection);
  if (flat.together < NEAR_PLANE) return false;
  double best = LEAST_BEND;
  Off least;
  const auto attempt = [&](double bend) {
    const Off off = OffThrough(WideLens(image, bend), discs, projection);
    if (!(off.together < least.together)) return;
    least = off;
    best = bend;
  };
  double factor = std::pow(LARGEST_BEND / LEAST_BEND, 1.0 / (BENDS - 1));
  for (int k = 0; k < BENDS; ++k) attempt(LEAST_BEND * std::pow(factor, k));
  for (int round = 0; round < ROUNDS; ++round) {
    factor = std::sqrt(factor);
    const double middle = best;
    attempt(middle * factor);
    attempt(middle / factor);
  }
  return least.together < OFF_TOGETHER && least.farthest < FARTHEST_OFF &&
         least.together < NEARER * flat.together && projection.Fit(discs, WideLens(image, best));
}

}  // namespace velmora::finder
