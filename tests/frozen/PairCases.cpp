/// Pairs from points that a rendered sheet would have been seen at.
#include <memory>
#include <string>

#include "frozen/Cases.h"
#include "unit/StereoCollection.h"

namespace frozen {

namespace {

struct Case {
  std::string name;
  int pairs = 12;
  int model = Calibrator::MODEL_RATIONAL;
  int solver = Calibrator::SOLVER_SPARSE;
  bool refine = false;
  double discRadius = 0.0;
};

void Write(Writer& writer, const Case& wanted) {
  writer.Begin("pair/" + wanted.name);
  const std::unique_ptr<Calibrator> calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(wanted.pairs));
  calibrator->SetSolver(wanted.solver);
  calibrator->SetRefineLenses(wanted.refine);
  calibrator->SetDiscRadius(wanted.discRadius);
  try {
    calibrator->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(), wanted.model, false);
    writer.Pair(*calibrator);
  } catch (const cv::Exception& exception) {
    writer.Text("raised", exception.err);
  }
}

}  // namespace

void WritePairs(Writer& writer) {
  const struct {
    const char* name;
    int number;
  } models[] = {{"classic", Calibrator::MODEL_CLASSIC},
                {"rational", Calibrator::MODEL_RATIONAL},
                {"full", Calibrator::MODEL_FULL}};
  for (const auto& model : models) {
    const std::string name = model.name;
    for (const int pairs : {5, 12, 20}) {
      Write(writer, {name + "/held/" + std::to_string(pairs), pairs, model.number});
      Write(writer, {name + "/refined/" + std::to_string(pairs), pairs, model.number,
                     Calibrator::SOLVER_SPARSE, true});
    }
    Write(writer, {name + "/held discs", 12, model.number, Calibrator::SOLVER_SPARSE, false, 0.008});
    Write(writer, {name + "/refined discs", 12, model.number, Calibrator::SOLVER_SPARSE, true, 0.008});
    Write(writer, {name + "/opencv", 8, model.number, Calibrator::SOLVER_OPENCV});
  }
}

}  // namespace frozen
