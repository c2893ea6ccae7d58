/// The headless calibration of one camera.
#include "batch/Batch.h"

#include <iostream>

#include "batch/CameraViews.h"
#include "batch/KeptSession.h"
#include "batch/SessionArguments.h"
#include "batch/SharedSearch.h"
#include "common/LensModels.h"
#include "common/Messages.h"
#include "common/Report.h"
#include "common/ResultFile.h"
#include "common/VerdictReport.h"

namespace batch {

void SearchImages(const Arguments& arguments, Wanted wanted,
                  const std::function<std::string(NamedImage&, const SearchOutcome&)>& take,
                  const RunContext& context) {
  ImageStream stream(ExpandInputsAloud(arguments.inputs), arguments.sampling);
  SearchSteps steps;
  steps.next = [&](std::vector<NamedImage>& inputs) {
    inputs.resize(1);
    return stream.Next(inputs.front());
  };
  steps.take = [&](SearchedImages& images) {
    const std::string fault = take(images.inputs.front(), images.outcomes.front());
    return fault.empty() ? "grid found" : fault;
  };
  steps.expected = [&] { return stream.ExpectedCount(); };
  SearchShared(arguments, wanted, steps, context);
}

common::ExitStatus ReportTooFewViews(const std::string& what, size_t found, const std::string& hint,
                                     const std::string& whose) {
  common::PrintError(std::cerr, "too few views: the grid was found in " + std::to_string(found) + " " + what +
                                    (found == 1 ? "" : "s") + whose + ", at least " +
                                    std::to_string(ENOUGH_VIEWS) + " are needed.");
  std::cerr << hint;
  return common::NO_RESULT;
}

common::ExitStatus EndWithFiles(const common::OutputFiles& files, bool worthless,
                                const Arguments& arguments) {
  std::cout << "\n" << files.Text();
  return worthless && arguments.strict ? common::WORTHLESS : common::SUCCESS;
}

common::ExitStatus ReportUnwritten(const std::string& file) {
  common::PrintError(std::cerr, "cannot write '" + file + "'.");
  return common::UNUSABLE;
}

common::ExitStatus Run(const Arguments& arguments, const RunContext& context) {
  for (const std::string& output : OutputsToCheck(arguments)) common::CheckOutputWithVerdict(output);
  CameraViews camera(arguments);
  SearchImages(
      arguments, Wanted::Views,
      [&](NamedImage& input, const SearchOutcome& outcome) { return camera.Take(input, outcome); }, context);
  if (!camera.HasImages()) throw InputError("no image could be read from the input");
  if (camera.Views().size() < ENOUGH_VIEWS) {
    std::cout << common::ViewsTable(camera.Names(), camera.Rejected());
    return ReportTooFewViews("image", camera.Views().size(), camera.OtherGridText());
  }
  std::cerr << (arguments.model == common::MODEL_AUTO
                    ? "Choosing the lens model and computing it ...\n"
                    : "Computing the " + arguments.modelName + " model ...\n");
  common::Report report = camera.Calibrate();
  const CalibrationVerdict verdict = camera.Verdict(report);
  std::cout << common::ResultTable(report) << "\n" << common::VerdictTable(verdict, report.used);
  context.EndIfAsked();
  common::OutputFiles files;
  std::string text;
  for (const std::string& output : arguments.Outputs()) {
    const std::string unwritten = SaveWithVerdict(camera, verdict, output, text, files);
    if (!unwritten.empty()) return ReportUnwritten(unwritten);
  }
  if (context.session != nullptr) context.session->Write(camera.Notes(report));
  return EndWithFiles(files, verdict.grade == CalibrationVerdict::Grade::Worthless, arguments);
}

}  // namespace batch
