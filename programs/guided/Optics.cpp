/// Keeps the optics of a camera as they are while it is calibrated.
#include "guided/Optics.h"

#include <linux/videodev2.h>

namespace guided {

namespace {

std::string FixFocus(const VideoDevice& device) {
  if (!FocusesByItself(device)) return "";
  const auto focus = device.Control(V4L2_CID_FOCUS_ABSOLUTE);
  if (!device.SetControl(V4L2_CID_FOCUS_AUTO, 0)) {
    return "Autofocus cannot be switched off: the result holds for no focus in particular.\n";
  }
  // Some lenses go to the place of rest without autofocus.
  if (focus) device.SetControl(V4L2_CID_FOCUS_ABSOLUTE, focus->value);
  return "Autofocus switched off: the focus must not change while calibrating.\n";
}

std::string TellOfZoom(const VideoDevice& device) {
  const auto zoom = device.Control(V4L2_CID_ZOOM_ABSOLUTE);
  if (!zoom || zoom->value == zoom->usual) return "";
  return "The zoom is at " + std::to_string(zoom->value) + ", and usually at " + std::to_string(zoom->usual) +
         ": the result holds for this zoom alone.\n";
}

}  // namespace

bool FocusesByItself(const VideoDevice& device) {
  const auto automatic = device.Control(V4L2_CID_FOCUS_AUTO);
  return automatic && automatic->value != 0;
}

std::string FixOptics(const VideoDevice& device) {
  return FixFocus(device) + TellOfZoom(device);
}

}  // namespace guided
