/// Guides, poses and rendered frames for the tests of the guide.
#include "assistant/GuideScenes.h"

#include "Reach.h"
#include "Renderer.h"

namespace unit {

using velmora::Guide;
using velmora::GuideAnswer;
using velmora::GuideFrame;

Guide GuideWithPoses(const cv::Size& frame, bool mirrored) {
  velmora::GuideSettings settings;
  settings.grid = {4, 11};
  settings.frame = frame;
  settings.mirrored = mirrored;
  Guide guide(settings);
  guide.LoadTargets(VELMORA_POSES_JSON);
  return guide;
}

GuideFrame FrameOf(const std::vector<cv::Point2d>& centres, double time) {
  GuideFrame frame;
  frame.centres = centres;
  frame.time = time;
  return frame;
}

GuideAnswer AnswerTo(Guide& guide, const GuideFrame& frame, double& time) {
  constexpr int FRAMES = 30;
  GuideFrame now = frame;
  GuideAnswer answer;
  for (int i = 0; i < FRAMES; ++i) {
    time += 1.0 / FRAMES;
    now.time = time;
    answer = guide.Look(now);
  }
  return answer;
}

world::Camera UsualCamera(const cv::Size& frame) {
  return world::CameraFromFieldOfView(frame, 60.0);
}

world::Sheet UsualSheet() {
  return world::Sheet(cv::Size(4, 11), 0.02);
}

world::Pose PoseAtTarget(const Guide& guide, const world::Camera& camera) {
  return world::PoseNearest(camera, UsualSheet(), guide.Target());
}

std::vector<cv::Point2d> CentresAt(const world::Camera& camera, const world::Pose& pose) {
  return world::TrueCentres(camera.lens, UsualSheet(), pose);
}

cv::Mat RenderedAt(const world::Camera& camera, const world::Pose& pose, double blur, double noise) {
  world::Scene scene;
  scene.camera = camera;
  scene.sheet = UsualSheet();
  scene.blur = blur;
  scene.noise = noise;
  scene.light = 0.2;
  scene.clutter = 20;
  return world::Renderer(scene).Render(pose);
}

cv::Mat SmearedAt(const world::Camera& camera, const world::Pose& pose, const cv::Vec3d& way) {
  constexpr int STEPS = 16;
  world::Scene scene;
  scene.camera = camera;
  scene.sheet = UsualSheet();
  scene.blur = 0.7;
  scene.noise = 4.0;
  world::Renderer renderer(scene);
  cv::Mat sum = cv::Mat::zeros(camera.size, CV_32FC3);
  for (int i = 0; i < STEPS; ++i) {
    world::Pose moved = pose;
    moved.tvec += ((i + 0.5) / STEPS - 0.5) * way;
    cv::Mat image;
    renderer.Render(moved, static_cast<std::uint64_t>(i)).convertTo(image, CV_32FC3, 1.0 / STEPS);
    sum += image;
  }
  sum.convertTo(sum, CV_8UC3);
  return sum;
}

}  // namespace unit
