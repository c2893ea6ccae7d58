/// The headless calibration of one camera.
#include "batch/Batch.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <set>

#include "Calibrator.h"
#include "JSON.h"
#include "batch/Progress.h"
#include "batch/Report.h"
#include "batch/ViewSelection.h"

namespace batch {

namespace {

constexpr size_t ENOUGH_VIEWS = 5;

using Centres = std::vector<cv::Point2d>;

/// What looking at all pictures gave.
struct Findings {
  cv::Size inputSize;  ///< of the first picture; the others must agree
  std::unique_ptr<Calibrator> calibrator;
  std::vector<std::string> names;
  std::vector<Centres> views;
  std::vector<Rejection> rejected;
};

std::string SizeText(const cv::Size& size) { return std::to_string(size.width) + " x " + std::to_string(size.height); }

/// The distance between adjacent rows.
float UnitOf(const Arguments& arguments) {
  return arguments.hdist / static_cast<float>(arguments.grid.height - 1);
}

cv::Size FrameSizeFor(const Arguments& arguments, const cv::Size& input) {
  return {arguments.frame.width > 0 ? arguments.frame.width : input.width,
          arguments.frame.height > 0 ? arguments.frame.height : input.height};
}

/// Why the picture gives no view, or an empty text after the view was taken up.
std::string TakeView(Picture& picture, const Arguments& arguments, Findings& findings) {
  if (picture.image.empty()) return "cannot be decoded";
  if (findings.calibrator == nullptr) {
    findings.inputSize = picture.image.size();
    const cv::Size frame = FrameSizeFor(arguments, findings.inputSize);
    findings.calibrator = std::make_unique<Calibrator>(arguments.grid, UnitOf(arguments), Calibrator::MONOCULAR,
                                                       frame.width, frame.height);
  }
  if (picture.image.size() != findings.inputSize) {
    return "of another size than the first (" + SizeText(findings.inputSize) + ")";
  }
  Centres centres;
  if (!findings.calibrator->DetectPoints(picture.image, centres, false)) return "no grid found";
  findings.names.push_back(picture.name);
  findings.views.push_back(std::move(centres));
  return "";
}

Findings LookAt(const Arguments& arguments) {
  Findings findings;
  PictureStream pictures(ExpandInputs(arguments.inputs), arguments.sampling);
  Progress progress;
  Picture picture;
  for (int done = 1; pictures.Next(picture); ++done) {
    const std::string fault = TakeView(picture, arguments, findings);
    if (!fault.empty()) findings.rejected.push_back({picture.name, fault});
    progress.Step(done, pictures.ExpectedCount(), picture.name + ": " + (fault.empty() ? "grid found" : fault));
  }
  progress.Finish();
  if (findings.calibrator == nullptr) throw InputError("no picture could be read from the input");
  return findings;
}

/// Gives the chosen views to the calibrator; the others are set aside. Returns the names of the chosen.
std::vector<std::string> AddSpreadViews(Findings& findings, const Arguments& arguments) {
  const cv::Size frame = FrameSizeFor(arguments, findings.inputSize);
  const auto chosen =
      SelectSpreadViews(findings.views, arguments.grid, frame, static_cast<size_t>(arguments.maxViews));
  const std::set<size_t> isChosen(chosen.begin(), chosen.end());
  std::vector<std::string> used;
  for (size_t i = 0; i < findings.views.size(); ++i) {
    if (isChosen.count(i) > 0) {
      findings.calibrator->AddPoints(findings.views[i]);
      used.push_back(findings.names[i]);
    } else {
      findings.rejected.push_back({findings.names[i], "grid found, but other views spread better"});
    }
  }
  return used;
}

/// A result that cannot be written should be known before minutes of work.
void CheckOutput(const std::string& output) {
  namespace fs = std::filesystem;
  const fs::path file = output + ".json";
  const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
  std::error_code error;
  if (!fs::is_directory(folder, error)) throw InputError("folder '" + folder.string() + "' does not exist");
  if (fs::is_directory(file, error)) throw InputError("'" + file.string() + "' is a folder");
  const bool exists = fs::exists(file, error);
  if (access(exists ? file.c_str() : folder.c_str(), W_OK) != 0) {
    throw InputError("'" + file.string() + "' cannot be written");
  }
}

/// Writes the result file and reads it back.
bool Save(Calibrator& calibrator, const std::string& output) {
  const std::string text = calibrator.SaveResult(true, output);
  try {
    JSON written;
    JSON expected;
    expected.fromJson(text);
    return written.load(output + ".json") && written.toJson() == expected.toJson();
  } catch (const std::exception&) {
    return false;
  }
}

Report Describe(Calibrator& calibrator, const Arguments& arguments, const Findings& findings,
                std::vector<std::string> used) {
  Report report;
  report.model = arguments.modelName;
  report.frame = FrameSizeFor(arguments, findings.inputSize);
  report.used = std::move(used);
  report.rejected = findings.rejected;
  report.rms = static_cast<double>(calibrator.GetRMS());
  report.K = calibrator.GetK();
  report.D = calibrator.GetDistCoefs();
  report.stdDevs = calibrator.GetStdDevIntrinsics();
  report.viewErrors = calibrator.GetPerViewErrors();
  return report;
}

}  // namespace

ExitStatus Run(const Arguments& arguments) {
  CheckOutput(arguments.output);
  Findings findings = LookAt(arguments);
  const size_t found = findings.views.size();
  if (found < ENOUGH_VIEWS) {
    std::cout << ViewsTable(findings.names, findings.rejected);
    std::cerr << "Too few views: the grid was found in " << found << " pictures, at least " << ENOUGH_VIEWS
              << " are needed.\n";
    return TOO_FEW_VIEWS;
  }
  std::vector<std::string> used = AddSpreadViews(findings, arguments);
  std::cerr << "Computing the " << arguments.modelName << " model from " << used.size() << " views ...\n";
  Calibrator& calibrator = *findings.calibrator;
  calibrator.ComputeCalibration(arguments.model);
  std::cout << ResultTable(Describe(calibrator, arguments, findings, std::move(used)));
  if (!Save(calibrator, arguments.output)) {
    std::cerr << "Cannot write '" << arguments.output << ".json'.\n";
    return UNUSABLE_INPUT;
  }
  std::cout << "\nResult file: " << arguments.output << ".json\n";
  return CALIBRATED;
}

}  // namespace batch
