/// The options of a check of an earlier result.
#include "batch/CheckOptions.h"

#include <CLI/CLI.hpp>

#include "common/Numbers.h"

namespace batch {

namespace {

/// Of calibrations, of pairs and of rigs.
const char* const OTHERS[] = {"--model",         "--width",  "--height",       "--max-views",
                              "--output",        "--strict", "--record-model", "--solver",
                              "--right",         "--split",  "--calib_left",   "--calib_right",
                              "--refine-lenses", "--rig",    "--match",        "--intrinsics"};

}  // namespace

void AddCheckOptions(CLI::App& app, CheckArguments& arguments) {
  auto* check =
      app.add_option("--check", arguments.result,
                     "instead of calibrating, tell whether the camera of this result file (NAME.json or "
                     "NAME_fisheye.json) is still as it was; its verdict file is used where it lies "
                     "beside it")
          ->type_name("FILE");
  app.add_option(
         "--tolerance", arguments.tolerance,
         "pixels by which projections may have moved in a check (default: 0.05, or what the verdict on "
         "the result says that they are off by)")
      ->check(common::FaultUnlessPositive, "positive")
      ->type_name("PIXELS")
      ->needs(check);
}

void CheckExclusions(const CLI::App& app) {
  if (app.count("--check") == 0) return;
  if (app.get_option("--check")->as<std::string>().empty())
    throw CLI::ValidationError("--check", "a result file is needed");
  const CLI::Option* const sheet = app.get_option("--sheet-shape");
  for (const char* shape : {"flat", "bent", "free"}) {
    if (sheet->count() > 0 && sheet->as<std::string>() == shape) {
      throw CLI::ValidationError("--sheet-shape",
                                 "a check takes the sheet as the images show it: auto, or a verdict file");
    }
  }
  for (const char* other : OTHERS) {
    if (app.count(other) == 0) continue;
    const std::string option = other;
    if (option == "--right" || option == "--split" || option == "--rig") {
      throw CLI::ValidationError("--check",
                                 "one camera is checked at a time; of a pair or a rig check each by itself");
    }
    throw CLI::ExcludesError(option, "--check");
  }
}

}  // namespace batch
