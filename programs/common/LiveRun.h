/// Runs a loop over frames that are read on a thread of their own.
#pragma once

#include <cstdlib>
#include <ostream>
#include <utility>

#include "common/FrameReader.h"
#include "common/Messages.h"

namespace common {

/// The status that `loop` ends with over a reader of the source. An exception that ends it is reported in one
/// line, with the status `failed`; a reader that is stuck in its source ends the process without waiting for
/// it.
template <typename Reader, typename Loop>
int RunOver(typename Reader::Source source, Delivery delivery, const Loop& loop, int failed,
            std::ostream& err) {
  constexpr std::chrono::milliseconds QUIT_GRACE{500};
  Reader reader(std::move(source), delivery);
  int status = failed;
  try {
    status = loop(reader);
  } catch (const std::exception& fault) {
    PrintError(err, fault);
  }
  if (!reader.Stop(QUIT_GRACE)) std::_Exit(status);
  return status;
}

}  // namespace common
