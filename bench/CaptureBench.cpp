/// What the reader adds to the calls that it must make: grab, retrieve and detection.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <future>
#include <memory>
#include <opencv2/videoio.hpp>
#include <string>
#include <thread>

#include "Calibration.h"
#include "Calibrator.h"
#include "Frames.h"
#include "Ratio.h"
#include "capture/CaptureReader.h"

using namespace velmora;

namespace {

const cv::Size GRID(4, 11);
const cv::Size PROCESSING(640, 480);
constexpr int FRAMES = 20;

/// A video without a grid, which is quicker to search, up to its last frame. Removed with the object.
class Video {
 public:
  Video() {
    cv::VideoWriter writer(path_, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 25.0, PROCESSING);
    const cv::Mat empty = bench::EmptyFrame(PROCESSING);
    for (int i = 1; i < FRAMES; ++i) writer.write(empty);
    writer.write(bench::GridFrame(PROCESSING));
  }
  ~Video() { std::remove(path_.c_str()); }
  Video(const Video&) = delete;
  Video& operator=(const Video&) = delete;

  const std::string& Path() const { return path_; }

 private:
  const std::string path_ =
      (std::filesystem::temp_directory_path() / ("velmora-bench-" + std::to_string(getpid()) + ".avi"))
          .string();
};

/// The bare calls, on a thread as the reader's are.
void ReadByHand(const std::string& path, Calibrator& calibrator) {
  std::thread thread([&] {
    cv::VideoCapture capture(path);
    cv::Mat frame;
    std::vector<cv::Point2d> points;
    for (int i = 0; i < FRAMES; ++i) {
      capture.grab();
      capture.retrieve(frame);
      calibrator.DetectPoints(frame, points, true);
    }
  });
  thread.join();
}

void ReadByReader(const std::string& path, Calibrator& calibrator) {
  calibrator.OpenFFmpegContent(path);
  while (!calibrator.IsDetected()) std::this_thread::yield();
  calibrator.CloseFFmpegContent();
}

/// A whole video, from opening to closing.
void Reading(benchmark::State& state) {
  Calibration::SetLogLevel(0);
  const Video video;
  Calibrator calibrator(GRID, 0.02F, Calibrator::MONOCULAR, PROCESSING.width, PROCESSING.height);
  const auto forget = [&] {  // so that the next round sees its own detection
    calibrator.AddPoints();
    calibrator.Reset();
  };
  bench::Ratio().Run(
      state,
      [&] {
        ReadByReader(video.Path(), calibrator);
        forget();
      },
      [&] {
        ReadByHand(video.Path(), calibrator);
        forget();
      });
  state.counters["frames"] = FRAMES;
}

/// Delivers one image from memory, at no cost.
class MemorySource final : public FrameSource {
 public:
  bool Open(int /*device*/) override { return true; }
  bool Open(const std::string& /*address*/, int /*backEnd*/) override { return true; }
  bool IsOpened() const override { return true; }
  void Set(int /*property*/, double /*value*/) override {}
  double Get(int /*property*/) const override { return 1.0; }
  bool Grab() override { return true; }
  bool Retrieve(cv::Mat& frame) override {
    frame = image_;
    return true;
  }
  void Release() override {}

 private:
  const cv::Mat image_{PROCESSING, CV_8UC3, cv::Scalar::all(0)};
};

/// The reader alone: everything between two frames but grab, retrieve and detection.
void ReaderTurn(benchmark::State& state) {
  constexpr int TURNS = 100000;
  Calibration::SetLogLevel(0);
  for (auto iteration : state) {
    static_cast<void>(iteration);
    std::promise<double> seconds;
    CaptureReader* running = nullptr;
    CaptureReader reader(
        [&] {
          int turns = 0;
          const auto start = std::chrono::steady_clock::now();
          running->Read([&](CapturedViews&) {
            if (++turns != TURNS) return;
            const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
            seconds.set_value(elapsed.count());
          });
        },
        [] { return std::make_unique<MemorySource>(); });
    running = &reader;
    reader.OpenContent("memory");
    state.SetIterationTime(seconds.get_future().get() / TURNS);
  }
}

}  // namespace

BENCHMARK(Reading)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ReaderTurn)->UseManualTime()->Iterations(20)->Unit(benchmark::kMicrosecond);
