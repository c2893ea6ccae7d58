/// A program that opens the preview, shows one picture (of 640 x 480 pixels unless told otherwise), and
/// leaves main after the given number of milliseconds.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "Calibration.h"
#include "Calibrator.h"

int main(int argc, char** argv) {
  if (argc != 2 && argc != 4) return 2;
  const cv::Size size = argc == 2 ? cv::Size(640, 480) : cv::Size(std::atoi(argv[2]), std::atoi(argv[3]));
  Calibration::SetLogLevel(2);
  Calibrator calibrator(cv::Size(4, 11), 0.02F, Calibrator::MONOCULAR, size.width, size.height);
  calibrator.OpenPreview();
  cv::Mat picture(size, CV_8UC3, cv::Scalar::all(90));
  calibrator.NextFrameRGB(picture, 0, nullptr, false);
  std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(argv[1])));
  std::puts("left");  // in a buffer that only an orderly exit writes out
  return 0;
}
