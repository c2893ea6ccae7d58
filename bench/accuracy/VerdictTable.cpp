/// The table of what verdicts are worth.
#include <algorithm>
#include <cmath>

#include "Tables.h"
#include "VerdictTrial.h"

namespace accuracy {

namespace {

using Grade = CalibrationVerdict::Grade;

constexpr double FAR_OFF = 3.0;  // in what was told

template <typename Condition>
double ShareOf(const std::vector<VerdictTrial>& trials, const Condition& condition) {
  const auto count = std::count_if(trials.begin(), trials.end(), condition);
  return static_cast<double>(count) / static_cast<double>(trials.size());
}

bool IsFarOff(const VerdictTrial& trial) {
  return !(trial.truth <= FAR_OFF * trial.told);
}

/// The root of the mean square of what was told over that of the truth, of sets that are not worthless.
double ToldOverTruth(const std::vector<VerdictTrial>& trials) {
  double told = 0.0;
  double truth = 0.0;
  for (const VerdictTrial& trial : trials) {
    if (trial.grade != Grade::Good && trial.grade != Grade::WithCare) continue;
    told += trial.told * trial.told;
    truth += trial.truth * trial.truth;
  }
  return std::sqrt(told / truth);
}

Row RowOf(const std::string& name, const std::vector<VerdictTrial>& all) {
  std::vector<VerdictTrial> trials;
  std::copy_if(all.begin(), all.end(), std::back_inserter(trials),
               [](const VerdictTrial& trial) { return !trial.failed; });
  std::vector<VerdictTrial> good;
  std::copy_if(trials.begin(), trials.end(), std::back_inserter(good),
               [](const VerdictTrial& trial) { return trial.grade == Grade::Good; });
  return {{{"data", name},
           {"sets", Text(static_cast<double>(all.size()))},
           {"failed", Text(static_cast<double>(all.size() - trials.size()))}},
          {{"good", ShareOf(trials, [](const auto& t) { return t.grade == Grade::Good; }), true},
           {"worthless", ShareOf(trials, [](const auto& t) { return t.grade == Grade::Worthless; }), true},
           {"a cause named", ShareOf(trials, [](const auto& t) { return !t.causes.empty(); }), true},
           {"good, far off", static_cast<double>(std::count_if(good.begin(), good.end(), IsFarOff)), false,
            false, true},
           {"told / true", ToldOverTruth(trials)}}};
}

}  // namespace

Table VerdictsTable(const Effort& effort) {
  Table table{
      "verdicts",
      "What verdicts are worth",
      "Random sets of data of all kinds. Good, far off: how many are called good and are off by more than "
      "three times what was told. Told / true: root "
      "mean squares over the sets that are not called worthless, of a coordinate of projections where "
      "the views were, and of the rotation of pairs; of two cameras among the views the nearer one "
      "counts.",
      {}};
  std::vector<VerdictTrial> all;
  for (const DataKind kind : AllDataKinds()) {
    std::vector<VerdictTrial> trials;
    for (int seed = 1; seed <= effort.Of(300); ++seed) {
      trials.push_back(RunVerdictTrial(kind, static_cast<std::uint64_t>(seed)));
    }
    table.rows.push_back(RowOf(NameOf(kind), trials));
    all.insert(all.end(), trials.begin(), trials.end());
  }
  table.rows.push_back(RowOf("all", all));
  table.rows.back().numbers.back().value = std::nan("");  // of different units
  return table;
}

}  // namespace accuracy
