/// What can be set of a fake capture device, kept in a file that a test writes and reads.
#pragma once

#include <linux/videodev2.h>

#include <string>
#include <vector>

namespace fake_camera {

/// Of the device with that folder. Functions return 0, or a number of errno.
class Controls {
 public:
  explicit Controls(const std::string& folder);

  int Describe(v4l2_queryctrl& control) const;
  int Get(v4l2_control& control) const;
  int Set(const v4l2_control& control);

 private:
  struct Control {
    std::string name;
    int value = 0;
    int usual = 0;
    std::string lock;
  };

  const Control* Find(unsigned id) const;

  const std::string path_;
  std::vector<Control> controls_;
};

}  // namespace fake_camera
