/// The headless calibration of one camera.
#include "batch/Batch.h"

#include <iostream>

#include "batch/CameraViews.h"
#include "batch/Progress.h"
#include "batch/VerdictReport.h"

namespace batch {

void LookAtPictures(const Arguments& arguments, const std::function<std::string(Picture&)>& take) {
  PictureStream pictures(ExpandInputsAloud(arguments.inputs), arguments.sampling);
  Progress progress;
  Picture picture;
  for (int done = 1; pictures.Next(picture); ++done) {
    const std::string fault = take(picture);
    progress.Step(done, pictures.ExpectedCount(),
                  picture.name + ": " + (fault.empty() ? "grid found" : fault));
  }
  progress.Finish();
  std::cerr << OrientationsText(pictures.OrientationsIgnored());
}

ExitStatus ReportTooFewViews(const std::string& what, size_t found, const std::string& hint,
                             const std::string& whose) {
  std::cerr << "Too few views: the grid was found in " << found << " " << what << (found == 1 ? "" : "s")
            << whose << ", at least " << ENOUGH_VIEWS << " are needed.\n"
            << hint;
  return TOO_FEW_VIEWS;
}

ExitStatus EndWithFiles(const tools::OutputFiles& files, bool worthless, const Arguments& arguments) {
  std::cout << "\n" << files.Text();
  return worthless && arguments.strict ? WORTHLESS : CALIBRATED;
}

ExitStatus ReportUnwritten(const std::string& file) {
  std::cerr << "Error: cannot write '" << file << "'.\n";
  return UNUSABLE_INPUT;
}

ExitStatus Run(const Arguments& arguments) {
  CheckJudgedOutput(arguments.output);
  CameraViews camera(arguments);
  LookAtPictures(arguments, [&](Picture& picture) { return camera.Take(picture); });
  if (!camera.SawPictures()) throw InputError("no image could be read from the input");
  if (camera.Views().size() < ENOUGH_VIEWS) {
    std::cout << ViewsTable(camera.Names(), camera.Rejected());
    return ReportTooFewViews("image", camera.Views().size(), camera.OtherGridText());
  }
  std::cerr << "Computing the " << arguments.modelName << " model ...\n";
  Report report = camera.Calibrate();
  const CalibrationVerdict verdict = camera.Verdict(report);
  std::cout << ResultTable(report) << "\n" << VerdictTable(verdict, report.used);
  tools::OutputFiles files;
  std::string text;
  const std::string unwritten = SaveJudged(camera, verdict, arguments.output, text, files);
  if (!unwritten.empty()) return ReportUnwritten(unwritten);
  return EndWithFiles(files, verdict.grade == CalibrationVerdict::Grade::Worthless, arguments);
}

}  // namespace batch
