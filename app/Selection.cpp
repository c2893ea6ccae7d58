/// Decides whether one camera or a pair is calibrated.
#include "Selection.h"

namespace app {

namespace {

constexpr int ERROR_STATUS = -1;

Selection Refuse(const char* reason, std::ostream& err) {
  err << "ERROR: " << reason << std::endl;
  Selection refused;
  refused.exitStatus = ERROR_STATUS;
  return refused;
}

Camera SelectedCamera(const std::string& word, std::ostream& err) {
  if (word == "right") {
    return Camera::Right;
  }
  if (word != "left") {
    err << "'" << word << "' is an unknown value for the '--select' option. Set to 'left' by default."
        << std::endl;
  }
  return Camera::Left;
}

}  // namespace

Selection SelectCameras(const Settings& settings, bool stereoInput, std::ostream& err) {
  Selection selection;
  if (settings.select) {
    if (!stereoInput) {
      return Refuse("Select option cannot be applied for non-stereo input.", err);
    }
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
