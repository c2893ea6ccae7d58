/// Keeps the optics of cameras as they are while they are calibrated.
#include "guided/Optics.h"

#include <linux/videodev2.h>

namespace guided {

namespace {

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

std::string Optics::Fix(int camera, const VideoDevice& device) {
  if (!FocusesByItself(device)) return TellOfZoom(device);
  const auto focus = device.Control(V4L2_CID_FOCUS_ABSOLUTE);
  if (!device.SetControl(V4L2_CID_FOCUS_AUTO, 0)) {
    return "Autofocus cannot be switched off: the result holds for no focus in particular.\n" +
           TellOfZoom(device);
  }
  if (focus) {
    // Some lenses go to their place of rest without autofocus.
    device.SetControl(V4L2_CID_FOCUS_ABSOLUTE, focus->value);
    const std::lock_guard<std::mutex> guard(lock_);
    focus_[camera] = focus->value;
  }
  return "Autofocus switched off: the focus must not change while calibrating.\n" + TellOfZoom(device);
}

void Optics::Restore(int camera, const VideoDevice& device) {
  int focus = 0;
  {
    const std::lock_guard<std::mutex> guard(lock_);
    const auto known = focus_.find(camera);
    if (known == focus_.end()) return;
    focus = known->second;
  }
  device.SetControl(V4L2_CID_FOCUS_AUTO, 0);
  device.SetControl(V4L2_CID_FOCUS_ABSOLUTE, focus);
}

}  // namespace guided
