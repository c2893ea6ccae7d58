/// The arguments of the headless tool.
#include "batch/Arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <regex>
#include <thread>

#include "Calibrator.h"
#include "batch/SingleSearch.h"
#include "common/CommandLine.h"
#include "common/LensModels.h"
#include "common/Numbers.h"
#include "common/OutputFiles.h"
#include "common/SourceOptions.h"

namespace batch {

namespace {

constexpr int MAX_GRID_SIDE = 100;
constexpr int MAX_THREADS = 256;

const char* const DESCRIPTION =
    "Calibrates a camera, a pair or a rig of them, from pictures of a printed asymmetric circles grid, "
    "without a "
    "display.\n"
    "Inputs are images, folders of images, patterns (quote them), video files or stream URLs.";

const char* const EXIT_STATUSES =
    "Exit status: 0 calibrated (or recorded, or listed, or with --check still calibrated), 1 too few views "
    "held "
    "the grid (with --check: no longer calibrated, or the images do not tell), 2 wrong usage or unreadable "
    "input, 3 with --strict: calibrated, but the result is worthless, 130 interrupted by Ctrl-C, 143 by "
    "SIGTERM.";

/// "4x11" as a size; throws CLI's error otherwise.
cv::Size ParseGrid(const std::string& text) {
  std::smatch parts;
  static const std::regex pattern("([1-9][0-9]{0,2})x([1-9][0-9]{0,2})");
  if (!std::regex_match(text, parts, pattern)) {
    throw CLI::ValidationError("--grid", "'" + text + "' is not of the form COLSxROWS, such as 4x11");
  }
  const cv::Size grid(std::stoi(parts[1]), std::stoi(parts[2]));
  if (grid.width < 2 || grid.height < 2 || grid.width > MAX_GRID_SIDE || grid.height > MAX_GRID_SIDE) {
    throw CLI::ValidationError("--grid", "each side must be 2 to 100 circles");
  }
  return grid;
}

/// What is calibrated, and in which frames.
void AddCameraOptions(CLI::App& app, std::string& grid, Arguments& arguments) {
  app.add_option("inputs", arguments.inputs, "images, folders, patterns, videos, URLs");
  app.add_option(
         "--hdist", arguments.hdist,
         "distance in metres across the row intervals of the grid, ten of them in 4x11 (default: 0.2, "
         "that of the supplied sheet)")
      ->check(common::FaultUnlessMetres, "positive")
      ->type_name("METRES");
  app.add_option(
         "--model", arguments.modelName,
         "lens model: classic, rational, full, fisheye, or auto: what the views ask for (default: auto "
         "for one camera, rational for several)")
      ->check(CLI::IsMember(common::LensModels()))
      ->type_name("NAME");
  app.add_option("--width", arguments.frame.width, "processing width (default: that of the input)")
      ->check(CLI::Range(16, 32000))
      ->type_name("PIXELS");
  app.add_option("--height", arguments.frame.height, "processing height (default: that of the input)")
      ->check(CLI::Range(16, 32000))
      ->type_name("PIXELS");
  app.add_option("--grid", grid, "circles per row and rows, each 2 to 100")
      ->type_name("COLSxROWS")
      ->capture_default_str();
}

/// Which views are used, and where the outcome goes.
void AddViewOptions(CLI::App& app, Arguments& arguments) {
  app.add_flag(
      "--whole-grids", arguments.wholeGrids,
      "use no views of a part of the grid; with the robust finder and the sparse solver, three quarters "
      "of the circles are a view");
  app.add_option("--max-views", arguments.maxViews, "use at most so many views, chosen to be spread")
      ->check(CLI::Range(5, 10000))
      ->capture_default_str();
  app.add_option(
         "--output", arguments.output,
         "name of the result file, to which .json is added; those of a pair's cameras get _left and _right, "
         "that of a rig gets _rig")
      ->type_name("NAME")
      ->capture_default_str();
  app.add_option("--every", arguments.sampling.every,
                 "take every N-th frame of a video (default: about 150 of a file)")
      ->check(common::FaultUnlessPositive, "positive");
  app.add_option("--max-frames", arguments.sampling.maxFrames,
                 "frames taken at most of a stream, 0 for no limit")
      ->check(common::FaultIfNegative, "not negative")
      ->capture_default_str();
  app.add_option(
         "--threads", arguments.threads,
         "threads that read and search images; two images of each camera are in memory for each, however "
         "many there are, and results do not depend on it (default: as many as there are cores)")
      ->check(CLI::Range(1, MAX_THREADS));
  app.add_flag("--strict", arguments.strict,
               "end with exit status 3 when the verdict on the result is worthless; the files are written "
               "all the same");
  app.add_option("--record-model", arguments.recordModel,
                 "instead of calibrating, write a pose model of the assistant: one pose for each image that "
                 "shows the grid, in their order")
      ->type_name("FILE");
}

void AddPairOptions(CLI::App& app, Arguments& arguments) {
  auto* right = app.add_option("--right", arguments.rightInputs,
                               "the right camera of a pair: as many images, in the same order, or a video")
                    ->type_name("INPUT");
  common::AddSplitOption(app, arguments.split)->excludes(right);
  auto* calibLeft =
      app.add_option("--calib_left", arguments.calibLeft,
                     "result file of the left camera (default: calibrated first, from the same images)")
          ->type_name("FILE");
  auto* calibRight = app.add_option("--calib_right", arguments.calibRight, "result file of the right camera")
                         ->type_name("FILE");
  app.add_flag("--refine-lenses", arguments.refineLenses,
               "refine both lenses of a pair together with it, from the common views; the pair's result file "
               "then holds them");
  calibLeft->needs(calibRight);
  calibRight->needs(calibLeft);
}

void AddRigOptions(CLI::App& app, Arguments& arguments) {
  const std::vector<std::pair<std::string, int>> ways = {{"order", static_cast<int>(Match::Order)},
                                                         {"names", static_cast<int>(Match::Names)}};
  auto* rig = app.add_option("--rig", arguments.rig,
                             "cameras that are fixed to each other, two or more: an input of each, such as a "
                             "folder; the first defines the frame of the rig")
                  ->type_name("INPUT");
  app.add_option("--match", arguments.match,
                 "which images of a rig belong together: order (as many of each camera) or names (those "
                 "whose names differ from their camera's other images by the same part, such as a number; a "
                 "camera may have missed some) (default: order)")
      ->transform(common::OneOf(ways))
      ->type_name("WAY")
      ->needs(rig);
  app.add_option("--intrinsics", arguments.intrinsics,
                 "result files of the cameras of a rig, in their order, which are held (default: estimated "
                 "together with the rig)")
      ->type_name("FILE")
      ->needs(rig);
}

void AddSessionOptions(CLI::App& app, Arguments& arguments) {
  auto* session =
      app.add_option(
             "--session", arguments.session,
             "folder that keeps what is found in each image as soon as it is found, made when it is "
             "not there: a run that was interrupted goes on with it, and only images that it does not "
             "know are searched; without inputs the result is computed from it")
          ->type_name("DIR");
  auto* keep = app.add_flag("--keep-images", arguments.keepImages,
                            "keep copies of the images in the session (default: where they are)");
  app.add_flag("--no-images", arguments.noImages, "keep centres only, and not where the images are")
      ->needs(session)
      ->excludes(keep);
  keep->needs(session);
  app.add_option("--exclude", arguments.excluded,
                 "leave a view of the session out, by its name or number in the list; may be given several "
                 "times")
      ->type_name("NAME")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->needs(session);
  app.add_option("--include", arguments.included, "take such a view in again; may be given several times")
      ->type_name("NAME")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->needs(session);
  app.add_flag(
         "--list", arguments.list,
         "instead of calibrating, list the views of the session: number, name, decision, RMS in the last "
         "result, what was rejected and why, size on the disk")
      ->needs(session);
}

/// What a rig cannot be combined with, or lacks.
void CheckRig(const Arguments& arguments) {
  const std::vector<std::pair<std::string, bool>> others = {
      {"--right", !arguments.rightInputs.empty()},
      {"--split", arguments.split != common::Split::None},
      {"--calib_left", !arguments.calibLeft.empty()},
      {"--refine-lenses", arguments.refineLenses},
      {"--record-model", !arguments.recordModel.empty()}};
  for (const auto& [option, given] : others) {
    if (given) throw CLI::ExcludesError(option, "--rig");
  }
  if (!arguments.inputs.empty()) {
    throw CLI::ValidationError(
        "--rig", "all cameras are named after it, but '" + arguments.inputs.front() + "' is not");
  }
  if (arguments.rig.size() < 2)
    throw CLI::ValidationError("--rig", "inputs of at least two cameras are needed");
  if (arguments.model == common::MODEL_AUTO) {
    throw CLI::ValidationError("--model",
                               "auto is for one camera; a rig takes classic, rational, full or fisheye");
  }
  if (arguments.solver != Calibrator::SOLVER_SPARSE) {
    throw CLI::ValidationError("--solver", "only the sparse solver computes rigs");
  }
  if (!arguments.intrinsics.empty() && arguments.intrinsics.size() != arguments.rig.size()) {
    throw CLI::ValidationError("--intrinsics", "a file for each camera is needed: there are " +
                                                   std::to_string(arguments.rig.size()) + " cameras and " +
                                                   std::to_string(arguments.intrinsics.size()) +
                                                   (arguments.intrinsics.size() == 1 ? " file" : " files"));
  }
}

/// What does not go with a session.
void CheckSession(const Arguments& arguments) {
  if (arguments.WasGiven("--session") && arguments.session.empty()) {
    throw CLI::ValidationError("--session", "a name is needed");
  }
  if (arguments.session.empty()) return;
  if (!arguments.recordModel.empty()) throw CLI::ExcludesError("--record-model", "--session");
  if (arguments.list && arguments.HasInputs()) {
    throw CLI::ValidationError("--list", "what the session has is listed, without inputs");
  }
}

/// What the options cannot say of each other by themselves.
void CheckTogether(const Arguments& arguments) {
  if (arguments.inputs.empty() && !arguments.IsRig() && arguments.session.empty()) {
    throw CLI::RequiredError("inputs");
  }
  CheckSession(arguments);
  if (arguments.output.empty() || arguments.output.back() == '/') {
    throw CLI::ValidationError("--output", "a name is needed");
  }
  if (arguments.IsRig()) return CheckRig(arguments);
  if (!arguments.recordModel.empty() && arguments.IsPair()) {
    throw CLI::ValidationError("--record-model", "poses are recorded from one camera");
  }
  if (!arguments.calibLeft.empty() && !arguments.IsPair()) {
    throw CLI::ValidationError("--calib_left", "a pair is needed: --right or --split");
  }
  if (arguments.refineLenses && !arguments.IsPair()) {
    throw CLI::ValidationError("--refine-lenses", "a pair is needed: --right or --split");
  }
  if (arguments.refineLenses && arguments.solver != Calibrator::SOLVER_SPARSE) {
    throw CLI::ValidationError("--refine-lenses", "only the sparse solver refines lenses");
  }
  if (arguments.IsPair() && arguments.model == common::MODEL_FISHEYE) {
    throw CLI::ValidationError("--model", "a pair of fisheyes is a rig: name both cameras after --rig");
  }
  if (arguments.IsPair() && arguments.model < 0) {
    throw CLI::ValidationError(
        "--model", arguments.modelName + " is for one camera; a pair needs the rational or full model");
  }
  if (arguments.model == common::MODEL_FISHEYE && arguments.solver != Calibrator::SOLVER_SPARSE) {
    throw CLI::ValidationError("--solver", "only the sparse solver computes fisheyes");
  }
  if (arguments.IsPair() && arguments.calibLeft.empty() && arguments.model == Calibrator::MODEL_CLASSIC) {
    throw CLI::ValidationError("--model", "a pair is computed from cameras of the rational or full model");
  }
}

/// Pairs need the rational model or a larger one; rigs compare none.
const char* DefaultModel(const Arguments& arguments) {
  return arguments.IsPair() || arguments.IsRig() ? "rational" : "auto";
}

}  // namespace

std::vector<std::string> Arguments::Outputs() const {
  if (session.empty()) return {output};
  std::vector<std::string> outputs = {session + "/calibration"};
  if (WasGiven("--output")) outputs.push_back(output);
  return outputs;
}

int Arguments::Threads() const {
  if (threads > 0) return threads;
  return static_cast<int>(std::clamp<unsigned>(std::thread::hardware_concurrency(), 1, MAX_THREADS));
}

Parsed ParseArguments(int argc, char** argv, const std::function<void(Arguments&)>& settle) {
  Parsed parsed;
  Arguments& arguments = parsed.arguments;
  std::string grid = "4x11";
  CLI::App app(DESCRIPTION, "velmora-batch");
  common::PrepareCommandLine(app);
  app.footer(EXIT_STATUSES);
  AddCameraOptions(app, grid, arguments);
  AddViewOptions(app, arguments);
  common::AddEngineOptions(app, arguments);
  AddPairOptions(app, arguments);
  AddRigOptions(app, arguments);
  AddCheckOptions(app, arguments.check);
  AddSessionOptions(app, arguments);
  try {
    app.parse(argc, argv);
    CheckExclusions(app);
    for (const CLI::Option* option : app.get_options()) {
      if (option->count() > 0) arguments.given.insert(option->get_name());
    }
    arguments.grid = ParseGrid(grid);
    while (arguments.session.size() > 1 && arguments.session.back() == '/') arguments.session.pop_back();
    if (settle && !arguments.session.empty()) settle(arguments);
    if (arguments.modelName.empty()) arguments.modelName = DefaultModel(arguments);
    arguments.model = common::LensModels().at(arguments.modelName);
    arguments.output = common::WithoutExtension(arguments.output);
    CheckTogether(arguments);
    common::ReadSheetShape(arguments.grid, UnitOf(arguments), arguments);
    parsed.run = true;
  } catch (const CLI::ParseError& error) {
    parsed.exitStatus = common::EndOfParsing(app, error, "nothing to do: name images, a folder or a video");
  }
  return parsed;
}

}  // namespace batch
