/// What the interactive loops have in common: keys, waiting, the texts around a calibration.
#pragma once

#include <chrono>
#include <opencv2/core.hpp>
#include <ostream>
#include <string>

#include "Calibrator.h"
#include "common/Messages.h"
#include "common/Screen.h"

namespace app {

/// What a loop needs to know of the settings.
struct LoopOptions {
  int model = Calibrator::MODEL_RATIONAL;
  std::string output;      ///< path of the result file, without its extension
  bool videoFile = false;  ///< play at the pace of a recording
  cv::Size size;           ///< of the picture that is shown while no frame has come yet
  std::string sourceName;  ///< what messages call the source
};

/// Shows frames with what was detected in them and acts on three keys: p takes a snapshot, ENTER calibrates
/// and starts over, q quits.
///
/// A source that has ended or pauses leaves its last frame on the screen, and the keys go on working on it. A
/// source that has delivered nothing yet is waited for behind a black picture that says so.
class InteractiveLoop {
 public:
  virtual ~InteractiveLoop() = default;

  /// Runs until q is pressed (1) or the source turns out to deliver nothing at all (-1); the value is the
  /// exit status of the application.
  int Run();

 protected:
  /// What the kinds of loop differ in.
  struct Kind {
    const char* name;   ///< in messages
    int recordingWait;  ///< milliseconds for a key, per frame of a recording
  };

  InteractiveLoop(const Kind& kind, common::Screen& screen, const LoopOptions& options, std::ostream& out,
                  std::ostream& err);

  /// Takes the next frame over; false when none came in that time.
  virtual bool TakeFrame(std::chrono::milliseconds patience) = 0;
  /// True when the source cannot deliver even its first frame.
  virtual bool SourceFailed() const = 0;
  /// True when a frame was taken over at some time.
  virtual bool HasFrame() const = 0;
  /// Detects in the last frame anew and shows it.
  virtual void DetectAndShow() = 0;
  /// Shows once more what was shown last of the last frame.
  virtual void ShowAgain() = 0;
  /// Keeps the last detection, if any, and tells so.
  virtual void TakeSnapshot() = 0;
  /// Computes, tells the error, saves and starts over.
  virtual void ComputeAndSave() = 0;

  void PrintTotal(bool added, int total);
  void PrintError(float error);
  /// What is shown is no longer true.
  void SetOutdated() { outdated_ = true; }

  static const char* const WINDOW;  ///< of the only or left camera

  common::Screen& screen_;
  const LoopOptions options_;
  std::ostream& out_;
  std::ostream& err_;

 private:
  enum class Arrival { NewFrame, Nothing, Broken };

  Arrival ShowNext();
  void ShowWaiting();
  void Refresh();
  void Calibrate();
  void PrintModel();

  const Kind kind_;
  bool shown_ = false;     ///< something is on the screen
  bool outdated_ = false;  ///< a key has changed what the picture tells, or closed the window
  int idleTurns_ = 0;
};

}  // namespace app
