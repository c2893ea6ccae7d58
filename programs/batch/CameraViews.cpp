/// One camera's way from images to a result.
#include "batch/CameraViews.h"

#include <set>

#include "batch/ViewSelection.h"
#include "common/LensModels.h"
#include "common/ResultFile.h"
#include "common/VerdictFiles.h"
#include "common/VerdictReport.h"

namespace batch {

std::string CameraViews::Take(const NamedImage& input, const SearchOutcome& outcome) {
  std::string fault = search_.FaultOf(input, outcome);
  if (fault.empty()) {
    names_.push_back(input.name);
    numbers_.push_back(input.snapshot);
    views_.push_back(outcome.view.points);
    weights_.push_back(outcome.view.weights);
    deviations_.push_back(outcome.view.deviations);
    last_ = outcome.view;
  } else {
    rejected_.push_back({input.name, fault});
  }
  return fault;
}

common::Report CameraViews::Calibrate() {
  Calibrator& calibrator = *search_.Engine();
  common::Report report;
  report.frame = FrameSize();
  report.rejected = rejected_;
  report.parts.of = static_cast<size_t>(arguments_.grid.area());
  chosen_ = SelectSpreadViews(views_, arguments_.grid, FrameSize(), static_cast<size_t>(arguments_.maxViews));
  const std::set<size_t> isChosen(chosen_.begin(), chosen_.end());
  for (size_t i = 0; i < views_.size(); ++i) {
    if (isChosen.count(i) > 0) {
      const GridView view{views_[i], weights_[i], deviations_[i]};
      calibrator.AddPoints(view.points, view.weights, view.deviations);
      used_.push_back(view.Seen());
      report.used.push_back(names_[i]);
      if (view.IsPart()) report.parts.circles.push_back(used_.back().size());
    } else {
      report.rejected.push_back(common::NotNeeded(names_[i], arguments_.maxViews));
    }
  }
  const common::ChosenModel lens = common::ChooseModel(arguments_.model, calibrator);
  report.model = common::NameOfModel(lens.model);
  report.modelReasons = lens.reasons;
  common::ComputeModel(lens.model, calibrator);
  common::CopyResult(calibrator, report);
  return report;
}

std::map<int, ViewNote> CameraViews::Notes(const common::Report& report) const {
  std::map<int, ViewNote> notes;
  for (size_t i = 0; i < numbers_.size(); ++i) {
    notes[numbers_[i]].reason = common::NotNeeded(names_[i], arguments_.maxViews).reason;
  }
  for (size_t row = 0; row < chosen_.size(); ++row) {
    ViewNote& note = notes[numbers_[chosen_[row]]];
    const int error = static_cast<int>(row);
    if (error < report.viewErrors.rows) note.rms = report.viewErrors.at<double>(error);
    note.reason = report.disagreeing.count(row) > 0 ? common::DISAGREES : "";
  }
  return notes;
}

std::string CameraViews::ResultName(const std::string& output) const {
  return search_.Engine()->GetFisheye().IsEmpty() ? output : output + "_fisheye";
}

CalibrationVerdict CameraViews::Verdict(common::Report& report) {
  CalibrationVerdict verdict = search_.Engine()->GetVerdict();
  report.disagreeing = common::RejectedViews(verdict);
  return verdict;
}

std::string CameraViews::Save(const std::string& output) {
  Calibrator& calibrator = *search_.Engine();
  return ResultName(output) == output ? common::SaveResultFile(calibrator, output)
                                      : common::SaveFisheyeFile(calibrator, output);
}

std::string SaveWithVerdict(CameraViews& camera, const CalibrationVerdict& verdict, const std::string& output,
                            std::string& text, common::OutputFiles& files) {
  const std::string name = camera.ResultName(output);
  files.Announce(name + ".json");
  text = camera.Save(output);
  if (text.empty()) return name + ".json";
  files.Written(name + ".json");
  return common::SaveVerdict(verdict, camera.FrameSize(), camera.Used(), name, files);
}

}  // namespace batch
