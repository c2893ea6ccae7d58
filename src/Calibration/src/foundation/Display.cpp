/// Looks for a window system that the window library can use.
#include "Display.h"

#ifdef __linux__

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "foundation/DisplayRules.h"
#include "foundation/WindowProbe.h"
#include "foundation/XServer.h"

using namespace velmora;

namespace {

constexpr std::chrono::seconds ANSWER_TIME{3};

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

bool WaylandSocketAccepts() {
  const std::string name = Environment("WAYLAND_DISPLAY");
  if (name.empty()) return false;
  const std::string path = name.front() == '/' ? name : Environment("XDG_RUNTIME_DIR") + "/" + name;
  sockaddr_un address{};
  if (path.size() >= sizeof(address.sun_path)) return false;
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (connection < 0) return false;
  const bool accepted = connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
  close(connection);
  return accepted;
}

/// A server answers, but the window library does not come up on it.
std::string Unusable(const std::string& platform) {
  return platform.empty() ? "the window library cannot use the one that there is."
                          : "the window library cannot work with QT_QPA_PLATFORM set to '" + platform + "'.";
}

std::string NoServer(const std::string& display) {
  return display.empty() ? "DISPLAY is not set." : "DISPLAY is '" + display + "', which does not answer.";
}

}  // namespace

bool DisplayAvailable(std::string* reason) {
  const std::string platform = Environment("QT_QPA_PLATFORM");
  const std::string display = Environment("DISPLAY");
  Servers servers;
  servers.x = !display.empty() && XServerAnswers(display, ANSWER_TIME);
  servers.wayland = WaylandSocketAccepts();
  std::string fault;
  if (NeedsServer(platform) && !servers.x && !servers.wayland) {
    fault = NoServer(display);
  } else if (!Usable(platform, servers, AskWindowProbe(FindWindowProbe(), ANSWER_TIME))) {
    fault = Unusable(platform);
  }
  if (reason != nullptr && !fault.empty()) *reason = "No display to open a window on: " + fault;
  return fault.empty();
}

#else

bool DisplayAvailable(std::string* /*reason*/) {
  return true;
}

#endif
