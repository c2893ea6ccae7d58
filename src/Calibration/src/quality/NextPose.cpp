/// Chooses where the target should be seen next.
#include "quality/NextPose.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "quality/ProjectionUncertainty.h"
#include "solver/Start.h"

namespace velmora::solver {

namespace {

constexpr int CANDIDATES = 500;
constexpr size_t ENOUGH_VIEWS = 3;
constexpr double USUAL_NOISE = 0.1;  // pixels

size_t Diagonal(int i) {
  return static_cast<size_t>(i * FULL_PARAMETERS + i);
}

/// Whether a camera for the image can have such a lens. From few or frontal views any number may come out.
bool IsPlausible(const Lens& lens, const cv::Size& imageSize) {
  const double side = std::max(imageSize.width, imageSize.height);
  const auto focal = [side](double f) { return f > 0.2 * side && f < 10.0 * side; };
  const auto central = [](double c, int pixels) { return c > 0.2 * pixels && c < 0.8 * pixels; };
  return focal(lens.values[0]) && focal(lens.values[1]) && central(lens.values[2], imageSize.width) &&
         central(lens.values[3], imageSize.height);
}

/// As most cameras have it: 60 degrees wide, no distortion.
Lens UsualLens(const cv::Size& imageSize) {
  constexpr double HALF_WIDTH = 0.577;  // at distance 1
  const double focal = 0.5 * std::max(imageSize.width, imageSize.height) / HALF_WIDTH;
  Lens lens;
  lens.values = {focal, focal, 0.5 * (imageSize.width - 1), 0.5 * (imageSize.height - 1)};
  return lens;
}

/// What is known of any lens. It stands in for views as long as these leave something undetermined, and says
/// next to nothing beside enough of them.
void AddCommonKnowledge(const cv::Size& imageSize, Knowledge& knowledge) {
  const double focal = 0.3 * knowledge.lens.values[0];
  const double centre = 0.1 * std::max(imageSize.width, imageSize.height);
  const std::array<double, CLASSIC_PARAMETERS> deviations = {focal, focal, centre, centre, 0.5,
                                                             0.5,   0.02,  0.02,   0.5};
  for (int i = 0; i < CLASSIC_PARAMETERS; ++i) {
    const double deviation = deviations[static_cast<size_t>(i)];
    knowledge.information[Diagonal(i)] += knowledge.variance / (deviation * deviation);
  }
}

void Add(const ReducedView& view, LensMatrix& information) {
  if (!view.solvable) return;
  for (size_t i = 0; i < information.size(); ++i) information[i] += view.matrix[i];
}

Knowledge UsualKnowledge(const std::vector<View>& views, const cv::Size& imageSize) {
  Knowledge knowledge;
  knowledge.lens = UsualLens(imageSize);
  knowledge.variance = USUAL_NOISE * USUAL_NOISE;
  for (const View& view : views) {
    cv::Matx33d homography;
    if (!HomographyOf(view, homography)) continue;
    const Pose pose = StartPoseOf(view, knowledge.lens);
    Add(Reduce(EquationsOf(view, knowledge.lens, pose), knowledge.lens.free, 0.0), knowledge.information);
  }
  return knowledge;
}

}  // namespace

Knowledge KnowledgeFrom(const Solved& solved, const std::vector<View>& views, const cv::Size& imageSize) {
  const Solution& solution = solved.staged.solution;
  Knowledge knowledge;
  if (solved.kept.size() >= ENOUGH_VIEWS && IsPlausible(solution.estimate.lens, imageSize)) {
    knowledge.lens = solution.estimate.lens;
    knowledge.variance = NoiseVariance(solution, solved.views);
    knowledge.nominal = false;
    for (const ViewEquations& equations : solution.equations) {
      Add(Reduce(equations, knowledge.lens.free, 0.0), knowledge.information);
    }
    for (int i = 0; i < knowledge.lens.free; ++i) {
      knowledge.information[Diagonal(i)] += solved.staged.prior[static_cast<size_t>(i)];
    }
  } else {
    knowledge = UsualKnowledge(views, imageSize);
  }
  AddCommonKnowledge(imageSize, knowledge);
  return knowledge;
}

PoseScore::PoseScore(const Knowledge& knowledge, const cv::Size& imageSize) : knowledge_(knowledge) {
  const auto right = static_cast<float>(imageSize.width);
  const auto bottom = static_cast<float>(imageSize.height);
  const std::vector<cv::Point2f> image = {{-1.0F, -1.0F}, {right, -1.0F}, {right, bottom}, {-1.0F, bottom}};
  mean_ = ProjectionUncertainty(knowledge.lens, imageSize, image).MeanProduct();
}

/// Half the trace of the covariance times the mean product.
double PoseScore::Expected(const LensMatrix& information) const {
  ScaledSystem system;
  if (mean_.empty() || !system.Decompose(information, mean_.rows)) {
    return std::numeric_limits<double>::infinity();
  }
  double trace = 0.0;
  for (int j = 0; j < mean_.rows; ++j) {
    Step column{};
    for (int i = 0; i < mean_.rows; ++i) column[static_cast<size_t>(i)] = mean_.at<double>(i, j);
    system.Solve(column);
    trace += column[static_cast<size_t>(j)];
  }
  return std::sqrt(0.5 * knowledge_.variance * trace);
}

double PoseScore::Now() const {
  return Expected(knowledge_.information);
}

double PoseScore::With(const Candidate& candidate) const {
  const Lens& lens = knowledge_.lens;
  const ReducedView view = Reduce(EquationsOf(candidate.view, lens, candidate.pose), lens.free, 0.0);
  if (!view.solvable) return std::numeric_limits<double>::infinity();
  LensMatrix information = knowledge_.information;
  Add(view, information);
  return Expected(information);
}

NextPose ChooseNextPose(const Knowledge& knowledge, const std::vector<cv::Point3d>& object,
                        const cv::Size& imageSize, double mostSpacing) {
  const PoseScore score(knowledge, imageSize);
  NextPose best;
  best.now = score.Now();
  best.then = std::numeric_limits<double>::infinity();
  for (Candidate& candidate : CandidatesFor(knowledge.lens, object, imageSize, CANDIDATES, mostSpacing)) {
    const double then = score.With(candidate);
    if (then >= best.then) continue;
    best.then = then;
    best.candidate = std::move(candidate);
  }
  return best;
}

}  // namespace velmora::solver
