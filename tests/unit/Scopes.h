/// What unit tests share: captured output, changes of the process that are taken back, deadlines, children.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace unit {

/// What the action prints on standard output.
std::string PrintedBy(const std::function<void()>& action);

/// The text with a 9 in place of each digit.
std::string WithDigitsHidden(std::string text);

/// Sets an environment variable, or removes it without a value, until the end of the scope.
class ScopedVariable {
 public:
  ScopedVariable(const std::string& name, const std::optional<std::string>& value);
  ~ScopedVariable();
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  std::string name_;
  std::optional<std::string> earlier_;
};

/// No display at all until the end of the scope.
struct ScopedNoDisplay {
  ScopedVariable x{"DISPLAY", std::nullopt};
  ScopedVariable wayland{"WAYLAND_DISPLAY", std::nullopt};
  ScopedVariable platform{"QT_QPA_PLATFORM", std::nullopt};
};

/// Changes the current folder until the end of the scope.
class ScopedCurrentFolder {
 public:
  explicit ScopedCurrentFolder(const std::string& path);
  ~ScopedCurrentFolder();
  ScopedCurrentFolder(const ScopedCurrentFolder&) = delete;
  ScopedCurrentFolder& operator=(const ScopedCurrentFolder&) = delete;

 private:
  std::string earlier_;
};

/// Changes the log's level until the end of the scope.
class ScopedLogLevel {
 public:
  explicit ScopedLogLevel(int level);
  ~ScopedLogLevel();
  ScopedLogLevel(const ScopedLogLevel&) = delete;
  ScopedLogLevel& operator=(const ScopedLogLevel&) = delete;

 private:
  int earlier_;
};

/// True as soon as the condition holds, false when it does not before the deadline.
bool Eventually(const std::function<bool()>& condition,
                std::chrono::seconds deadline = std::chrono::seconds(120));

/// Runs the action in a child process that ends with its result, without exit handlers and without flushing.
/// Returns the result; minus the signal's number when a signal ended the child.
int InChild(const std::function<int()>& action);

}  // namespace unit
