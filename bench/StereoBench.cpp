/// Detection in a pair of frames beside the two bare searches, one after the other.
#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>

#include "Calibrator.h"
#include "Frames.h"
#include "Ratio.h"

namespace {

const cv::Size GRID(4, 11);
const cv::Size PROCESSING(640, 480);

bool BareSearch(const cv::Mat& frame, std::vector<cv::Point2d>& points) {
  return cv::findCirclesGrid(frame, GRID, points, cv::CALIB_CB_ASYMMETRIC_GRID,
                             cv::SimpleBlobDetector::create(cv::SimpleBlobDetector::Params()));
}

/// The searches of the engine run side by side: on two idle cores a ratio of 0.6 is the aim.
void StereoDetection(benchmark::State& state, const cv::Mat& left, const cv::Mat& right) {
  Calibrator calibrator(GRID, 0.02F, Calibrator::STEREO, PROCESSING.width, PROCESSING.height);
  std::vector<cv::Point2d> leftPoints;
  std::vector<cv::Point2d> rightPoints;
  std::vector<cv::Point2d> barePoints;
  cv::Mat leftFrame;
  cv::Mat rightFrame;
  bench::Ratio().Run(
      state,
      [&] {
        leftFrame = left;
        rightFrame = right;
        benchmark::DoNotOptimize(
            calibrator.DetectStereoPoints(leftFrame, rightFrame, leftPoints, rightPoints, false));
      },
      [&] {
        benchmark::DoNotOptimize(BareSearch(left, barePoints));
        benchmark::DoNotOptimize(BareSearch(right, barePoints));
      });
}

}  // namespace

BENCHMARK_CAPTURE(StereoDetection, grid_640x480, bench::GridFrame(PROCESSING, 0),
                  bench::GridFrame(PROCESSING, 1))
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(StereoDetection, empty_640x480, bench::EmptyFrame(PROCESSING),
                  bench::EmptyFrame(PROCESSING))
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
