/// Opens a source and a session, and runs a guided calibration over them.
#include "guided/GuidedRun.h"

#include <chrono>
#include <iostream>
#include <memory>
#include <utility>

#include "Display.h"
#include "common/EngineOptions.h"
#include "common/ExitStatus.h"
#include "common/Hdist.h"
#include "common/Interruption.h"
#include "common/Messages.h"
#include "common/OneLine.h"
#include "common/OutputFiles.h"
#include "common/ResultFile.h"
#include "common/Screen.h"
#include "guided/GuidedLoop.h"
#include "guided/LiveSource.h"
#include "guided/SessionChoice.h"
#include "guided/Tone.h"

namespace guided {

namespace {

/// The time of frames: that of the clock or, of a recording that is not played at its own rate, by their
/// number.
std::function<double()> ClockOf(const Arguments& arguments, const LiveSource& source) {
  if (arguments.fast && source.Kind() == SourceKind::Recording) {
    return [frame = 0, rate = source.FrameRate()]() mutable { return frame++ / rate; };
  }
  return [start = std::chrono::steady_clock::now()] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
}

LoopOptions OptionsOf(const Arguments& arguments, const LiveSource& source) {
  LoopOptions options;
  options.computation = {arguments, GRID, UnitOf(arguments), source.FrameSize(), arguments.model};
  options.poses = arguments.poses;
  options.output = arguments.output;
  options.until = arguments.until;
  options.mostPoses = arguments.mostPoses;
  options.strict = arguments.strict;
  options.endsByItself = arguments.close;
  options.source = source.Name();
  options.remark = [&source] { return source.Remark(); };
  options.sourceEnded = [&source] { return source.State().kind == SourceState::Kind::Ended; };
  options.clock = ClockOf(arguments, source);
  return options;
}

int LoopOver(const Arguments& arguments, LiveSource& source, const common::Interruption& interruption) {
  const size_t cameras = source.IsPair() ? 2 : 1;
  const auto session =
      ChooseSession(arguments, SettingsOf(arguments, source.Name(), source.FrameSize(), cameras), std::cout);
  ShutterTone tone(!arguments.silent);
  LoopOptions options = OptionsOf(arguments, source);
  options.taken = [&tone] { tone.Play(); };
  options.interrupted = [&interruption] { return interruption.Requested(); };
  common::DesktopScreen screen;
  std::unique_ptr<ImagesFeed> feed;
  if (source.IsPair()) {
    feed = std::make_unique<PairImages>(source.Pairs());
  } else {
    feed = std::make_unique<SingleImages>(source.Frames());
  }
  const int status = GuidedLoop(*session, *feed, screen, std::move(options), std::cout, std::cerr).Run();
  return interruption.Requested() ? interruption.ExitStatus() : status;
}

int RunOver(const Arguments& arguments, LiveSource& source, const common::Interruption& interruption) {
  std::string reason;
  if (!DisplayAvailable(&reason)) {
    common::PrintError(std::cerr, common::OneLine(reason));
    return common::UNUSABLE;
  }
  if (source.IsPair() && arguments.model == common::MODEL_FISHEYE) {
    common::PrintError(std::cerr,
                       "a pair of fisheyes cannot be computed here: take the pictures to velmora-batch.");
    return common::UNUSABLE;
  }
  try {
    return LoopOver(arguments, source, interruption);
  } catch (const std::exception& fault) {
    common::PrintError(std::cerr, fault);
    return common::UNUSABLE;
  }
}

void CheckOutputs(const Arguments& arguments, bool pair) {
  common::CheckOutputWithVerdict(arguments.output);
  if (!pair) return;
  common::CheckOutputWithVerdict(arguments.output + "_left");
  common::CheckOutputWithVerdict(arguments.output + "_right");
}

}  // namespace

int Run(const Arguments& arguments) {
  CheckOutputs(arguments, false);
  std::cerr << common::HdistWarning(arguments.hdist);
  const common::Interruption interruption;
  Surroundings around;
  around.interrupted = [&interruption] { return interruption.Requested(); };
  auto source = OpenLiveSource(arguments, around, std::cout, std::cerr);
  if (source == nullptr) return interruption.Requested() ? interruption.ExitStatus() : common::UNUSABLE;
  if (source->IsPair()) CheckOutputs(arguments, true);
  const int status = RunOver(arguments, *source, interruption);
  return Finish(std::move(source), status);
}

}  // namespace guided
