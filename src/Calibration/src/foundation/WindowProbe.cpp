/// Lets a child process try whether the window library can work.
#include "foundation/WindowProbe.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>

namespace velmora {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

/// A pipe from the program, which it has as its standard output.
class AnswerPipe {
 public:
  AnswerPipe() { valid_ = pipe2(ends_, O_CLOEXEC) == 0; }
  ~AnswerPipe() {
    if (!valid_) return;
    close(ends_[0]);
    CloseWriting();
  }
  AnswerPipe(const AnswerPipe&) = delete;
  AnswerPipe& operator=(const AnswerPipe&) = delete;

  bool Valid() const { return valid_; }
  int Reading() const { return ends_[0]; }
  int Writing() const { return ends_[1]; }
  void CloseWriting() {
    if (ends_[1] >= 0) close(ends_[1]);
    ends_[1] = -1;
  }

 private:
  int ends_[2] = {-1, -1};
  bool valid_ = false;
};

/// What the program finds when it starts: nothing to read, its answer as standard output, no error output,
/// and signals as they are by default, whatever this process does with them.
class Launch {
 public:
  explicit Launch(int answer) {
    posix_spawn_file_actions_init(&files_);
    posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files_, answer, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&files_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawnattr_init(&attributes_);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes_, &none);
    sigset_t all;
    sigfillset(&all);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~Launch() {
    posix_spawn_file_actions_destroy(&files_);
    posix_spawnattr_destroy(&attributes_);
  }
  Launch(const Launch&) = delete;
  Launch& operator=(const Launch&) = delete;

  /// -1 when the program cannot be started.
  pid_t Start(const std::string& program) const {
    std::string name = program;
    char* const arguments[] = {&name[0], nullptr};
    pid_t child = -1;
    return posix_spawn(&child, program.c_str(), &files_, &attributes_, arguments, ::environ) == 0 ? child
                                                                                                  : -1;
  }

 private:
  posix_spawn_file_actions_t files_;
  posix_spawnattr_t attributes_;
};

/// Everything that the program says, up to its end or to the word that it works.
ProbeAnswer Listen(int pipe, Clock::time_point end) {
  ProbeAnswer answer = ProbeAnswer::Unknown;
  while (true) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
    pollfd watched = {pipe, POLLIN, 0};
    const int ready = left > 0 ? poll(&watched, 1, static_cast<int>(left)) : 0;
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return ProbeAnswer::Silent;
    char word = 0;
    const ssize_t count = read(pipe, &word, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return answer;
    if (word == WINDOW_PROBE_RUNS) answer = ProbeAnswer::Fails;  // unless it says more
    if (word == WINDOW_PROBE_WORKS) return ProbeAnswer::Works;
  }
}

/// Somebody else in the process may have waited for the child already; then its number is not ours any more.
void End(pid_t child) {
  int status = 0;
  if (waitpid(child, &status, WNOHANG) != 0) return;
  kill(child, SIGKILL);
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
}

/// The folder of the library that holds this function; empty when it is part of a program.
fs::path FolderOfLibrary() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&FindWindowProbe), &info) == 0 || info.dli_fname == nullptr) return {};
  std::error_code ignored;
  return fs::canonical(info.dli_fname, ignored).parent_path();
}

fs::path FolderOfProgram() {
  std::error_code ignored;
  return fs::read_symlink("/proc/self/exe", ignored).parent_path();
}

}  // namespace

std::string FindWindowProbe() {
  for (const fs::path& folder : {FolderOfLibrary(), FolderOfProgram().parent_path() / "lib"}) {
    const fs::path program = folder / "velmora" / WINDOW_PROBE;
    if (folder.is_absolute() && access(program.c_str(), X_OK) == 0) return program.string();
  }
  return "";
}

ProbeAnswer AskWindowProbe(const std::string& program, std::chrono::milliseconds patience) {
  const auto end = Clock::now() + patience;
  AnswerPipe pipe;
  if (program.empty() || !pipe.Valid()) return ProbeAnswer::Unknown;
  const pid_t child = Launch(pipe.Writing()).Start(program);
  if (child < 0) return ProbeAnswer::Unknown;
  pipe.CloseWriting();
  const ProbeAnswer answer = Listen(pipe.Reading(), end);
  End(child);
  return answer;
}

}  // namespace velmora
