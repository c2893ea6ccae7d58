/// A disk that refuses, or ends the process, at a step that a test chooses.
#pragma once

namespace unit {

/// What becomes of a step at which a disk has something to do: bringing a file or folder to it, renaming.
class DiskSteps {
 public:
  /// Until the end of the scope the step of that number (from 1) fails in this process with that error.
  static DiskSteps FailAt(int step, int error) { return {step, error}; }
  /// At that step the process ends as by kill -9.
  static DiskSteps KillAt(int step) { return {step, 0}; }

  ~DiskSteps();
  DiskSteps(const DiskSteps&) = delete;
  DiskSteps& operator=(const DiskSteps&) = delete;

  /// Whether the step came.
  bool Came() const;

 private:
  DiskSteps(int step, int error);
};

}  // namespace unit
