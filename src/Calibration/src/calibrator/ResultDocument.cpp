/// Names and sentences of the result file and the status answer.
#include "calibrator/ResultDocument.h"

#include <ctime>

#include "Calibrator.h"

namespace velmora {

std::string CurrentDateTime() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char text[80] = "";
  // %X of the C locale, whatever a window library or the program made the process' own.
  std::strftime(text, sizeof(text), "%Y%m%d%H:%M:%S", &local);
  return text;
}

std::string ResultFileName(const std::string& path, int kind) {
  if (!path.empty()) return path + ".json";
  return (kind == Calibrator::STEREO ? "stereo" : "mono") + CurrentDateTime() + ".json";
}

const char* StatusSentence(int status) {
  switch (status) {
    case Calibrator::STATUS_READY:
      return "Calibration ready to be performed. Enough snapshots have been collected.";
    case Calibrator::STATUS_PROGRESS:
      return "Calibration in progress.";
    case Calibrator::STATUS_COMPLETED:
      return "Calibration completed. Results are available.";
    default:
      return "Calibration not ready to be performed yet. Not enough snapshots have been collected.";
  }
}

}  // namespace velmora
