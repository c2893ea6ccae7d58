/// Takes frames of a camera as a guided calibration does, and prints what becomes of the source: a line with
/// its remark each time that changes, and "frames" with the first frame after each change.
///
///   velmora_source_program NUMBER     ends when it is killed
#include <chrono>
#include <cstdlib>
#include <iostream>

#include "common/LibraryNoise.h"
#include "guided/LiveSource.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  common::SilenceLibraries();
  guided::Arguments arguments;
  arguments.source.webcam = std::atoi(argv[1]);
  const auto source = guided::OpenLiveSource(arguments, {}, std::cout, std::cerr);
  if (source == nullptr) return 1;
  auto state = guided::SourceState::Kind::FailedToStart;
  for (bool told = false;;) {
    cv::Mat frame;
    const bool fresh = source->Frames().Take(frame, std::chrono::milliseconds(10));
    const guided::SourceState now = source->State();
    if (now.kind != state) {
      state = now.kind;
      told = false;
      std::cout << "state: " << source->Remark() << std::endl;
    }
    if (fresh && !told) {
      told = true;
      std::cout << "frames" << std::endl;
    }
  }
}
