/// Ends a program in order when it is asked to end.
#include "common/Interruption.h"

#include <atomic>

namespace common {

namespace {

/// The signal that came; 0 for none.
std::atomic<int> came{0};
static_assert(std::atomic<int>::is_always_lock_free, "a handler may use nothing that could wait");

/// Called by the system at any moment, on any thread: it may do hardly anything.
void Note(int signal) {
  came = signal;
  struct sigaction usual {};
  usual.sa_handler = SIG_DFL;
  sigaction(SIGINT, &usual, nullptr);
  sigaction(SIGTERM, &usual, nullptr);
}

void NoteUnlessIgnored(int signal, struct sigaction& former) {
  sigaction(signal, nullptr, &former);
  if (former.sa_handler == SIG_IGN) return;
  struct sigaction noted {};
  noted.sa_handler = Note;
  noted.sa_flags = SA_RESTART;  // what reads or writes goes on: its caller asks when it is done
  sigaddset(&noted.sa_mask, SIGINT);
  sigaddset(&noted.sa_mask, SIGTERM);
  sigaction(signal, &noted, nullptr);
}

}  // namespace

Interruption::Interruption() {
  came = 0;
  NoteUnlessIgnored(SIGINT, formerInterrupt_);
  NoteUnlessIgnored(SIGTERM, formerTerminate_);
}

Interruption::~Interruption() {
  sigaction(SIGINT, &formerInterrupt_, nullptr);
  sigaction(SIGTERM, &formerTerminate_, nullptr);
}

bool Interruption::Requested() const {
  return came != 0;
}

int Interruption::ExitStatus() const {
  constexpr int BY_SIGNAL = 128;
  const int signal = came;
  return signal == 0 ? 0 : BY_SIGNAL + signal;
}

}  // namespace common
