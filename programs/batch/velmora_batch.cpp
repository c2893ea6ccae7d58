/// velmora-batch: calibrates a camera, a pair or a rig from images, without a display.
#include <iostream>

#include "Calibration.h"
#include "batch/Batch.h"
#include "batch/CheckBatch.h"
#include "batch/KeptSession.h"
#include "batch/ModelRecording.h"
#include "batch/PairBatch.h"
#include "batch/RigBatch.h"
#include "common/ExitStatus.h"
#include "common/Hdist.h"
#include "common/InputError.h"
#include "common/Interruption.h"
#include "common/LibraryNoise.h"
#include "common/Messages.h"

namespace {

/// What the command line asks for; the exit status.
int Run(int argc, char** argv, const common::Interruption& interruption) {
  batch::KeptSession session;
  batch::Parsed parsed =
      batch::ParseArguments(argc, argv, [&session](batch::Arguments& arguments) { session.Open(arguments); });
  if (!parsed.run) return parsed.exitStatus;
  batch::Arguments& arguments = parsed.arguments;
  std::cerr << common::HdistWarning(arguments.hdist);
  Calibration::SetLogLevel(1);
  batch::RunContext context;
  context.interruption = &interruption;
  if (!arguments.session.empty()) {
    session.Begin(arguments);
    context.session = &session;
  }
  if (arguments.list) {
    session.PrintList();
    return common::SUCCESS;
  }
  if (arguments.check.IsGiven()) return batch::RunCheck(arguments, context);
  if (!arguments.recordModel.empty()) return batch::RecordModel(arguments, context);
  if (arguments.IsRig()) return batch::RunRig(arguments, context);
  return arguments.IsPair() ? batch::RunPair(arguments, context) : batch::Run(arguments, context);
}

}  // namespace

int main(int argc, char** argv) {
  common::SilenceLibraries();
  const common::Interruption interruption;
  try {
    return Run(argc, argv, interruption);
  } catch (const batch::Interrupted& end) {
    std::cerr << end.what() << std::endl;
    return interruption.ExitStatus();
  } catch (const common::InputError& fault) {
    common::PrintError(std::cerr, fault);
    return common::UNUSABLE;
  } catch (const std::exception& fault) {
    common::PrintError(std::cerr, fault, "the calibration failed");
    return common::NO_RESULT;
  }
}
