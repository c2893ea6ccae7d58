/// Finds discs of which a part is hidden, and puts centres right that a shadow's edge or a reflection moved.
#include "finder/HiddenDiscs.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <vector>

#include "finder/Rim.h"
#include "finder/Surroundings.h"
#include "foundation/Median.h"

namespace velmora::finder {

namespace {

/// A disc nearer than this to where the others put it is in place, pixels.
constexpr double CLOSE = 0.2;
/// A disc that is off by less than this, in units of the usual distance, is in place too: it is the lens, or
/// noise.
constexpr double USUAL = 2.0;
/// The least share of a whole disc's rim.
constexpr double WHOLE = 0.8;
/// With less a disc is partly hidden however far off the others are.
constexpr double HALF = 0.65;
/// What is off by more than this, in units of the usual distance, is not noise.
constexpr double OUTLIER = 4.5;
/// What is off by more than this, in units of the usual distance, is not a lens's distortion either.
constexpr double FAR_OFF = 10.0;
/// The least share of the rim of a disc that is taken for whole where it was found, whatever the others say.
constexpr double WHOLE_ALONE = 0.9;
/// By how much the middle of a whole disc's rim may be wrong: pixels, and shares of the radius.
constexpr double UNSURE = 0.7;
constexpr double UNSURE_RADII = 0.06;
/// Discs put right show others, which they had pulled the projection away from.
constexpr int ROUNDS = 3;

enum class DiscState { InPlace, PutRight, Hidden };

/// The rim of a disc, looked for where the disc was found, in the shape that the sheet has there.
Rim RimAsFound(const GridProjection& projection, const cv::Mat& grey, const LabelledDiscs& all,
               Contrasts& contrasts, size_t k) {
  const cv::Point2d gridIndex = all.gridIndices[k];
  const auto across = [&](const cv::Point2d& step) {
    return projection.Predict(gridIndex + 0.5 * step) - projection.Predict(gridIndex - 0.5 * step);
  };
  const cv::Point2d x = across({1.0, 0.0});
  const cv::Point2d y = across({0.0, 1.0});
  ExpectedDisc disc;
  disc.centre = all.centres[k];
  disc.slope = {x.x, y.x, x.y, y.y};
  disc.radius = all.radii[k] / std::sqrt(std::abs(cv::determinant(disc.slope)));
  if (!(disc.radius < 1.0)) return {0.0, disc.centre};
  disc.contrast = contrasts.Around(k);
  return FollowRim(grey, disc);
}

/// What the discs around one expect of it when it is looked at first, and its rim there, followed when it is
/// asked for: it stays where it is.
class FirstLook {
 public:
  /// `contrasts` must outlive it.
  void Take(const LabelledDiscs& all, Contrasts& contrasts, size_t k, const ExpectedDisc& expected) {
    if (contrasts_ != nullptr) return;
    contrasts_ = &contrasts;
    disc_ = k;
    expected_ = expected;
    rim_.centre = all.centres[k];
    rim_.visible = 1.0;
  }

  const Rim& FollowedRim(const cv::Mat& grey) {
    if (followed_) return rim_;
    followed_ = true;
    expected_.contrast = contrasts_->Around(disc_);
    if (expected_.contrast > 0.0) rim_ = FollowRim(grey, expected_);
    return rim_;
  }

