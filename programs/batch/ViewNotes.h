/// What the last result says of each view of a session.
#pragma once

#include <map>
#include <string>

namespace batch {

struct ViewNote {
  double rms = -1.0;   ///< pixels, over all cameras; negative: the result has none
  std::string reason;  ///< why it was not used; empty when it was
};

/// By the numbers of snapshots. Raises InputError when the file cannot be written.
void WriteNotes(const std::map<int, ViewNote>& notes, const std::string& path);

/// Empty when there is no such file, or none that makes sense.
std::map<int, ViewNote> ReadNotes(const std::string& path);

}  // namespace batch
