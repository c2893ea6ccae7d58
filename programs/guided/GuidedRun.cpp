/// Opens a source and runs a guided calibration over it.
#include "guided/GuidedRun.h"

#include <atomic>
#include <iostream>
#include <memory>

#include "Display.h"
#include "common/Captures.h"
#include "common/EngineOptions.h"
#include "common/ExitStatus.h"
#include "common/FrameFeed.h"
#include "common/FrameReader.h"
#include "common/Hdist.h"
#include "common/LiveRun.h"
#include "common/Messages.h"
#include "common/OneLine.h"
#include "common/ResultFile.h"
#include "common/Screen.h"
#include "common/SourceSettings.h"
#include "common/Sources.h"
#include "guided/Cameras.h"

namespace guided {

namespace {

/// The source, and word of its end: a recording that cannot be read any further.
common::FrameReader::Source TellingOfItsEnd(common::FrameReader::Source source,
                                            const std::shared_ptr<std::atomic<bool>>& ended) {
  return [source = std::move(source), ended](cv::Mat& frame) {
    const bool read = source(frame);
    *ended = !read || frame.empty();
    return read;
  };
}

int LoopOver(const Arguments& arguments, const LoopOptions& options, common::FrameFeed& feed) {
  const common::SourceSettings& source = arguments.source;
  const float unit = UnitOf(arguments);
  Calibrator calibrator(GRID, unit, Calibrator::MONOCULAR, source.width, source.height);
  common::ApplyEngineOptions(arguments, unit, calibrator);
  calibrator.SetPartialGrids(true);
  common::DesktopScreen screen;
  return GuidedLoop(calibrator, feed, screen, options, std::cout, std::cerr).Run();
}

}  // namespace

int Run(const Arguments& arguments) {
  common::CheckOutputWithVerdict(arguments.output);
  std::cerr << common::HdistWarning(arguments.hdist);
  const common::SourcePlan plan = common::PlanSources(arguments.source);
  common::Captures captures = common::OpenCaptures(plan, common::NewVideoCapture, std::cerr);
  if (captures.empty()) {
    if (arguments.source.webcam) std::cerr << CamerasText("/dev", *arguments.source.webcam);
    return common::UNUSABLE;
  }
  std::string reason;
  if (!DisplayAvailable(&reason)) {
    common::PrintError(std::cerr, common::OneLine(reason));
    return common::UNUSABLE;
  }

  const auto ended = std::make_shared<std::atomic<bool>>(false);
  auto source =
      TellingOfItsEnd(common::MonocularSource(captures, common::Split::None, common::Camera::None), ended);
  captures.clear();  // they belong to the reader's thread now
  LoopOptions options;
  options.poses = arguments.poses;
  options.output = arguments.output;
  options.until = arguments.until;
  options.model = arguments.model;
  options.mostPoses = arguments.mostPoses;
  options.strict = arguments.strict;
  options.frame = {arguments.source.width, arguments.source.height};
  options.source = plan.captures.front().name;
  if (plan.videoFile) options.sourceEnded = [ended] { return ended->load(); };
  const auto loop = [&](common::FrameFeed& feed) { return LoopOver(arguments, options, feed); };
  return common::RunOver<common::FrameReader>(std::move(source), common::DeliveryOf(plan), loop,
                                              common::UNUSABLE, std::cerr);
}

}  // namespace guided
