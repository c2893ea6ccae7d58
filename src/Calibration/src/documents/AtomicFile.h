/// Writes a text file so that an earlier one stays whole until the new one is complete.
#pragma once

#include <string>

namespace velmora {

enum class WriteOutcome {
  Written,
  NotOpened,  ///< the path cannot be opened for writing; nothing changed
  Failed,     ///< opened, but not all could be written; an earlier file is as it was, unless written directly
};

/// Writes beside the target and renames; owner, group and rights of an earlier file are kept where the system
/// lets them, other hard links to it keep the earlier content. Symbolic links are followed.
///
/// What cannot be replaced is opened, cut to nothing and written directly: targets that are no regular files
/// (a pipe), what the process has open (/dev/stdout), files in folders that take no new ones, mount points,
/// and files that may be written to but not replaced.
WriteOutcome WriteFileAtomically(const std::string& path, const std::string& text);

}  // namespace velmora
