/// The arguments of the guided calibration.
#include "guided/Arguments.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <sstream>

#include "common/CommandLine.h"
#include "common/Numbers.h"
#include "common/OutputFiles.h"
#include "common/SourceOptions.h"

namespace guided {

namespace {

const char* const DESCRIPTION =
    "Calibrates a camera, or a pair: bring the printed 4x11 grid to where the drawn sheet is, pose after "
    "pose; "
    "views are taken and computed from by themselves, and kept as they are taken.";

const char* const FOOTER =
    "Keys in the window: space takes what is in view, also a part of the grid; u takes the last view back, "
    "Enter computes from what is there, s skips a pose, r begins again, v shows the camera without "
    "distortion, "
    "m the map of uncertainty, q ends.\n"
    "Exit status: 0 calibrated, 1 ended before that, 2 wrong usage, unreadable input or no display, 3 with "
    "--strict: calibrated, but the result is worthless; 130 or 143 ended by Ctrl-C or SIGTERM.";

/// "0.3px" or "0.3" as a number of pixels; throws CLI's error otherwise.
double ParsePixels(const std::string& text) {
  std::istringstream stream(text);
  double pixels = 0.0;
  std::string unit;
  if (!(stream >> pixels) || !(pixels > 0.0) || !std::isfinite(pixels) ||
      (stream >> unit && (unit != "px" || stream >> unit))) {
    throw CLI::ValidationError("--until", "'" + text + "' is not a number of pixels such as 0.3px");
  }
  return pixels;
}

/// Raised by --list-cameras, which goes without a source.
class ListingAsked : public CLI::Success {
 public:
  ListingAsked() : CLI::Success("--list-cameras", "", 0) {}
};

void DeclareSource(CLI::App& app, Arguments& arguments) {
  common::SourceSettings& source = arguments.source;
  common::AddSourceOptions(app, source);
  common::AddRightOptions(app, source);
  const std::vector<std::pair<std::string, int>> cameras = {
      {"left", static_cast<int>(common::Camera::Left)}, {"right", static_cast<int>(common::Camera::Right)}};
  app.add_option("--select", arguments.select, "of a pair, the one to calibrate: left or right")
      ->transform(common::OneOf(cameras))
      ->type_name("CAMERA");
  app.add_flag_callback(
      "--list-cameras", [] { throw ListingAsked(); },
      "list the cameras of this machine, with the sizes that they offer, and end");
  common::AddFrameOptions(app, source);
  app.add_flag("--fast", arguments.fast,
               "go through a recording as fast as it can be searched, not at its own rate");
  app.add_flag("--no-sound", arguments.silent, "no tone when a view is taken");
}

/// What goes together only in part.
/// Two cameras that are calibrated together.
bool IsPair(const Arguments& arguments) {
  const common::SourceSettings& source = arguments.source;
  const bool two = source.split != common::Split::None || source.webcamRight || source.videoRight;
  return two && arguments.select == common::Camera::None;
}

void CheckModel(const Arguments& arguments) {
  if (arguments.model == common::MODEL_FISHEYE && arguments.solver != Calibrator::SOLVER_SPARSE)
    throw CLI::ValidationError("--solver", "only the sparse solver computes fisheyes");
  // Before views are taken for nothing.
  if (arguments.model == Calibrator::MODEL_CLASSIC && IsPair(arguments))
    throw CLI::ValidationError("--model", "a pair is computed from cameras of the rational or full model");
}

void CheckSource(const CLI::App& app, Arguments& arguments) {
  const common::SourceSettings& source = arguments.source;
  arguments.sizeGiven = app.count("--width") > 0;
  if (source.webcamRight && source.webcamRight == source.webcam)
    throw CLI::ValidationError("--webcam_right", "it is the camera that --webcam names");
  const bool pair = source.split != common::Split::None || source.webcamRight || source.videoRight;
  if (arguments.select != common::Camera::None && !pair) {
    throw CLI::ValidationError("--select",
                               "there is one camera; --split, --webcam_right or --video_right make two");
  }
}

void DeclareEnd(CLI::App& app, std::string& until, Arguments& arguments) {
  auto* target =
      app.add_option("--until", until,
                     "keep proposing the most informative pose until projections are known to this accuracy "
                     "over the whole image, such as 0.3px")
          ->type_name("PIXELS");
  target->excludes(app.get_option("--poses"));
  app.add_option("--max-poses", arguments.mostPoses, "propose at most this many poses")
      ->check(CLI::Range(6, 1000))
      ->capture_default_str()
      ->needs(target);
}

}  // namespace

float UnitOf(const Arguments& arguments) {
  constexpr float ROW_INTERVALS = 10.0F;
  return arguments.hdist / ROW_INTERVALS;
}

Parsed ParseArguments(int argc, const char* const* argv, const std::string& shippedPoses) {
  Parsed parsed;
  Arguments& arguments = parsed.arguments;
  arguments.poses = shippedPoses;
  std::string until;
  CLI::App app(DESCRIPTION, "velmora-guided");
  common::PrepareCommandLine(app);
  app.footer(FOOTER);
  DeclareSource(app, arguments);
  app.add_option(
         "--hdist", parsed.arguments.hdist,
         "distance in metres across the ten row intervals of the grid (default: 0.2, that of the supplied "
         "sheet)")
      ->check(common::FaultUnlessMetres, "positive")
      ->type_name("METRES");
  app.add_option("--poses", arguments.poses, "model file with the poses to reach")
      ->type_name("FILE")
      ->capture_default_str();
  DeclareEnd(app, until, arguments);
  std::string model = "auto";
  app.add_option("--model", model,
                 "lens model: classic, rational, full, fisheye, or auto: what the views ask for")
      ->check(CLI::IsMember(common::LensModels()))
      ->type_name("NAME")
      ->capture_default_str();
  common::AddEngineOptions(app, arguments);
  app.add_option("--output", arguments.output, "name of the result file, to which .json is added")
      ->type_name("NAME")
      ->capture_default_str();
  app.add_option(
         "--session", arguments.session,
         "folder that keeps every view; one that exists is gone on with (default: a new one beside the "
         "result, NAME.velmora)")
      ->type_name("DIR");
  app.add_flag_callback(
      "--no-images", [&arguments] { arguments.keepImages = false; },
      "keep what was found in the images, not the images themselves");
  app.add_flag("--close", arguments.close,
               "compute when a recording ends, and close the window when the result is saved");
  app.add_flag("--strict", arguments.strict,
               "end with exit status 3 when the verdict on the result is worthless; the files are written "
               "all the same");
  try {
    app.parse(argc, argv);
    CheckSource(app, arguments);
    arguments.output = common::WithoutExtension(arguments.output);
    if (arguments.output.empty() || arguments.output.back() == '/') {
      throw CLI::ValidationError("--output", "a name is needed");
    }
    arguments.model = common::LensModels().at(model);
    CheckModel(arguments);
    common::ReadSheetShape(GRID, UnitOf(arguments), arguments);
    if (app.count("--until") > 0) arguments.until = ParsePixels(until);
    parsed.run = true;
  } catch (const ListingAsked&) {
    parsed.listCameras = true;
  } catch (const CLI::ParseError& error) {
    parsed.exitStatus = common::EndOfParsing(app, error);
  }
  return parsed;
}

std::string ShippedPoses(const std::string& executable) {
  const std::filesystem::path folder = std::filesystem::path(executable).parent_path().parent_path();
  return (folder / "share" / "velmora" / "poses-4x11.json").string();
}

}  // namespace guided
