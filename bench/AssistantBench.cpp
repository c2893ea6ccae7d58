/// The drawing of the assistant's targets, all shipped poses in turn, beside the copies and blends that it
/// cannot do without.
#include <opencv2/imgproc.hpp>

#include "CalibAssistant.h"
#include "Frames.h"
#include "Ratio.h"

namespace {

constexpr int FRAMES_PER_POSE = 30;  ///< a second

void DrawTarget(benchmark::State& state) {
  const cv::Size size(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  CalibAssistant assistant(size.width, size.height, 4, 11);
  if (!assistant.LoadModel(VELMORA_POSES_JSON)) return state.SkipWithError("the model cannot be read");
  const cv::Mat source = bench::GridFrame(size);
  cv::Mat drawn = source.clone();
  cv::Mat blended = source.clone();
  int draws = 0;
  bench::Ratio().Run(
      state,
      [&] {
        if (++draws % FRAMES_PER_POSE == 0 && assistant.Next()) assistant.Reset();
        assistant.DrawPose(drawn);
      },
      [&] {
        const cv::Mat figure = blended.clone();
        const cv::Mat sheet = blended.clone();
        cv::addWeighted(sheet, 0.3, blended, 0.7, 0.0, blended);
        cv::addWeighted(figure, 0.8, blended, 0.2, 0.0, blended);
      });
}

}  // namespace

BENCHMARK(DrawTarget)
    ->Args({640, 480})
    ->Args({1280, 720})
    ->Iterations(720)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
