/// One camera's way from pictures to a result.
#include "batch/CameraViews.h"

#include <filesystem>
#include <fstream>
#include <set>

#include "JSON.h"
#include "batch/VerdictReport.h"
#include "batch/ViewSelection.h"
#include "common/VerdictFiles.h"

namespace batch {

std::string CameraViews::Take(Picture& picture) {
  Centres centres;
  std::string fault = search_.FaultOf(picture, centres);
  if (fault.empty()) {
    names_.push_back(picture.name);
    views_.push_back(std::move(centres));
  } else {
    rejected_.push_back({picture.name, fault});
  }
  return fault;
}

Report CameraViews::Calibrate() {
  Calibrator& calibrator = *search_.Engine();
  Report report;
  report.model = arguments_.modelName;
  report.frame = FrameSize();
  report.rejected = rejected_;
  const auto chosen =
      SelectSpreadViews(views_, arguments_.grid, FrameSize(), static_cast<size_t>(arguments_.maxViews));
  const std::set<size_t> isChosen(chosen.begin(), chosen.end());
  for (size_t i = 0; i < views_.size(); ++i) {
    if (isChosen.count(i) > 0) {
      calibrator.AddPoints(views_[i]);
      used_.push_back(views_[i]);
      report.used.push_back(names_[i]);
    } else {
      report.rejected.push_back(NotNeeded(names_[i], arguments_.maxViews));
    }
  }
  calibrator.ComputeCalibration(ChosenModel(report));
  CopyResult(calibrator, report);
  return report;
}

int CameraViews::ChosenModel(Report& report) {
  if (arguments_.model != Arguments::MODEL_AUTO) return arguments_.model;
  const ModelChoice choice = search_.Engine()->ChooseModel();
  report.model = choice.Name();
  report.modelReasons = choice.reasons;
  return choice.model;
}

CalibrationVerdict CameraViews::Verdict(Report& report) {
  CalibrationVerdict verdict = search_.Engine()->GetVerdict();
  report.disagreeing = ViewsLeftOut(verdict);
  return verdict;
}

std::string CameraViews::Save(const std::string& output) {
  return SaveResultFile(*search_.Engine(), output);
}

void CopyResult(Calibrator& calibrator, Report& report) {
  report.rms = static_cast<double>(calibrator.GetRMS());
  report.K = calibrator.GetK();
  report.D = calibrator.GetDistCoefs();
  report.stdDevs = calibrator.GetStdDevIntrinsics();
  report.viewErrors = calibrator.GetPerViewErrors();
}

std::string SaveResultFile(Calibrator& calibrator, const std::string& output) {
  const std::string text = calibrator.SaveResult(true, output);
  try {
    JSON written;
    JSON expected;
    expected.fromJson(text);
    return written.load(output + ".json") && written.toJson() == expected.toJson() ? text : "";
  } catch (const std::exception&) {
    return "";
  }
}

std::string SaveJudged(CameraViews& camera, const CalibrationVerdict& verdict, const std::string& output,
                       std::string& text, tools::OutputFiles& files) {
  files.Announce(output + ".json");
  text = camera.Save(output);
  if (text.empty()) return output + ".json";
  files.Written(output + ".json");
  return tools::SaveVerdict(verdict, camera.FrameSize(), camera.Used(), output, files);
}

void CheckOutput(const std::string& output) {
  CheckWritable(output + ".json");
}

void CheckJudgedOutput(const std::string& output) {
  CheckOutput(output);
  const tools::VerdictFiles files(output);
  CheckWritable(files.text);
  CheckWritable(files.picture);
}

void CheckWritable(const std::string& name) {
  namespace fs = std::filesystem;
  const fs::path file = name;
  const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
  std::error_code error;
  if (!fs::is_directory(folder, error)) throw InputError("folder '" + folder.string() + "' does not exist");
  if (fs::is_directory(file, error)) throw InputError("'" + file.string() + "' is a folder");
  // Rights alone do not tell: a read-only or virtual file system refuses even those who have them.
  const bool exists = fs::exists(file, error);
  const bool opens = std::ofstream(file, std::ios::app).is_open();
  if (!exists) fs::remove(file, error);
  if (!opens) throw InputError("'" + file.string() + "' cannot be written");
}

}  // namespace batch
