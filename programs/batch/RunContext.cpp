/// What a run of the headless tool goes by besides its arguments.
#include "batch/RunContext.h"

#include "batch/KeptSession.h"

namespace batch {

void RunContext::EndIfAsked() const {
  if (!IsInterrupted()) return;
  throw Interrupted(session != nullptr ? "Interrupted: " + session->Whereabouts() : "Interrupted.");
}

}  // namespace batch
