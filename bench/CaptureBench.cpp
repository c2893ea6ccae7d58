/// What the reader adds to the calls that it must make: grab, retrieve and detection.
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <opencv2/videoio.hpp>
#include <string>
#include <thread>

#include "Calibration.h"
#include "Calibrator.h"
#include "Frames.h"
#include "Ratio.h"

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

}  // namespace

BENCHMARK(Reading)->UseManualTime()->Unit(benchmark::kMillisecond);
