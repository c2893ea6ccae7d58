/// What detection costs beside the bare calls that it must make.
#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>

#include "Calibrator.h"
#include "Frames.h"
#include "Ratio.h"

namespace {

const cv::Size GRID(4, 11);
const cv::Size PROCESSING(640, 480);

/// Resize by covering, crop, a fresh detector, the grid search: nothing else.
bool BareSearch(const cv::Mat& frame, std::vector<cv::Point2d>& points) {
  cv::Mat scaled = frame;
  if (frame.size() != PROCESSING) {
    const double factor = std::max(static_cast<double>(PROCESSING.width) / frame.cols,
                                   static_cast<double>(PROCESSING.height) / frame.rows);
    cv::resize(frame, scaled,
               cv::Size(static_cast<int>(factor * frame.cols), static_cast<int>(factor * frame.rows)), 0, 0,
               cv::INTER_NEAREST);
    scaled = scaled(cv::Rect((scaled.cols - PROCESSING.width) / 2, (scaled.rows - PROCESSING.height) / 2,
                             PROCESSING.width, PROCESSING.height));
  }
  return cv::findCirclesGrid(scaled, GRID, points, cv::CALIB_CB_ASYMMETRIC_GRID,
                             cv::SimpleBlobDetector::create(cv::SimpleBlobDetector::Params()));
}

void Detection(benchmark::State& state, const cv::Mat& source) {
  Calibrator calibrator(GRID, 0.02F, Calibrator::MONOCULAR, PROCESSING.width, PROCESSING.height);
  std::vector<cv::Point2d> points;
  std::vector<cv::Point2d> barePoints;
  cv::Mat frame;
  bench::Ratio().Run(
      state,
      [&] {
        frame = source;
        benchmark::DoNotOptimize(calibrator.DetectPoints(frame, points, false));
      },
      [&] { benchmark::DoNotOptimize(BareSearch(source, barePoints)); });
}

}  // namespace

BENCHMARK_CAPTURE(Detection, grid_640x480, bench::GridFrame({640, 480}))
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Detection, grid_1280x720, bench::GridFrame({1280, 720}))
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Detection, empty_640x480, bench::EmptyFrame({640, 480}))
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
