/// The table of calibrations from rendered images.
#include <array>
#include <map>

#include "ImageTrial.h"
#include "Tables.h"

namespace accuracy {

namespace {

enum class Centres { Standard, Robust, Fine };

struct Way {
  Centres centres;
  int model;
  int solver;
  bool correctDiscs;
};

std::vector<Way> Ways() {
  std::vector<Way> ways;
  for (const Centres centres : {Centres::Standard, Centres::Robust, Centres::Fine}) {
    for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL}) {
      ways.push_back({centres, model, Calibrator::SOLVER_OPENCV, false});
      ways.push_back({centres, model, Calibrator::SOLVER_SPARSE, false});
      ways.push_back({centres, model, Calibrator::SOLVER_SPARSE, true});
    }
  }
  return ways;
}

/// What a way came to over all seeds.
struct Outcome {
  std::vector<Trial> trials;
  double images = 0.0;
  double found = 0.0;
  std::vector<double> centreErrors;
};

const FoundPoints& PointsOf(const SearchedImages& searched, Centres centres) {
  if (centres == Centres::Fine) return searched.fine;
  return centres == Centres::Robust ? searched.robust : searched.standard;
}

std::string NameOf(Centres centres) {
  if (centres == Centres::Fine) return "robust, fine centres";
  return centres == Centres::Robust ? "robust" : "standard";
}

void Try(const SearchedImages& searched, const Way& way, Outcome& outcome) {
  const FoundPoints& points = PointsOf(searched, way.centres);
  outcome.images += points.images;
  outcome.found += static_cast<double>(points.found.size());
  if (!points.found.empty()) outcome.centreErrors.push_back(points.CentreError());
  outcome.trials.push_back(RunImageTrial(searched.camera, points, way.model, way.solver, way.correctDiscs));
}

Row RowOfWay(const ImageCase& what, const Way& way, const Outcome& outcome) {
  Row row;
  row.conditions = {{"lens", NameOf(what.lens)},
                    {"field of view", Text(what.fieldOfView)},
                    {"pictures", what.grain > 4.0 ? "poor" : "clear"},
                    {"finder", NameOf(way.centres)},
                    {"model", NameOfModel(way.model)},
                    {"solver", NameOfSolver(way.solver) + (way.correctDiscs ? " + discs" : "")},
                    {"trials", Text(static_cast<double>(outcome.trials.size()))},
                    {"failed", FailuresOf(outcome.trials)}};
  row.numbers = {{"found", outcome.found / outcome.images, true}, {"centres", Median(outcome.centreErrors)}};
  for (const Number& number : NumbersOf(outcome.trials)) row.numbers.push_back(number);
  return row;
}

}  // namespace

Table ImagesTable(const Effort& effort) {
  Table table{"pictures",
              "Rendered pictures",
              "Found: share of the pictures in which the grid was found; centres: root of the mean square of "
              "their distance "
              "from the pictures of the discs' centres. Clear pictures have blur of 0.6 px and noise of 2 "
              "grey levels, poor ones "
              "1.2 px and 8.",
              {}};
  constexpr std::array<std::array<double, 2>, 2> QUALITIES = {{{0.6, 2.0}, {1.2, 8.0}}};
  for (const double degrees : {50.0, 65.0, 85.0}) {
    for (const auto& quality : QUALITIES) {
      ImageCase what;
      what.fieldOfView = degrees;
      what.blur = quality[0];
      what.grain = quality[1];
      const std::vector<Way> ways = Ways();
      std::vector<Outcome> outcomes(ways.size());
      for (int seed = 1; seed <= effort.Of(12); ++seed) {
        const SearchedImages searched = SearchImages(what, static_cast<std::uint64_t>(seed));
        for (std::size_t i = 0; i < ways.size(); ++i) Try(searched, ways[i], outcomes[i]);
      }
      for (std::size_t i = 0; i < ways.size(); ++i)
        table.rows.push_back(RowOfWay(what, ways[i], outcomes[i]));
    }
  }
  return table;
}

}  // namespace accuracy
