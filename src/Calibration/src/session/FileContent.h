/// Reads a file from its beginning to its end.
#pragma once

#include <cstdint>
#include <string>
#include <system_error>

namespace velmora {

/// The bytes of a regular file. `error` says why it could not be read; else it is cleared.
std::string FileContent(const std::string& path, std::error_code& error);

/// The hash of its content, which is never in memory as a whole.
std::uint64_t FileHash(const std::string& path, std::error_code& error);

}  // namespace velmora
