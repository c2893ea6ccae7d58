/// The sparse solver beside OpenCV's, on the same points and one thread.
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "Calibrator.h"
#include "Ratio.h"
#include "Rig.h"
#include "Views.h"
#include "model/LensModel.h"
#include "model/TargetGeometry.h"
#include "quality/Assessment.h"
#include "quality/NextPose.h"
#include "quality/SheetChoice.h"
#include "solver/OpenCvMatrices.h"
#include "solver/SheetLadder.h"
#include "solver/SparseIntrinsics.h"
#include "solver/SparsePair.h"

using namespace velmora;

namespace {

const cv::Size GRID(4, 11);
const cv::Size FRAME(640, 480);
constexpr float UNIT = 0.02F;

struct Data {
  std::vector<std::vector<cv::Point3d>> object;
  std::vector<std::vector<cv::Point2d>> image;
};

/// `sag`: how far the sheet is bent along its length, metres.
Data MakeData(int views, double sag = 0.0) {
  const world::Camera camera =
      world::CameraFromFieldOfView(FRAME, 62.0, {-0.21, 0.06, 0.0008, -0.0006, -0.008});
  const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  cv::RNG random(1);
  std::vector<cv::Point3d> points = sheet.GridPoints();
  const double half = sheet.GridMiddle().y;
  for (cv::Point3d& point : points) point.z = sag * (1.0 - std::pow((point.y - half) / half, 2.0));
  Data data;
  for (const world::Pose& pose : world::SampleViews(camera, views, 1, sheet)) {
    data.image.push_back(world::ProjectPoints(camera.lens, points, pose));
    for (cv::Point2d& point : data.image.back()) {
      point += cv::Point2d(random.gaussian(0.1), random.gaussian(0.1));
    }
    data.object.push_back(MakeObjectTemplate(GRID, UNIT));
  }
  return data;
}

struct PairData {
  std::vector<std::vector<cv::Point3d>> object;
  std::vector<std::vector<cv::Point2d>> left;
  std::vector<std::vector<cv::Point2d>> right;
};

PairData MakePairData(int views) {
  const world::Pair rig = world::SideBySidePair(
      FRAME, 62.0, 0.11, 8.0, {-0.21, 0.06, 0.0008, -0.0006, -0.008}, {-0.15, 0.03, -0.0005, 0.0007, 0.004});
  const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  cv::RNG random(1);
  const auto noisy = [&](std::vector<cv::Point2d> points) {
    for (cv::Point2d& point : points) point += cv::Point2d(random.gaussian(0.1), random.gaussian(0.1));
    return points;
  };
  PairData data;
  for (const world::Pose& pose : world::SampleRigViews(rig, views, 1, sheet)) {
    data.left.push_back(noisy(world::TrueCentres(rig.left.lens, sheet, pose)));
    data.right.push_back(noisy(world::TrueCentres(rig.right.lens, sheet, world::RightPose(rig, pose))));
    data.object.push_back(MakeObjectTemplate(GRID, UNIT));
  }
  return data;
}

void Sparse(const Data& data, int model) {
  SparseOptions options;
  options.threads = 1;
  benchmark::DoNotOptimize(SolveIntrinsicsSparsely(data.object, data.image, FRAME, model, options).rms);
}

/// Arguments: model, views.
void SparseBesideOpenCV(benchmark::State& state) {
  const int model = static_cast<int>(state.range(0));
  const Data data = MakeData(static_cast<int>(state.range(1)));
  const int threads = cv::getNumThreads();
  cv::setNumThreads(1);
  bench::Ratio().Run(
      state, [&] { Sparse(data, model); },
      [&] { benchmark::DoNotOptimize(SolveIntrinsics(data.object, data.image, FRAME, model).rms); });
  cv::setNumThreads(threads);
}

/// A bent sheet with every shape that it may have, robustly, beside OpenCV's calibration with a flat one.
/// Arguments: views.
void ShapeBesideOpenCV(benchmark::State& state) {
  const Data data = MakeData(static_cast<int>(state.range(0)), 0.001);
  const int threads = cv::getNumThreads();
  cv::setNumThreads(1);
  SparseOptions options;
  options.threads = 1;
  options.robust = true;
  options.sheet = SheetShape::Auto;
  const int classic = Calibrator::MODEL_CLASSIC;
  bench::Ratio().Run(
      state,
      [&] {
        benchmark::DoNotOptimize(
            SolveIntrinsicsWithSheet(data.object, data.image, FRAME, classic, options).rms);
      },
      [&] { benchmark::DoNotOptimize(SolveIntrinsics(data.object, data.image, FRAME, classic).rms); });
  cv::setNumThreads(threads);
}

/// Every shape alone, from a solution of a flat sheet.
void ShapesAlone(benchmark::State& state) {
  const Data data = MakeData(static_cast<int>(state.range(0)), 0.001);
  const SparseResult flat =
      SolveIntrinsicsSparsely(data.object, data.image, FRAME, Calibrator::MODEL_CLASSIC);
  solver::BundleOptions options;
  for (auto iteration : state) {
    static_cast<void>(iteration);
    benchmark::DoNotOptimize(
        solver::ClimbSheet(*flat.solution, SheetLevel::FreePointsProportions, options).size());
  }
}

/// The sparse solver alone, for numbers of views that OpenCV's takes minutes for.
void SparseAlone(benchmark::State& state) {
  const int model = static_cast<int>(state.range(0));
  const Data data = MakeData(static_cast<int>(state.range(1)));
  for (auto iteration : state) {
    static_cast<void>(iteration);
    Sparse(data, model);
  }
  state.SetComplexityN(state.range(1));
}

/// The choice of the next pose out of 500, beside the computation of the views that it follows from.
void NextPoseBesideSparse(benchmark::State& state) {
  const int model = static_cast<int>(state.range(0));
  const Data data = MakeData(10);
  const solver::Target target = solver::TargetOf(data.object, data.image);
  const SparseResult result = SolveIntrinsicsSparsely(data.object, data.image, FRAME, model);
  const CameraInformation known =
      CameraInformationFrom(solver::SolutionFrom(target, result, FRAME, 0.0), target.views, FRAME);
  bench::Ratio().Run(
      state,
      [&] {
        benchmark::DoNotOptimize(
            ChooseNextPose(known, target.views.front().observations.front().object, FRAME).then);
      },
      [&] { Sparse(data, model); });
}

/// The verdict on a result beside its computation. Arguments: model, views.
void VerdictBesideSparse(benchmark::State& state) {
  const int model = static_cast<int>(state.range(0));
  const Data data = MakeData(static_cast<int>(state.range(1)));
  const SparseResult result = SolveIntrinsicsSparsely(data.object, data.image, FRAME, model);
  bench::Ratio().Run(
      state,
      [&] {
        benchmark::DoNotOptimize(
            AssessIntrinsics(data.object, data.image, FRAME, result, 0.0).deviationInData);
      },
      [&] { Sparse(data, model); });
}

/// Where the cameras of the pair, each computed alone, lead from.
StereoIntrinsics EachAlone(const PairData& data, int model) {
  const auto zeros = [] { return cv::Mat(cv::Mat::zeros(1, 14, CV_64F)); };
  StereoIntrinsics start{{}, zeros(), {}, zeros()};
  const SparseResult left = SolveIntrinsicsSparsely(data.object, data.left, FRAME, model);
  const SparseResult right = SolveIntrinsicsSparsely(data.object, data.right, FRAME, model);
  start.K = left.K;
  start.KRight = right.K;
  left.D.copyTo(start.D.colRange(0, left.D.cols));
  right.D.copyTo(start.DRight.colRange(0, right.D.cols));
  return start;
}

/// Both cameras of a pair and how they stand, for numbers of views that OpenCV's takes minutes for.
void PairAlone(benchmark::State& state) {
  const int model = static_cast<int>(state.range(0));
  const PairData data = MakePairData(static_cast<int>(state.range(1)));
  const StereoIntrinsics start = EachAlone(data, model);
  for (auto iteration : state) {
    static_cast<void>(iteration);
    benchmark::DoNotOptimize(RefinePairSparsely(data.object, data.left, data.right, start, FRAME, model).rms);
  }
}

/// A pair with refined intrinsics, beside OpenCV's from the same start. Arguments: model, views.
void RefinedPairBesideOpenCV(benchmark::State& state) {
  const int model = static_cast<int>(state.range(0));
  const PairData data = MakePairData(static_cast<int>(state.range(1)));
  const StereoIntrinsics start = EachAlone(data, model);
  double rms = 0.0;
  double other = 0.0;
  const int threads = cv::getNumThreads();
  cv::setNumThreads(1);
  bench::Ratio().Run(
      state, [&] { rms = RefinePairSparsely(data.object, data.left, data.right, start, FRAME, model).rms; },
      [&] {
        cv::Mat K = start.K.clone();
        cv::Mat D = start.D.clone();
        cv::Mat KRight = start.KRight.clone();
        cv::Mat DRight = start.DRight.clone();
        cv::Mat R;
        cv::Mat T;
        cv::Mat E;
        cv::Mat F;
        other = cv::stereoCalibrate(
            Narrowed(data.object), Narrowed(data.left), Narrowed(data.right), K, D, KRight, DRight, FRAME, R,
            T, E, F, cv::CALIB_USE_INTRINSIC_GUESS | LensModelOf(model).flags, OpenCvCriteria());
      });
  cv::setNumThreads(threads);
  state.counters["rms"] = rms;
  state.counters["rms_of_opencv"] = other;
}

}  // namespace

BENCHMARK(RefinedPairBesideOpenCV)
    ->ArgsProduct({{Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL}, {10, 20}})
    ->Iterations(3)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(SparseBesideOpenCV)
    ->ArgsProduct({{Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL}, {10, 20, 40}})
    ->Args({Calibrator::MODEL_FULL, 20})
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(SparseAlone)
    ->ArgsProduct({{Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL},
                   {50, 200, 1000}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(PairAlone)
    ->ArgsProduct({{Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL},
                   {50, 200, 1000}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(ShapeBesideOpenCV)->Arg(10)->Arg(30)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ShapesAlone)->Arg(10)->Arg(30)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(NextPoseBesideSparse)
    ->Arg(Calibrator::MODEL_CLASSIC)
    ->Arg(Calibrator::MODEL_RATIONAL)
    ->Arg(Calibrator::MODEL_FULL)
    ->Iterations(20)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(VerdictBesideSparse)
    ->ArgsProduct({{Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL}, {12, 40}})
    ->Iterations(20)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
