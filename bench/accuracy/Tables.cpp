/// What tables of one camera's trials have in common.
#include "Tables.h"

#include <algorithm>

namespace accuracy {

const std::vector<NamedTable>& AllTables() {
  static const std::vector<NamedTable> tables = {
      {"models", ModelsTable},       {"views", ViewsTable},           {"noise", NoiseTable},
      {"fields", FieldsOfViewTable}, {"deviations", DeviationsTable}, {"misleading", MisleadingTable},
      {"verdicts", VerdictsTable},   {"pairs", PairsTable},           {"pictures", ImagesTable},
      {"parts", PartsTable},         {"photographs", RealTable},      {"sheets", SheetsTable},
      {"halves", HalvesTable}};
  return tables;
}

std::vector<Number> NumbersOf(const std::vector<Trial>& trials) {
  const std::vector<Trial> good = Succeeded(trials);
  std::vector<Number> numbers;
  for (std::size_t i = 0; i < 4; ++i) {
    numbers.push_back(
        {PARAMETER_NAMES[i], Median(Each(good, [i](const Trial& t) { return std::abs(t.errors[i]); }))});
  }
  const auto image = Each(good, [](const Trial& t) { return t.imageError; });
  const auto turned = Each(good, [](const Trial& t) { return t.turnedError; });
  const auto data = Each(good, [](const Trial& t) { return t.dataError; });
  numbers.push_back({"image", Median(image)});
  numbers.push_back({"turned", Median(turned)});
  numbers.push_back({"turned 90", Quantile(turned, 0.9), false, true});
  numbers.push_back({"data", Median(data)});
  numbers.push_back({"data 90", Quantile(data, 0.9), false, true});
  numbers.push_back({"RMS", Median(Each(good, [](const Trial& t) { return t.rms; }))});
  const Honesty honesty = HonestyOf(good, 0, 4);
  numbers.push_back({"in 1 s.d.", honesty.within1, true});
  numbers.push_back({"in 2 s.d.", honesty.within2, true});
  numbers.push_back({"formal", RootMeanSquare(Each(good, [](const Trial& t) { return t.overFormal; }))});
  numbers.push_back({"verdict", RootMeanSquare(Each(good, [](const Trial& t) { return t.overVerdict; }))});
  return numbers;
}

std::string FailuresOf(const std::vector<Trial>& trials) {
  return Text(static_cast<double>(trials.size() - Succeeded(trials).size()));
}

Row RowOf(const Case& what, const std::vector<Trial>& trials) {
  return {{{"lens", NameOf(what.lens)},
           {"field of view", Text(what.fieldOfView)},
           {"views", Text(what.views)},
           {"noise", Text(what.noise)},
           {"model", NameOfModel(what.model)},
           {"solver", NameOfSolver(what.solver)},
           {"trials", Text(static_cast<double>(trials.size()))},
           {"failed", FailuresOf(trials)}},
          NumbersOf(trials)};
}

}  // namespace accuracy
