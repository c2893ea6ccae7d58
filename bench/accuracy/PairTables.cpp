/// The table of pairs of cameras.
#include "PairTrial.h"
#include "Tables.h"

namespace accuracy {

namespace {

std::vector<PairCase> OfViewsAndBaselines(bool refined) {
  std::vector<PairCase> cases;
  for (const int views : {5, 10, 20}) {
    for (const double baseline : {0.06, 0.12, 0.24}) {
      PairCase what;
      what.views = views;
      what.baseline = baseline;
      what.toeIn = 50.0 * baseline;
      what.refined = refined;
      cases.push_back(what);
    }
  }
  return cases;
}

std::vector<PairCase> Cases() {
  std::vector<PairCase> cases = OfViewsAndBaselines(false);
  for (const double noise : {0.0, 0.02, 0.1, 0.5}) {
    PairCase what;
    what.noise = noise;
    cases.push_back(what);
  }
  for (const LensKind lens : {LensKind::Strong, LensKind::WideAngle}) {
    for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL}) {
      for (const int solver : {Calibrator::SOLVER_SPARSE, Calibrator::SOLVER_OPENCV}) {
        PairCase what;
        what.lens = lens;
        what.fieldOfView = 85.0;
        what.views = 10;
        what.model = model;
        what.solver = solver;
        cases.push_back(what);
      }
    }
  }
  const std::vector<PairCase> refined = OfViewsAndBaselines(true);
  cases.insert(cases.end(), refined.begin(), refined.end());
  for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL}) {
    PairCase what;
    what.lens = LensKind::WideAngle;
    what.fieldOfView = 85.0;
    what.views = 10;
    what.model = model;
    what.refined = true;
    cases.push_back(what);
  }
  return cases;
}

Row RowOfPair(const PairCase& what, int count) {
  std::vector<double> rotationError;
  std::vector<double> translationError;
  std::vector<double> direction;
  std::vector<double> baseline;
  std::vector<double> depth;
  std::vector<double> rms;
  int failed = 0;
  for (int seed = 1; seed <= count; ++seed) {
    const PairTrial trial = RunPairTrial(what, static_cast<std::uint64_t>(seed));
    if (trial.failed) {
      ++failed;
      continue;
    }
    rotationError.push_back(trial.rotationError);
    translationError.push_back(trial.translationError);
    direction.push_back(trial.direction);
    baseline.push_back(100.0 * std::abs(trial.baseline));
    depth.push_back(100.0 * trial.depth);
    rms.push_back(trial.rms);
  }
  return {{{"lens", NameOf(what.lens)},
           {"field of view", Text(what.fieldOfView)},
           {"baseline mm", Text(1000.0 * what.baseline)},
           {"views", Text(what.views)},
           {"noise", Text(what.noise)},
           {"model", NameOfModel(what.model)},
           {"solver", NameOfSolver(what.solver)},
           {"lenses", what.refined ? "refined" : "held"},
           {"trials", Text(count)},
           {"failed", Text(failed)}},
          {{"R deg", Median(rotationError)},
           {"R 90", Quantile(rotationError, 0.9), false, true},
           {"T mm", Median(translationError)},
           {"T 90", Quantile(translationError, 0.9), false, true},
           {"direction deg", Median(direction)},
           {"baseline %", Median(baseline)},
           {"baseline 90", Quantile(baseline, 0.9), false, true},
           {"depth %", Median(depth)},
           {"RMS", Median(rms)}}};
}

}  // namespace

Table PairsTable(const Effort& effort) {
  Table table{"pairs",
              "Pairs of cameras",
              "Each camera alone, then the pair, the lenses held or refined with it. Median errors: angle of "
              "the rotation and of the "
              "translation's direction, length "
              "of the difference of translations, baseline, and triangulated depths of exact points.",
              {}};
  for (const PairCase& what : Cases()) table.rows.push_back(RowOfPair(what, effort.Of(30)));
  return table;
}

}  // namespace accuracy
