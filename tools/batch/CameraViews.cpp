/// One camera's way from pictures to a result.
#include "batch/CameraViews.h"

#include <filesystem>
#include <fstream>
#include <set>

#include "JSON.h"
#include "batch/ViewSelection.h"

namespace batch {

namespace {

std::string SizeText(const cv::Size& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

}  // namespace

float UnitOf(const Arguments& arguments) {
  return arguments.hdist / static_cast<float>(arguments.grid.height - 1);
}

cv::Size FrameSizeFor(const Arguments& arguments, const cv::Size& input) {
  return {arguments.frame.width > 0 ? arguments.frame.width : input.width,
          arguments.frame.height > 0 ? arguments.frame.height : input.height};
}

std::string FaultOfSearch(Calibrator& calibrator) {
  const std::string reason = calibrator.WhyNotFound();
  return reason.empty() ? "no grid found" : "no grid found: " + reason;
}

std::string CameraViews::FaultOf(Picture& picture, Centres& centres) {
  if (picture.image.empty()) return "cannot be decoded";
  if (calibrator_ == nullptr) {
    inputSize_ = picture.image.size();
    const cv::Size frame = FrameSize();
    calibrator_ = std::make_unique<Calibrator>(arguments_.grid, UnitOf(arguments_), Calibrator::MONOCULAR,
                                               frame.width, frame.height);
    tools::ApplyEngineOptions(arguments_, UnitOf(arguments_), *calibrator_);
  }
  if (picture.image.size() != inputSize_)
    return "of another size than the first (" + SizeText(inputSize_) + ")";
  return calibrator_->DetectPoints(picture.image, centres, false) ? "" : FaultOfSearch(*calibrator_);
}

std::string CameraViews::Take(Picture& picture) {
  Centres centres;
  std::string fault = FaultOf(picture, centres);
  if (fault.empty()) {
    names_.push_back(picture.name);
    views_.push_back(std::move(centres));
  } else {
    rejected_.push_back({picture.name, fault});
  }
  return fault;
}

Report CameraViews::Calibrate() {
  Report report;
  report.model = arguments_.modelName;
  report.frame = FrameSize();
  report.rejected = rejected_;
  const auto chosen =
      SelectSpreadViews(views_, arguments_.grid, FrameSize(), static_cast<size_t>(arguments_.maxViews));
  const std::set<size_t> isChosen(chosen.begin(), chosen.end());
  for (size_t i = 0; i < views_.size(); ++i) {
    if (isChosen.count(i) > 0) {
      calibrator_->AddPoints(views_[i]);
      used_.push_back(views_[i]);
      report.used.push_back(names_[i]);
    } else {
      report.rejected.push_back({names_[i], SET_ASIDE});
    }
  }
  calibrator_->ComputeCalibration(ChosenModel(report));
  report.rms = static_cast<double>(calibrator_->GetRMS());
  report.K = calibrator_->GetK();
  report.D = calibrator_->GetDistCoefs();
  report.stdDevs = calibrator_->GetStdDevIntrinsics();
  report.viewErrors = calibrator_->GetPerViewErrors();
  return report;
}

int CameraViews::ChosenModel(Report& report) {
  if (arguments_.model != Arguments::MODEL_AUTO) return arguments_.model;
  const ModelChoice choice = calibrator_->ChooseModel();
  report.model = choice.Name();
  report.modelReasons = choice.reasons;
  return choice.model;
}

CalibrationVerdict CameraViews::Verdict() {
  return calibrator_->GetVerdict();
}

std::string CameraViews::Save(const std::string& output) {
  return SaveResultFile(*calibrator_, output);
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

void CheckOutput(const std::string& output) {
  CheckWritable(output + ".json");
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
