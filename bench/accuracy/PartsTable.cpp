/// The table of what parts of grids bring.
#include <algorithm>
#include <cmath>

#include "LensError.h"
#include "Seed.h"
#include "Tables.h"
#include "Views.h"
#include "model/TargetGeometry.h"
#include "quality/Assessment.h"

using namespace velmora;

namespace accuracy {

namespace {

constexpr int VIEWS = 12;
constexpr double NOISE = 0.1;
constexpr double MARGIN = 8.0;  // pixels, of the radius of a disc

struct Set {
  std::vector<std::vector<cv::Point3d>> targets;
  Points views;
};

int CircleCountBeyond(const std::vector<cv::Point2d>& points, const cv::Size& size) {
  const cv::Rect2d inside(MARGIN, MARGIN, size.width - 2.0 * MARGIN, size.height - 2.0 * MARGIN);
  return static_cast<int>(std::count_if(points.begin(), points.end(),
                                        [&](const cv::Point2d& point) { return !inside.contains(point); }));
}

/// Moved on, from the middle of the image to where it is, until the border cuts off as many circles.
world::Pose MovedOut(const world::Camera& camera, world::Pose pose, int circles) {
  const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  const auto points = world::TrueCentres(camera.lens, sheet, pose);
  cv::Point2d way =
      points[points.size() / 2] - cv::Point2d(camera.size.width / 2.0, camera.size.height / 2.0);
  way *= 1.0 / std::max(cv::norm(way), 1e-9);
  world::Pose out = pose;
  for (int step = 0; step < 400; ++step) {
    if (CircleCountBeyond(world::TrueCentres(camera.lens, sheet, out), camera.size) > circles) break;
    pose = out;
    out.tvec += 0.1 * static_cast<double>(UNIT) * cv::Vec3d(way.x, way.y, 0.0);
  }
  return pose;
}

void Add(const world::Camera& camera, const world::Pose& pose, cv::RNG& random, Set& set) {
  const std::vector<cv::Point3d> target = MakeObjectTemplate(GRID, UNIT);
  const std::vector<cv::Point2d> points = NoisyPoints(camera, pose, NOISE, 0.0, random);
  set.targets.emplace_back();
  set.views.emplace_back();
  for (std::size_t k = 0; k < points.size(); ++k) {
    if (CircleCountBeyond({points[k]}, camera.size) > 0) continue;
    set.targets.back().push_back(target[k]);
    set.views.back().push_back(points[k]);
  }
}

struct Outcome {
  double coverage = 0.0;
  double deviation = 0.0;
  double error = 0.0;
};

Outcome OutcomeOf(const world::Camera& camera, const Set& set) {
  SparseOptions options;
  options.threads = 1;
  const SparseResult result =
      SolveIntrinsicsSparsely(set.targets, set.views, camera.size, Calibrator::MODEL_CLASSIC, options);
  const CalibrationVerdict verdict = AssessIntrinsics(set.targets, set.views, camera.size, result);
  const double rms = world::MeanProjectionDistance(camera.lens, world::LensFrom(result.K, result.D),
                                                   camera.size, {}, world::Alignment::Rotated)
                         .rms;
  return {verdict.coverage, verdict.deviationInImage, rms / std::sqrt(2.0)};
}

/// `cut` of the views are moved to the border, which may cut off a quarter of the circles, or none.
Row RowOf(const std::string& name, int cut, int circles, int trials) {
  std::vector<double> coverage;
  std::vector<double> deviation;
  std::vector<double> error;
  const world::Camera camera = MakeCamera(LensKind::Strong, 65.0);
  const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  for (int seed = 1; seed <= trials; ++seed) {
    cv::RNG random(world::MixSeeds(static_cast<std::uint64_t>(seed), 40));
    Set set;
    for (const world::Pose& pose :
         world::SampleViews(camera, VIEWS, static_cast<std::uint64_t>(seed), sheet)) {
      const bool moves = static_cast<int>(set.views.size()) < cut;
      Add(camera, moves ? MovedOut(camera, pose, circles) : pose, random, set);
    }
    const Outcome outcome = OutcomeOf(camera, set);
    coverage.push_back(outcome.coverage);
    deviation.push_back(outcome.deviation);
    error.push_back(outcome.error);
  }
  return {{{"views", name}, {"trials", Text(trials)}},
          {{"image covered", Median(coverage), true},
           {"deviation over the image", Median(deviation)},
           {"error over the image", Median(error)},
           {"error 90", Quantile(error, 0.9)}}};
}

}  // namespace

Table PartsTable(const Effort& effort) {
  Table table{
      "parts",
      "Parts of grids",
      "Twelve views of a strong lens of 65 degrees, noise of 0.1 px. Views at the border are the same "
      "ones, moved on until it would cut off more circles than are allowed. Medians, in pixels of a "
      "coordinate over the whole image.",
      {}};
  const int trials = effort.Of(100);
  table.rows = {RowOf("random, whole grids", 0, 0, trials),
                RowOf("6 at the border, whole grids", 6, 0, trials),
                RowOf("6 at the border, parts", 6, 11, trials),
                RowOf("12 at the border, whole grids", VIEWS, 0, trials),
                RowOf("12 at the border, parts", VIEWS, 11, trials)};
  return table;
}

}  // namespace accuracy
