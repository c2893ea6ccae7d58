/// A short tone, by whatever the machine has to play it.
#include "guided/Tone.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <sstream>

extern char** environ;

namespace guided {

namespace {

/// More are not started: they hang.
constexpr size_t MOST_AT_ONCE = 3;

/// Its lowest bytes, the lowest first.
std::string Bytes(unsigned number, int count) {
  std::string bytes;
  for (int i = 0; i < count; ++i) bytes += static_cast<char>((number >> (8 * i)) & 255U);
  return bytes;
}

/// The first program of that name on the PATH; empty when there is none.
std::string OnThePath(const std::string& name) {
  const char* const path = std::getenv("PATH");
  std::istringstream folders(path == nullptr ? "" : path);
  for (std::string program; std::getline(folders, program, ':');) {
    if (program.empty()) continue;
    program.append("/").append(name);
    if (access(program.c_str(), X_OK) == 0) return program;
  }
  return "";
}

/// The descriptor of a file in memory; -1 when there can be none.
int FileInMemory(const std::string& content) {
  const int file = memfd_create("tone", MFD_CLOEXEC);
  if (file < 0) return file;
  if (write(file, content.data(), content.size()) == static_cast<ssize_t>(content.size())) return file;
  close(file);
  return -1;
}

/// How a player is started: on its own, with the tone as its input and no output.
class Start {
 public:
  explicit Start(int file) {
    posix_spawn_file_actions_init(&actions_);
    // Opened anew, so that each player reads from the beginning.
    const std::string input = "/proc/self/fd/" + std::to_string(file);
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, input.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions_, STDOUT_FILENO, STDERR_FILENO);
    posix_spawnattr_init(&attributes_);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setpgroup(&attributes_, 0);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK);
  }
  ~Start() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }
  Start(const Start&) = delete;
  Start& operator=(const Start&) = delete;

  /// The process; -1 when it cannot be started.
  pid_t Run(std::string program) const {
    std::string input = "/dev/stdin";
    const std::array<char*, 3> words = {program.data(), input.data(), nullptr};
    pid_t process = -1;
    const int fault = posix_spawn(&process, program.c_str(), &actions_, &attributes_, words.data(), environ);
    return fault == 0 ? process : -1;
  }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

}  // namespace

std::string ToneFile() {
  constexpr unsigned RATE = 44100;
  constexpr unsigned SAMPLES = RATE * 15 / 100;
  constexpr double PITCH = 880.0;
  constexpr double LOUDNESS = 0.4 * 32767.0;
  constexpr double PI = 3.14159265358979323846;
  const unsigned length = 2 * SAMPLES;
  std::string file = "RIFF" + Bytes(36 + length, 4) + "WAVEfmt " + Bytes(16, 4) + Bytes(1, 2) + Bytes(1, 2) +
                     Bytes(RATE, 4) + Bytes(2 * RATE, 4) + Bytes(2, 2) + Bytes(16, 2) + "data" +
                     Bytes(length, 4);
  for (unsigned i = 0; i < SAMPLES; ++i) {
    // It swells and fades, for a tone that breaks off clicks.
    const double swell = std::sin(PI * i / SAMPLES);
    const double sample = LOUDNESS * swell * std::sin(2.0 * PI * PITCH * i / RATE);
    file += Bytes(static_cast<std::uint16_t>(static_cast<std::int16_t>(std::lround(sample))), 2);
  }
  return file;
}

ShutterTone::ShutterTone(bool on) : on_(on) {
  if (!on_) return;
  for (const char* const name : {"paplay", "pw-play", "aplay"}) {
    const std::string player = OnThePath(name);
    if (!player.empty()) players_.push_back(player);
  }
  if (!players_.empty()) file_ = FileInMemory(ToneFile());
  if (file_ < 0) players_.clear();
}

ShutterTone::~ShutterTone() {
  Reap();
  if (file_ >= 0) close(file_);
}

void ShutterTone::Play() {
  if (!on_) return;
  Reap();
  if (playing_.size() >= MOST_AT_ONCE) return;
  while (!players_.empty() && !Begin(players_.front())) GiveUp(players_.front());
  if (players_.empty() && isatty(STDERR_FILENO) != 0) {
    [[maybe_unused]] const ssize_t ignored = write(STDERR_FILENO, "\a", 1);
  }
}

std::vector<pid_t> ShutterTone::Playing() const {
  std::vector<pid_t> players;
  players.reserve(playing_.size());
  for (const auto& playing : playing_) players.push_back(playing.first);
  return players;
}

bool ShutterTone::Begin(const std::string& player) {
  const pid_t process = Start(file_).Run(player);
  if (process > 0) playing_.emplace_back(process, player);
  return process > 0;
}

/// A player may be there without anything to play on.
void ShutterTone::GiveUp(const std::string& player) {
  std::vector<std::string> others;
  std::remove_copy(players_.begin(), players_.end(), std::back_inserter(others), player);
  players_.swap(others);  // the name may be one of those that it is compared with
}

/// Takes note of players that are done.
void ShutterTone::Reap() {
  const auto done = [this](const std::pair<pid_t, std::string>& playing) {
    int status = 0;
    if (waitpid(playing.first, &status, WNOHANG) != playing.first) return false;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) GiveUp(playing.second);
    return true;
  };
  playing_.erase(std::remove_if(playing_.begin(), playing_.end(), done), playing_.end());
}

}  // namespace guided
