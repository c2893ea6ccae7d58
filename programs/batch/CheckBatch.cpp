/// The check of an earlier result by new images.
#include "batch/CheckBatch.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

#include "batch/Batch.h"
#include "batch/ImageSearch.h"
#include "common/InputError.h"
#include "common/Messages.h"
#include "common/Report.h"
#include "common/VerdictFiles.h"
#include "velmora/ResultCheck.h"

namespace batch {

namespace {

using velmora::ResultCheck;

velmora::CameraResult LoadResult(const std::string& path) {
  std::ifstream file(path);
  // A folder can be opened, but not be read.
  if (!file || std::filesystem::is_directory(path)) throw common::InputError("cannot read '" + path + "'");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  try {
    return velmora::CameraResult::FromJson(text);
  } catch (const std::invalid_argument& fault) {
    throw common::InputError("'" + path + "' " + fault.what());
  }
}

std::string SizeText(const cv::Size& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

/// What the new images of the camera show.
class NewImages {
 public:
  NewImages(const Arguments& arguments, const cv::Size& size)
      : arguments_(arguments), size_(size), search_(arguments_) {}

  /// The reason when it gives no view, else an empty text.
  std::string Take(const NamedImage& input, const SearchOutcome& outcome) {
    std::string fault;
    if (!outcome.size.empty()) {
      decoded_ = true;
      if (outcome.size != size_)
        fault = "of " + SizeText(outcome.size) + " pixels, the result of " + SizeText(size_);
      fit_ = fit_ || fault.empty();
    }
    if (fault.empty()) fault = search_.FaultOf(input, outcome);
    if (fault.empty()) {
      names_.push_back(input.name);
      images_.push_back({outcome.view.points, outcome.view.weights, outcome.view.deviations});
    } else {
      rejected_.push_back({input.name, fault});
    }
    return fault;
  }

  bool Decoded() const { return decoded_; }
  bool Fit() const { return fit_; }
  const std::vector<std::string>& Names() const { return names_; }
  const std::vector<velmora::CheckImage>& Images() const { return images_; }
  const std::vector<common::Rejection>& Rejected() const { return rejected_; }
  std::string OtherGridText() { return search_.OtherGridText(); }

 private:
  const Arguments& arguments_;
  const cv::Size size_;
  ImageSearch search_;
  bool decoded_ = false;
  bool fit_ = false;
  std::vector<std::string> names_;
  std::vector<velmora::CheckImage> images_;
  std::vector<common::Rejection> rejected_;
};

/// The images with their residuals.
std::string TableOf(const ResultCheck& check, const std::vector<std::string>& names) {
  size_t width = 5;
  for (const std::string& name : names) width = std::max(width, name.size());
  const std::string first = "image" + std::string(width - 5, ' ');
  std::string text = "\n" + first + "   RMS px   largest px   circles left out\n";
  for (size_t i = 0; i < names.size(); ++i) {
    const ResultCheck::Image& image = check.images[i];
    const std::string name = names[i] + std::string(width - names[i].size(), ' ');
    char line[80] = "";
    if (image.used) {
      std::snprintf(line, sizeof(line), "  %7.3f   %10.3f   %16d", image.rms, image.largest, image.outliers);
    } else {
      std::snprintf(line, sizeof(line), "  left out: no view of this camera");
    }
    text += name + line + "\n";
  }
  char line[160] = "";
  std::snprintf(line, sizeof(line),
                "\nRMS %.3f px by the lens of the result, %.3f px by the lens that fits best\n\n", check.rms,
                check.noise);
  return text + line;
}

velmora::CheckOptions OptionsFrom(const Arguments& arguments) {
  velmora::CheckOptions options;
  options.grid = arguments.grid;
  options.unit = static_cast<double>(UnitOf(arguments));
  options.discRadius = common::DiscRadius(arguments, UnitOf(arguments));
  options.tolerance = arguments.check.tolerance;
  options.sheetPoints = arguments.sheetPoints;
  return options;
}

}  // namespace

common::ExitStatus RunCheck(const Arguments& arguments, const RunContext& context) {
  const velmora::CameraResult result = LoadResult(arguments.check.result);
  std::string warning;
  const CalibrationVerdict verdict = common::VerdictBeside(arguments.check.result, warning);
  std::cerr << warning;
  NewImages images(arguments, result.imageSize);
  SearchImages(
      arguments, Wanted::Views,
      [&](NamedImage& input, const SearchOutcome& outcome) { return images.Take(input, outcome); }, context);
  if (!images.Decoded()) throw common::InputError("no image could be read from the input");
  std::cout << common::ViewsTable(images.Names(), images.Rejected());
  if (!images.Fit()) {
    throw common::InputError("no image has the size of those that the result is of, " +
                             SizeText(result.imageSize) + " pixels");
  }
  if (images.Images().empty()) {
    common::PrintError(std::cerr,
                       "nothing to check the result by: the grid was found in none of the images.");
    std::cerr << images.OtherGridText();
    return common::NO_RESULT;
  }
  ResultCheck check;
  try {
    check = velmora::CheckResult(result, verdict, images.Images(), OptionsFrom(arguments));
  } catch (const std::invalid_argument& fault) {
    common::PrintError(std::cerr, fault, "the check failed");
    return common::NO_RESULT;
  }
  std::cout << TableOf(check, images.Names());
  if (verdict.grade == CalibrationVerdict::Grade::None) {
    std::cout
        << "No verdict lies beside the result: it is taken to be as sure as these images could make it.\n";
  }
  std::cout << check.sentence << "\n" << (check.advice.empty() ? "" : check.advice + "\n");
  return check.Passed() ? common::SUCCESS : common::NO_RESULT;
}

}  // namespace batch
