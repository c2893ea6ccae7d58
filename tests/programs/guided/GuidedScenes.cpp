/// Views for the tests of what a guided calibration makes of them.
#include "GuidedScenes.h"

#include <algorithm>

#include "Views.h"

namespace guided_test {

using velmora::GridSnapshot;

guided::ComputationSettings SettingsOfPoints(int model, const cv::Size& frame) {
  guided::ComputationSettings settings;
  settings.engine.disc = 0.0;
  settings.grid = unit::GRID;
  settings.unit = unit::UNIT;
  settings.frame = frame;
  settings.model = model;
  return settings;
}

guided::ComputationSettings SettingsOfImages(int model) {
  guided::ComputationSettings settings = SettingsOfPoints(model);
  settings.engine = common::EngineOptions();
  return settings;
}

void JustCompute(std::shared_ptr<Calibrator>) {
}

namespace {

guided::NamedSnapshot NamedOne(size_t index, const GridSnapshot& snapshot) {
  const int number = static_cast<int>(index) + 1;
  return {number, "pose " + std::to_string(number), snapshot};
}

}  // namespace

std::vector<guided::NamedSnapshot> Named(const unit::PointLists& views) {
  std::vector<guided::NamedSnapshot> named;
  named.reserve(views.size());
  for (size_t i = 0; i < views.size(); ++i) named.push_back(NamedOne(i, {{{views[i]}}}));
  return named;
}

std::vector<guided::NamedSnapshot> Named(const unit::PointPairs& pairs) {
  std::vector<guided::NamedSnapshot> named;
  named.reserve(pairs.left.size());
  for (size_t i = 0; i < pairs.left.size(); ++i)
    named.push_back(NamedOne(i, {{{pairs.left[i]}, {pairs.right[i]}}}));
  return named;
}

std::vector<guided::NamedSnapshot> WithAPart(std::vector<guided::NamedSnapshot> views, size_t which,
                                             size_t camera, size_t unseen) {
  auto& seen = views.at(which).snapshot.cameras.at(camera);
  seen.weights.assign(seen.centres.size(), 1.0);
  std::fill_n(seen.weights.begin(), unseen, 0.0);
  return views;
}

unit::PointLists ViewsBy(const world::Camera& camera, int count) {
  constexpr double NOISE = 0.05;
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  cv::RNG random(31);
  unit::PointLists views;
  for (const world::Pose& pose : world::SpreadViews(camera, count, sheet)) {
    views.push_back(world::TrueCentres(camera.lens, sheet, pose));
    for (cv::Point2d& centre : views.back())
      centre += cv::Point2d(random.gaussian(NOISE), random.gaussian(NOISE));
  }
  return views;
}

unit::PointLists FacingViews(int count) {
  const world::Camera camera = unit::DistortedCamera();
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  cv::RNG random(32);
  unit::PointLists views;
  for (const world::Pose& pose : world::FrontalViews(camera, count, sheet)) {
    views.push_back(world::TrueCentres(camera.lens, sheet, pose));
    for (cv::Point2d& centre : views.back())
      centre += cv::Point2d(random.gaussian(0.2), random.gaussian(0.2));
  }
  return views;
}

world::Camera Fisheye() {
  return world::FisheyeFromFieldOfView(unit::FRAME, 150.0, {-0.01, 0.002, 0.0, 0.0});
}

}  // namespace guided_test
