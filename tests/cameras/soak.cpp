/// Opens, reads and closes sources for long, and tells whether threads, descriptors and memory stay level.
///
///   velmora-soak [CYCLES [MINUTES]]     200 cycles per kind of source and 5 minutes of reading, unless told
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <opencv2/videoio.hpp>
#include <stdexcept>
#include <thread>

#include "Calibration.h"
#include "cameras/FakeCameras.h"
#include "cameras/Preload.h"
#include "cameras/Resources.h"
#include "unit/Collection.h"
#include "unit/StereoCollection.h"

namespace {

constexpr int WARM_UP = 10;  ///< cycles in which libraries set themselves up
/// Between the middle and the end. Heaps settle for long; a frame lost in every tenth cycle goes beyond this.
constexpr long ALLOWED_KILOBYTES = 8192;
/// A library may keep some idle threads for the next pipeline.
constexpr int ALLOWED_THREADS = 2;

void Print(const char* what, const cameras::Resources& use) {
  std::printf("%-20s %3d threads, %3d descriptors, %7ld kB\n", what, use.threads, use.descriptors,
              use.residentKilobytes);
  std::fflush(stdout);
}

/// Does the work of one half twice and compares.
bool StaysLevel(const char* what, const std::function<void()>& half) {
  const cameras::Resources before = cameras::ResourcesInUse();
  Print(what, before);
  half();
  const cameras::Resources middle = cameras::ResourcesInUse();
  Print("  halfway", middle);
  half();
  const cameras::Resources after = cameras::ResourcesInUse();
  const bool level = after.threads <= before.threads + ALLOWED_THREADS &&
                     after.descriptors == before.descriptors &&
                     after.residentKilobytes < middle.residentKilobytes + ALLOWED_KILOBYTES;
  Print(level ? "  end: level" : "  end: NOT LEVEL", after);
  return level;
}

void Require(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(what);
}

bool StaysLevel(const char* what, int cycles, const std::function<void()>& cycle) {
  for (int i = 0; i < WARM_UP; ++i) cycle();
  return StaysLevel(what, [&] {
    for (int i = 0; i < cycles / 2; ++i) cycle();
  });
}

class Soak {
 public:
  Soak() {
    const unit::ImagePair pair = unit::PairWithGrid();
    cameras_.Provide(0, {pair.left});
    cameras_.Provide(1, {pair.right});
    cv::VideoWriter video(folder_.File("sheet.avi"), cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 25.0,
                          pair.left.size());
    for (int i = 0; i < 50; ++i) video.write(pair.left);
  }

  bool Cycles(int count) {
    bool level = StaysLevel("camera", count, [&] {
      Require(mono_->OpenNativeCamera(0, 640, 480, 30, 0), "the camera does not open");
      AwaitSnapshot();
      mono_->CloseNativeCamera();
    });
    level &= StaysLevel("pair of cameras", count, [&] {
      Require(stereo_->OpenNativeStereoCamera(0, 1, 640, 480, 30), "the cameras do not open");
      Require(unit::Eventually([&] { return stereo_->AddStereoPoints(); }), "no grid in a pair");
      stereo_->CloseStereoNativeCamera();
      stereo_->Reset();
    });
    level &= StaysLevel("video file", count, [&] {
      Require(mono_->OpenFFmpegContent(folder_.File("sheet.avi")), "the video does not open");
      AwaitSnapshot();
      mono_->CloseFFmpegContent();
    });
    level &= StaysLevel("pipeline", count, [&] {
      Require(mono_->OpenGstreamerPipe("filesrc location=" + folder_.File("sheet.avi") +
                                       " ! avidemux ! jpegdec ! videoconvert ! appsink sync=false"),
              "the pipeline does not open");
      AwaitSnapshot();
      mono_->CloseGstreamerPipe();
    });
    return level;
  }

  bool Reading(double minutes) {
    const auto length = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::duration<double, std::ratio<60>>(minutes));
    Require(mono_->OpenNativeCamera(0, 640, 480, 30, 0), "the camera does not open");
    for (int i = 0; i < 100; ++i) AwaitSnapshot();
    int frames = 0;
    const bool level = StaysLevel("reading", [&] {
      const auto end = std::chrono::steady_clock::now() + length / 2;
      for (; std::chrono::steady_clock::now() < end; ++frames) AwaitSnapshot();
    });
    mono_->CloseNativeCamera();
    std::printf("%.1f minutes, %d frames\n", minutes, frames);
    return level && frames > 0;
  }

 private:
  void AwaitSnapshot() {
    Require(unit::Eventually([&] {
              std::this_thread::sleep_for(std::chrono::milliseconds(2));
              return mono_->IsDetected() && mono_->AddPoints();
            }),
            "no grid in a frame");
    mono_->Reset();
  }

  cameras::FakeCameras cameras_;
  support::TemporaryFolder folder_;
  const std::unique_ptr<Calibrator> mono_ = unit::MakeCalibrator();
  const std::unique_ptr<Calibrator> stereo_ = unit::MakeCalibrator(Calibrator::STEREO);
};

}  // namespace

int main(int argc, char** argv) {
  cameras::PreloadFakeDevice(argv);
  const int cycles = argc > 1 ? std::atoi(argv[1]) : 200;
  const double minutes = argc > 2 ? std::atof(argv[2]) : 5.0;
  Calibration::SetLogLevel(0);
  try {
    Soak soak;
    const bool level = soak.Cycles(cycles);
    return soak.Reading(minutes) && level ? 0 : 1;
  } catch (const std::exception& fault) {
    std::fprintf(stderr, "%s\n", fault.what());
    return 2;
  }
}
