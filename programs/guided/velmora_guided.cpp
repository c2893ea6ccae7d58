/// velmora-guided: calibrates a camera with the pose assistant in a live window.
#include <filesystem>
#include <iostream>

#include "Calibration.h"
#include "common/ExitStatus.h"
#include "common/LibraryNoise.h"
#include "common/Messages.h"
#include "guided/CameraList.h"
#include "guided/GuidedRun.h"
#include "guided/VideoDevice.h"

int main(int argc, char** argv) {
  std::error_code ignored;
  const auto executable = std::filesystem::read_symlink("/proc/self/exe", ignored);
  const guided::Parsed parsed = guided::ParseArguments(argc, argv, guided::ShippedPoses(executable.string()));
  if (parsed.listCameras) {
    const std::string devices = "/dev";
    std::cout << guided::CameraListText(guided::FindCameras(devices), devices) << std::flush;
    return common::SUCCESS;
  }
  if (!parsed.run) return parsed.exitStatus;
  common::SilenceLibraries();
  Calibration::SetLogLevel(1);
  try {
    return guided::Run(parsed.arguments);
  } catch (const std::exception& fault) {
    common::PrintError(std::cerr, fault);
    return common::UNUSABLE;
  }
}
