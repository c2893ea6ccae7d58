/// Opens a source and runs a guided calibration over it.
#include "guided/GuidedRun.h"

#include <atomic>
#include <iostream>
#include <memory>
#include <sstream>

#include "Captures.h"
#include "Display.h"
#include "FrameReader.h"
#include "OneLine.h"
#include "batch/CameraViews.h"
#include "guided/Cameras.h"

namespace guided {

namespace {

constexpr std::chrono::milliseconds QUIT_GRACE{500};
const cv::Size GRID(4, 11);

/// The source, and word of its end: a recording that cannot be read any further.
app::FrameReader::Source TellingOfItsEnd(app::FrameReader::Source source,
                                         const std::shared_ptr<std::atomic<bool>>& ended) {
  return [source = std::move(source), ended](cv::Mat& frame) {
    const bool read = source(frame);
    *ended = !read || frame.empty();
    return read;
  };
}

/// The interactive application begins its lines in capital letters.
std::string InOurForm(const std::string& line) {
  const std::string capitals = "ERROR: ";
  return line.rfind(capitals, 0) == 0 ? "Error: " + line.substr(capitals.size()) : line;
}

}  // namespace

ExitStatus Run(const Arguments& arguments) {
  const app::Settings& settings = arguments.settings;
  batch::CheckJudgedOutput(arguments.output);
  std::cerr << tools::HdistWarning(arguments.hdist);
  const app::SourcePlan plan = app::PlanSources(settings);
  std::ostringstream complaint;
  app::Captures captures = app::OpenCaptures(plan, app::NewVideoCapture, complaint);
  if (captures.empty()) {
    std::cerr << InOurForm(complaint.str());
    if (settings.webcam) std::cerr << CamerasText("/dev", *settings.webcam);
    return UNUSABLE;
  }
  std::string reason;
  if (!DisplayAvailable(&reason)) {
    std::cerr << "Error: " << app::OneLine(reason) << std::endl;
    return UNUSABLE;
  }

  const auto ended = std::make_shared<std::atomic<bool>>(false);
  auto source = TellingOfItsEnd(app::MonocularSource(captures, app::Split::None, app::Camera::None), ended);
  captures.clear();  // they belong to the reader's thread now
  app::FrameReader reader(std::move(source),
                          plan.videoFile ? app::Delivery::EveryFrame : app::Delivery::NewestFrame);
  ExitStatus status = UNUSABLE;
  {
    Calibrator calibrator(GRID, settings.hdist, Calibrator::MONOCULAR, settings.width, settings.height);
    tools::ApplyEngineOptions(arguments, settings.hdist, calibrator);
    app::DesktopScreen screen;
    LoopOptions options;
    options.poses = arguments.poses;
    options.output = arguments.output;
    options.until = arguments.until;
    options.mostPoses = arguments.mostPoses;
    options.strict = arguments.strict;
    options.frame = {settings.width, settings.height};
    options.source = plan.captures.front().name;
    if (plan.videoFile) options.sourceEnded = [ended] { return ended->load(); };
    status = GuidedLoop(calibrator, reader, screen, options, std::cout, std::cerr).Run();
  }
  if (!reader.Stop(QUIT_GRACE)) std::_Exit(status);
  return status;
}

}  // namespace guided
