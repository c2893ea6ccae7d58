/// Cameras, scenes and views out of the command line.
#include "render/Scenes.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

#include "Arrangement.h"
#include "Shots.h"
#include "Views.h"

namespace render {

namespace {

constexpr double USUAL_FIELD = 60.0;  // degrees
constexpr int LARGEST_SIDE = 8192;
constexpr int MOST_DISCS = 100;
constexpr int MOST_FRAMES = 1000000;
constexpr int MOST_KEYS = 200;
/// In a video, how long the sheet takes from one view to the next.
constexpr double SECONDS_PER_VIEW = 1.2;

/// "WxH" with positive numbers up to `most`; `form` is what the option takes, in words.
cv::Size ParseSize(const std::string& text, const std::string& form, int most) {
  std::istringstream stream(text);
  cv::Size size;
  char separator = '\0';
  const bool parsed = static_cast<bool>(stream >> size.width >> separator >> size.height);
  if (!parsed || stream.peek() != std::istringstream::traits_type::eof() || separator != 'x' ||
      size.width < 1 || size.height < 1 || size.width > most || size.height > most) {
    throw std::invalid_argument(form + " (each 1 to " + std::to_string(most) + ")");
  }
  return size;
}

/// The fisheye of a field of view, or one whose focal length is yet to be set.
world::Camera FisheyeOf(const Arguments& a, const cv::Size& size) {
  world::FisheyeCurve::Coefficients k = {};
  if (!a.fisheyeDistortion.empty()) {
    if (a.fisheyeDistortion.size() != k.size()) {
      throw std::invalid_argument("--fisheye-dist takes four numbers, k1,k2,k3,k4");
    }
    std::copy(a.fisheyeDistortion.begin(), a.fisheyeDistortion.end(), k.begin());
  }
  const double widest = 2.0 * world::FisheyeCurve(k).WidestAngle() * 180.0 / CV_PI;
  const double field = a.fisheye.value_or(0.5 * widest);
  if (!(field < widest)) {
    std::ostringstream text;
    text << "a fisheye of this --fisheye-dist images less than " << std::floor(10.0 * widest) / 10.0
         << " degrees, not " << field;
    throw std::invalid_argument(text.str());
  }
  return world::FisheyeFromFieldOfView(size, field, k);
}

world::Camera CameraOf(const Arguments& a, const std::vector<double>& distortion) {
  const cv::Size size = ParseSize(a.size, "--size takes WIDTHxHEIGHT, such as 640x480", LARGEST_SIDE);
  world::Camera camera = a.IsFisheye()
                             ? FisheyeOf(a, size)
                             : world::CameraFromFieldOfView(size, a.fieldOfView.value_or(USUAL_FIELD));
  cv::Matx33d K = camera.lens.K();
  if (a.fx) K(0, 0) = K(1, 1) = *a.fx;
  if (a.fy) K(1, 1) = *a.fy;
  if (a.cx) K(0, 2) = *a.cx;
  if (a.cy) K(1, 2) = *a.cy;
  camera.lens = a.IsFisheye() ? camera.lens.WithMatrix(K) : world::Lens(K, distortion);
  return camera;
}

}  // namespace

world::Sheet SheetOf(const Arguments& a) {
  return world::Sheet(ParseSize(a.grid, "--grid takes COLUMNSxROWS, such as 4x11", MOST_DISCS), a.unit);
}

world::Scene SceneOf(const Arguments& a) {
  world::Scene scene;
  scene.camera = CameraOf(a, a.distortion);
  scene.sheet = SheetOf(a);
  scene.blur = a.blur;
  scene.noise = a.noise;
  scene.light = a.light;
  scene.clutter = a.clutter;
  scene.seed = a.seed;
  return scene;
}

world::Pair PairOf(const Arguments& a) {
  const std::vector<double>& right = a.rightDistortion.empty() ? a.distortion : a.rightDistortion;
  return world::SideBySidePair(CameraOf(a, a.distortion), CameraOf(a, right), a.baseline,
                               a.toeIn.value_or(0.0));
}

world::Rig RigOf(const Arguments& a) {
  const world::Camera camera = CameraOf(a, a.distortion);
  if (!a.ring) return world::RowRig(camera, a.cameras, a.baseline, a.seed);
  const double radius = world::RingRadius(camera, SheetOf(a));
  return world::RingRig(camera, a.cameras, radius, world::RingAngle(a.cameras), a.seed);
}

std::vector<world::Pose> ShotsOf(const Arguments& a, const world::Rig& rig, const world::Sheet& sheet) {
  return a.spread ? world::RigShots(rig, a.views, sheet) : world::SampleRigShots(rig, a.views, a.seed, sheet);
}

std::vector<world::Pose> ViewsOf(const Arguments& a, const world::Scene& scene, int count) {
  return a.spread ? world::SpreadViews(scene.camera, count, scene.sheet)
                  : world::SampleViews(scene.camera, count, scene.seed, scene.sheet);
}

std::vector<world::Pose> ViewsOf(const Arguments& a, const world::Pair& rig, const world::Sheet& sheet,
                                 int count) {
  return a.spread ? world::RigViews(rig, count, sheet) : world::SampleRigViews(rig, count, a.seed, sheet);
}

int FramesOf(const Arguments& a) {
  const double product = std::round(a.seconds * a.fps);
  if (!(product >= 1.0 && product <= MOST_FRAMES)) {
    throw std::invalid_argument("a video has 1 to " + std::to_string(MOST_FRAMES) + " frames");
  }
  return static_cast<int>(product);
}

int KeysOf(const Arguments& a) {
  return static_cast<int>(std::min<double>(MOST_KEYS, std::max(2.0, a.seconds / SECONDS_PER_VIEW)));
}

}  // namespace render
