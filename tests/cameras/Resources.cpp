/// What the process holds of the machine.
#include "cameras/Resources.h"

#include <malloc.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace cameras {

namespace {

int EntriesOf(const char* folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<int>(std::distance(begin(entries), end(entries)));
}

}  // namespace

Resources ResourcesInUse() {
  malloc_trim(0);  // what was given back, but is kept for later, does not count
  Resources resources;
  resources.threads = EntriesOf("/proc/self/task");
  resources.descriptors = EntriesOf("/proc/self/fd");
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == "VmRSS:") status >> resources.residentKilobytes;
  }
  return resources;
}

}  // namespace cameras
