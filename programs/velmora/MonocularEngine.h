/// What the monocular loop asks of a calibrator.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Calibrator.h"

namespace app {

/// The calibrator's operations, one function per step of the loop.
class MonocularEngine {
 public:
  virtual ~MonocularEngine() = default;

  /// Searches the grid and decorates the frame in place; true when it was found.
  virtual bool Detect(cv::Mat& frame, std::vector<cv::Point2d>& points) = 0;
  virtual void Add(const std::vector<cv::Point2d>& points) = 0;
  virtual int CountSnapshots() = 0;
  /// Computes with the lens model; the reprojection error in pixels, -1 when nothing was computed.
  virtual float Compute(int model) = 0;
  virtual void Save(const std::string& path) = 0;
  /// Shows the snapshots with the grid reprojected, a key press each.
  virtual void Review() = 0;
  virtual void Reset() = 0;
};

/// The engine of a monocular calibrator, which it does not own.
class CalibratorEngine final : public MonocularEngine {
 public:
  explicit CalibratorEngine(Calibrator& calibrator) : calibrator_(calibrator) {}

  bool Detect(cv::Mat& frame, std::vector<cv::Point2d>& points) override;
  void Add(const std::vector<cv::Point2d>& points) override;
  int CountSnapshots() override;
  float Compute(int model) override;
  void Save(const std::string& path) override;
  void Review() override;
  void Reset() override;

 private:
  Calibrator& calibrator_;
};

}  // namespace app
