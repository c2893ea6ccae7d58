/// Finds discs of which a part is hidden, and puts centres right that a shadow's edge or a reflection moved.
#include "finder/HiddenDiscs.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "finder/Rim.h"
#include "finder/Surroundings.h"

namespace finder {

namespace {

/// A disc nearer to where the others put it is not right at, pixels.
constexpr double CLOSE = 0.2;
/// Nor one that is off by less than so many times the usual: it is the lens, or noise.
constexpr double USUAL = 1.5;
/// The least share of a whole disc's rim.
constexpr double WHOLE = 0.8;
/// With less a disc is partly hidden however far off the others are.
constexpr double HALF = 0.65;
/// What is off by more than so many times the usual is none of the others' noise.
constexpr double STRAY = 4.5;
/// Two centres nearer to each other are the same, pixels.
constexpr double SAME = 0.2;
/// Discs put right show others, which they had pulled the plane away from.
constexpr int ROUNDS = 3;

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

enum class Look { InPlace, PutRight, Hidden };

Look LookAt(const SheetPlane& plane, const cv::Mat& grey, const PlacedDiscs& all, PlacedDiscs& discs,
            size_t k, double usual) {
  ExpectedDisc expected;
  if (!ExpectDisc(plane, all, k, expected)) return Look::InPlace;
  // In its place among those around it, whatever shadow is upon it.
  const double off = cv::norm(expected.centre - all.centres[k]);
  if (off < CLOSE) return Look::InPlace;
  expected.contrast = ContrastAround(plane, grey, all, k);
  if (!(expected.contrast > 0.0)) return Look::InPlace;
  const Rim rim = FollowRim(grey, expected);
  if (rim.seen < WHOLE) {
    // Prints with ragged discs have ragged rims, and all their discs are off a little.
    const bool part = rim.seen < HALF && off > 0.1 * all.radii[k] + CLOSE;
    return part || off > STRAY * usual ? Look::Hidden : Look::InPlace;
  }
  // The rim must be right about where the disc is.
  if (cv::norm(rim.centre - expected.centre) > 0.7 * off) return Look::InPlace;
  if (cv::norm(rim.centre - all.centres[k]) < SAME) return Look::InPlace;
  discs.centres[k] = rim.centre;
  discs.radii[k] = expected.radius * std::sqrt(std::abs(cv::determinant(expected.slope)));
  return Look::PutRight;
}

}  // namespace

bool AreWhole(const SheetPlane& flat, const cv::Mat& grey, PlacedDiscs& discs) {
  SheetPlane plane = flat;
  std::vector<bool> right(discs.places.size(), false);
  for (int round = 0; round < ROUNDS; ++round) {
    if (!plane.FitBend(discs)) return false;
    std::vector<double> off;
    for (size_t k = 0; k < discs.places.size(); ++k) {
      off.push_back(plane.Stray(discs, k) * plane.Step(discs.places[k]));
    }
    const double usual = Median(off);
    const double least = std::max(CLOSE, USUAL * usual);
    const PlacedDiscs before = discs;
    bool moved = false;
    for (size_t k = 0; k < discs.places.size(); ++k) {
      if (off[k] < least || right[k]) continue;
      const Look look = LookAt(plane, grey, before, discs, k, usual);
      // Later rounds only put right: what is off was judged among all the others.
      if (look == Look::Hidden && round == 0) return false;
      if (look != Look::PutRight) continue;
      right[k] = true;
      moved = true;
    }
    if (!moved) break;
  }
  return true;
}

}  // namespace finder
