/// Tests that rendered images are good for what they are made for: finding the grid and calibrating.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>

#include "Cameras.h"
#include "Renderer.h"
#include "Views.h"

namespace {

/// What the grid search found in one rendered view.
struct Found {
  bool found = false;
  std::vector<cv::Point2f> centres;
  /// Root mean square distance from the truth.
  double rms = 0.0;
};

Found Search(world::Renderer& renderer, const world::Pose& pose, std::uint64_t frame) {
  const world::Scene& scene = renderer.GetScene();
  Found found;
  cv::Mat grey;
  cv::cvtColor(renderer.Render(pose, frame), grey, cv::COLOR_BGR2GRAY);
  found.found = cv::findCirclesGrid(grey, scene.sheet.Grid(), found.centres, cv::CALIB_CB_ASYMMETRIC_GRID);
  if (!found.found) return found;
  const std::vector<cv::Point2d> truth = world::TrueCentres(scene.camera.lens, scene.sheet, pose);
  double sum = 0.0;
  for (std::size_t k = 0; k < truth.size(); ++k) {
    const cv::Point2d error = cv::Point2d(found.centres[k]) - truth[k];
    sum += error.dot(error);
  }
  found.rms = std::sqrt(sum / static_cast<double>(truth.size()));
  return found;
}

world::Scene NoisyScene(const world::Camera& camera) {
  world::Scene scene;
  scene.camera = camera;
  scene.noise = 2.0;
  return scene;
}

}  // namespace

TEST(Detection, FindsTheGridInOrderInAllSpreadViewsAndCalibratesFromIt) {
  world::Renderer renderer(NoisyScene(OrdinaryCamera()));
  const world::Scene& scene = renderer.GetScene();
  std::vector<std::vector<cv::Point3f>> objects;
  std::vector<std::vector<cv::Point2f>> images;
  std::uint64_t frame = 0;
  for (const world::Pose& pose : world::SpreadViews(scene.camera, 12)) {
    const Found found = Search(renderer, pose, frame++);
    ASSERT_TRUE(found.found) << "view " << frame - 1;
    EXPECT_LT(found.rms, 1.0) << "view " << frame - 1;
    images.push_back(found.centres);
    std::vector<cv::Point3f> object;
    for (const cv::Point3d& p : scene.sheet.GridPoints()) object.push_back(cv::Point3f(p));
    objects.push_back(object);
  }
  cv::Mat K;
  cv::Mat D;
  std::vector<cv::Mat> rvecs;
  std::vector<cv::Mat> tvecs;
  const double rms = cv::calibrateCamera(objects, images, scene.camera.size, K, D, rvecs, tvecs);
  const cv::Matx33d truth = scene.camera.lens.K();
  EXPECT_LT(rms, 0.2);
  EXPECT_NEAR(K.at<double>(0, 0), truth(0, 0), 0.003 * truth(0, 0));
  EXPECT_NEAR(K.at<double>(1, 1), truth(1, 1), 0.003 * truth(1, 1));
  EXPECT_NEAR(K.at<double>(0, 2), truth(0, 2), 2.0);
  EXPECT_NEAR(K.at<double>(1, 2), truth(1, 2), 2.0);
  RecordProperty("rms", std::to_string(rms));
}

TEST(Detection, FindsTheGridInNearlyAllViewsOfTheWholeList) {
  for (const double degrees : {45.0, 60.0, 80.0}) {
    world::Renderer renderer(
        NoisyScene(world::CameraFromFieldOfView({640, 480}, degrees, {-0.2, 0.05, 0.0, 0.0, 0.0})));
    int found = 0;
    for (const world::Pose& pose : world::SpreadViews(renderer.GetScene().camera, 24)) {
      const Found search = Search(renderer, pose, 1);
      found += search.found && search.rms < 1.0 ? 1 : 0;
    }
    EXPECT_GE(found, 22) << degrees << " degrees";
  }
}

TEST(Detection, FindsNoGridInClutterAlone) {
  world::Scene scene = NoisyScene(OrdinaryCamera());
  scene.clutter = 60;
  cv::Mat grey;
  cv::cvtColor(world::Renderer(scene).RenderEmpty(), grey, cv::COLOR_BGR2GRAY);
  std::vector<cv::Point2f> centres;
  EXPECT_FALSE(cv::findCirclesGrid(grey, scene.sheet.Grid(), centres, cv::CALIB_CB_ASYMMETRIC_GRID));
}
