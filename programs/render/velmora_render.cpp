/// Renders pictures or a video of the printed sheet, with their truth beside them.
#include <CLI/CLI.hpp>
#include <iostream>
#include <stdexcept>

#include "common/CommandLine.h"
#include "common/ExitStatus.h"
#include "common/Messages.h"
#include "render/Arguments.h"
#include "render/Files.h"
#include "render/ManyCameras.h"
#include "render/OneCamera.h"
#include "render/PrintedSheet.h"
#include "render/Scenes.h"
#include "render/TwoCameras.h"

namespace {

/// Refuses what goes only with a pair, or only with a number of cameras.
void CheckRig(const render::Arguments& a) {
  const auto refuse = [](const std::string& option, const std::string& what) {
    throw std::invalid_argument(option + " goes only with " + what);
  };
  const std::string many = "--rig and a number of cameras, such as --rig 3";
  const std::string pair = "a pair: --rig without a number";
  if (a.cameras == 0) {
    if (a.ring) refuse("--ring", many);
    if (a.leaveOutEmpty) refuse("--leave-out-empty", many);
    return;
  }
  if (!a.video.empty()) throw std::invalid_argument("--rig with a number of cameras makes no --video");
  if (a.toeIn) refuse("--toe-in", pair);
  if (!a.rightDistortion.empty()) refuse("--dist-right", pair);
  if (!a.combine.empty()) refuse("--combine", pair);
}

/// Refuses what says two things of one lens.
void CheckLens(const render::Arguments& a) {
  if (!a.IsFisheye()) return;
  if (a.fieldOfView) throw std::invalid_argument("--fov is of a pinhole; --fisheye says what a fisheye sees");
  if (!a.distortion.empty() || !a.rightDistortion.empty()) {
    const std::string option = a.distortion.empty() ? "--dist-right" : "--dist";
    throw std::invalid_argument(option +
                                " is of a pinhole; the coefficients of a fisheye are --fisheye-dist");
  }
  if (a.fisheye && a.fx) throw std::invalid_argument("give either --fisheye or --fx");
  if (!a.fisheye && !a.fx) {
    throw std::invalid_argument(
        "--fisheye-dist needs the field of view, --fisheye, or the focal length, --fx");
  }
}

void RenderViews(const render::Arguments& a) {
  if (a.cameras > 0) return render::RenderRigPictures(a);
  if (a.rig) return render::RenderPicturePairs(a);
  render::RenderPictures(a);
}

void Run(const render::Arguments& a) {
  if (a.views == 0 && a.video.empty() && a.sheet.empty()) {
    throw std::invalid_argument("nothing to do: give --views, --video or --sheet");
  }
  if (a.views > 0 && !a.video.empty()) throw std::invalid_argument("give either --views or --video");
  if (!a.follow.empty() && (a.video.empty() || a.rig)) {
    throw std::invalid_argument("--follow goes with the --video of one camera");
  }
  CheckRig(a);
  CheckLens(a);
  if (!a.video.empty()) render::CheckVideoName(a.video);
  if (!a.sheet.empty()) render::CheckSheetName(a.sheet);
  if (!a.sheet.empty()) {
    render::WriteSheet(a.sheet, render::SheetOf(a));
    std::cout << render::AdviceOn(a.sheet, render::SheetOf(a));
  }
  if (a.views > 0) RenderViews(a);
  if (!a.video.empty() && a.rig) render::RenderVideoPair(a);
  if (!a.video.empty() && !a.rig) render::RenderVideo(a);
}

}  // namespace

int main(int argc, char** argv) {
  render::Arguments arguments;
  CLI::App app("Renders pictures of the printed circles grid with known truth.", "velmora-render");
  common::PrepareCommandLine(app);
  render::Declare(app, arguments);
  try {
    app.parse(argc, argv);
    Run(arguments);
    return common::SUCCESS;
  } catch (const CLI::ParseError& error) {
    return common::EndOfParsing(app, error);
  } catch (const std::exception& fault) {
    common::PrintError(std::cerr, fault);
    return common::UNUSABLE;
  }
}
