/// The arguments of a run, and what the session goes by that it keeps.
#include "batch/SessionArguments.h"

#include <cmath>
#include <filesystem>
#include <sstream>

#include "batch/InputFiles.h"
#include "batch/RigCameras.h"
#include "batch/SingleSearch.h"
#include "common/EngineOptions.h"
#include "common/LensModels.h"

namespace batch {

namespace {

std::string Text(const cv::Size& size, const std::string& between) {
  return std::to_string(size.width) + between + std::to_string(size.height);
}

std::string Text(double number) {
  std::ostringstream text;
  text << number;
  return text.str();
}

const char* FinderName(int finder) {
  return finder == Calibrator::FINDER_ROBUST ? "robust" : "standard";
}

const char* CentresName(bool fine) {
  return fine ? "fine" : "plain";
}

[[noreturn]] void Refuse(const Arguments& arguments, const std::string& has, const std::string& asked) {
  throw InputError("the session '" + arguments.session + "' has " + has + ", not " + asked +
                   ": another session is needed for that");
}

/// The grid's height of which the unit comes out again, to the last bit where that can be.
float HeightOf(double unit, int rows) {
  const auto intervals = static_cast<float>(rows - 1);
  const auto wanted = static_cast<float>(unit);
  const float near = wanted * intervals;
  for (const float height : {near, std::nextafter(near, 0.0F), std::nextafter(near, 2.0F * near)}) {
    if (height / intervals == wanted) return height;
  }
  return near;
}

void TakeOverGrid(const velmora::SessionSettings& settings, Arguments& arguments) {
  if (arguments.WasGiven("--grid") && arguments.grid != settings.grid) {
    Refuse(arguments, "a grid of " + Text(settings.grid, "x"), Text(arguments.grid, "x"));
  }
  arguments.grid = settings.grid;
  constexpr double SAME = 1e-6;
  const double unit = static_cast<double>(UnitOf(arguments));
  if (arguments.WasGiven("--hdist") && std::abs(unit - settings.unit) > SAME * settings.unit) {
    Refuse(arguments, "rows " + Text(settings.unit) + " m apart", Text(unit) + " m");
  }
  arguments.hdist = HeightOf(settings.unit, settings.grid.height);
}

void TakeOverSearch(const velmora::SessionSettings& settings, Arguments& arguments) {
  if (!settings.finder.empty() && settings.finder != FinderName(arguments.finder)) {
    if (arguments.WasGiven("--finder")) {
      Refuse(arguments, "what the " + settings.finder + " finder found",
             std::string("the ") + FinderName(arguments.finder) + " one");
    }
    arguments.finder =
        settings.finder == "standard" ? Calibrator::FINDER_STANDARD : Calibrator::FINDER_ROBUST;
  }
  if (settings.fineCentres != arguments.fineCentres && arguments.WasGiven("--centres")) {
    Refuse(arguments, std::string(CentresName(settings.fineCentres)) + " centres",
           std::string(CentresName(arguments.fineCentres)) + " ones");
  }
  arguments.fineCentres = settings.fineCentres;
}

/// Which cameras are there; what this tool did not write tells it by their number.
void TakeOverCameras(const velmora::SessionSettings& settings, const std::optional<SearchHeader>& header,
                     Arguments& arguments) {
  const size_t cameras = settings.imageSizes.size();
  if (arguments.HasInputs()) {
    const size_t asked = arguments.Cameras();
    if (asked == cameras) return;
    Refuse(arguments,
           cameras == 1 ? "views of one camera" : "views of " + std::to_string(cameras) + " cameras",
           std::to_string(asked));
  }
  const std::string kind = header ? header->kind : cameras == 1 ? "camera" : cameras == 2 ? "pair" : "rig";
  arguments.pairOfSession = kind == "pair" && cameras == 2;
  if (kind != "rig") return;
  arguments.rigOfSession = true;
  if (header && header->cameras.size() == cameras) arguments.rig = header->cameras;
  for (size_t i = arguments.rig.size(); i < cameras; ++i) arguments.rig.push_back(std::to_string(i));
}

void TakeOverSolving(const velmora::SessionSettings& settings, const std::optional<SearchHeader>& header,
                     Arguments& arguments) {
  if (arguments.modelName.empty() && common::LensModels().count(settings.lensModel) > 0) {
    const bool known = settings.lensModel != "auto" || arguments.Cameras() == 1;
    if (known) arguments.modelName = settings.lensModel;
  }
  if (!arguments.WasGiven("--solver") && !settings.solver.empty()) {
    arguments.solver = settings.solver == "opencv" ? Calibrator::SOLVER_OPENCV : Calibrator::SOLVER_SPARSE;
  }
  if (!arguments.WasGiven("--sheet-shape") && !settings.sheetShape.empty()) {
    common::TakeSheetShape(settings.sheetShape, arguments);
  }
  if (arguments.WasGiven("--disc")) return;
  if (header) {
    arguments.disc = header->disc;
  } else if (settings.discRadius > 0.0) {
    arguments.disc = settings.discRadius;
  }
}

}  // namespace

velmora::SessionSettings SettingsFor(const Arguments& arguments, const std::vector<cv::Size>& frames) {
  velmora::SessionSettings settings;
  settings.grid = arguments.grid;
  settings.unit = static_cast<double>(UnitOf(arguments));
  settings.imageSizes = frames;
  settings.lensModel = arguments.modelName;
  settings.finder = FinderName(arguments.finder);
  settings.solver = arguments.solver == Calibrator::SOLVER_SPARSE ? "sparse" : "opencv";
  settings.discRadius = common::DiscRadius(arguments, UnitOf(arguments));
  settings.sheetShape = common::SheetShapeText(arguments);
  settings.fineCentres = arguments.fineCentres;
  settings.keepsImages = !arguments.noImages;
  for (const auto* inputs : {&arguments.inputs, &arguments.rightInputs, &arguments.rig}) {
    for (const std::string& input : *inputs) settings.source += (settings.source.empty() ? "" : " ") + input;
  }
  return settings;
}

SearchHeader HeaderFor(const Arguments& arguments) {
  SearchHeader header;
  header.kind = arguments.IsRig() ? "rig" : arguments.IsPair() ? "pair" : "camera";
  if (arguments.IsRig()) header.cameras = RigCameraNames(arguments.rig);
  header.parts = arguments.TakesParts();
  header.copies = arguments.keepImages;
  header.frame = arguments.frame;
  header.disc = arguments.disc;
  return header;
}

void TakeOver(const velmora::SessionSettings& settings, const std::optional<SearchHeader>& header,
              Arguments& arguments) {
  TakeOverCameras(settings, header, arguments);
  TakeOverGrid(settings, arguments);
  TakeOverSearch(settings, arguments);
  TakeOverSolving(settings, header, arguments);
  if (arguments.noImages && settings.keepsImages) {
    Refuse(arguments, "images beside its centres", "centres only");
  }
  if (arguments.keepImages && !settings.keepsImages) Refuse(arguments, "centres only", "images, too");
  if (!header) return;
  arguments.keepImages = arguments.keepImages || header->copies;
  if (!arguments.WasGiven("--width")) arguments.frame.width = header->frame.width;
  if (!arguments.WasGiven("--height")) arguments.frame.height = header->frame.height;
  if (arguments.frame != header->frame) {
    Refuse(arguments,
           header->frame.empty() ? "images at their own size"
                                 : "images brought to " + Text(header->frame, " x ") + " pixels",
           Text(arguments.frame, " x "));
  }
  if (!arguments.WasGiven("--whole-grids") && !header->parts &&
      arguments.finder == Calibrator::FINDER_ROBUST && arguments.solver == Calibrator::SOLVER_SPARSE) {
    arguments.wholeGrids = true;
  }
}

void CheckParts(const SearchHeader& header, const Arguments& arguments) {
  if (header.parts == arguments.TakesParts()) return;
  const char* const parts = "views of parts of the grid";
  const char* const whole = "views of whole grids only";
  Refuse(arguments, header.parts ? parts : whole, header.parts ? whole : parts);
}

std::vector<std::string> OutputsToCheck(const Arguments& arguments) {
  std::vector<std::string> outputs = arguments.Outputs();
  std::error_code error;
  if (!arguments.session.empty() && !std::filesystem::exists(arguments.session, error)) {
    outputs.erase(outputs.begin());
  }
  return outputs;
}

}  // namespace batch
