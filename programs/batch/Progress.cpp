/// Reports the progress of a long run.
#include "batch/Progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "common/LibraryNoise.h"

namespace batch {

namespace {

int ColumnsOfStandardError() {
  if (isatty(STDERR_FILENO) != 1) return 0;
  constexpr int USUAL = 80;
  winsize size{};
  const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : USUAL;
}

/// As long as the line allows; a letter of several bytes is not cut in two.
std::string Cut(const std::string& text, size_t length) {
  if (text.size() <= length) return text;
  const auto inside = [&](size_t at) { return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U; };
  while (length > 0 && inside(length)) --length;
  return text.substr(0, length);
}

/// Every image of a few is worth a line; of many those at which another twentieth is done.
bool IsWorthALine(int done, int total) {
  constexpr int FEW = 100;
  constexpr int LINES = 20;
  if (total <= 0) return done <= FEW || done % FEW == 0;
  return total <= FEW || done == total || LINES * done / total != LINES * (done - 1) / total;
}

std::string Count(int done, int total) {
  return std::to_string(done) + (total > 0 ? "/" + std::to_string(total) : "");
}

std::string Percent(int done, int total) {
  return std::to_string(static_cast<long>(done) * 100 / total) + " %";
}

/// Two digits or more.
std::string Rate(double perSecond) {
  char text[32] = "";
  std::snprintf(text, sizeof(text), "%.*f/s", perSecond < 1.0 ? 2 : perSecond < 10.0 ? 1 : 0, perSecond);
  return text;
}

}  // namespace

Progress::Progress()
    : own_(std::make_unique<common::StandardErrorStream>()),
      terminal_{*own_, ColumnsOfStandardError()},
      start_(terminal_.now()) {
}

Progress::Progress(Terminal terminal) : terminal_(std::move(terminal)), start_(terminal_.now()) {
}

void Progress::Step(int done, int total, const std::string& what) {
  if (terminal_.columns > 0) {
    Draw(done, total, what);
  } else if (IsWorthALine(done, total)) {
    constexpr int FEW = 100;
    const bool share = total > FEW;
    terminal_.out << Count(done, total)
                  << (share ? " (" + Percent(done, total) + Pace(done, total) + ")" : "") << " " << what
                  << std::endl;
  }
}

void Progress::Draw(int done, int total, const std::string& what) {
  constexpr int WIDTH = 20;
  std::string line = Count(done, total);
  if (total > 0) {
    const int filled = static_cast<int>(std::min<long>(WIDTH, static_cast<long>(WIDTH) * done / total));
    line = "[" + std::string(static_cast<size_t>(filled), '#') +
           std::string(static_cast<size_t>(WIDTH - filled), ' ') + "] " + Percent(done, total) + ", " + line +
           Pace(done, total);
  } else {
    line += Pace(done, total);
  }
  const size_t room = static_cast<size_t>(std::max(1, terminal_.columns - 1));
  line = Cut(line + "  " + what, room);
  line.resize(std::max(line.size(), room), ' ');  // covers what stood there before
  terminal_.out << "\r" << line << std::flush;
  drawn_ = true;
}

std::string Progress::Pace(int done, int total) const {
  const std::chrono::duration<double> passed = terminal_.now() - start_;
  constexpr double SETTLED = 1.0;  // seconds
  if (done <= 0 || passed.count() < SETTLED) return "";
  std::string rate = ", " + Rate(done / passed.count());
  if (done >= total) return rate;
  const long seconds = std::lround(passed.count() / done * (total - done));
  constexpr long MINUTE = 60;
  const std::string minutes = seconds >= MINUTE ? std::to_string(seconds / MINUTE) + " min " : "";
  return rate + ", " + minutes + std::to_string(seconds % MINUTE) + " s left";
}

void Progress::Tell(const std::string& text) {
  if (text.empty()) return;
  Finish();
  terminal_.out << text << std::flush;
}

void Progress::Finish() {
  if (drawn_) terminal_.out << std::endl;
  drawn_ = false;
}

}  // namespace batch
