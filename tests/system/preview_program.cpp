/// A program with a calibrator inside that previews a video; each SIGUSR1 leads it one step on.
///
/// It opens the preview and the video given to it, closes the video, opens it again, and leaves main.
#include <csignal>
#include <cstdio>

#include "Calibration.h"
#include "Calibrator.h"

namespace {

void AwaitSignal() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGUSR1);
  int received = 0;
  sigwait(&signals, &received);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGUSR1);
  sigprocmask(SIG_BLOCK, &signals, nullptr);  // threads started from here on inherit it

  Calibration::SetLogLevel(2);
  Calibrator calibrator(cv::Size(4, 11), 0.02F, Calibrator::MONOCULAR, 640, 480);
  calibrator.OpenPreview();
  if (!calibrator.OpenGstreamerPipe(argv[1])) return 1;
  AwaitSignal();
  calibrator.CloseGstreamerPipe();
  AwaitSignal();
  if (!calibrator.OpenGstreamerPipe(argv[1])) return 1;
  AwaitSignal();
  return 0;
}
