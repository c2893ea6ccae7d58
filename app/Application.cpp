#include "Application.h"

#include <cstdlib>
#include <exception>

#include "Captures.h"
#include "Display.h"
#include "FrameReader.h"
#include "LibraryNoise.h"
#include "MonocularLoop.h"
#include "OneLine.h"
#include "Options.h"
#include "Selection.h"
#include "Sources.h"

namespace app {

namespace {

constexpr int ERROR_STATUS = -1;
constexpr std::chrono::milliseconds QUIT_GRACE{500};

/// Circles per row and rows of the printed sheet.
const cv::Size PATTERN_SIZE(4, 11);

/// Runs the loop; an exception that ends it is reported in one line.
int RunMonocularLoop(const Settings& settings, const SourcePlan& plan, Camera camera, FrameFeed& feed,
                     std::ostream& out, std::ostream& err) {
  try {
    Calibrator calibrator(PATTERN_SIZE, settings.hdist, Calibrator::MONOCULAR, settings.width,
                          settings.height);
    CalibratorEngine engine(calibrator);
    DesktopScreen screen;
    const CaptureRequest& used = camera == Camera::Right ? plan.captures.back() : plan.captures.front();
    const LoopOptions options{settings.model, settings.output, plan.videoFile,
                              cv::Size(settings.width, settings.height), used.name};
    return MonocularLoop(engine, feed, screen, options, out, err).Run();
  } catch (const std::exception& failure) {
    err << "ERROR: " << OneLine(failure.what()) << std::endl;
    return ERROR_STATUS;
  }
}

int CalibrateOneCamera(const Settings& settings, const SourcePlan& plan, Camera camera, std::ostream& out,
                       std::ostream& err) {
  Captures captures = OpenCaptures(plan, NewVideoCapture, err);
  if (captures.empty()) {
    return ERROR_STATUS;
  }
  std::string reason;
  if (!DisplayAvailable(&reason)) {
    err << "ERROR: " << OneLine(reason) << std::endl;
    return ERROR_STATUS;
  }
  FrameReader reader(MonocularSource(captures, settings.split, camera),
                     plan.videoFile ? Delivery::EveryFrame : Delivery::NewestFrame);
  captures.clear();  // From here on they belong to the reader.
  const int status = RunMonocularLoop(settings, plan, camera, reader, out, err);
  if (!reader.Stop(QUIT_GRACE)) {
    std::_Exit(status);
  }
  return status;
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
  if (selection.kind == Calibrator::STEREO) {
    err << "ERROR: stereo calibration is not available yet; use --select to calibrate one camera."
        << std::endl;
    return ERROR_STATUS;
  }
  SilenceLibraries();
  return CalibrateOneCamera(commandLine.settings, plan, selection.camera, out, err);
}

}  // namespace app
