/// Decides whether one camera or a pair is calibrated.
#include "velmora/Selection.h"

#include "common/ExitStatus.h"
#include "common/Messages.h"
#include "common/SourceSettings.h"

namespace app {

namespace {

Selection Refuse(const char* reason, std::ostream& err) {
  common::PrintError(err, reason);
  Selection refused;
  refused.exitStatus = common::APPLICATION_FAILED;
  return refused;
}

common::Camera SelectedCamera(const std::string& word, std::ostream& err) {
  if (word == "right") return common::Camera::Right;
  if (word != "left") {
    err << "'" << word << "' is an unknown value for the '--select' option. Set to 'left' by default."
        << std::endl;
  }
  return common::Camera::Left;
}

}  // namespace

Selection SelectCameras(const Settings& settings, bool stereoInput, std::ostream& err) {
  Selection selection;
  if (settings.select) {
    if (!stereoInput) return Refuse("Select option cannot be applied for non-stereo input.", err);
    selection.camera = SelectedCamera(*settings.select, err);
  } else if (stereoInput) {
    if (!settings.calibLeft) {
      return Refuse("In the stereo case, left camera calibration file has to be provided.", err);
    }
    if (!settings.calibRight) {
      return Refuse("In the stereo case, right camera calibration file has to be provided.", err);
    }
    selection.kind = Calibrator::STEREO;
  }
  return selection;
}

}  // namespace app
