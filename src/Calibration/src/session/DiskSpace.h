/// What a session takes of its disk, and what is left.
#pragma once

#include <cstdint>
#include <string>

#include "velmora/Session.h"

namespace velmora {

/// The sizes of all files in the folder and below.
std::uint64_t BytesIn(const std::string& folder);

/// What this user may still write to the disk that the folder is on. Raises std::runtime_error.
std::uint64_t BytesFreeAt(const std::string& folder);

/// What a snapshot may take at the most, for want of any.
std::uint64_t GuessedBytes(const SessionSettings& settings);

/// A sentence when `free` is less than that number of snapshots, of `each` bytes, need; else empty.
std::string WarningOf(std::uint64_t free, std::uint64_t each, int snapshots);

}  // namespace velmora
