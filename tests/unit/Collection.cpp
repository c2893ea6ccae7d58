/// Makes views of the grid, calibrators that hold them, and what they are compared with.
#include "unit/Collection.h"

#include "Matchers.h"

#include <dlfcn.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <nlohmann/json.hpp>
#include <opencv2/calib3d.hpp>

#include "Camera.h"
#include "Renderer.h"
#include "Sheet.h"
#include "TemporaryFolder.h"
#include "Views.h"

namespace unit {

namespace {

constexpr int RENDERED_VIEWS = 12;

world::Sheet PrintedSheet() {
  return world::Sheet(GRID, static_cast<double>(UNIT));
}

world::Scene RenderedScene() {
  world::Scene scene;
  scene.camera = DistortedCamera();
  scene.sheet = PrintedSheet();
  scene.blur = 0.6;
  scene.noise = 2.0;
  scene.light = 0.2;
  return scene;
}

RenderedViews RenderViews() {
  RenderedViews views;
  views.scene = RenderedScene();
  world::Renderer renderer(views.scene);
  std::uint64_t number = 0;
  for (const world::Pose& pose : world::SpreadViews(views.scene.camera, RENDERED_VIEWS, views.scene.sheet)) {
    views.images.push_back(renderer.Render(pose, number++));
    views.centres.push_back(world::TrueCentres(views.scene.camera.lens, views.scene.sheet, pose));
  }
  return views;
}

}  // namespace

world::Camera DistortedCamera() {
  return world::CameraFromFieldOfView(FRAME, 62.0, {-0.21, 0.06, 0.0008, -0.0006, -0.008});
}

PointLists NoisyViews(int count) {
  constexpr double NOISE = 0.05;
  const world::Camera camera = DistortedCamera();
  const world::Sheet sheet = PrintedSheet();
  cv::RNG random(20);
  PointLists views;
  for (const world::Pose& pose : world::SpreadViews(camera, count, sheet)) {
    views.push_back(world::TrueCentres(camera.lens, sheet, pose));
    for (cv::Point2d& centre : views.back()) {
      centre += cv::Point2d(random.gaussian(NOISE), random.gaussian(NOISE));
    }
  }
  return views;
}

std::unique_ptr<Calibrator> MakeCalibrator(int kind) {
  return std::make_unique<Calibrator>(GRID, UNIT, kind, FRAME.width, FRAME.height);
}

std::unique_ptr<Calibrator> CalibratorWith(const PointLists& views) {
  auto calibrator = MakeCalibrator();
  for (const auto& view : views) calibrator->AddPoints(view);
  return calibrator;
}

std::unique_ptr<Calibrator> CompletedCalibrator() {
  auto calibrator = CalibratorWith(NoisyViews(6));
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  return calibrator;
}

const RenderedViews& Rendered() {
  static const RenderedViews views = RenderViews();
  return views;
}

cv::Mat ImageWithGrid() {
  return Rendered().images.front().clone();
}

cv::Mat ImageWithoutGrid() {
  static const cv::Mat image = world::Renderer(RenderedScene()).RenderEmpty();
  return image.clone();
}

void WriteAssistantModel(const std::string& path, const PointLists& poses) {
  nlohmann::json model;
  model["imgWidth"] = FRAME.width;
  model["imgHeight"] = FRAME.height;
  model["count"] = poses.size();
  for (size_t i = 0; i < poses.size(); ++i) {
    std::vector<float> numbers;
    for (const cv::Point2d& point : poses[i]) {
      numbers.push_back(static_cast<float>(point.x));
      numbers.push_back(static_cast<float>(point.y));
    }
    model["points" + std::to_string(i)] = {
        {"rows", poses[i].size()}, {"cols", 1}, {"type", CV_32FC2}, {"depth", CV_32F}, {"data", numbers}};
  }
  support::WriteText(path, model.dump());
}

std::vector<cv::Point3f> TargetPoints() {
  // Written out on purpose: the target's points as the description of the grid has them.
  std::vector<cv::Point3f> target;
  for (int row = 0; row < GRID.height; ++row) {
    for (int column = 0; column < GRID.width; ++column) {
      target.emplace_back(UNIT * static_cast<float>(2 * column + row % 2), UNIT * static_cast<float>(row),
                          0.0F);
    }
  }
  return target;
}

DirectSolution SolveDirectly(const PointLists& views, int flags) {
  const std::vector<std::vector<cv::Point3f>> objectPoints(views.size(), TargetPoints());
  std::vector<std::vector<cv::Point2f>> imagePoints;
  for (const auto& view : views) imagePoints.emplace_back(view.begin(), view.end());
  DirectSolution solution;
  solution.rms = cv::calibrateCamera(objectPoints, imagePoints, FRAME, solution.K, solution.D, solution.rvecs,
                                     solution.tvecs, solution.stdDevIntrinsics, solution.stdDevExtrinsics,
                                     solution.perViewErrors, flags, cv::TermCriteria(3, 200, DBL_EPSILON));
  return solution;
}

bool OpenCvRepeatsItself() {
  // A function of ATLAS, which takes other ways through its sums for other places in memory.
  return dlsym(RTLD_DEFAULT, "ATL_cgelqf") == nullptr;
}

::testing::AssertionResult SameResult(const cv::Mat& actual, const cv::Mat& expected) {
  ::testing::AssertionResult same = support::SameMat(actual, expected);
  if (same || OpenCvRepeatsItself()) return same;
  return support::MatNear(actual, expected, 1e-3 * std::max(1.0, cv::norm(expected, cv::NORM_INF)));
}

::testing::AssertionResult SameResult(double actual, double expected) {
  if (actual == expected) return ::testing::AssertionSuccess();
  const bool near = std::abs(actual - expected) <= 1e-3 * std::abs(expected) && !OpenCvRepeatsItself();
  return near ? ::testing::AssertionSuccess()
              : ::testing::AssertionFailure() << actual << " instead of " << expected;
}

}  // namespace unit
