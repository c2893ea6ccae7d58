/// Makes sets of data of all kinds and compares their verdicts with the truth.
#include "VerdictTrial.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/calib3d.hpp>
#include <set>

#include "LensError.h"
#include "Seed.h"
#include "Trial.h"
#include "Views.h"
#include "model/TargetGeometry.h"
#include "quality/Assessment.h"
#include "quality/PairAssessment.h"
#include "solver/SparsePair.h"

using namespace velmora;

namespace accuracy {

namespace {

using Grade = CalibrationVerdict::Grade;

constexpr int CLASSIC = Calibrator::MODEL_CLASSIC;

struct DataSet {
  std::vector<world::Camera> cameras;  ///< that made it, one or two
  int model = CLASSIC;
  Points views;
  Points clean;  ///< without what was spoilt
};

std::vector<std::vector<cv::Point3d>> Targets(std::size_t count) {
  return std::vector<std::vector<cv::Point3d>>(count, MakeObjectTemplate(GRID, UNIT));
}

double FromTo(cv::RNG& random, double least, double most) {
  return random.uniform(least, most);
}

/// Even in the logarithm.
double FactorFromTo(cv::RNG& random, double least, double most) {
  return std::exp(random.uniform(std::log(least), std::log(most)));
}

world::Camera WithFocalLength(const world::Camera& camera, double factor) {
  cv::Matx33d K = camera.lens.K();
  K(0, 0) *= factor;
  K(1, 1) *= factor;
  return {camera.size, world::Lens(K, camera.lens.D())};
}

world::Camera UsualCamera(cv::RNG& random) {
  const LensKind lens = random.uniform(0, 2) == 0 ? LensKind::Light : LensKind::Strong;
  return MakeCamera(lens, FromTo(random, 45.0, 80.0));
}

int ViewsOf(DataKind kind, cv::RNG& random) {
  if (kind == DataKind::FewViews) return random.uniform(4, 8);
  if (kind == DataKind::Repeated) return random.uniform(3, 13);
  return random.uniform(10, 31);
}

/// The share by which the focal length is longer in the last view, in one or the other direction.
double ChangeOf(DataKind kind, cv::RNG& random) {
  const double size =
      kind == DataKind::ZoomedLittle ? FactorFromTo(random, 0.001, 0.01) : FactorFromTo(random, 0.01, 0.1);
  return random.uniform(0, 2) == 0 ? size : -size;
}

/// The camera of each view.
std::vector<world::Camera> CamerasOfViews(DataKind kind, DataSet& set, int views, cv::RNG& random) {
  std::vector<world::Camera> each(static_cast<std::size_t>(views), set.cameras.front());
  const bool drifts = kind == DataKind::Drifting;
  if (!drifts && kind != DataKind::Zoomed && kind != DataKind::ZoomedLittle) return each;
  const double change = ChangeOf(kind, random);
  for (int i = 0; i < views; ++i) {
    const double share = drifts ? static_cast<double>(i) / (views - 1) : 2 * i < views ? 0.0 : 1.0;
    each[static_cast<std::size_t>(i)] = WithFocalLength(set.cameras.front(), 1.0 + share * change);
  }
  set.cameras.push_back(each.back());
  return each;
}

void RepeatViews(double noise, cv::RNG& random, DataSet& set) {
  const int copies = random.uniform(2, 21);
  Points repeated;
  for (const auto& view : set.views) {
    for (int i = 0; i < copies; ++i) {
      repeated.push_back(view);
      for (cv::Point2d& point : repeated.back()) {
        point += cv::Point2d(random.gaussian(0.3 * noise), random.gaussian(0.3 * noise));
      }
    }
  }
  set.views = repeated;
}

void SpoilPoints(cv::RNG& random, Points& views) {
  const double share = FromTo(random, 0.05, 0.4);
  for (auto& view : views) {
    for (cv::Point2d& point : view) {
      if (random.uniform(0.0, 1.0) < share)
        point += cv::Point2d(random.gaussian(20.0), random.gaussian(20.0));
    }
  }
}

/// In the wrong order, or noisy.
void SpoilViews(cv::RNG& random, Points& views) {
  const double share = FromTo(random, 0.05, 0.45);
  const auto count = static_cast<std::size_t>(std::lround(share * static_cast<double>(views.size())));
  std::set<std::size_t> spoilt;
  while (spoilt.size() < std::max<std::size_t>(count, 1)) {
    spoilt.insert(static_cast<std::size_t>(random.uniform(0, static_cast<int>(views.size()))));
  }
  for (const std::size_t i : spoilt) {
    if (random.uniform(0, 2) == 0) {
      std::reverse(views[i].begin(), views[i].end());
      continue;
    }
    const double noise = FromTo(random, 2.0, 10.0);
    for (cv::Point2d& point : views[i]) point += cv::Point2d(random.gaussian(noise), random.gaussian(noise));
  }
}

DataSet Made(DataKind kind, std::uint64_t seed) {
  cv::RNG random(world::MixSeeds(seed, 10 + static_cast<std::uint64_t>(kind)));
  DataSet set;
  if (kind == DataKind::CleanWide) {
    set.cameras = {MakeCamera(LensKind::WideAngle, FromTo(random, 85.0, 110.0))};
    set.model = Calibrator::MODEL_RATIONAL;
  } else {
    set.cameras = {UsualCamera(random)};
  }
  const double noise = FactorFromTo(random, 0.05, 0.2);
  const double sag = kind == DataKind::Bent ? FactorFromTo(random, 0.0003, 0.003) : 0.0;
  const int count = ViewsOf(kind, random);
  const auto each = CamerasOfViews(kind, set, count, random);
  const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  const auto poses = world::SampleViews(set.cameras.front(), count, seed, sheet);
  for (std::size_t i = 0; i < poses.size(); ++i) {
    set.views.push_back(NoisyPoints(each[i], poses[i], noise, sag, random));
  }
  if (kind == DataKind::Repeated) RepeatViews(noise, random, set);
  set.clean = set.views;
  if (kind == DataKind::OutlyingPoints) SpoilPoints(random, set.views);
  if (kind == DataKind::OutlyingViews) SpoilViews(random, set.views);
  return set;
}

/// Those that the computation used.
Points KeptOf(const Points& views, const CalibrationVerdict& verdict) {
  std::set<std::size_t> leftOut;
  for (const auto& item : verdict.leftOut) {
    if (item.point < 0) leftOut.insert(item.view);
  }
  Points kept;
  for (std::size_t i = 0; i < views.size(); ++i) {
    if (leftOut.count(i) == 0) kept.push_back(views[i]);
  }
  return kept;
}

/// Remarks that begin otherwise name a cause.
bool OnlySaysHowSure(const std::string& reason) {
  for (const char* const words :
       {"Projections are uncertain", "The focal length is known only", "The principal point is known only",
        "The views do not determine", "The result is valid only where", "There are", "There is only",
        "The principal point is outside", "The lens has no ray", "Rotation or translation is known only"}) {
    if (reason.rfind(words, 0) == 0) return true;
  }
  return false;
}

std::vector<std::string> CausesIn(const std::vector<CalibrationVerdict::Remark>& remarks) {
  std::vector<std::string> causes;
  for (const auto& remark : remarks) {
    if (!OnlySaysHowSure(remark.reason)) causes.push_back(remark.reason);
  }
  return causes;
}

SparseResult SolvedRobustly(const Points& views, const cv::Size& size, int model) {
  SparseOptions options;
  options.robust = true;
  options.threads = 1;
  return SolveIntrinsicsSparsely(Targets(views.size()), views, size, model, options);
}

VerdictTrial OneCamera(DataKind kind, std::uint64_t seed) {
  const DataSet set = Made(kind, seed);
  const cv::Size size = set.cameras.front().size;
  const SparseResult result = SolvedRobustly(set.views, size, set.model);
  const CalibrationVerdict verdict = AssessIntrinsics(Targets(set.views.size()), set.views, size, result);
  VerdictTrial trial;
  trial.grade = verdict.grade;
  trial.told = verdict.ExpectedInData();
  trial.causes = CausesIn(verdict.remarks);
  trial.truth = std::numeric_limits<double>::infinity();
  const auto region = world::CoveredRegion(KeptOf(set.clean, verdict));
  const world::Lens found = world::LensFrom(result.K, result.D);
  for (const world::Camera& camera : set.cameras) {
    const double rms =
        world::MeanProjectionDistance(camera.lens, found, size, region, world::Alignment::Rotated).rms;
    trial.truth = std::min(trial.truth, rms / std::sqrt(2.0));  // told is of one coordinate
  }
  return trial;
}

struct Alone {
  SparseResult result;
  CalibrationVerdict verdict;
};

Alone CalibratedAlone(const Points& views, const cv::Size& size) {
  Alone alone;
  alone.result = SolvedRobustly(views, size, CLASSIC);
  alone.verdict = AssessIntrinsics(Targets(views.size()), views, size, alone.result);
  return alone;
}

cv::Mat Padded(const cv::Mat& D) {
  cv::Mat padded = cv::Mat::zeros(1, 14, CV_64F);
  D.copyTo(padded.colRange(0, D.cols));
  return padded;
}

/// Each camera from views of its own, and from those that both have.
VerdictTrial TwoCameras(DataKind kind, std::uint64_t seed) {
  cv::RNG random(world::MixSeeds(seed, 10 + static_cast<std::uint64_t>(kind)));
  const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  const LensKind lens = random.uniform(0, 2) == 0 ? LensKind::Light : LensKind::Strong;
  const world::Pair pair = MakeRig(lens, FromTo(random, 50.0, 75.0), FactorFromTo(random, 0.06, 0.15), 6.0);
  const double noise = FactorFromTo(random, 0.05, 0.2);
  const cv::Size size = pair.left.size;
  Points left;
  Points right;
  for (const world::Pose& pose : world::SampleRigViews(pair, random.uniform(8, 21), seed, sheet)) {
    left.push_back(NoisyPoints(pair.left, pose, noise, 0.0, random));
    right.push_back(NoisyPoints(pair.right, world::RightPose(pair, pose), noise, 0.0, random));
  }
  const auto ownViews = [&](const world::Camera& camera, std::uint64_t ownSeed) {
    Points views;
    for (const world::Pose& pose : world::SampleViews(camera, random.uniform(10, 31), ownSeed, sheet)) {
      views.push_back(NoisyPoints(camera, pose, noise, 0.0, random));
    }
    return views;
  };
  const Alone leftAlone = CalibratedAlone(ownViews(pair.left, seed + 100000), size);
  const Alone rightAlone = CalibratedAlone(ownViews(pair.right, seed + 200000), size);
  const StereoIntrinsics held{leftAlone.result.K, Padded(leftAlone.result.D), rightAlone.result.K,
                              Padded(rightAlone.result.D)};
  const bool refined = kind == DataKind::PairRefined;
  SparsePairOptions options;
  options.robust = true;
  options.threads = 1;
  const auto targets = Targets(left.size());
  const ExtrinsicsResult found = refined
                                     ? RefinePairSparsely(targets, left, right, held, size, CLASSIC, options)
                                     : SolveExtrinsicsSparsely(targets, left, right, held, CLASSIC, options);
  PairRecords records{targets, left, right, CLASSIC, refined, 0.0, found.solution, size};
  records.left = {leftAlone.verdict.covariance, leftAlone.verdict.jackknifeCovariance};
  records.right = {rightAlone.verdict.covariance, rightAlone.verdict.jackknifeCovariance};
  const PairVerdict verdict = AssessPair(records, refined ? found.refined : held, found.R, found.T);
  cv::Vec3d turn;
  cv::Rodrigues(cv::Matx33d(found.R) * pair.R.t(), turn);
  VerdictTrial trial;
  trial.grade = verdict.grade;
  trial.truth = cv::norm(turn) * 180.0 / CV_PI;
  trial.told = std::max(verdict.formal.rotation, verdict.jackknife.rotation);
  trial.causes = CausesIn(verdict.remarks);
  return trial;
}

}  // namespace

const std::vector<DataKind>& AllDataKinds() {
  static const std::vector<DataKind> kinds = {
      DataKind::Clean,    DataKind::CleanWide,      DataKind::FewViews,      DataKind::Repeated,
      DataKind::Bent,     DataKind::ZoomedLittle,   DataKind::Zoomed,        DataKind::Drifting,
      DataKind::PairHeld, DataKind::OutlyingPoints, DataKind::OutlyingViews, DataKind::PairRefined};
  return kinds;
}

std::string NameOf(DataKind kind) {
  switch (kind) {
    case DataKind::Clean:
      return "clean";
    case DataKind::CleanWide:
      return "clean, fisheyes of 85 to 110 degrees";
    case DataKind::FewViews:
      return "clean, 4 to 7 views";
    case DataKind::Repeated:
      return "3 to 12 poses, each 2 to 20 times";
    case DataKind::Bent:
      return "sheet bent by 0.3 to 3 mm";
    case DataKind::ZoomedLittle:
      return "zoom changed by 0.1 to 1 % half way";
    case DataKind::Zoomed:
      return "zoom changed by 1 to 10 % half way";
    case DataKind::Drifting:
      return "zoom drifting by 1 to 10 %";
    case DataKind::OutlyingPoints:
      return "5 to 40 % of the points far off";
    case DataKind::OutlyingViews:
      return "5 to 45 % of the views wrong";
    case DataKind::PairHeld:
      return "pairs, fixed intrinsics";
    case DataKind::PairRefined:
      return "pairs, refined intrinsics";
  }
  return "";
}

VerdictTrial RunVerdictTrial(DataKind kind, std::uint64_t seed) {
  try {
    const bool pair = kind == DataKind::PairHeld || kind == DataKind::PairRefined;
    return pair ? TwoCameras(kind, seed) : OneCamera(kind, seed);
  } catch (const std::exception&) {
    VerdictTrial trial;
    trial.failed = true;
    return trial;
  }
}

}  // namespace accuracy
