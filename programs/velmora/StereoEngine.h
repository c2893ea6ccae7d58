/// What the stereo loop asks of a calibrator.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Calibrator.h"
#include "common/FrameFeed.h"

namespace app {

/// The centres found in both images of a pair.
struct PairPoints {
  std::vector<cv::Point2d> left;
  std::vector<cv::Point2d> right;
};

/// The calibrator's operations, one function per step of the loop.
class StereoEngine {
 public:
  virtual ~StereoEngine() = default;

  /// Searches the grid and decorates both images in place; true when it was found in both.
  virtual bool Detect(common::FramePair& pair, PairPoints& points) = 0;
  virtual void Add(const PairPoints& points) = 0;
  virtual int CountSnapshots() = 0;
  /// Computes with the lens model; the reprojection error in pixels, 0 or -1 when nothing was computed.
  virtual float Compute(int model) = 0;
  virtual void Save(const std::string& path) = 0;
  virtual void Reset() = 0;
};

/// The engine of a stereo calibrator, which it does not own, with the result files of its cameras.
class StereoCalibratorEngine final : public StereoEngine {
 public:
  StereoCalibratorEngine(Calibrator& calibrator, const std::string& calibLeft, const std::string& calibRight)
      : calibrator_(calibrator), calibLeft_(calibLeft), calibRight_(calibRight) {}

  bool Detect(common::FramePair& pair, PairPoints& points) override;
  void Add(const PairPoints& points) override;
  int CountSnapshots() override;
  float Compute(int model) override;
  void Save(const std::string& path) override;
  void Reset() override;

 private:
  Calibrator& calibrator_;
  const std::string calibLeft_;
  const std::string calibRight_;
};

}  // namespace app
