/// How a program lets the engine do everything: capture, guide, calibrate, save.
///
///   velmora-guided-capture SOURCE POSES OUTPUT
///
/// SOURCE is the number of a camera, a video file or an address; POSES is a pose model (poses-4x11.json);
/// OUTPUT is the result file, without its extension .json. What the program shows of the frames is up to it:
/// this one counts them.
#include <chrono>
#include <condition_variable>
#include <iostream>
#include <mutex>
#include <string>

#include "Calibration.h"
#include "Calibrator.h"

namespace {

const cv::Size GRID(4, 11);
constexpr float UNIT = 0.02F;
const cv::Size FRAME(640, 480);
constexpr int ERRORS = 1;
/// A source that is silent for so long has ended.
constexpr std::chrono::seconds QUIET{3};

bool Open(Calibrator& calibrator, const std::string& source) {
  const bool isNumber = source.find_first_not_of("0123456789") == std::string::npos;
  return isNumber ? calibrator.OpenNativeCamera(std::stoi(source), FRAME.width, FRAME.height, 30, 0)
                  : calibrator.OpenFFmpegContent(source);
}

int Run(const std::string& source, const std::string& poses, const std::string& output) {
  std::mutex lock;
  std::condition_variable changed;
  int frames = 0;

  Calibrator calibrator(GRID, UNIT, Calibrator::MONOCULAR, FRAME.width, FRAME.height);
  // Called for each frame on the thread that reads the source, with the annotated picture and the status.
  calibrator.SetFrameListener([&](const std::vector<unsigned char>& /*jpeg*/, const std::string& /*status*/) {
    const std::lock_guard<std::mutex> guard(lock);
    ++frames;
    changed.notify_all();
  });
  calibrator.EnableAssistant(poses);
  const int goal = calibrator.GetAssistantGoal();
  if (goal < 1 || !Open(calibrator, source)) return 1;

  const auto completed = [&] { return calibrator.GetStatus() == Calibrator::STATUS_COMPLETED; };
  {
    // A source that has ended delivers no frames; the computation after the last pose needs none.
    std::unique_lock<std::mutex> guard(lock);
    for (int seen = -1; !completed() && (seen != frames || calibrator.isCalibrating());) {
      seen = frames;
      changed.wait_for(guard, QUIET, [&] { return completed(); });
    }
  }
  calibrator.EndSources();
  std::cout << frames << " frames, " << calibrator.GetNumberOfRecords() << " of " << goal << " poses"
            << std::endl;
  if (!completed() || calibrator.SaveResult(true, output).empty()) return 1;
  std::cout << "RMS reprojection error " << calibrator.GetRMS() << " px, saved to " << output << ".json"
            << std::endl;
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: velmora-guided-capture SOURCE POSES OUTPUT" << std::endl;
    return 2;
  }
  Calibration::SetLogLevel(ERRORS);
  return Run(argv[1], argv[2], argv[3]);
}
