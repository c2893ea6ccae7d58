/// The sparse solver beside mrcal's, on the same points and one thread. Built where libmrcal-dev is
/// installed.
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <stdexcept>

#include "Calibrator.h"
#include "Ratio.h"
#include "Views.h"
#include "solver/SparseIntrinsics.h"

extern "C" {
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wold-style-cast"
#endif
#include <mrcal/mrcal.h>

using namespace velmora;
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
}

namespace {

const cv::Size FRAME(640, 480);
/// mrcal knows rectangular grids only: one of about as many points as the sheet has, and as large.
constexpr int COLUMNS = 6;
constexpr int ROWS = 8;
constexpr double SPACING = 0.028;

struct Data {
  std::vector<std::vector<cv::Point3d>> object;
  std::vector<std::vector<cv::Point2d>> image;
};

/// Image points in single precision, as detectors give them: both are given the same.
cv::Point2d Narrowed(const cv::Point2d& point) {
  return cv::Point2d(cv::Point2f(point));
}

Data MakeData(int views) {
  const world::Camera camera =
      world::CameraFromFieldOfView(FRAME, 62.0, {-0.21, 0.06, 0.0008, -0.0006, -0.008});
  std::vector<cv::Point3d> grid;
  for (int row = 0; row < ROWS; ++row) {
    for (int column = 0; column < COLUMNS; ++column) grid.emplace_back(SPACING * column, SPACING * row, 0.0);
  }
  cv::RNG random(1);
  Data data;
  for (const world::Pose& pose : world::SampleViews(camera, views, 1, world::Sheet({4, 11}, 0.02))) {
    data.image.push_back(world::ProjectPoints(camera.lens, grid, pose));
    for (cv::Point2d& point : data.image.back()) {
      point = Narrowed(point + cv::Point2d(random.gaussian(0.1), random.gaussian(0.1)));
    }
    data.object.push_back(grid);
  }
  return data;
}

/// Where mrcal starts, found by OpenCV and not timed, and its points.
struct Seed {
  std::vector<double> lens;
  std::vector<mrcal_pose_t> frames;
  std::vector<mrcal_observation_board_t> boards;
  std::vector<mrcal_point3_t> points;
};

Seed SeedOf(const Data& data, int coefficients) {
  std::vector<std::vector<cv::Point3f>> object;
  std::vector<std::vector<cv::Point2f>> image;
  for (const auto& points : data.object) object.emplace_back(points.begin(), points.end());
  for (const auto& points : data.image) image.emplace_back(points.begin(), points.end());
  const cv::Mat K = cv::initCameraMatrix2D(object, image, FRAME);
  Seed seed;
  seed.lens = {K.at<double>(0, 0), K.at<double>(1, 1), K.at<double>(0, 2), K.at<double>(1, 2)};
  seed.lens.resize(static_cast<size_t>(4 + coefficients), 0.0);
  for (size_t i = 0; i < data.image.size(); ++i) {
    cv::Vec3d rotation;
    cv::Vec3d translation;
    cv::solvePnP(object[i], image[i], K, cv::noArray(), rotation, translation);
    mrcal_pose_t pose{};
    for (int k = 0; k < 3; ++k) {
      pose.r.xyz[k] = rotation[k];
      pose.t.xyz[k] = translation[k];
    }
    seed.frames.push_back(pose);
    seed.boards.push_back({{0, -1}, static_cast<int>(i)});
    for (const cv::Point2d& point : data.image[i]) {
      mrcal_point3_t observed{};
      observed.x = point.x;
      observed.y = point.y;
      observed.z = 1.0;  // its weight
      seed.points.push_back(observed);
    }
  }
  return seed;
}

/// Neither regularisation nor outliers, a flat board. The seed becomes the solution.
void SolveWithMrcal(Seed& seed, const char* model) {
  mrcal_lensmodel_t lens{};
  if (!mrcal_lensmodel_from_name(&lens, model)) throw std::invalid_argument(model);
  mrcal_problem_selections_t selections{};
  selections.do_optimize_intrinsics_core = true;
  selections.do_optimize_intrinsics_distortions = true;
  selections.do_optimize_frames = true;
  const mrcal_problem_constants_t constants{};
  const int size[] = {FRAME.width, FRAME.height};
  const int views = static_cast<int>(seed.frames.size());
  const mrcal_stats_t stats =
      mrcal_optimize(nullptr, 0, nullptr, 0, seed.lens.data(), nullptr, seed.frames.data(), nullptr, nullptr,
                     1, 0, views, 0, 0, seed.boards.data(), nullptr, views, 0, seed.points.data(), &lens,
                     size, selections, &constants, SPACING, COLUMNS, ROWS, false, false);
  if (stats.rms_reproj_error__pixels < 0.0) throw std::runtime_error("mrcal found no solution");
}

/// By OpenCV's projection.
double RmsOf(const Seed& solution, const Data& data) {
  const auto& p = solution.lens;
  const cv::Matx33d K(p[0], 0.0, p[2], 0.0, p[1], p[3], 0.0, 0.0, 1.0);
  const std::vector<double> D(p.begin() + 4, p.end());
  double squaredDistances = 0.0;
  double points = 0.0;
  for (size_t i = 0; i < data.image.size(); ++i) {
    const mrcal_pose_t& pose = solution.frames[i];
    std::vector<cv::Point2d> projected;
    cv::projectPoints(data.object[i], cv::Vec3d(pose.r.xyz), cv::Vec3d(pose.t.xyz), K, D, projected);
    for (size_t k = 0; k < projected.size(); ++k) {
      const cv::Point2d error = projected[k] - data.image[i][k];
      squaredDistances += error.dot(error);
      points += 1.0;
    }
  }
  return std::sqrt(squaredDistances / points);
}

/// Arguments: model, views.
void SparseBesideMrcal(benchmark::State& state) {
  const int model = static_cast<int>(state.range(0));
  const bool classic = model == Calibrator::MODEL_CLASSIC;
  const char* const name = classic ? "LENSMODEL_OPENCV5" : "LENSMODEL_OPENCV8";
  const Data data = MakeData(static_cast<int>(state.range(1)));
  const Seed seed = SeedOf(data, classic ? 5 : 8);
  SparseOptions options;
  options.threads = 1;
  double rms = 0.0;
  Seed other;
  bench::Ratio().Run(
      state, [&] { rms = SolveIntrinsicsSparsely(data.object, data.image, FRAME, model, options).rms; },
      [&] {
        other = seed;
        SolveWithMrcal(other, name);
      });
  state.counters["rms"] = rms;
  state.counters["rms_of_mrcal"] = RmsOf(other, data);
}

}  // namespace

BENCHMARK(SparseBesideMrcal)
    ->ArgsProduct({{Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL}, {10, 20, 40, 80, 200}})
    ->Iterations(7)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
