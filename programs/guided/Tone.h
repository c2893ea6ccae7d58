/// A short tone, by whatever the machine has to play it.
#pragma once

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace guided {

/// A sound file (WAV) of the tone.
std::string ToneFile();

/// Plays the tone with a player of the machine (paplay, pw-play, aplay: the first on the PATH), else rings
/// the terminal's bell. Never waits for the player and never fails: a player that fails gives way to the
/// next. One thread at a time may use it.
class ShutterTone {
 public:
  explicit ShutterTone(bool on = true);
  ~ShutterTone();
  ShutterTone(const ShutterTone&) = delete;
  ShutterTone& operator=(const ShutterTone&) = delete;

  void Play();

  /// The players that were started, but for those that were found to be done.
  std::vector<pid_t> Playing() const;

 private:
  void Reap();
  bool Begin(const std::string& player);
  void GiveUp(const std::string& player);

  const bool on_;
  int file_ = -1;                     ///< the tone, in memory
  std::vector<std::string> players_;  ///< those that have not failed, the next to be used first
  std::vector<std::pair<pid_t, std::string>> playing_;
};

}  // namespace guided
