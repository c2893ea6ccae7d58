/// Tables of trials with projected points: what accuracy depends on.
#include "Tables.h"

namespace accuracy {

namespace {

constexpr int MODELS[] = {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL};
/// Beyond it OpenCV's larger models take seconds.
constexpr int MOST_VIEWS_OF_OPENCV = 15;

Case With(Case what, int model, int solver) {
  what.model = model;
  what.solver = solver;
  return what;
}

Row Run(const Case& what, int trials) {
  return RowOf(what, RunTrials(what, trials));
}

/// Each model with the sparse solver and, where it is quick enough, with OpenCV's.
void RunModels(const Case& what, int trials, std::vector<Row>& rows) {
  for (const int model : MODELS) {
    rows.push_back(Run(With(what, model, Calibrator::SOLVER_SPARSE), trials));
    if (model != Calibrator::MODEL_CLASSIC && what.views > MOST_VIEWS_OF_OPENCV) continue;
    rows.push_back(Run(With(what, model, Calibrator::SOLVER_OPENCV), trials));
  }
}

}  // namespace

Table ViewsTable(const Effort& effort) {
  Table table{"views", "Number of views", "From the same seeds for all.", {}};
  for (const int views : {5, 7, 10, 15, 20, 30}) {
    Case what;
    what.views = views;
    RunModels(what, effort.Of(40), table.rows);
  }
  return table;
}

Table NoiseTable(const Effort& effort) {
  Table table{"noise",
              "Noise of the points",
              "Standard deviation of each coordinate, in pixels. The same draws in all rows, scaled.",
              {}};
  for (const double noise : {0.0, 0.02, 0.05, 0.1, 0.2, 0.5}) {
    Case what;
    what.noise = noise;
    for (const int model : MODELS) {
      table.rows.push_back(Run(With(what, model, Calibrator::SOLVER_SPARSE), effort.Of(1000)));
    }
  }
  return table;
}

Table FieldsOfViewTable(const Effort& effort) {
  Table table{"fields",
              "Field of view and distortion",
              "The field of view is from the left to the right edge, in degrees, distortion included.",
              {}};
  for (const LensKind lens : {LensKind::Light, LensKind::Strong, LensKind::WideAngle}) {
    for (const double degrees : {40.0, 55.0, 70.0, 85.0, 100.0}) {
      for (const int model : MODELS) {
        Case what;
        what.lens = lens;
        what.fieldOfView = degrees;
        table.rows.push_back(Run(With(what, model, Calibrator::SOLVER_SPARSE), effort.Of(300)));
      }
    }
  }
  return table;
}

Table ModelsTable(const Effort& effort) {
  Table table{"models",
              "Lens models",
              "The classic model holds the light and the strong lens, the rational one the wide-angle lens "
              "too, the full one "
              "the tilted sensor too.",
              {}};
  for (const LensKind lens : {LensKind::Light, LensKind::Strong, LensKind::WideAngle, LensKind::Tilted}) {
    Case what;
    what.lens = lens;
    what.fieldOfView = 85.0;
    RunModels(what, effort.Of(40), table.rows);
  }
  return table;
}

}  // namespace accuracy
