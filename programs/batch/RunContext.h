/// What a run of the headless tool goes by besides its arguments.
#pragma once

#include <stdexcept>

#include "common/Interruption.h"

namespace batch {

class KeptSession;

/// Raised when the user asked the program to end. The text says, as a sentence, what is kept.
class Interrupted : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct RunContext {
  const common::Interruption* interruption = nullptr;  ///< null: nobody interrupts
  KeptSession* session = nullptr;                      ///< null: nothing is kept

  bool IsInterrupted() const { return interruption != nullptr && interruption->Requested(); }
  /// Raises Interrupted when the user has asked for the end.
  void EndIfAsked() const;
};

}  // namespace batch
