/// Runs a program as a child process.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "TemporaryFolder.h"

namespace support {

/// A running program with its standard input at its end; what it prints is kept in files and can be read
/// while it runs. The destructor kills it, together with the processes that it started and left in its
/// process group.
///
/// One thread at a time may use a process. On Linux the child also ends when the thread that started it does.
class Process {
 public:
  using Milliseconds = std::chrono::milliseconds;

  struct Options {
    /// Variables to set over those of this process.
    std::map<std::string, std::string> environment;
    /// Variables to take away.
    std::vector<std::string> unset;
    /// Working folder; empty: that of this process.
    std::string folder;
  };

  /// What WaitForExit returns when the deadline came first.
  static constexpr int STILL_RUNNING = -1000;

  /// Starts a program, searched on the PATH of this process when it has no slash. Throws std::runtime_error
  /// when it cannot be started.
  explicit Process(const std::vector<std::string>& arguments);
  Process(const std::vector<std::string>& arguments, const Options& options);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  /// The exit code; minus the signal's number when a signal ended it; STILL_RUNNING at the deadline.
  int WaitForExit(Milliseconds deadline);

  /// True as soon as standard output or standard error contains the text; false when the deadline passes or
  /// the program ends without it.
  bool WaitForOutput(const std::string& text, Milliseconds deadline);

  bool Running();
  pid_t Id() const { return id_; }

  /// Sends a signal to the program alone.
  void Signal(int number);
  /// Kills the program and its process group, and waits for the program's end.
  void Kill();

  /// What it printed on standard output and standard error so far.
  std::string Output() const;
  std::string Errors() const;

 private:
  void Start(const std::vector<std::string>& arguments, const Options& options);
  bool Reap(bool block);

  TemporaryFolder folder_;
  pid_t id_ = -1;
  bool ended_ = false;
  int result_ = STILL_RUNNING;
};

}  // namespace support
