/// Any file is a pose model that can be drawn, or leaves the assistant stopped.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include "CalibAssistant.h"
#include "Calibration.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Calibration::SetLogLevel(0);
  static const std::string path = "/tmp/velmora-fuzz-" + std::to_string(getpid()) + ".json";
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  CalibAssistant assistant(64, 48, 4, 11);
  assistant.Start(path);
  unlink(path.c_str());
  cv::Mat frame(48, 64, CV_8UC3, cv::Scalar::all(90));
  int shown = 0;
  do {
    assistant.DrawPose(frame);
  } while (!assistant.Next() && ++shown < 50);
  if (assistant.GetGoal() < -1 || assistant.GetGoal() == 0) std::abort();
  return 0;
}
