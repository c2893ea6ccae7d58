/// A program that sets the window library up, and tells on standard output that it came through.
///
/// The library ends a process in which it finds no display that it can use, or a platform that is not
/// installed. So the engine lets this program be ended instead.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <opencv2/highgui.hpp>
#include <string>

#if __has_include(<opencv2/highgui/highgui_c.h>)
#include <opencv2/highgui/highgui_c.h>
#define VELMORA_HAS_INIT_SYSTEM 1
#endif

#include "foundation/WindowProbe.h"

using namespace velmora;

namespace {

void Tell(char word) {
  if (write(STDOUT_FILENO, &word, 1) != 1) _exit(1);
}

/// True for platforms that fail only when a window is made. They have no desktop on which one would flash up.
bool NeedsAWindow() {
  const char* value = std::getenv("QT_QPA_PLATFORM");
  const std::string platform = value == nullptr ? "" : value;
  return !platform.empty() && platform.find("xcb") == std::string::npos &&
         platform.find("wayland") == std::string::npos;
}

void SetUp() {
#ifdef VELMORA_HAS_INIT_SYSTEM
  cvInitSystem(0, nullptr);
  if (!NeedsAWindow()) return;
#endif
  cv::namedWindow("Velmora");
  cv::waitKey(1);
}

/// The end that is expected of the library, without a word to whoever collects crashes.
void EndQuietly(int /*signal*/) {
  _exit(1);
}

}  // namespace

int main() {
  std::signal(SIGABRT, EndQuietly);
  std::signal(SIGSEGV, EndQuietly);
  fcntl(STDOUT_FILENO, F_SETFD, FD_CLOEXEC);  // what the library starts must not keep the answer open
  Tell(WINDOW_PROBE_RUNS);
  try {
    SetUp();
  } catch (const std::exception&) {
    return 1;  // built without windows
  }
  Tell(WINDOW_PROBE_WORKS);
  _exit(0);  // libraries that fail at their end do not matter
}
