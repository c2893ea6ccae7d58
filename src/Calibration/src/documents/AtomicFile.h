/// Writes a text file so that an earlier one stays whole until the new one is complete.
#pragma once

#include <string>

enum class WriteOutcome {
  Written,
  NotOpened,  ///< the path cannot be opened for writing; nothing changed
  Failed,     ///< opened, but not all could be written; an earlier file is as it was
};

/// Writes beside the target and renames. Symbolic links are followed; targets that are no regular files (a
/// pipe, /dev/stdout) and files in folders that take no new ones are written directly.
WriteOutcome WriteFileAtomically(const std::string& path, const std::string& text);
