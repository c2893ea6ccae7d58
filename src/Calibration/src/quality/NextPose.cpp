/// Chooses where the target should be shown next.
#include "quality/NextPose.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "quality/ProjectionUncertainty.h"
#include "solver/Initialisation.h"
#include "solver/NormalEquations.h"
#include "solver/ScaledSystem.h"

namespace velmora {

namespace {

constexpr int CANDIDATES = 500;
constexpr size_t ENOUGH_VIEWS = 3;
constexpr double USUAL_NOISE = 0.1;  // pixels

/// Whether a camera for the image can have such intrinsics. Few or frontal views may lead to any numbers.
bool IsPlausible(const Intrinsics& intrinsics, const cv::Size& imageSize) {
  const double side = std::max(imageSize.width, imageSize.height);
  const auto focal = [side](double f) { return f > 0.2 * side && f < 10.0 * side; };
  const auto central = [](double c, int pixels) { return c > 0.2 * pixels && c < 0.8 * pixels; };
  return focal(intrinsics.values[FX]) && focal(intrinsics.values[FY]) &&
         central(intrinsics.values[CX], imageSize.width) && central(intrinsics.values[CY], imageSize.height);
}

/// The intrinsics of a usual camera: 60 degrees wide, no distortion.
Intrinsics UsualCamera(const cv::Size& imageSize) {
  constexpr double HALF_WIDTH = 0.577;  // at distance 1
  const double focal = 0.5 * std::max(imageSize.width, imageSize.height) / HALF_WIDTH;
  Intrinsics intrinsics;
  intrinsics.values = {focal, focal, 0.5 * (imageSize.width - 1), 0.5 * (imageSize.height - 1)};
  return intrinsics;
}

/// What is known of any camera's intrinsics. It stands in for views as long as these leave something
/// undetermined, and says next to nothing beside enough of them.
void AddPriorInformation(const cv::Size& imageSize, CameraInformation& known) {
  const double focal = 0.3 * known.intrinsics.values[0];
  const double centre = 0.1 * std::max(imageSize.width, imageSize.height);
  const std::array<double, CLASSIC_PARAMETERS> deviations = {focal, focal, centre, centre, 0.5,
                                                             0.5,   0.02,  0.02,   0.5};
  for (int i = 0; i < CLASSIC_PARAMETERS; ++i) {
    const double standardDeviation = deviations[static_cast<size_t>(i)];
    known.information(i, i) += known.variance / (standardDeviation * standardDeviation);
  }
}

/// The information of a view about its camera's intrinsics; empty where it does not show the target in front
/// of it.
Eigen::MatrixXd InformationOf(const Observation& observation, const Intrinsics& intrinsics,
                              const RigidTransform& pose) {
  Rig rig;
  rig.cameras.resize(1);
  rig.cameras.front().intrinsics = intrinsics;
  const TargetView view{pose, {observation}};
  return solver::Reduce(solver::EquationsOf(view, pose, rig, LayoutOf(rig, {})), 0.0)
      .matrix.selfadjointView<Eigen::Lower>();
}

void Add(const Eigen::MatrixXd& view, Eigen::MatrixXd& information) {
  if (view.size() > 0) information += view;
}

CameraInformation InformationOfUsualCamera(const std::vector<TargetView>& views, const cv::Size& imageSize) {
  CameraInformation known;
  known.intrinsics = UsualCamera(imageSize);
  known.variance = USUAL_NOISE * USUAL_NOISE;
  const int estimated = known.intrinsics.estimated;
  known.information = Eigen::MatrixXd::Zero(estimated, estimated);
  for (const TargetView& view : views) {
    const Observation& observation = view.observations.front();
    cv::Matx33d homography;
    if (!solver::HomographyOf(observation, homography)) continue;
    const RigidTransform pose = solver::StartPoseOf(observation, known.intrinsics);
    Add(InformationOf(observation, known.intrinsics, pose), known.information);
  }
  return known;
}

}  // namespace

CameraInformation CameraInformationFrom(const Solution& solution, const std::vector<TargetView>& views,
                                        const cv::Size& imageSize) {
  CameraInformation known;
  if (solution.views.size() >= ENOUGH_VIEWS &&
      IsPlausible(solution.rig.cameras.front().intrinsics, imageSize)) {
    known.intrinsics = solution.rig.cameras.front().intrinsics;
    known.variance = NoiseVariance(solution);
    known.nominal = false;
    const solver::PriorTerms priors = solver::PriorTermsOf(solution);
    known.information = priors.matrix;
    for (const ViewEquations& equations : solution.equations) {
      Add(solver::Reduce(equations, 0.0).matrix.selfadjointView<Eigen::Lower>(), known.information);
    }
  } else {
    known = InformationOfUsualCamera(views, imageSize);
  }
  AddPriorInformation(imageSize, known);
  return known;
}

ExpectedUncertainty::ExpectedUncertainty(const CameraInformation& known, const cv::Size& imageSize)
    : known_(known) {
  const auto right = static_cast<float>(imageSize.width);
  const auto bottom = static_cast<float>(imageSize.height);
  const std::vector<cv::Point2f> image = {{-1.0F, -1.0F}, {right, -1.0F}, {right, bottom}, {-1.0F, bottom}};
  mean_ = ProjectionUncertainty(known.intrinsics, imageSize, image).MeanProduct();
}

/// Half the trace of the covariance times the mean product.
double ExpectedUncertainty::Expected(const Eigen::MatrixXd& information) const {
  solver::ScaledSystem system;
  if (mean_.size() == 0 || !system.Decompose(information)) return std::numeric_limits<double>::infinity();
  return std::sqrt(0.5 * known_.variance * system.Solve(mean_).trace());
}

double ExpectedUncertainty::Current() const {
  return Expected(known_.information);
}

double ExpectedUncertainty::With(const PoseCandidate& candidate) const {
  const Eigen::MatrixXd view = InformationOf(candidate.view, known_.intrinsics, candidate.pose);
  if (view.size() == 0) return std::numeric_limits<double>::infinity();
  return Expected(known_.information + view);
}

NextPose ChooseNextPose(const CameraInformation& known, const std::vector<cv::Point3d>& object,
                        const cv::Size& imageSize, double mostSpacing) {
  const ExpectedUncertainty uncertainty(known, imageSize);
  NextPose best;
  best.now = uncertainty.Current();
  best.then = std::numeric_limits<double>::infinity();
  for (PoseCandidate& candidate :
       CandidatesFor(known.intrinsics, object, imageSize, CANDIDATES, mostSpacing)) {
    const double then = uncertainty.With(candidate);
    if (then >= best.then) continue;
    best.then = then;
    best.candidate = std::move(candidate);
  }
  return best;
}

}  // namespace velmora
