/// Records a pose model of the assistant from images.
#include "batch/ModelRecording.h"

#include <iostream>

#include "Calibration.h"
#include "Calibrator.h"
#include "JSON.h"
#include "batch/CameraViews.h"
#include "common/ExitStatus.h"
#include "common/Messages.h"
#include "common/OutputFiles.h"
#include "common/Report.h"
#include "common/ResultFile.h"

namespace batch {

namespace {

/// The poses of one camera's images, in the engine's recording.
class Recording {
 public:
  explicit Recording(const Arguments& arguments) : arguments_(arguments), search_(arguments) {}

  /// The reason when the image gives no pose, else an empty text.
  std::string Take(NamedImage& input, const SearchOutcome& outcome) {
    std::string fault = FaultOf(input, outcome);
    if (fault.empty()) {
      names_.push_back(input.name);
    } else {
      rejected_.push_back({input.name, fault});
    }
    return fault;
  }

  const std::vector<std::string>& Names() const { return names_; }
  std::string OtherGridText() { return names_.empty() ? search_.OtherGridText() : ""; }
  std::string Table() const { return common::ViewsTable(names_, rejected_); }

  /// False when the file does not hold all the poses afterwards.
  bool Save() {
    Calibrator* const calibrator = search_.Engine();
    if (calibrator == nullptr || !calibrator->StopModelRecording(arguments_.recordModel)) return false;
    try {
      JSON written;
      return written.load(arguments_.recordModel) &&
             written.readInt("count") == static_cast<int>(names_.size());
    } catch (const std::exception&) {
      return false;
    }
  }

 private:
  std::string FaultOf(NamedImage& input, const SearchOutcome& outcome) {
    std::string fault = search_.FaultOf(input, outcome);
    if (!fault.empty()) return fault;
    // The engine records poses of its own detections.
    Calibrator& calibrator = *search_.Engine();
    Centres centres;
    if (!calibrator.DetectPoints(input.image, centres, false)) return "no grid found";
    // The log has a remark on every matrix of points, which is what a pose is.
    Calibration::SetLogLevel(0);
    calibrator.StartModelRecording();  // with the first pose: a recording without one would be left behind
    calibrator.AddPoints();
    Calibration::SetLogLevel(1);
    return "";
  }

  const Arguments& arguments_;
  ImageSearch search_;
  std::vector<std::string> names_;
  std::vector<common::Rejection> rejected_;
};

}  // namespace

common::ExitStatus RecordModel(const Arguments& arguments, const RunContext& context) {
  common::CheckWritable(arguments.recordModel);
  Recording recording(arguments);
  SearchImages(
      arguments, Wanted::WholeGrids,
      [&](NamedImage& input, const SearchOutcome& outcome) { return recording.Take(input, outcome); },
      context);
  std::cout << recording.Table();
  if (recording.Names().empty()) {
    common::PrintError(std::cerr, "no pose: the grid was found in none of the images.");
    std::cerr << recording.OtherGridText();
    return common::NO_RESULT;
  }
  common::OutputFiles files;
  files.Announce(arguments.recordModel);
  if (!recording.Save()) return ReportUnwritten(arguments.recordModel);
  files.Written(arguments.recordModel);
  std::cout << "\nPose model of " << recording.Names().size() << " poses\n";
  return EndWithFiles(files, false, arguments);
}

}  // namespace batch
