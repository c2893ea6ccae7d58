/// The table of real photographs: how far cameras from different views of one set disagree.
#include <algorithm>
#include <cmath>
#include <memory>

#include "Calibrator.h"
#include "LensError.h"
#include "Photographs.h"
#include "Seed.h"
#include "Tables.h"
#include "quality/Assessment.h"

using namespace velmora;

namespace accuracy {

namespace {

struct Half {
  SparseResult result;
  CalibrationVerdict verdict;
};

Half Calibrated(const Photographs& all, const std::vector<std::size_t>& chosen) {
  const Photographs own = Chosen(all, chosen);
  SparseOptions options;
  options.robust = true;
  options.threads = 1;
  options.discRadius = 0.4 * static_cast<double>(UNIT);
  options.deviations = own.deviations;
  Half half;
  half.result = SolveIntrinsicsSparsely(own.targets, own.views, all.size, Calibrator::MODEL_CLASSIC, options);
  half.verdict = AssessIntrinsics(own.targets, own.views, all.size, half.result, options.discRadius);
  return half;
}

/// Of two cameras, each from as many views of its own.
struct Disagreement {
  double apart = 0.0;  ///< of a coordinate of projections, root of the mean square where any view was, pixels
  double told = 0.0;   ///< by both verdicts
  bool good = false;   ///< by either
};

Disagreement Compared(const Photographs& all, std::size_t each, std::uint64_t seed) {
  const std::vector<std::size_t> order = Shuffled(all.views.size(), world::MixSeeds(seed, each));
  const auto at = [&](std::size_t place) { return order.begin() + static_cast<std::ptrdiff_t>(place); };
  const Half a = Calibrated(all, {at(0), at(each)});
  const Half b = Calibrated(all, {at(each), at(2 * each)});
  Disagreement disagreement;
  disagreement.apart = world::MeanProjectionDistance(
                           world::LensFrom(a.result.K, a.result.D), world::LensFrom(b.result.K, b.result.D),
                           all.size, world::CoveredRegion(all.views), world::Alignment::Rotated)
                           .rms /
                       std::sqrt(2.0);
  disagreement.told = std::hypot(a.verdict.ExpectedInData(), b.verdict.ExpectedInData());
  disagreement.good = a.verdict.grade == CalibrationVerdict::Grade::Good ||
                      b.verdict.grade == CalibrationVerdict::Grade::Good;
  return disagreement;
}

Row RowOf(const std::string& name, const Photographs& all, std::size_t each, int trials) {
  std::vector<double> apart;
  std::vector<double> told;
  double good = 0.0;
  int failed = 0;
  for (int seed = 1; seed <= trials; ++seed) {
    try {
      const Disagreement one = Compared(all, each, static_cast<std::uint64_t>(seed));
      apart.push_back(one.apart);
      told.push_back(one.told);
      good += one.good ? 1.0 : 0.0;
    } catch (const std::exception&) {
      ++failed;
    }
  }
  return {{{"photographs", name},
           {"of", Text(static_cast<double>(all.views.size()))},
           {"views of each camera", Text(static_cast<double>(each))},
           {"pairs of cameras", Text(trials)},
           {"failed", Text(failed)}},
          {{"apart", Median(apart)},
           {"apart 90", Quantile(apart, 0.9)},
           {"told", Median(told)},
           {"either good", good / std::max<double>(1.0, static_cast<double>(apart.size())), true}}};
}

}  // namespace

Table RealTable(const Effort& effort) {
  Table table{
      "photographs",
      "Real photographs",
      "Two cameras, each computed from views of its own that were drawn from one set of photographs of a "
      "hand-held sheet, classic model: how far they are apart where any view was (median and ninth "
      "decile), and how far the verdicts let expect. In pixels of a coordinate.",
      {}};
  for (const char* const name : PHOTOGRAPHS) {
    const std::unique_ptr<Photographs> all = PhotographsAtHand(name);
    if (all == nullptr) continue;
    for (const std::size_t each : {3U, 4U, 5U, 7U}) {
      if (2 * each <= all->views.size()) table.rows.push_back(RowOf(name, *all, each, effort.Of(60)));
    }
  }
  return table;
}

}  // namespace accuracy
