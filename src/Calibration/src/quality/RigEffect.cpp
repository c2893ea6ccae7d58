/// What of a rig did not stay as it was from view to view, or else is wrong with the sheet.
#include "quality/RigEffect.h"

#include <algorithm>
#include <cmath>

#include "quality/Changes.h"
#include "quality/PoseDeviations.h"
#include "quality/SystematicRemarks.h"

namespace velmora {

namespace {

using Kind = Change::Kind;

constexpr double DEGREES = 180.0 / CV_PI;
/// A turn of a camera looks much like a move of its principal point: a lens is blamed only for clearly more.
constexpr double CLEARLY_MORE = 25.0;

std::string Capital(std::string text) {
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return text;
}

/// As deviations are told: how far the cameras of neither state stand from where the solution has them.
PairVerdict::Deviations MovedBy(const Change& change, const Solution& solution) {
  return Larger(LargestMoveOf(change.before, solution), LargestMoveOf(change.after, solution));
}

std::string SizeOf(const PairVerdict::Deviations& moved) {
  return ": rotations are off by about " + Decimal(moved.rotation, 2) + " degrees, baselines by " +
         Decimal(100.0 * moved.baseline, 1) + " %.";
}

/// Of a camera's pose: rotation about its axes and translation.
std::string WordsOnMount(const Change& change, const Solution& solution, const std::string& name) {
  const Eigen::VectorXd& e = change.effect.values;
  return Capital(name) + " moved in the rig by " + Decimal(e.head<3>().norm() * DEGREES, 2) +
         " degrees and " + Decimal(1e3 * e.tail<3>().norm(), 1) + " mm " + WhenOf(change, solution);
}

std::string WordsOnLens(const Change& change, const Solution& solution, const std::string& name) {
  const double focal = 100.0 * change.effect.values(0);
  const double moved = std::hypot(change.effect.values(1), change.effect.values(2));
  return "Focal length and principal point of " + name + " changed by " + Decimal(focal, 2) + " % and " +
         Decimal(moved, 1) + " px " + WhenOf(change, solution);
}

/// Takes the change for the largest effect where it takes off more than that one.
void Take(const Change& change, const Solution& solution, const std::string& reason, const char* advice,
          SheetEffect& largest) {
  if (!(change.effect.Excess() > largest.excess)) return;
  const PairVerdict::Deviations moved = MovedBy(change, solution);
  if (!Beyond(moved, CAREFUL_POSE)) return;
  largest = {0.0, reason + SizeOf(moved), advice, change.effect.Excess()};
}

}  // namespace

SheetEffect EffectOnRig(const Solution& solution, const std::vector<std::string>& names) {
  SheetEffect largest = EffectOfSheet(solution);
  for (size_t camera = 0; camera < solution.rig.cameras.size(); ++camera) {
    const Change mount =
        LargestChangeOf(solution, ChangingMount(solution, camera), camera, {Kind::Step, Kind::Drift});
    if (!mount.effect.significant) continue;
    Take(mount, solution, WordsOnMount(mount, solution, names[camera]),
         "Fix the cameras to each other, and calibrate again.", largest);
  }
  for (size_t camera = 0; camera < solution.rig.cameras.size(); ++camera) {
    const Change intrinsics =
        LargestChangeOf(solution, ChangingLens(solution, camera), camera, {Kind::Step, Kind::Drift});
    if (!(intrinsics.effect.Excess() > largest.excess + CLEARLY_MORE)) continue;
    Take(intrinsics, solution, WordsOnLens(intrinsics, solution, names[camera]),
         "Leave focus, zoom and stabiliser as they are, and calibrate again.", largest);
  }
  return largest;
}

}  // namespace velmora
