/// What the robust search and its centres cost beside the default one, on the same frame and one thread.
#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "Frames.h"
#include "Ratio.h"
#include "finder/CentreFit.h"
#include "finder/RobustFinder.h"
#include "finder/StandardFinder.h"
#include "fuzz/PaintedFrame.h"

using namespace velmora;

namespace {

const cv::Size GRID(4, 11);

void Compare(benchmark::State& state, const cv::Mat& frame) {
  cv::setNumThreads(1);
  std::vector<cv::Point2d> points;
  std::vector<cv::Point2d> barePoints;
  bench::Ratio().Run(
      state, [&] { benchmark::DoNotOptimize(FindGridRobust(frame, GRID, points)); },
      [&] { benchmark::DoNotOptimize(FindGridStandard(frame, GRID, barePoints)); });
  cv::setNumThreads(-1);
}

/// What it costs to measure the centres of a view that is kept, beside the bare search of the same frame.
void Measure(benchmark::State& state, const cv::Mat& frame) {
  cv::Mat grey = frame;
  if (frame.channels() == 3) cv::cvtColor(frame, grey, cv::COLOR_BGR2GRAY);
  const GridFinding finding = SearchGridRobust(grey, GRID);
  if (!finding.Found()) return state.SkipWithError("no grid");
  cv::setNumThreads(1);
  std::vector<cv::Point2d> barePoints;
  bench::Ratio().Run(
      state, [&] { benchmark::DoNotOptimize(MeasureCentres(grey, GRID, finding.centres, finding.radii)); },
      [&] { benchmark::DoNotOptimize(FindGridStandard(grey, GRID, barePoints)); });
  cv::setNumThreads(-1);
}

/// One of the real photographs; skipped where they are absent.
void Photograph(benchmark::State& state, const char* name) {
  const cv::Mat frame = cv::imread(std::string(VELMORA_SHARED_DATA) + "/" + name);
  if (frame.empty()) return state.SkipWithError("no photograph");
  Compare(state, frame);
}

/// A photograph as a calibrator brings it to its processing size: resized to cover it, and cut to it.
cv::Mat AtProcessingSize(const cv::Mat& photograph) {
  const cv::Size size(640, 480);
  const double scale = std::max(static_cast<double>(size.width) / photograph.cols,
                                static_cast<double>(size.height) / photograph.rows);
  cv::Mat scaled;
  cv::resize(photograph, scaled, {}, scale, scale, cv::INTER_NEAREST);
  return scaled(cv::Rect((scaled.cols - size.width) / 2, (scaled.rows - size.height) / 2, size.width,
                         size.height))
      .clone();
}

void SmallPhotograph(benchmark::State& state, const char* name) {
  const cv::Mat frame = cv::imread(std::string(VELMORA_SHARED_DATA) + "/" + name);
  if (frame.empty()) return state.SkipWithError("no photograph");
  Compare(state, AtProcessingSize(frame));
}

/// The search of a sequence that follows the grid beside the default search of each frame. The sheet turns
/// and moves a little.
void Follow(benchmark::State& state, const cv::Mat& frame) {
  std::vector<cv::Mat> frames;
  for (int k = 0; k < 16; ++k) {
    const double angle = 2.0 * CV_PI * k / 16;
    cv::Mat turn = cv::getRotationMatrix2D(cv::Point2f(320.0F, 240.0F), 1.5 * std::sin(angle),
                                           1.0 + 0.01 * std::cos(angle));
    turn.at<double>(0, 2) += 6.0 * std::cos(angle);
    turn.at<double>(1, 2) += 6.0 * std::sin(angle);
    cv::Mat moved;
    cv::warpAffine(frame, moved, turn, frame.size(), cv::INTER_LINEAR, cv::BORDER_REPLICATE);
    frames.push_back(moved);
  }
  cv::setNumThreads(1);
  GridTracker tracker;
  std::vector<cv::Point2d> barePoints;
  size_t next = 0;
  size_t bareNext = 0;
  bench::Ratio().Run(
      state,
      [&] { benchmark::DoNotOptimize(SearchGridRobust(frames[next++ % frames.size()], GRID, tracker)); },
      [&] {
        benchmark::DoNotOptimize(FindGridStandard(frames[bareNext++ % frames.size()], GRID, barePoints));
      });
  cv::setNumThreads(-1);
}

void FollowedPhotograph(benchmark::State& state, const char* name) {
  const cv::Mat frame = cv::imread(std::string(VELMORA_SHARED_DATA) + "/" + name);
  if (frame.empty()) return state.SkipWithError("no photograph");
  Follow(state, AtProcessingSize(frame));
}
void FollowedRendered(benchmark::State& state) {
  Follow(state, bench::GridFrame({640, 480}));
}

/// Dark discs strewn at random.
cv::Mat Blobs(int count) {
  cv::Mat frame(480, 640, CV_8UC1, cv::Scalar(210));
  cv::RNG random(6);
  for (int k = 0; k < count; ++k) {
    const cv::Point at(random.uniform(10, 630), random.uniform(10, 470));
    cv::circle(frame, at, random.uniform(4, 8), cv::Scalar(random.uniform(20, 90)), cv::FILLED, cv::LINE_AA);
  }
  return frame;
}

cv::Mat Noise() {
  cv::Mat frame(480, 640, CV_8UC1);
  cv::RNG random(6);
  random.fill(frame, cv::RNG::NORMAL, 128.0, 50.0);
  cv::GaussianBlur(frame, frame, {}, 3.0);
  cv::normalize(frame, frame, 0.0, 255.0, cv::NORM_MINMAX);
  return frame;
}

/// One of the slowest frames that the fuzz target found, beside the default search of a usual frame of its
/// size: the default search of the same one may take minutes.
void Slow(benchmark::State& state, const char* name) {
  const cv::Size size(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  std::ifstream file(std::string(VELMORA_SLOW_FRAMES) + "/" + name, std::ios::binary);
  const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
  const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
  if (bytes.empty()) return state.SkipWithError("no such frame");
  const cv::Mat frame = fuzz::PaintedFrame(data, bytes.size(), size);
  const cv::Mat usual = bench::GridFrame(size);
  cv::setNumThreads(1);
  std::vector<cv::Point2d> points;
  std::vector<cv::Point2d> barePoints;
  bench::Ratio().Run(
      state, [&] { benchmark::DoNotOptimize(FindGridRobust(frame, GRID, points)); },
      [&] { benchmark::DoNotOptimize(FindGridStandard(usual, GRID, barePoints)); });
  cv::setNumThreads(-1);
}

/// The robust search that may answer with parts of grids beside the one that does not.
void WithParts(benchmark::State& state, const cv::Mat& frame) {
  cv::setNumThreads(1);
  PartialGrid part;
  bench::Ratio().Run(
      state, [&] { benchmark::DoNotOptimize(SearchGridRobust(frame, GRID, part)); },
      [&] { benchmark::DoNotOptimize(SearchGridRobust(frame, GRID)); });
  cv::setNumThreads(-1);
}

void PartsPhotograph(benchmark::State& state, const char* name) {
  const cv::Mat frame = cv::imread(std::string(VELMORA_SHARED_DATA) + "/" + name);
  if (frame.empty()) return state.SkipWithError("no photograph");
  WithParts(state, frame);
}
void PartsRendered(benchmark::State& state) {
  WithParts(state, bench::GridFrame({640, 480}));
}
void PartsNothing(benchmark::State& state) {
  WithParts(state, bench::EmptyFrame({640, 480}));
}
void PartsClutter(benchmark::State& state) {
  WithParts(state, Blobs(300));
}
void PartsNoiseTexture(benchmark::State& state) {
  WithParts(state, Noise());
}
/// What costs most: a sheet that is nearly such a grid, which is looked at closely and refused.
void PartsOtherSheet(benchmark::State& state) {
  world::Scene scene;
  scene.sheet = world::Sheet({4, 10});
  scene.noise = 2.0;
  const std::vector<world::Pose> views = world::FrontalViews(scene.camera, 1, scene.sheet);
  WithParts(state, world::Renderer(scene).Render(views.front()));
}
/// And one that is answered.
void PartsFound(benchmark::State& state) {
  WithParts(state, bench::GridFrame({640, 480}).colRange(0, 420));
}

void Nothing(benchmark::State& state) {
  Compare(state, bench::EmptyFrame({640, 480}));
}
void Rendered(benchmark::State& state) {
  Compare(state, bench::GridFrame({640, 480}));
}
void RenderedLarge(benchmark::State& state) {
  Compare(state, bench::GridFrame({1280, 720}));
}
void CentresRendered(benchmark::State& state) {
  Measure(state, bench::GridFrame({640, 480}));
}
void CentresRenderedLarge(benchmark::State& state) {
  Measure(state, bench::GridFrame({1280, 720}));
}
void CentresPhotograph(benchmark::State& state, const char* name) {
  const cv::Mat frame = cv::imread(std::string(VELMORA_SHARED_DATA) + "/" + name);
  if (frame.empty()) return state.SkipWithError("no photograph");
  Measure(state, frame);
}
void Clutter(benchmark::State& state) {
  Compare(state, Blobs(300));
}
void NoiseTexture(benchmark::State& state) {
  Compare(state, Noise());
}

}  // namespace

BENCHMARK_CAPTURE(Photograph, office, "office-4x11/dotboard_close_1.jpg")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Photograph, flat, "flat-4x11/Image__2018-02-12__15-11-38.png")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SmallPhotograph, office, "office-4x11/dotboard_close_1.jpg")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SmallPhotograph, flat, "flat-4x11/Image__2018-02-12__15-14-55.png")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SmallPhotograph, endoscope, "endoscope-stereo-4x11/left/08_56_30.png")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FollowedPhotograph, office, "office-4x11/dotboard_close_1.jpg")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FollowedPhotograph, flat, "flat-4x11/Image__2018-02-12__15-14-55.png")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FollowedPhotograph, endoscope, "endoscope-stereo-4x11/left/08_56_30.png")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(FollowedRendered)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Nothing)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Rendered)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(RenderedLarge)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(CentresRendered)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(CentresRenderedLarge)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(CentresPhotograph, flat, "flat-4x11/Image__2018-02-12__15-11-38.png")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Clutter)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(NoiseTexture)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(PartsPhotograph, whole, "office-4x11/dotboard_close_1.jpg")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(PartsPhotograph, other, "other-grids/acircles7.png")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(PartsRendered)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(PartsNothing)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(PartsClutter)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(PartsNoiseTexture)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(PartsOtherSheet)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(PartsFound)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Slow, slow_1, "slow_1")
    ->Args({640, 480})
    ->Args({1280, 720})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Slow, slow_2, "slow_2")
    ->Args({640, 480})
    ->Args({1280, 720})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Slow, slow_3, "slow_3")
    ->Args({640, 480})
    ->Args({1280, 720})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Slow, slow_4, "slow_4")
    ->Args({640, 480})
    ->Args({1280, 720})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
