/// What is made of the window systems that answer and of what the window probe says.
#include "foundation/DisplayRules.h"

#include <fcntl.h>
#include <glob.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace velmora {

namespace {

/// The names of platforms in the order in which they are tried, without their options; "" when none is named.
std::vector<std::string> NamesOf(const std::string& platform) {
  std::vector<std::string> names;
  size_t begin = 0;
  while (true) {
    const size_t end = platform.find(';', begin);
    const std::string one = platform.substr(begin, end - begin);
    names.push_back(one.substr(0, one.find(':')));
    if (end == std::string::npos) return names;
    begin = end + 1;
  }
}

bool IsWayland(const std::string& name) {
  return name.compare(0, 7, "wayland") == 0;
}

bool OpensForWriting(const char* device) {
  const int file = open(device, O_RDWR | O_CLOEXEC);
  if (file < 0) return false;
  close(file);
  return true;
}

bool Exists(const std::string& pattern) {
  glob_t found{};
  const bool exists = glob(pattern.c_str(), 0, nullptr, &found) == 0;
  globfree(&found);
  return exists;
}

/// The usual folders of Qt's plugins, and those that its variables name.
bool WaylandPluginExists() {
  std::vector<std::string> folders = {"/usr/lib/*/qt*/plugins/platforms", "/usr/lib*/qt*/plugins/platforms"};
  if (const char* named = std::getenv("QT_QPA_PLATFORM_PLUGIN_PATH")) folders.emplace_back(named);
  if (const char* named = std::getenv("QT_PLUGIN_PATH")) folders.push_back(std::string(named) + "/platforms");
  for (const std::string& folder : folders) {
    if (Exists(folder + "/libqwayland*.so")) return true;
  }
  return false;
}

bool UsesX(const std::string& name) {
  return name.empty() || name == "xcb";
}

bool CertainlyUsable(const std::string& name, const Servers& servers) {
  if (UsesX(name) && servers.x) return true;
  if (name.empty() || IsWayland(name)) return servers.wayland && WaylandPluginExists();
  if (name == "eglfs") return OpensForWriting("/dev/dri/card0");
  if (name == "linuxfb") return OpensForWriting("/dev/fb0");
  return name == "offscreen" || name == "minimal" || name == "minimalegl" || name == "vnc";
}

}  // namespace

bool NeedsServer(const std::string& platform) {
  for (const std::string& name : NamesOf(platform)) {
    if (UsesX(name) || IsWayland(name)) return true;
  }
  return false;
}

bool Usable(const std::string& platform, const Servers& servers, ProbeAnswer probe) {
  if (probe == ProbeAnswer::Works || probe == ProbeAnswer::Fails) return probe == ProbeAnswer::Works;
  for (const std::string& name : NamesOf(platform)) {
    const bool certain =
        probe == ProbeAnswer::Unknown ? CertainlyUsable(name, servers) : UsesX(name) && servers.x;
    if (certain) return true;
  }
  return false;
}

}  // namespace velmora
