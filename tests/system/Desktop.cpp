/// A virtual desktop of its own: an X server without a monitor, its windows, keys and pictures.
#include "Desktop.h"

#include <cstdio>
#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace system_test {

namespace {

constexpr std::chrono::milliseconds POLL_INTERVAL{5};

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
Desktop::Desktop()
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

std::string Desktop::FindWindow(const std::string& title) {
  std::istringstream windows(RunTool({"xdotool", "search", "--onlyvisible", "--name", "^" + title + "$"}));
  std::string first;
  windows >> first;
  return first;
}

std::string Desktop::AwaitWindow(const std::string& title) {
  std::string window;
  WaitUntil([&] { return !(window = FindWindow(title)).empty(); });
  return window;
}

void Desktop::PressKey(const std::string& window, const std::string& key) {
  RunTool({"xdotool", "key", "--window", window, key});
}

cv::Mat Desktop::PictureOf(const std::string& window) {
  const std::string path = folder_.File("window.ppm");
  std::remove(path.c_str());
  RunTool({"import", "-silent", "-window", window, path});
  return cv::imread(path, cv::IMREAD_COLOR);
}

std::string Desktop::RunTool(const std::vector<std::string>& arguments) {
  support::Process::Options options;
  options.environment["DISPLAY"] = display_;
  support::Process tool(arguments, options);
  return tool.WaitForExit(PATIENCE) == 0 ? tool.Output() : "";
}

}  // namespace system_test
