/// A virtual desktop of its own: an X server without a monitor, its windows, keys and pictures.
#include "VirtualDisplay.h"

#include <dlfcn.h>

#include <cstdio>
#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace system_test {

namespace {

constexpr std::chrono::milliseconds POLL_INTERVAL{5};

/// A message of one client of an X server to a window of another, as the X library has it.
struct ClientMessage {
  int type = 33;
  unsigned long serial = 0;
  int sent = 1;
  void* display = nullptr;
  unsigned long window = 0;
  unsigned long kind = 0;
  int format = 32;
  long words[5] = {};
};
union Event {
  ClientMessage message;
  long space[24];
};

template <typename Function>
Function Named(void* library, const char* name) {
  void* const function = dlsym(library, name);
  if (function == nullptr) throw std::runtime_error(std::string("no ") + name);
  return reinterpret_cast<Function>(function);
}

/// No tool of the tests sends this message, so the X library itself does; it is there where windows are.
void AskToClose(const std::string& display, unsigned long window) {
  void* const library = dlopen("libX11.so.6", RTLD_NOW);
  if (library == nullptr) throw std::runtime_error("no X library");
  void* const connection = Named<void* (*)(const char*)>(library, "XOpenDisplay")(display.c_str());
  if (connection == nullptr) throw std::runtime_error("no connection to " + display);
  const auto atom = Named<unsigned long (*)(void*, const char*, int)>(library, "XInternAtom");
  Event event{};
  event.message = ClientMessage();
  event.message.window = window;
  event.message.kind = atom(connection, "WM_PROTOCOLS", 0);
  event.message.words[0] = static_cast<long>(atom(connection, "WM_DELETE_WINDOW", 0));
  Named<int (*)(void*, unsigned long, int, long, Event*)>(library, "XSendEvent")(connection, window, 0, 0,
                                                                                 &event);
  Named<int (*)(void*)>(library, "XCloseDisplay")(connection);
}

}  // namespace

bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(POLL_INTERVAL);
  }
  return true;
}

// The server chooses a free number itself and prints it once it answers.
VirtualDisplay::VirtualDisplay()
    : server_({"Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset"}) {
  if (!WaitUntil([this] { return server_.Output().find('\n') != std::string::npos || !server_.Running(); }) ||
      !server_.Running()) {
    throw std::runtime_error("Xvfb does not start: " + server_.Errors());
  }
  std::istringstream number(server_.Output());
  int value = -1;
  number >> value;
  display_ = ":" + std::to_string(value);
}

std::string VirtualDisplay::FindWindow(const std::string& title) {
  std::istringstream windows(RunTool({"xdotool", "search", "--onlyvisible", "--name", "^" + title + "$"}));
  std::string first;
  windows >> first;
  return first;
}

std::string VirtualDisplay::AwaitWindow(const std::string& title) {
  std::string window;
  WaitUntil([&] { return !(window = FindWindow(title)).empty(); });
  return window;
}

void VirtualDisplay::PressKey(const std::string& window, const std::string& key) {
  RunTool({"xdotool", "key", "--window", window, key});
}

void VirtualDisplay::CloseWindow(const std::string& window) {
  AskToClose(display_, std::stoul(window));
}

cv::Size VirtualDisplay::SizeOf(const std::string& window) {
  const std::string geometry = RunTool({"xdotool", "getwindowgeometry", "--shell", window});
  const auto valueOf = [&](const std::string& name) {
    const auto at = geometry.find(name + "=");
    return at == std::string::npos ? 0 : std::stoi(geometry.substr(at + name.size() + 1));
  };
  return {valueOf("WIDTH"), valueOf("HEIGHT")};
}

cv::Mat VirtualDisplay::PictureOf(const std::string& window) {
  const std::string path = folder_.File("window.ppm");
  std::remove(path.c_str());
  RunTool({"import", "-silent", "-window", window, path});
  return cv::imread(path, cv::IMREAD_COLOR);
}

std::string VirtualDisplay::RunTool(const std::vector<std::string>& arguments) {
  support::Process::Options options;
  options.environment["DISPLAY"] = display_;
  support::Process tool(arguments, options);
  return tool.WaitForExit(PATIENCE) == 0 ? tool.Output() : "";
}

}  // namespace system_test
