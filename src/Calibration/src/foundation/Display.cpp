/// Looks for a window system that answers.
#include "Display.h"

#ifdef __linux__

#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <future>
#include <memory>
#include <thread>

namespace {

constexpr std::chrono::seconds ANSWER_TIME{3};

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

/// Qt platforms that draw without a server.
bool PlatformNeedsNoServer() {
  const std::string platform = Environment("QT_QPA_PLATFORM");
  const std::string name = platform.substr(0, platform.find(':'));
  return name == "offscreen" || name == "minimal" || name == "vnc" || name == "linuxfb" || name == "eglfs";
}

/// Connects to an X server once. The X library is loaded at run time: the engine needs it for nothing else.
bool XServerAnswers(const std::string& display) {
  void* library = dlopen("libX11.so.6", RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return false;
  using Open = void* (*)(const char*);
  using Close = int (*)(void*);
  const auto open = reinterpret_cast<Open>(dlsym(library, "XOpenDisplay"));
  const auto close = reinterpret_cast<Close>(dlsym(library, "XCloseDisplay"));
  if (open == nullptr || close == nullptr) return false;
  void* connection = open(display.c_str());
  if (connection == nullptr) return false;
  close(connection);
  return true;  // the library stays loaded: threads of it may
}

/// A server that accepts but never answers would block for ever, so the question is put on a thread that is
/// left behind when time runs out.
bool XServerAnswersInTime(const std::string& display) {
  auto answer = std::make_shared<std::promise<bool>>();
  auto result = answer->get_future();
  std::thread([answer, display] { answer->set_value(XServerAnswers(display)); }).detach();
  return result.wait_for(ANSWER_TIME) == std::future_status::ready && result.get();
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

}  // namespace

bool DisplayAvailable(std::string* reason) {
  if (PlatformNeedsNoServer()) return true;
  const std::string display = Environment("DISPLAY");
  if (!display.empty() && XServerAnswersInTime(display)) return true;
  if (WaylandSocketAccepts()) return true;
  if (reason != nullptr) {
    *reason = display.empty()
                  ? "No display to open a window on: DISPLAY is not set."
                  : "No display to open a window on: DISPLAY is '" + display + "', which does not answer.";
  }
  return false;
}

#else

bool DisplayAvailable(std::string* /*reason*/) {
  return true;
}

#endif
