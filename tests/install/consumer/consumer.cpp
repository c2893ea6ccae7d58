/// What somebody else's program does with the installed library: uses each public header once.
#include <CalibAssistant.h>
#include <Calibration.h>
#include <Calibrator.h>
#include <Display.h>
#include <JSON.h>
#include <Log.h>
#include <base64.h>
#include <velmora/RigCalibration.h>

#include <iostream>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  CalibAssistant assistant(640, 480, 4, 11);
  if (!assistant.LoadModel(argv[1])) return 1;
  Calibrator calibrator({4, 11}, 0.02F, Calibrator::MONOCULAR, 640, 480);
  const unsigned char bytes[] = {'M', 'a', 'n'};
  JSON document;
  document.addString("version", Calibration::GetVersion());
  document.addString("text", base64_encode(bytes, 3));
  document.addInt("status", calibrator.GetStatus());
  document.addInt("poses", assistant.GetGoal());
  document.addInt("log", Log::LOG_LEVEL);
  std::string reason;
  try {
    velmora::CalibrateRig({});
    return 1;
  } catch (const cv::Exception&) {
    // A rig of no cameras is none.
  }
  document.addBool("display", DisplayAvailable(&reason));
  std::cout << document.readString("version") << ' ' << document.readString("text") << ' '
            << document.readInt("status") << ' ' << document.readInt("poses") << std::endl;
  return 0;
}
