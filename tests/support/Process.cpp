/// Starts child processes, watches their output and their end.
#include "Process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(__linux__)
#include <sys/prctl.h>
#endif

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <thread>

extern char** environ;  // NOLINT

namespace support {

namespace {

constexpr Process::Milliseconds POLL_INTERVAL(3);

/// Texts as the null-terminated array that exec takes.
std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(&text[0]);
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> Environment(const Process::Options& options) {
  std::vector<std::string> variables;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string variable = *entry;
    const std::string name = variable.substr(0, variable.find('='));
    const bool unset = std::find(options.unset.begin(), options.unset.end(), name) != options.unset.end();
    if (!unset && options.environment.count(name) == 0) variables.push_back(variable);
  }
  for (const auto& variable : options.environment)
    variables.push_back(variable.first + "=" + variable.second);
  return variables;
}

bool Redirect(const char* path, int flags, int descriptor) {
  const int file = open(path, flags, 0600);
  if (file < 0 || dup2(file, descriptor) < 0) return false;
  if (file != descriptor) close(file);
  return true;
}

/// What the child does between fork and exec: nothing here allocates or locks.
struct Launch {
  char* const* arguments;
  char** variables;
  const char* folder;
  const char* output;
  const char* errors;
  int report;

  [[noreturn]] void Run() const {
    setpgid(0, 0);
#if defined(__linux__)
    prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
    const int writing = O_WRONLY | O_CREAT | O_TRUNC | O_APPEND;
    if (Redirect("/dev/null", O_RDONLY, STDIN_FILENO) && Redirect(output, writing, STDOUT_FILENO) &&
        Redirect(errors, writing, STDERR_FILENO) && (*folder == '\0' || chdir(folder) == 0)) {
      environ = variables;
      execvp(arguments[0], arguments);
    }
    const int fault = errno;
    const ssize_t written = write(report, &fault, sizeof fault);
    _exit(written == sizeof fault ? 127 : 126);
  }
};

/// The error number that the child reports, 0 when its program started.
int ReadReport(int report) {
  int fault = 0;
  ssize_t count = 0;
  do {
    count = read(report, &fault, sizeof fault);
  } while (count < 0 && errno == EINTR);
  return count == sizeof fault ? fault : 0;
}

}  // namespace

Process::Process(const std::vector<std::string>& arguments) {
  Start(arguments, Options());
}

Process::Process(const std::vector<std::string>& arguments, const Options& options) {
  Start(arguments, options);
}

Process::~Process() {
  Kill();
}

void Process::Start(const std::vector<std::string>& arguments, const Options& options) {
  if (arguments.empty()) throw std::runtime_error("a process needs a program");
  std::vector<std::string> words = arguments;
  std::vector<std::string> variables = Environment(options);
  const std::vector<char*> wordPointers = Pointers(words);
  std::vector<char*> variablePointers = Pointers(variables);
  const std::string output = folder_.File("stdout");
  const std::string errors = folder_.File("stderr");
  WriteText(output, "");
  WriteText(errors, "");
  int report[2];
  if (pipe(report) != 0) throw std::runtime_error("cannot make a pipe");
  fcntl(report[0], F_SETFD, FD_CLOEXEC);
  fcntl(report[1], F_SETFD, FD_CLOEXEC);
  const Launch launch = {wordPointers.data(), variablePointers.data(), options.folder.c_str(),
                         output.c_str(),      errors.c_str(),          report[1]};
  id_ = fork();
  if (id_ == 0) launch.Run();
  close(report[1]);
  const int fault = id_ < 0 ? errno : ReadReport(report[0]);
  close(report[0]);
  if (id_ < 0 || fault != 0) {
    if (id_ > 0) Reap(true);
    throw std::runtime_error("cannot start \"" + arguments[0] + "\": " + std::strerror(fault));
  }
}

bool Process::Reap(bool block) {
  if (ended_) return true;
  int status = 0;
  pid_t reaped = 0;
  do {
    reaped = waitpid(id_, &status, block ? 0 : WNOHANG);
  } while (reaped < 0 && errno == EINTR);
  if (reaped != id_) return false;
  ended_ = true;
  result_ = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return true;
}

int Process::WaitForExit(Milliseconds deadline) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  while (!Reap(false)) {
    if (std::chrono::steady_clock::now() >= end) return STILL_RUNNING;
    std::this_thread::sleep_for(POLL_INTERVAL);
  }
  return result_;
}

bool Process::WaitForOutput(const std::string& text, Milliseconds deadline) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  while (true) {
    const bool last = Reap(false) || std::chrono::steady_clock::now() >= end;
    if (Output().find(text) != std::string::npos || Errors().find(text) != std::string::npos) return true;
    if (last) return false;
    std::this_thread::sleep_for(POLL_INTERVAL);
  }
}

bool Process::Running() {
  return !Reap(false);
}

void Process::Signal(int number) {
  if (!Reap(false)) kill(id_, number);
}

void Process::Kill() {
  if (id_ <= 0) return;
  // As long as the program is not waited for, its id, and so its group's, belongs to it.
  if (!ended_) {
    kill(-id_, SIGKILL);
    kill(id_, SIGKILL);
    Reap(true);
  }
}

std::string Process::Output() const {
  return ReadText(folder_.File("stdout"));
}

std::string Process::Errors() const {
  return ReadText(folder_.File("stderr"));
}

}  // namespace support
