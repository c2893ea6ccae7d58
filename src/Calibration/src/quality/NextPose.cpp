/// Chooses where the target should be shown next.
#include "quality/NextPose.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "quality/ProjectionUncertainty.h"
#include "solver/Initialisation.h"
#include "solver/NormalEquations.h"
#include "solver/ScaledSystem.h"
#include "solver/ShapedEquations.h"
#include "solver/SheetShape.h"

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
  const std::array<double, CLASSIC_PARAMETERS> ofPlanes = {focal, focal, centre, centre, 0.5,
                                                           0.5,   0.02,  0.02,   0.5};
  const std::array<double, CLASSIC_PARAMETERS> ofAngles = {focal, focal, centre, centre, 0.2, 0.1, 0.1, 0.1};
  const auto& deviations = known.intrinsics.IsFisheye() ? ofAngles : ofPlanes;
  for (int i = 0; i < std::min(known.intrinsics.estimated, CLASSIC_PARAMETERS); ++i) {
    const double standardDeviation = deviations[static_cast<size_t>(i)];
    known.information(i, i) += known.variance / (standardDeviation * standardDeviation);
  }
}

/// The information of a view about what is known of its camera; empty where it does not show the target in
/// front of it.
Eigen::MatrixXd InformationOf(const Observation& observation, const CameraInformation& known,
                              const RigidTransform& pose) {
  Rig rig;
  rig.cameras.resize(1);
  rig.cameras.front().intrinsics = known.intrinsics;
  TargetView view{pose, {observation}};
  ViewEquations equations;
  if (known.sheet.IsFlat()) {
    equations = solver::EquationsOf(view, pose, rig, LayoutOf(rig, {}));
  } else {
    // A view to come bends the sheet in a way of its own, of which no more is known than of other views'.
    std::vector<TargetView> shaped = {std::move(view)};
    solver::PutToShape(known.sheet, shaped);
    const solver::ViewJacobian jacobian(rig, LayoutOf(rig, {}, known.sheet), known.sheet);
    solver::TakeShapedEquations(jacobian, known.sheet, shaped.front(), equations);
  }
  return solver::Reduce(equations, 0.0).matrix.selfadjointView<Eigen::Lower>();
}

/// Without the shape of the sheet, which the views know as well as before: what they say of the camera alone.
void LeaveShapeOut(CameraInformation& known) {
  const auto count = static_cast<Eigen::Index>(known.intrinsics.estimated);
  const Eigen::Index terms = known.sheet.terms.Count();
  const Eigen::MatrixXd coupling = known.information.bottomLeftCorner(terms, count);
  solver::ScaledSystem shape;
  Eigen::MatrixXd own = known.information.topLeftCorner(count, count);
  if (terms > 0 && shape.Decompose(known.information.bottomRightCorner(terms, terms))) {
    own -= coupling.transpose() * shape.Solve(coupling);
  }
  known.information = own;
  known.sheet = {};
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
    Add(InformationOf(observation, known, pose), known.information);
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
    known.sheet = solution.sheet;
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
  const Eigen::MatrixXd own = ProjectionUncertainty(known.intrinsics, imageSize, image).MeanProduct();
  if (own.size() == 0) return;
  mean_.setZero(known.information.rows(), known.information.cols());
  mean_.topLeftCorner(own.rows(), own.cols()) = own;
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
  const Eigen::MatrixXd view = InformationOf(candidate.view, known_, candidate.pose);
  if (view.size() == 0) return std::numeric_limits<double>::infinity();
  return Expected(known_.information + view);
}

NextPose ChooseNextPose(const CameraInformation& camera, const std::vector<cv::Point3d>& object,
                        const cv::Size& imageSize, double mostSpacing) {
  CameraInformation known = camera;
  // Views that never showed the whole target do not tell its shape.
  if (!known.sheet.IsFlat() && known.sheet.target.size() != object.size()) LeaveShapeOut(known);
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
