/// velmora-batch: calibrates a camera, a pair or a rig from images, without a display.
#include <iostream>

#include "Calibration.h"
#include "batch/Batch.h"
#include "batch/CheckBatch.h"
#include "batch/ModelRecording.h"
#include "batch/PairBatch.h"
#include "batch/RigBatch.h"
#include "common/ExitStatus.h"
#include "common/Hdist.h"
#include "common/InputError.h"
#include "common/LibraryNoise.h"
#include "common/Messages.h"

int main(int argc, char** argv) {
  common::SilenceLibraries();
  const batch::Parsed parsed = batch::ParseArguments(argc, argv);
  if (!parsed.run) return parsed.exitStatus;
  std::cerr << common::HdistWarning(parsed.arguments.hdist);
  Calibration::SetLogLevel(1);
  try {
    if (parsed.arguments.check.IsGiven()) return batch::RunCheck(parsed.arguments);
    if (!parsed.arguments.recordModel.empty()) return batch::RecordModel(parsed.arguments);
    if (parsed.arguments.IsRig()) return batch::RunRig(parsed.arguments);
    return parsed.arguments.IsPair() ? batch::RunPair(parsed.arguments) : batch::Run(parsed.arguments);
  } catch (const common::InputError& fault) {
    common::PrintError(std::cerr, fault);
    return common::UNUSABLE;
  } catch (const std::exception& fault) {
    common::PrintError(std::cerr, fault, "the calibration failed");
    return common::NO_RESULT;
  }
}
