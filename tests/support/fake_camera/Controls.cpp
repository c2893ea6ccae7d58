/// What can be set of a fake capture device, kept in a file that a test writes and reads.
#include "Controls.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <sstream>

namespace fake_camera {

namespace {

unsigned IdOf(const std::string& name) {
  if (name == "focus_auto") return V4L2_CID_FOCUS_AUTO;
  if (name == "focus_absolute") return V4L2_CID_FOCUS_ABSOLUTE;
  return name == "zoom_absolute" ? V4L2_CID_ZOOM_ABSOLUTE : 0U;
}

}  // namespace

Controls::Controls(const std::string& folder) : path_(folder + "/controls") {
  std::ifstream file(path_);
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    Control control;
    words >> control.name >> control.value >> control.usual >> control.lock;
    controls_.push_back(control);
  }
}

const Controls::Control* Controls::Find(unsigned id) const {
  const auto found = std::find_if(controls_.begin(), controls_.end(),
                                  [id](const Control& control) { return IdOf(control.name) == id; });
  return found == controls_.end() ? nullptr : &*found;
}

int Controls::Describe(v4l2_queryctrl& control) const {
  const Control* const found = Find(control.id);
  if (found == nullptr) return EINVAL;
  control.default_value = found->usual;
  control.flags = 0;
  return 0;
}

int Controls::Get(v4l2_control& control) const {
  const Control* const found = Find(control.id);
  if (found == nullptr) return EINVAL;
  control.value = found->value;
  return 0;
}

int Controls::Set(const v4l2_control& control) {
  const Control* const found = Find(control.id);
  if (found == nullptr) return EINVAL;
  if (!found->lock.empty()) return EACCES;
  std::ofstream file(path_);
  for (const Control& each : controls_) {
    file << each.name << " " << (&each == found ? control.value : each.value) << " " << each.usual
         << (each.lock.empty() ? "" : " " + each.lock) << "\n";
  }
  return 0;
}

}  // namespace fake_camera