 private:
  Contrasts* contrasts_ = nullptr;
  size_t disc_ = 0;
  ExpectedDisc expected_;
  bool followed_ = false;
  Rim rim_;
};

DiscState CheckDisc(const GridProjection& projection, const cv::Mat& grey, const LabelledDiscs& all,
                    Contrasts& contrasts, LabelledDiscs& discs, size_t k, double residual, double usual,
                    FirstLook& look) {
  ExpectedDisc expected;
  if (!ExpectDisc(projection, all, k, expected)) return DiscState::InPlace;
  // Where those around it expect it, whatever shadow is upon it.
  const double off = cv::norm(expected.centre - all.centres[k]);
  if (off < CLOSE) return DiscState::InPlace;
  look.Take(all, contrasts, k, expected);
  // Prints with ragged discs have ragged rims, and all their discs are off a little.
  const bool far = off > 0.1 * all.radii[k] + CLOSE;
  const bool noise = off <= OUTLIER * usual;
  // Whatever its rim is.
  if (!far && noise && residual <= OUTLIER * usual) return DiscState::InPlace;
  const Rim& rim = look.FollowedRim(grey);
  if (rim.visible < WHOLE) {
    const bool part = far && rim.visible < HALF;
    if (!part && noise) return DiscState::InPlace;
    // Where a lens distorts much the others are wrong about the corners.
    if (residual > FAR_OFF * usual) return DiscState::Hidden;
    return RimAsFound(projection, grey, all, contrasts, k).visible >= WHOLE_ALONE ? DiscState::InPlace
                                                                                  : DiscState::Hidden;
  }
  // A rim is known less well than the middle of the darkness, most of all at corners, where the others are
  // wrong about size and shape: only what is off for certain is put where its rim is.
  if (residual <= OUTLIER * usual || cv::norm(rim.centre - expected.centre) > 0.7 * off)
    return DiscState::InPlace;
  if (cv::norm(rim.centre - all.centres[k]) < std::max(UNSURE, UNSURE_RADII * all.radii[k]))
    return DiscState::InPlace;
  discs.centres[k] = rim.centre;
  discs.radii[k] = expected.radius * std::sqrt(std::abs(cv::determinant(expected.slope)));
  return DiscState::PutRight;
}

/// What to do about a disc that is partly hidden.
enum class HiddenPolicy { Refuse, Drop };

bool PutRight(const GridProjection& flat, const cv::Mat& grey, LabelledDiscs& discs, HiddenPolicy policy) {
  GridProjection projection = flat;
  std::vector<bool> right(discs.gridIndices.size(), false);
  std::vector<FirstLook> looks(discs.gridIndices.size());
  // Of each round, because a rim may be followed after the one that its disc was looked at first. Of the
  // projection contrasts take the homography alone, which stays as it is.
  std::deque<LabelledDiscs> befores;
  std::deque<Contrasts> contrastsOf;
  for (int round = 0; round < ROUNDS; ++round) {
    if (!projection.FitDistortion(discs)) return false;
    std::vector<double> off(discs.gridIndices.size(), 0.0);
    std::vector<double> ofKnown;
    for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
      if (!discs.Has(k)) continue;
      off[k] = projection.ScaledResidual(discs, k) * projection.Step(discs.gridIndices[k]);
      ofKnown.push_back(off[k]);
    }
    if (ofKnown.empty()) return false;
    const double usual = MedianOf(ofKnown);
    const double least = std::max(CLOSE, USUAL * usual);
    befores.push_back(discs);
    const LabelledDiscs& before = befores.back();
    contrastsOf.emplace_back(projection, grey, before);
    Contrasts& contrasts = contrastsOf.back();
    bool moved = false;
    for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
      if (!before.Has(k) || off[k] < least || right[k]) continue;
      const DiscState state =
          CheckDisc(projection, grey, before, contrasts, discs, k, off[k], usual, looks[k]);
      if (state == DiscState::InPlace) continue;
      if (state == DiscState::Hidden) {
        // Later rounds only put right: what is off was assessed among all the others.
        if (round > 0) continue;
        if (policy == HiddenPolicy::Refuse) return false;
        discs.radii[k] = 0.0;
      }
      right[k] = true;
      moved = true;
    }
    if (!moved) break;
  }
  return true;
}

}  // namespace

bool AreWhole(const GridProjection& projection, const cv::Mat& grey, LabelledDiscs& discs) {
  return PutRight(projection, grey, discs, HiddenPolicy::Refuse);
}

bool DropHidden(const GridProjection& projection, const cv::Mat& grey, LabelledDiscs& discs) {
  return PutRight(projection, grey, discs, HiddenPolicy::Drop);
}

}  // namespace velmora::finder
