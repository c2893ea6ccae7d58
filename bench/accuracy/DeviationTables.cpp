/// Tables of how true the reported standard deviations are, and where they mislead.
#include <algorithm>

#include "Tables.h"

namespace accuracy {

namespace {

/// A lens with the smallest model that holds it.
struct Study {
  LensKind lens;
  double fieldOfView;
  int model;
  int solver;
  int views;
  int trials;
};

struct Group {
  const char* name;
  std::size_t first;
  std::size_t last;
};

/// One row for each kind of parameters.
void AddParameters(const Case& what, const std::vector<Trial>& trials, std::vector<Row>& rows) {
  const auto count = static_cast<std::size_t>(ParametersOfModel(what.model));
  for (const Group& group :
       {Group{"focal lengths", 0, 2}, Group{"principal point", 2, 4}, Group{"distortion", 4, count}}) {
    Row row = RowOf(what, trials);
    row.conditions.push_back({"parameters", group.name});
    const Honesty honesty = HonestyOf(trials, group.first, group.last);
    row.numbers = {{"error / deviation", honesty.ratio},
                   {"in 1 s.d.", honesty.within1, true},
                   {"in 2 s.d.", honesty.within2, true}};
    rows.push_back(row);
  }
}

double ShareOf(const std::vector<Trial>& trials, CalibrationVerdict::Grade grade) {
  const auto count =
      std::count_if(trials.begin(), trials.end(), [grade](const Trial& t) { return t.grade == grade; });
  return static_cast<double>(count) / static_cast<double>(trials.size());
}

struct Fault {
  const char* name;
  Case what;
};

std::vector<Fault> Faults() {
  Case right;
  Case few = right;
  few.views = 5;
  Case frontal = right;
  frontal.viewKind = ViewKind::Frontal;
  Case bent = right;
  bent.sag = 0.0005;
  Case veryBent = right;
  veryBent.sag = 0.002;
  Case tooSmall = right;
  tooSmall.lens = LensKind::WideAngle;
  tooSmall.fieldOfView = 100.0;
  Case tilted = right;
  tilted.lens = LensKind::Tilted;
  Case fullModel = tilted;
  fullModel.model = Calibrator::MODEL_FULL;
  Case largeEnough = tooSmall;
  largeEnough.model = Calibrator::MODEL_RATIONAL;
  Case repeated = few;
  repeated.copies = 20;
  Case twice = right;
  twice.views = 2;
  twice.copies = 10;
  Case zoomed = right;
  zoomed.views = 20;
  zoomed.zoom = 0.01;
  Case zoomedMore = zoomed;
  zoomedMore.zoom = 0.05;
  return {{"none", right},
          {"5 views", few},
          {"5 views, each 20 times", repeated},
          {"2 views, each 10 times", twice},
          {"zoom changed by 1 % half way", zoomed},
          {"zoom changed by 5 % half way", zoomedMore},
          {"frontal views", frontal},
          {"sheet bent by 0.5 mm", bent},
          {"sheet bent by 2 mm", veryBent},
          {"classic model of a wide-angle lens", tooSmall},
          {"rational model of a wide-angle lens", largeEnough},
          {"classic model of a tilted sensor", tilted},
          {"full model of a tilted sensor", fullModel}};
}

}  // namespace

Table DeviationsTable(const Effort& effort) {
  Table table{"deviations",
              "Standard deviations",
              "How often errors were within one and two reported standard deviations (true ones: 68 % and 95 "
              "%), each model "
              "on the lens that takes it. Error / deviation is the median of their ratios over that of "
              "normal errors, 0.6745.",
              {}};
  constexpr int SPARSE = Calibrator::SOLVER_SPARSE;
  constexpr int OPENCV = Calibrator::SOLVER_OPENCV;
  constexpr int CLASSIC = Calibrator::MODEL_CLASSIC;
  constexpr int RATIONAL = Calibrator::MODEL_RATIONAL;
  constexpr int FULL = Calibrator::MODEL_FULL;
  for (const Study& study : {Study{LensKind::Strong, 65.0, CLASSIC, SPARSE, 5, 300},
                             Study{LensKind::Strong, 65.0, CLASSIC, SPARSE, 12, 300},
                             Study{LensKind::Strong, 65.0, CLASSIC, SPARSE, 30, 300},
                             Study{LensKind::Strong, 65.0, CLASSIC, OPENCV, 12, 300},
                             Study{LensKind::WideAngle, 85.0, RATIONAL, SPARSE, 12, 300},
                             Study{LensKind::WideAngle, 85.0, RATIONAL, OPENCV, 12, 100},
                             Study{LensKind::Tilted, 65.0, FULL, SPARSE, 12, 300},
                             Study{LensKind::Tilted, 65.0, FULL, OPENCV, 12, 100}}) {
    Case what;
    what.lens = study.lens;
    what.fieldOfView = study.fieldOfView;
    what.model = study.model;
    what.solver = study.solver;
    what.views = study.views;
    AddParameters(what, RunTrials(what, effort.Of(study.trials)), table.rows);
  }
  return table;
}

Table MisleadingTable(const Effort& effort) {
  Table table{"misleading",
              "Where standard deviations mislead",
              "Calibrations with a fault beside one without. Good, worthless: how often the verdict said so.",
              {}};
  for (const Fault& fault : Faults()) {
    const std::vector<Trial> trials = RunTrials(fault.what, effort.Of(100));
    Row row = RowOf(fault.what, trials);
    row.numbers.push_back({"good", ShareOf(trials, CalibrationVerdict::Grade::Good), true});
    row.numbers.push_back({"worthless", ShareOf(trials, CalibrationVerdict::Grade::Worthless), true});
    row.conditions.insert(row.conditions.begin(), {"fault", fault.name});
    table.rows.push_back(row);
  }
  return table;
}

}  // namespace accuracy
