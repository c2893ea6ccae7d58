/// What the process holds of the machine.
#pragma once

namespace cameras {

/// Counts at one moment.
struct Resources {
  int threads = 0;
  int descriptors = 0;
  long residentKilobytes = 0;
};

/// Those of this process.
Resources ResourcesInUse();

}  // namespace cameras
