/// The application as a whole: command line, sources, window, loop.
#include "Application.h"

#include <cstdlib>
#include <exception>
#include <utility>

#include "Captures.h"
#include "Display.h"
#include "FrameReader.h"
#include "LibraryNoise.h"
#include "MonocularLoop.h"
#include "OneLine.h"
#include "Options.h"
#include "Selection.h"
#include "Sources.h"
#include "StereoLoop.h"

namespace app {

namespace {

constexpr int ERROR_STATUS = -1;
constexpr std::chrono::milliseconds QUIT_GRACE{500};
/// No frame has longer sides.
constexpr int LONGEST_SIDE = 32767;

/// Circles per row and rows of the printed sheet.
const cv::Size PATTERN_SIZE(4, 11);

bool IsFrameSize(int width, int height) {
  return width > 0 && height > 0 && width <= LONGEST_SIDE && height <= LONGEST_SIDE;
}

LoopOptions OptionsOf(const Settings& settings, const SourcePlan& plan, const CaptureRequest& source) {
  return {settings.model, settings.output, plan.videoFile, cv::Size(settings.width, settings.height),
          source.name};
}

int LoopOverOneCamera(const Settings& settings, const SourcePlan& plan, Camera camera, FrameFeed& feed,
                      std::ostream& out, std::ostream& err) {
  Calibrator calibrator(PATTERN_SIZE, settings.hdist, Calibrator::MONOCULAR, settings.width, settings.height);
  CalibratorEngine engine(calibrator);
  DesktopScreen screen;
  const CaptureRequest& used = camera == Camera::Right ? plan.captures.back() : plan.captures.front();
  return MonocularLoop(engine, feed, screen, OptionsOf(settings, plan, used), out, err).Run();
}

int LoopOverPair(const Settings& settings, const SourcePlan& plan, PairFeed& feed, std::ostream& out,
                 std::ostream& err) {
  Calibrator calibrator(PATTERN_SIZE, settings.hdist, Calibrator::STEREO, settings.width, settings.height);
  StereoCalibratorEngine engine(calibrator, *settings.calibLeft, *settings.calibRight);
  DesktopScreen screen;
  return StereoLoop(engine, feed, screen, OptionsOf(settings, plan, plan.captures.front()), out, err).Run();
}

/// Runs a loop over a reader of the source. An exception that ends it is reported in one line; a reader that
/// is stuck in its source ends the process without waiting for it.
template <typename Reader, typename Loop>
int RunOver(typename Reader::Source source, bool videoFile, const Loop& loop, std::ostream& err) {
  Reader reader(std::move(source), videoFile ? Delivery::EveryFrame : Delivery::NewestFrame);
  int status = ERROR_STATUS;
  try {
    status = loop(reader);
  } catch (const std::exception& failure) {
    err << "ERROR: " << OneLine(failure.what()) << std::endl;
  }
  if (!reader.Stop(QUIT_GRACE)) {
    std::_Exit(status);
  }
  return status;
}

/// The captures pass to the reader's thread, which also closes them: closing may hang as reading may.
int CalibrateFrom(Captures captures, const Settings& settings, const SourcePlan& plan,
                  const Selection& selection, std::ostream& out, std::ostream& err) {
  if (selection.kind == Calibrator::STEREO) {
    auto source = StereoSource(captures, settings.split);
    captures.clear();
    const auto loop = [&](PairFeed& feed) { return LoopOverPair(settings, plan, feed, out, err); };
    return RunOver<PairReader>(std::move(source), plan.videoFile, loop, err);
  }
  auto source = MonocularSource(captures, settings.split, selection.camera);
  captures.clear();
  const auto loop = [&](FrameFeed& feed) {
    return LoopOverOneCamera(settings, plan, selection.camera, feed, out, err);
  };
  return RunOver<FrameReader>(std::move(source), plan.videoFile, loop, err);
}

}  // namespace

int RunApplication(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  const CommandLine commandLine = ReadCommandLine(arguments, out, err);
  if (commandLine.exitStatus) {
    return *commandLine.exitStatus;
  }
  const SourcePlan plan = PlanSources(commandLine.settings);
  const Selection selection = SelectCameras(commandLine.settings, plan.stereo, err);
  if (selection.exitStatus) {
    return *selection.exitStatus;
  }
  if (!IsFrameSize(commandLine.settings.width, commandLine.settings.height)) {
    err << "ERROR: '--width' and '--height' take whole numbers from 1 to " << LONGEST_SIDE << "."
        << std::endl;
    return ERROR_STATUS;
  }
  SilenceLibraries();
  Captures captures = OpenCaptures(plan, NewVideoCapture, err);
  if (captures.empty()) {
    return ERROR_STATUS;
  }
  std::string reason;
  if (!DisplayAvailable(&reason)) {
    err << "ERROR: " << OneLine(reason) << std::endl;
    return ERROR_STATUS;
  }
  return CalibrateFrom(std::move(captures), commandLine.settings, plan, selection, out, err);
}

}  // namespace app
