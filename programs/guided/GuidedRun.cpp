/// Opens a source and runs a guided calibration over it.
#include "guided/GuidedRun.h"

#include <iostream>
#include <utility>

#include "Display.h"
#include "common/EngineOptions.h"
#include "common/ExitStatus.h"
#include "common/Hdist.h"
#include "common/Messages.h"
#include "common/OneLine.h"
#include "common/ResultFile.h"
#include "common/Screen.h"
#include "guided/LiveSource.h"
#include "guided/Tone.h"

namespace guided {

namespace {

LoopOptions OptionsOf(const Arguments& arguments, const LiveSource& source) {
  LoopOptions options;
  options.poses = arguments.poses;
  options.output = arguments.output;
  options.until = arguments.until;
  options.model = arguments.model;
  options.mostPoses = arguments.mostPoses;
  options.strict = arguments.strict;
  options.frame = source.FrameSize();
  options.source = source.Name();
  options.sourceEnded = [&source] { return source.State().kind == SourceState::Kind::Ended; };
  return options;
}

int LoopOver(const Arguments& arguments, LiveSource& source) {
  const float unit = UnitOf(arguments);
  const cv::Size frame = source.FrameSize();
  Calibrator calibrator(GRID, unit, Calibrator::MONOCULAR, frame.width, frame.height);
  common::ApplyEngineOptions(arguments, unit, calibrator);
  calibrator.SetPartialGrids(true);
  Tone tone(!arguments.silent);
  LoopOptions options = OptionsOf(arguments, source);
  options.taken = [&tone] { tone.Play(); };
  common::DesktopScreen screen;
  return GuidedLoop(calibrator, source.Frames(), screen, options, std::cout, std::cerr).Run();
}

int RunOver(const Arguments& arguments, LiveSource& source) {
  std::string reason;
  if (!DisplayAvailable(&reason)) {
    common::PrintError(std::cerr, common::OneLine(reason));
    return common::UNUSABLE;
  }
  if (source.IsPair()) {
    common::PrintError(std::cerr, "one camera is calibrated at a time: add --select left or --select right.");
    return common::UNUSABLE;
  }
  try {
    return LoopOver(arguments, source);
  } catch (const std::exception& fault) {
    common::PrintError(std::cerr, fault);
    return common::UNUSABLE;
  }
}

}  // namespace

int Run(const Arguments& arguments) {
  common::CheckOutputWithVerdict(arguments.output);
  std::cerr << common::HdistWarning(arguments.hdist);
  auto source = OpenLiveSource(arguments, {}, std::cout, std::cerr);
  if (source == nullptr) return common::UNUSABLE;
  const int status = RunOver(arguments, *source);
  return Finish(std::move(source), status);
}

}  // namespace guided
