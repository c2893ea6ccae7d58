/// Names and texts of the result file and the status answer.
#include "calibrator/ResultDocument.h"

#include <ctime>

#include "JSON.h"
#include "model/Codes.h"
#include "model/LensModel.h"
#include "quality/FisheyeComparison.h"

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

std::string ResultFileName(const std::string& path, bool isPair) {
  if (!path.empty()) return path + ".json";
  return (isPair ? "stereo" : "mono") + CurrentDateTime() + ".json";
}

std::string FisheyeFileName(const std::string& path) {
  return path.empty() ? "fisheye" + CurrentDateTime() + ".json" : path + "_fisheye.json";
}

const char* StatusSentence(int status) {
  switch (status) {
    case STATUS_READY:
      return "Calibration ready to be performed. Enough snapshots have been collected.";
    case STATUS_PROGRESS:
      return "Calibration in progress.";
    case STATUS_COMPLETED:
      return "Calibration completed. Results are available.";
    default:
      return "Calibration not ready to be performed yet. Not enough snapshots have been collected.";
  }
}

std::string ResultText(const Snapshots::Moment& moment, const DocumentFacts& facts, JSON& document) {
  if (moment.result == nullptr || moment.rms == -1.0F) return "";
  const Result& result = *moment.result;
  if (result.IsFisheye()) return "";  // who reads distCoefs would take its coefficients for others
  document.addInt("sensor", facts.isPair ? 1 : 0);
  document.addDouble("error", moment.rms);
  document.addInt("imgWidth", facts.imageSize.width);
  document.addInt("imgHeight", facts.imageSize.height);
  // Those that the result was found with, whatever was read since.
  document.addMat("cameraMatrix", facts.isPair ? result.intrinsics.K : result.camera.K);
  document.addMat("distCoefs", facts.isPair ? result.intrinsics.D : result.camera.D);
  if (facts.isPair) {
    document.addMat("cameraMatrix2", result.intrinsics.KRight);
    document.addMat("distCoefs2", result.intrinsics.DRight);
    document.addMat("R", result.pair.R);
    document.addMat("T", result.pair.T);
  }
  return document.toJson();
}

FisheyeResult FisheyeOf(const Result& result, const cv::Size& imageSize) {
  FisheyeResult fisheye;
  fisheye.K = result.camera.K;
  fisheye.coefficients = result.camera.D;
  fisheye.stdDevs = result.camera.stdDevIntrinsics.rowRange(0, FISHEYE_PARAMETERS);
  fisheye.imageSize = imageSize;
  fisheye.rms = static_cast<double>(result.rms);
  fisheye.widestAngle = WidestAngleOf(*result.camera.solution);
  return fisheye;
}

std::string StatusAnswer(const Snapshots::Moment& moment, const DocumentFacts& facts) {
  JSON answer;
  answer.addString("op", "cs");
  answer.addString("c", "success");
  answer.addInt("ii", moment.status);
  answer.addInt("ni", static_cast<int>(moment.snapshots->Count()));
  answer.addString("it", StatusSentence(moment.status));
  if (moment.status == STATUS_COMPLETED) {
    JSON document;
    answer.addString("cj", ResultText(moment, facts, document));
  }
  return answer.toJson();
}

}  // namespace velmora
