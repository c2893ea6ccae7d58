/// Calibrators addressed by number: operations that answer with a JSON text.
#include "Calibration.h"
#include "JSON.h"
#include "binding/Registry.h"

using namespace velmora;

namespace {

constexpr char SNAPSHOT[] = "snapshot";
constexpr char CALIBRATE[] = "calibrate";
constexpr char STATUS[] = "cs";

constexpr char SEE_STATUS[] = "Please derive calibration computation result from infoInt.";

JSON Answer(int id, const char* operation, bool success, const char* sentence) {
  JSON answer;
  answer.addInt("id", id);
  answer.addString("op", operation);
  answer.addString("c", success ? "success" : "error");
  answer.addString("it", sentence);
  return answer;
}

std::string NotFound(int id, const char* operation) {
  return Answer(id, operation, false, "ID not found.").toJson();
}

std::string Done(int id, Calibrator& calibrator, const char* operation, bool success, const char* sentence) {
  JSON answer = Answer(id, operation, success, sentence);
  answer.addInt("ii", calibrator.GetStatus());
  answer.addInt("ni", calibrator.GetNumberOfRecords());
  return answer.toJson();
}

std::string SnapshotAnswer(int id, Calibrator& calibrator, bool added) {
  return Done(id, calibrator, SNAPSHOT, added, added ? "Snapshot recorded." : "Pattern not detected.");
}

}  // namespace

std::string Calibration::AddPicture_QVX(const int& id) {
  const auto calibrator = Registry::Instance().Find(id);
  if (calibrator == nullptr) return NotFound(id, SNAPSHOT);
  return SnapshotAnswer(id, *calibrator, calibrator->AddPoints());
}

std::string Calibration::AddStereoPicture_QVX(const int& id) {
  const auto calibrator = Registry::Instance().Find(id);
  if (calibrator == nullptr) return NotFound(id, SNAPSHOT);
  return SnapshotAnswer(id, *calibrator, calibrator->AddStereoPoints());
}

std::string Calibration::Calibrate_QVX(const int& id, const int& model) {
  const auto calibrator = Registry::Instance().Find(id);
  if (calibrator == nullptr) return NotFound(id, CALIBRATE);
  calibrator->ComputeCalibrationMultithread(model);
  return Done(id, *calibrator, CALIBRATE, true, SEE_STATUS);
}

std::string Calibration::CalibrateStereo_QVX(const int& id, const std::string& left, const std::string& right,
                                             const int& model) {
  const auto calibrator = Registry::Instance().Find(id);
  if (calibrator == nullptr) return NotFound(id, CALIBRATE);
  calibrator->ComputeCalibrationStereoMultithread(left, right, model);
  return Done(id, *calibrator, CALIBRATE, true, SEE_STATUS);
}

std::string Calibration::GetStatus_QVX(const int& id) {
  const auto calibrator = Registry::Instance().Find(id);
  return calibrator == nullptr ? NotFound(id, STATUS) : calibrator->GetStatus_QVX();
}
