/// Any text is taken for a camera's result by the computation of a pair, or refused.
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Calibration.h"
#include "Calibrator.h"

namespace {

/// A stereo calibrator with five snapshots, which say little about the pair.
std::unique_ptr<Calibrator> WithSnapshots() {
  Calibration::SetLogLevel(0);
  auto calibrator = std::make_unique<Calibrator>(cv::Size(4, 3), 0.02F, Calibrator::STEREO, 64, 48);
  for (int view = 0; view < 5; ++view) {
    std::vector<cv::Point2d> left;
    std::vector<cv::Point2d> right;
    for (int i = 0; i < 12; ++i) {
      const double depth = 1.0 + 0.02 * view * (i % 4);
      left.emplace_back(10.0 + 8.0 * (i % 4) / depth, 8.0 + 9.0 * (i / 4) / depth + view);
      right.push_back(left.back() - cv::Point2d(3.0 / depth, 0.1 * view));
    }
    calibrator->AddStereoPoints(left, right);
  }
  return calibrator;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto calibrator = WithSnapshots();
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    calibrator->ComputeCalibrationStereo(text, text, Calibrator::MODEL_CLASSIC, false);
  } catch (const cv::Exception&) {
    // What the solver refuses.
  }
  return 0;
}
