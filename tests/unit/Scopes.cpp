/// Changes of the process that are taken back, deadlines and children.
#include "unit/Scopes.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "CapturedStdout.h"
#include "Log.h"

namespace unit {

namespace {

std::optional<std::string> Variable(const std::string& name) {
  const char* value = std::getenv(name.c_str());
  if (value == nullptr) return std::nullopt;
  return std::string(value);
}

void SetVariable(const std::string& name, const std::optional<std::string>& value) {
  if (value) {
    setenv(name.c_str(), value->c_str(), 1);
  } else {
    unsetenv(name.c_str());
  }
}

}  // namespace

std::string PrintedBy(const std::function<void()>& action) {
  const support::CapturedStdout captured;
  action();
  return captured.Text();
}

std::string WithDigitsHidden(std::string text) {
  for (char& letter : text) {
    if (letter >= '0' && letter <= '9') letter = '9';
  }
  return text;
}

ScopedVariable::ScopedVariable(const std::string& name, const std::optional<std::string>& value)
    : name_(name), earlier_(Variable(name)) {
  SetVariable(name_, value);
}

ScopedVariable::~ScopedVariable() {
  SetVariable(name_, earlier_);
}

ScopedCurrentFolder::ScopedCurrentFolder(const std::string& path)
    : earlier_(std::filesystem::current_path().string()) {
  std::filesystem::current_path(path);
}

ScopedCurrentFolder::~ScopedCurrentFolder() {
  std::error_code ignored;
  std::filesystem::current_path(earlier_, ignored);
}

ScopedLogLevel::ScopedLogLevel(int level) : earlier_(Log::LOG_LEVEL) {
  Log::LOG_LEVEL = level;
}

ScopedLogLevel::~ScopedLogLevel() {
  Log::LOG_LEVEL = earlier_;
}

bool Eventually(const std::function<bool()>& condition, std::chrono::seconds deadline) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::yield();
  }
  return true;
}

int InChild(const std::function<int()>& action) {
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child == 0) {
    int result = 125;
    try {
      result = action();
    } catch (const std::exception&) {
      result = 126;
    }
    _exit(result);
  }
  int state = 0;
  if (waitpid(child, &state, 0) != child) throw std::runtime_error("cannot wait for the child");
  return WIFEXITED(state) ? WEXITSTATUS(state) : -WTERMSIG(state);
}

}  // namespace unit
