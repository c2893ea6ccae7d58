/// A run of the application on a virtual desktop, driven as its user drives it.
#include "Session.h"

namespace system_test {

namespace {

/// How long a key press may go without effect before it counts as lost.
constexpr std::chrono::milliseconds LOST_AFTER{4000};

constexpr char LIVE_WINDOW[] = "Frame";
constexpr char REVIEW_WINDOW[] = "Reprojected frame";
constexpr char SEPARATOR[] = "---------------------------------------------------------\n";
constexpr char TOTAL[] = "Total number of pictures: ";

std::vector<std::string> CommandOf(const std::vector<std::string>& arguments) {
  std::vector<std::string> command{VELMORA_APPLICATION};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

support::Process::Options OptionsOf(const std::string& display, const std::string& folder,
                                    const std::map<std::string, std::string>& environment = {}) {
  support::Process::Options options;
  options.environment = environment;
  options.unset = {"WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "OPENCV_LOG_LEVEL"};
  if (display.empty()) {
    options.unset.push_back("DISPLAY");
  } else {
    options.environment["DISPLAY"] = display;
  }
  options.folder = folder;
  return options;
}

int CountOf(const std::string& text, const std::string& part) {
  int count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

/// The last line that is complete, without its end.
std::string LastLine(const std::string& text) {
  const auto end = text.rfind('\n');
  if (end == std::string::npos) {
    return "";
  }
  const auto start = end == 0 ? std::string::npos : text.rfind('\n', end - 1);
  return text.substr(start + 1, end - start - 1);
}

}  // namespace

Session::Session(VirtualDisplay& virtualDisplay, const std::vector<std::string>& arguments,
                 const std::string& folder, const std::map<std::string, std::string>& environment)
    : virtualDisplay_(virtualDisplay),
      application_(CommandOf(arguments), OptionsOf(virtualDisplay.Display(), folder, environment)) {
}

bool Session::Press(const std::string& title, const std::string& key, const std::function<bool()>& effect) {
  return WaitUntil([&] {
    const std::string window = virtualDisplay_.FindWindow(title);
    if (window.empty()) {
      return effect();
    }
    virtualDisplay_.PressKey(window, key);
    return WaitUntil(effect, LOST_AFTER);
  });
}

bool Session::AwaitPicture() {
  return WaitUntil([&] {
    const std::string window = virtualDisplay_.FindWindow(LIVE_WINDOW);
    return !window.empty() && !virtualDisplay_.PictureOf(window).empty();
  });
}

std::string Session::TakeSnapshot() {
  const int before = CountOf(application_.Output(), TOTAL);
  const auto printed = [&] {
    const std::string output = application_.Output();
    return CountOf(output, TOTAL) > before && output.back() == '\n';
  };
  return Press(LIVE_WINDOW, "p", printed) ? LastLine(application_.Output()) : "";
}

int Session::CalibrateAndReview() {
  if (!Press(LIVE_WINDOW, "Return", [&] { return ReviewIsOpen(); })) {
    return 0;
  }
  int views = 0;
  while (ReviewIsOpen()) {
    const cv::Mat shown = StillPicture(REVIEW_WINDOW);
    const auto movedOn = [&] { return !ReviewIsOpen() || !Same(StillPicture(REVIEW_WINDOW), shown); };
    if (shown.empty() || !Press(REVIEW_WINDOW, "space", movedOn)) {
      break;
    }
    ++views;
  }
  return views;
}

bool Session::Calibrate() {
  const int before = CountOf(application_.Output(), SEPARATOR);
  return Press(LIVE_WINDOW, "Return", [&] { return CountOf(application_.Output(), SEPARATOR) > before; }) &&
         WaitUntil([&] { return CountOf(application_.Output(), SEPARATOR) == before + 2; });
}

int Session::Quit() {
  Press(LIVE_WINDOW, "q", [&] { return !application_.Running(); });
  return application_.WaitForExit(PATIENCE);
}

cv::Mat Session::StillPicture(const std::string& title) {
  cv::Mat last;
  const bool still = WaitUntil(
      [&] {
        const std::string window = virtualDisplay_.FindWindow(title);
        if (window.empty()) {
          last.release();
          return true;
        }
        const cv::Mat picture = virtualDisplay_.PictureOf(window);
        const bool same = Same(picture, last);
        last = picture;
        return same;
      },
      LOST_AFTER);
  return still ? last : cv::Mat();
}

bool Session::ReviewIsOpen() {
  return !virtualDisplay_.FindWindow(REVIEW_WINDOW).empty();
}

Ending RunToEnd(const std::vector<std::string>& arguments, const std::string& display) {
  support::Process application(CommandOf(arguments), OptionsOf(display, ""));
  const int status = application.WaitForExit(PATIENCE);
  return {status, application.Output(), application.Errors()};
}

bool Same(const cv::Mat& a, const cv::Mat& b) {
  return !a.empty() && a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0.0;
}

}  // namespace system_test
