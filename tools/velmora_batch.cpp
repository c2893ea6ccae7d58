/// velmora-batch: calibrates a camera, a pair or a rig from pictures, without a display.
#include <iostream>

#include "Calibration.h"
#include "LibraryNoise.h"
#include "OneLine.h"
#include "batch/Batch.h"
#include "batch/ModelRecording.h"
#include "batch/PairBatch.h"
#include "batch/RigBatch.h"

int main(int argc, char** argv) {
  app::SilenceLibraries();
  const batch::Parsed parsed = batch::ParseArguments(argc, argv);
  if (!parsed.run) return parsed.exitStatus;
  std::cerr << tools::HdistWarning(parsed.arguments.hdist);
  Calibration::SetLogLevel(1);
  try {
    if (!parsed.arguments.recordModel.empty()) return batch::RecordModel(parsed.arguments);
    if (parsed.arguments.IsRig()) return batch::RunRig(parsed.arguments);
    return parsed.arguments.IsPair() ? batch::RunPair(parsed.arguments) : batch::Run(parsed.arguments);
  } catch (const batch::InputError& error) {
    std::cerr << "Error: " << error.what() << ".\n";
    return batch::UNUSABLE_INPUT;
  } catch (const cv::Exception& error) {
    // Without the place in the library's source.
    std::cerr << "Error: the calibration failed: " << app::OneLine(error.err) << ".\n";
    return batch::TOO_FEW_VIEWS;
  } catch (const std::exception& error) {
    std::cerr << "Error: the calibration failed: " << error.what() << "\n";
    return batch::TOO_FEW_VIEWS;
  }
}
