/// Chooses the shots of a rig.
#include "Shots.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <stdexcept>

#include "Placement.h"
#include "Seed.h"

namespace world {

namespace {

constexpr std::uint64_t NOISE_SEQUENCE = 0x706f696e7473;
/// Searches of discs begin to fail beyond it.
constexpr double MOST_OBLIQUE_SEEN = 65.0;

/// The first views, in a part's frame, of the neighbours from camera `first` on.
using Views = std::function<std::vector<Pose>(const Rig& part, std::size_t first, int count)>;

std::vector<Pose> ShotsOf(const Rig& rig, int n, const Views& views) {
  if (rig.cameras.size() < 2) throw std::invalid_argument("a rig has two cameras or more");
  const std::size_t links = rig.cameras.size() - 1;
  const std::size_t number = static_cast<std::size_t>(std::max(0, n));
  std::vector<Pose> shots(number);
  for (std::size_t link = 0; link < std::min(links, number); ++link) {
    const std::size_t count = (number - link + links - 1) / links;
    std::size_t shot = link;
    for (const Pose& view : views(PartOf(rig, {link, link + 1}), link, static_cast<int>(count))) {
      shots[shot] = RigPoseFrom(rig.cameras[link], view);
      shot += links;
    }
  }
  return shots;
}

}  // namespace

bool SeesSheet(const Camera& camera, const Sheet& sheet, const Pose& pose) {
  return FacesCamera(pose) && Obliqueness(sheet, pose) < MOST_OBLIQUE_SEEN &&
         DiscsInside(camera, sheet, pose);
}

std::vector<Pose> SampleRigShots(const Rig& rig, int n, std::uint64_t seed, const Sheet& sheet) {
  return ShotsOf(rig, n, [&](const Rig& part, std::size_t first, int count) {
    return SampleRigViews(part, count, MixSeeds(seed, first), sheet);
  });
}

std::vector<Pose> RigShots(const Rig& rig, int n, const Sheet& sheet) {
  return ShotsOf(rig, n,
                 [&](const Rig& part, std::size_t, int count) { return RigViews(part, count, sheet); });
}

std::vector<ShotPoints> PointsOf(const Rig& rig, const std::vector<Pose>& shots, const Sheet& sheet,
                                 double noise, std::uint64_t seed) {
  cv::RNG random(MixSeeds(seed, NOISE_SEQUENCE));
  std::vector<ShotPoints> points;
  for (const Pose& shot : shots) {
    ShotPoints observed(rig.cameras.size());
    for (std::size_t k = 0; k < observed.size(); ++k) {
      const Pose pose = PoseFor(rig, k, shot);
      if (!SeesSheet(rig.cameras[k], sheet, pose)) continue;
      observed[k] = TrueCentres(rig.cameras[k].lens, sheet, pose);
      if (noise == 0.0) continue;
      for (cv::Point2d& point : observed[k]) {
        point.x += random.gaussian(noise);
        point.y += random.gaussian(noise);
      }
    }
    points.push_back(observed);
  }
  return points;
}

}  // namespace world
