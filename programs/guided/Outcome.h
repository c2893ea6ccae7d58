/// What the views that were taken come to: one camera, or a pair.
#pragma once

#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Calibrator.h"
#include "common/OutputFiles.h"
#include "common/Report.h"
#include "common/VerdictFiles.h"
#include "guided/Arguments.h"
#include "velmora/GridSnapshot.h"

namespace guided {

/// A snapshot that was kept, and what it is called.
struct NamedSnapshot {
  int number = 0;    ///< in the session
  std::string name;  ///< "pose 2", "by hand 1"
  velmora::GridSnapshot snapshot;
};

/// How to compute.
struct ComputationSettings {
  common::EngineOptions engine;
  cv::Size grid;
  float unit = 0.0F;  ///< metres between adjacent rows
  cv::Size frame;
  int model = 0;  ///< one of common::LensModels; of a pair MODEL_AUTO is the rational one
};

struct CameraOutcome {
  std::shared_ptr<Calibrator> engine;  ///< with the result
  common::Report report;
  CalibrationVerdict verdict;
  std::vector<std::vector<cv::Point2d>> seen;  ///< circles, view by view
};

struct PairOutcome {
  std::shared_ptr<Calibrator> engine;
  common::PairReport report;
  PairVerdict verdict;
  common::SeenByPair seen;
};

/// A value that nobody changes once it is computed.
struct Outcome {
  std::vector<int> numbers;            ///< of the snapshots that it is of
  std::vector<CameraOutcome> cameras;  ///< one, or left and right; none when it failed
  std::shared_ptr<const PairOutcome> pair;
  std::string fault;  ///< why there is no result, as a clause; empty when there is one

  bool Failed() const { return !fault.empty(); }
  bool IsWorthless() const;
};

/// Computes from the snapshots, which are all of one camera or all of two, in their order. The same ones give
/// the same, whenever and how often it is done. What the engine raises becomes the fault. `computing` is
/// called with each engine before it computes, so that another thread can cancel it.
Outcome Compute(const std::vector<NamedSnapshot>& snapshots, const ComputationSettings& settings,
                const std::function<void(std::shared_ptr<Calibrator>)>& computing);

/// The tables of a result, for the console.
std::string TextOf(const Outcome& outcome);

/// Writes result, verdict and map of uncertainty under that name, of a pair with "_left" and "_right" too,
/// and notes the files. The one that could not be written, or an empty text.
std::string Save(const Outcome& outcome, const std::string& name, common::OutputFiles& files);

}  // namespace guided
