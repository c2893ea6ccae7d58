/// Renders pictures or a video of the printed sheet, with their truth beside them.
#include <CLI/CLI.hpp>
#include <iostream>
#include <stdexcept>

#include "common/CommandLine.h"
#include "render/Arguments.h"
#include "render/Files.h"
#include "render/OneCamera.h"
#include "render/PrintedSheet.h"
#include "render/Scenes.h"
#include "render/TwoCameras.h"

namespace {

constexpr int USAGE_ERROR = 2;

void Run(const render::Arguments& a) {
  if (a.views == 0 && a.video.empty() && a.sheet.empty()) {
    throw std::invalid_argument("nothing to do: give --views, --video or --sheet");
  }
  if (a.views > 0 && !a.video.empty()) throw std::invalid_argument("give either --views or --video");
  if (!a.follow.empty() && (a.video.empty() || a.rig)) {
    throw std::invalid_argument("--follow goes with the --video of one camera");
  }
  if (!a.video.empty()) render::CheckVideoName(a.video);
  if (!a.sheet.empty()) render::CheckSheetName(a.sheet);
  if (!a.sheet.empty()) {
    render::WriteSheet(a.sheet, render::SheetOf(a));
    std::cout << render::AdviceOn(a.sheet, render::SheetOf(a));
  }
  if (a.views > 0 && a.rig) render::RenderPicturePairs(a);
  if (a.views > 0 && !a.rig) render::RenderPictures(a);
  if (!a.video.empty() && a.rig) render::RenderVideoPair(a);
  if (!a.video.empty() && !a.rig) render::RenderVideo(a);
}

}  // namespace

int main(int argc, char** argv) {
  render::Arguments arguments;
  CLI::App app("Renders pictures of the printed circles grid with known truth.", "velmora-render");
  tools::PrepareCommandLine(app);
  render::Declare(app, arguments);
  try {
    app.parse(argc, argv);
    Run(arguments);
    return 0;
  } catch (const CLI::ParseError& error) {
    return tools::EndOfParsing(app, error);
  } catch (const std::exception& fault) {
    std::cerr << "Error: " << fault.what() << ".\n";
    return USAGE_ERROR;
  }
}
