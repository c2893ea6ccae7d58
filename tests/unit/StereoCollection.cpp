/// Makes pairs of views of the grid, calibrators that hold them, and what they are compared with.
#include "unit/StereoCollection.h"

#include <cfloat>
#include <map>
#include <nlohmann/json.hpp>
#include <opencv2/calib3d.hpp>

#include "Renderer.h"

namespace unit {

namespace {

constexpr int RENDERED_PAIRS = 12;

const world::Sheet& PrintedSheet() {
  static const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  return sheet;
}

world::Renderer RendererOf(const world::Camera& camera, std::uint64_t seed) {
  world::Scene scene;
  scene.camera = camera;
  scene.sheet = PrintedSheet();
  scene.blur = 0.6;
  scene.noise = 2.0;
  scene.light = 0.2;
  scene.seed = seed;
  return world::Renderer(scene);
}

world::Renderer& LeftRenderer() {
  static world::Renderer renderer = RendererOf(PairOfCameras().left, 1);
  return renderer;
}

world::Renderer& RightRenderer() {
  static world::Renderer renderer = RendererOf(PairOfCameras().right, 2);
  return renderer;
}

ImagePair Render(const world::Pose& pose, std::uint64_t number) {
  const world::Pair& rig = PairOfCameras();
  const world::Pose rightPose = world::RightPose(rig, pose);
  return {LeftRenderer().Render(pose, number), RightRenderer().Render(rightPose, number),
          world::TrueCentres(rig.left.lens, PrintedSheet(), pose),
          world::TrueCentres(rig.right.lens, PrintedSheet(), rightPose)};
}

ImagePair CloneOf(const ImagePair& pair) {
  return {pair.left.clone(), pair.right.clone(), pair.leftCentres, pair.rightCentres};
}

nlohmann::json MatrixMember(const cv::Mat& matrix) {
  const std::vector<double> elements(matrix.begin<double>(), matrix.end<double>());
  return {{"rows", matrix.rows}, {"cols", matrix.cols}, {"type", 6}, {"depth", 6}, {"data", elements}};
}

void AddNoise(std::vector<cv::Point2d>& centres, cv::RNG& random) {
  constexpr double NOISE = 0.05;
  for (cv::Point2d& centre : centres) centre += cv::Point2d(random.gaussian(NOISE), random.gaussian(NOISE));
}

std::vector<std::vector<cv::Point2f>> InSinglePrecision(const PointLists& lists) {
  std::vector<std::vector<cv::Point2f>> narrowed;
  for (const auto& list : lists) narrowed.emplace_back(list.begin(), list.end());
  return narrowed;
}

}  // namespace

const world::Pair& PairOfCameras() {
  static const world::Pair rig = [] {
    const world::Camera left =
        world::CameraFromFieldOfView(FRAME, 62.0,
                                     {-0.21, 0.06, 0.0008, -0.0006, -0.008, 0.03, -0.01, 0.004, 0.0006,
                                      -0.0004, 0.0003, 0.0002, 0.002, -0.003});
    const world::Camera right =
        world::CameraFromFieldOfView(FRAME, 58.0,
                                     {-0.15, 0.03, -0.0005, 0.0007, 0.004, -0.02, 0.015, -0.003, -0.0005,
                                      0.0003, -0.0002, 0.0004, -0.003, 0.002});
    world::Pair sideBySide = world::SideBySidePair(left, right, 0.11, 8.0);
    // No mounting is exact: a small roll, and a right camera a little higher and further ahead.
    cv::Matx33d roll;
    cv::Rodrigues(cv::Vec3d(0.01, 0.0, 0.02), roll);
    sideBySide.R = roll * sideBySide.R;
    sideBySide.T += cv::Vec3d(0.0, 0.004, -0.006);
    return sideBySide;
  }();
  return rig;
}

PointPairs NoisyPairs(int count) {
  const world::Pair& rig = PairOfCameras();
  cv::RNG random(21);
  PointPairs pairs;
  for (const world::Pose& pose : world::RigViews(rig, count, PrintedSheet())) {
    pairs.left.push_back(world::TrueCentres(rig.left.lens, PrintedSheet(), pose));
    pairs.right.push_back(world::TrueCentres(rig.right.lens, PrintedSheet(), world::RightPose(rig, pose)));
    AddNoise(pairs.left.back(), random);
    AddNoise(pairs.right.back(), random);
  }
  return pairs;
}

std::unique_ptr<Calibrator> StereoCalibratorWith(const PointPairs& pairs) {
  auto calibrator = MakeCalibrator(Calibrator::STEREO);
  for (size_t i = 0; i < pairs.left.size(); ++i) calibrator->AddStereoPoints(pairs.left[i], pairs.right[i]);
  return calibrator;
}

ImagePair PairWithGrid(int view) {
  static const std::vector<world::Pose> poses =
      world::RigViews(PairOfCameras(), RENDERED_PAIRS, PrintedSheet());
  static std::map<int, ImagePair> rendered;
  const auto known = rendered.find(view);
  if (known != rendered.end()) return CloneOf(known->second);
  const world::Pose& pose = poses.at(static_cast<size_t>(view));
  return CloneOf(rendered.emplace(view, Render(pose, static_cast<std::uint64_t>(view))).first->second);
}

ImagePair PairWithoutGrid() {
  static const ImagePair pair{LeftRenderer().RenderEmpty(), RightRenderer().RenderEmpty(), {}, {}};
  return CloneOf(pair);
}

KnownIntrinsics IntrinsicsOf(const world::Camera& camera) {
  return {cv::Mat(camera.lens.K()), cv::Mat(camera.lens.D(), true).reshape(1, 1)};
}

std::string MonocularResult(const KnownIntrinsics& intrinsics) {
  const nlohmann::json result = {{"sensor", 0},
                                 {"error", 0.125},
                                 {"imgWidth", FRAME.width},
                                 {"imgHeight", FRAME.height},
                                 {"cameraMatrix", MatrixMember(intrinsics.K)},
                                 {"distCoefs", MatrixMember(intrinsics.D)}};
  return result.dump(4);
}

std::string LeftResult() {
  return MonocularResult(IntrinsicsOf(PairOfCameras().left));
}

std::string RightResult() {
  return MonocularResult(IntrinsicsOf(PairOfCameras().right));
}

std::unique_ptr<Calibrator> CompletedStereoCalibrator() {
  auto calibrator = StereoCalibratorWith(NoisyPairs(6));
  calibrator->ComputeCalibrationStereo(LeftResult(), RightResult(), Calibrator::MODEL_RATIONAL, false);
  return calibrator;
}

DirectStereoSolution SolveDirectly(const PointPairs& pairs, int flags) {
  const std::vector<std::vector<cv::Point3f>> objectPoints(pairs.left.size(), TargetPoints());
  KnownIntrinsics left = IntrinsicsOf(PairOfCameras().left);
  KnownIntrinsics right = IntrinsicsOf(PairOfCameras().right);
  DirectStereoSolution solution;
  solution.rms =
      cv::stereoCalibrate(objectPoints, InSinglePrecision(pairs.left), InSinglePrecision(pairs.right), left.K,
                          left.D, right.K, right.D, FRAME, solution.R, solution.T, solution.E, solution.F,
                          flags, cv::TermCriteria(3, 200, DBL_EPSILON));
  return solution;
}

}  // namespace unit
