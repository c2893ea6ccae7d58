/// The headless calibration of one camera.
#include "batch/Batch.h"

#include <iostream>

#include "batch/CameraViews.h"
#include "batch/Progress.h"
#include "batch/VerdictReport.h"
#include "common/VerdictFiles.h"

namespace batch {

void LookAtPictures(const Arguments& arguments, const std::function<std::string(Picture&)>& take) {
  PictureStream pictures(ExpandInputs(arguments.inputs), arguments.sampling);
  Progress progress;
  Picture picture;
  for (int done = 1; pictures.Next(picture); ++done) {
    const std::string fault = take(picture);
    progress.Step(done, pictures.ExpectedCount(),
                  picture.name + ": " + (fault.empty() ? "grid found" : fault));
  }
  progress.Finish();
}

ExitStatus ReportTooFewViews(const std::string& where, size_t found) {
  std::cerr << "Too few views: the grid was found in " << found << " " << where << ", at least "
            << ENOUGH_VIEWS << " are needed.\n";
  return TOO_FEW_VIEWS;
}

ExitStatus ReportUnwritten(const std::string& file) {
  std::cerr << "Cannot write '" << file << "'.\n";
  return UNUSABLE_INPUT;
}

ExitStatus Run(const Arguments& arguments) {
  CheckJudgedOutput(arguments.output);
  CameraViews camera(arguments);
  LookAtPictures(arguments, [&](Picture& picture) { return camera.Take(picture); });
  if (!camera.SawPictures()) throw InputError("no picture could be read from the input");
  if (camera.Views().size() < ENOUGH_VIEWS) {
    std::cout << ViewsTable(camera.Names(), camera.Rejected());
    return ReportTooFewViews("pictures", camera.Views().size());
  }
  std::cerr << "Computing the " << arguments.modelName << " model ...\n";
  const Report report = camera.Calibrate();
  const CalibrationVerdict verdict = camera.Verdict();
  std::cout << ResultTable(report) << "\n" << VerdictTable(verdict, report.used);
  if (camera.Save(arguments.output).empty()) return ReportUnwritten(arguments.output + ".json");
  const std::string unwritten =
      tools::SaveVerdict(verdict, camera.FrameSize(), camera.Used(), arguments.output);
  if (!unwritten.empty()) return ReportUnwritten(unwritten);
  std::cout << "\nResult file: " << arguments.output << ".json\n";
  return CALIBRATED;
}

}  // namespace batch
