/// Overlay and corner drawing as a share of a frame's detection.
#include "Calibrator.h"
#include "Frames.h"
#include "Ratio.h"
#include "finder/StandardFinder.h"
#include "imaging/Overlay.h"

using namespace velmora;

namespace {

const cv::Size GRID(4, 11);
const cv::Size PROCESSING(640, 480);

/// `bare` is the detection of the same frame, so the ratio is the drawing's share of it.
template <typename Draw>
void ShareOfDetection(benchmark::State& state, Draw draw) {
  const cv::Mat source = bench::GridFrame(PROCESSING);
  std::vector<cv::Point2d> points;
  if (!FindGridStandard(source, GRID, points)) return state.SkipWithError("the grid was not found");
  cv::Mat canvas = source.clone();
  std::vector<cv::Point2d> again;
  bench::Ratio().Run(
      state, [&] { draw(canvas, points); },
      [&] { benchmark::DoNotOptimize(FindGridStandard(source, GRID, again)); });
}

void DrawOverlayShare(benchmark::State& state) {
  ShareOfDetection(state, [](cv::Mat& canvas, const std::vector<cv::Point2d>&) {
    DrawOverlay({3, 12, PROCESSING, Calibrator::STATUS_READY, 0.03}, canvas);
  });
}

void DrawCornersShare(benchmark::State& state) {
  ShareOfDetection(
      state, [](cv::Mat& canvas, const std::vector<cv::Point2d>& points) { DrawGrid(points, GRID, canvas); });
}

}  // namespace

BENCHMARK(DrawOverlayShare)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(DrawCornersShare)->UseManualTime()->Unit(benchmark::kMillisecond);
