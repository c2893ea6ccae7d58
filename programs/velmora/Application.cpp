/// The application as a whole: command line, sources, window, loop.
#include "velmora/Application.h"

#include <cstdlib>
#include <exception>
#include <utility>

#include "Display.h"
#include "common/Captures.h"
#include "common/ExitStatus.h"
#include "common/FrameFeed.h"
#include "common/FrameReader.h"
#include "common/LibraryNoise.h"
#include "common/LiveRun.h"
#include "common/Messages.h"
#include "common/OneLine.h"
#include "common/Screen.h"
#include "common/SourceSettings.h"
#include "common/Sources.h"
#include "velmora/MonocularLoop.h"
#include "velmora/Options.h"
#include "velmora/Selection.h"
#include "velmora/StereoLoop.h"

namespace app {

namespace {

/// No frame has longer sides.
constexpr int LONGEST_SIDE = 32767;

/// Circles per row and rows of the printed sheet.
const cv::Size PATTERN_SIZE(4, 11);

bool IsFrameSize(int width, int height) {
  return width > 0 && height > 0 && width <= LONGEST_SIDE && height <= LONGEST_SIDE;
}

LoopOptions OptionsOf(const Settings& settings, const common::SourcePlan& plan,
                      const common::CaptureRequest& source) {
  return {settings.model, settings.output, plan.videoFile, cv::Size(settings.width, settings.height),
          source.name};
}

int LoopOverOneCamera(const Settings& settings, const common::SourcePlan& plan, common::Camera camera,
                      common::FrameFeed& feed, std::ostream& out, std::ostream& err) {
  Calibrator calibrator(PATTERN_SIZE, settings.hdist, Calibrator::MONOCULAR, settings.width, settings.height);
  CalibratorEngine engine(calibrator);
  common::DesktopScreen screen;
  const common::CaptureRequest& used =
      camera == common::Camera::Right ? plan.captures.back() : plan.captures.front();
  return MonocularLoop(engine, feed, screen, OptionsOf(settings, plan, used), out, err).Run();
}

int LoopOverPair(const Settings& settings, const common::SourcePlan& plan, common::PairFeed& feed,
                 std::ostream& out, std::ostream& err) {
  Calibrator calibrator(PATTERN_SIZE, settings.hdist, Calibrator::STEREO, settings.width, settings.height);
  StereoCalibratorEngine engine(calibrator, *settings.calibLeft, *settings.calibRight);
  common::DesktopScreen screen;
  return StereoLoop(engine, feed, screen, OptionsOf(settings, plan, plan.captures.front()), out, err).Run();
}

/// The captures pass to the reader's thread, which also closes them: closing may hang as reading may.
int CalibrateFrom(common::Captures captures, const Settings& settings, const common::SourcePlan& plan,
                  const Selection& selection, std::ostream& out, std::ostream& err) {
  if (selection.kind == Calibrator::STEREO) {
    auto source = common::StereoSource(captures, settings.split);
    captures.clear();
    const auto loop = [&](common::PairFeed& feed) { return LoopOverPair(settings, plan, feed, out, err); };
    return common::RunOver<common::PairReader>(std::move(source), common::DeliveryOf(plan), loop,
                                               common::APPLICATION_FAILED, err);
  }
  auto source = common::MonocularSource(captures, settings.split, selection.camera);
  captures.clear();
  const auto loop = [&](common::FrameFeed& feed) {
    return LoopOverOneCamera(settings, plan, selection.camera, feed, out, err);
  };
  return common::RunOver<common::FrameReader>(std::move(source), common::DeliveryOf(plan), loop,
                                              common::APPLICATION_FAILED, err);
}

}  // namespace

int RunApplication(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  const CommandLine commandLine = ReadCommandLine(arguments, out, err);
  if (commandLine.exitStatus) return *commandLine.exitStatus;
  const common::SourcePlan plan = common::PlanSources(commandLine.settings);
  const Selection selection = SelectCameras(commandLine.settings, plan.stereo, err);
  if (selection.exitStatus) return *selection.exitStatus;
  if (!IsFrameSize(commandLine.settings.width, commandLine.settings.height)) {
    common::PrintError(
        err, "'--width' and '--height' take whole numbers from 1 to " + std::to_string(LONGEST_SIDE) + ".");
    return common::APPLICATION_FAILED;
  }
  common::SilenceLibraries();
  common::Captures captures = common::OpenCaptures(plan, common::NewVideoCapture, err);
  if (captures.empty()) return common::APPLICATION_FAILED;
  std::string reason;
  if (!DisplayAvailable(&reason)) {
    common::PrintError(err, common::OneLine(reason));
    return common::APPLICATION_FAILED;
  }
  return CalibrateFrom(std::move(captures), commandLine.settings, plan, selection, out, err);
}

}  // namespace app
