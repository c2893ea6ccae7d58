/// Renders images, searches the grid in them and calibrates.
#include "ImageTrial.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "Renderer.h"
#include "Views.h"
#include "finder/CentreFit.h"
#include "finder/RobustFinder.h"
#include "finder/StandardFinder.h"

using namespace velmora;

namespace accuracy {

namespace {

constexpr std::size_t FEWEST_VIEWS = 5;

world::Scene SceneOf(const ImageCase& what, std::uint64_t seed) {
  world::Scene scene;
  scene.camera = MakeCamera(what.lens, what.fieldOfView);
  scene.sheet = world::Sheet(GRID, static_cast<double>(UNIT));
  scene.blur = what.blur;
  scene.noise = what.grain;
  scene.light = 0.2;
  scene.seed = seed;
  return scene;
}

using Search = bool (*)(const cv::Mat& frame, const cv::Size& grid, std::vector<cv::Point2d>& points);

void Look(Search search, const cv::Mat& image, const std::vector<cv::Point2d>& truth, FoundPoints& into) {
  ++into.images;
  std::vector<cv::Point2d> points;
  if (!search(image, GRID, points)) return;
  into.found.push_back(points);
  into.truth.push_back(truth);
}

void LookFinely(const cv::Mat& image, const std::vector<cv::Point2d>& truth, FoundPoints& into) {
  ++into.images;
  const GridFinding finding = SearchGridRobust(image, GRID);
  if (!finding.Found()) return;
  cv::Mat grey;
  cv::cvtColor(image, grey, cv::COLOR_BGR2GRAY);
  MeasuredCentres measured = MeasureCentres(grey, GRID, finding.centres, finding.radii);
  into.found.push_back(std::move(measured.centres));
  into.deviations.push_back(std::move(measured.deviations));
  into.truth.push_back(truth);
}

}  // namespace

double FoundPoints::CentreError() const {
  double squaredDistances = 0.0;
  double count = 0.0;
  for (std::size_t view = 0; view < found.size(); ++view) {
    for (std::size_t i = 0; i < found[view].size(); ++i) {
      const cv::Point2d off = found[view][i] - truth[view][i];
      squaredDistances += off.dot(off);
      count += 1.0;
    }
  }
  return std::sqrt(squaredDistances / count);
}

SearchedImages SearchImages(const ImageCase& what, std::uint64_t seed) {
  world::Renderer renderer(SceneOf(what, seed));
  const world::Scene& scene = renderer.GetScene();
  SearchedImages searched;
  searched.camera = scene.camera;
  std::uint64_t number = 0;
  for (const world::Pose& pose : world::SampleViews(scene.camera, what.views, seed, scene.sheet)) {
    const cv::Mat image = renderer.Render(pose, number++);
    const auto truth = world::TrueCentres(scene.camera.lens, scene.sheet, pose);
    Look(FindGridStandard, image, truth, searched.standard);
    Look(FindGridRobust, image, truth, searched.robust);
    LookFinely(image, truth, searched.fine);
  }
  return searched;
}

Trial RunImageTrial(const world::Camera& camera, const FoundPoints& points, int model, int solver,
                    bool correctDiscs) {
  const double discRadius = correctDiscs ? world::Sheet::DISC_RADIUS * static_cast<double>(UNIT) : 0.0;
  Trial trial;
  trial.failed = true;
  if (points.found.size() < FEWEST_VIEWS) return trial;
  try {
    return Assessed(camera, points.found,
                    Solve(points.found, camera.size, model, solver, discRadius, points.deviations),
                    discRadius);
  } catch (const std::exception&) {
    return trial;
  }
}

}  // namespace accuracy
