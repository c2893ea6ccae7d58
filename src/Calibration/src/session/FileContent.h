/// Reads a file whole.
#pragma once

#include <string>
#include <system_error>

namespace velmora {

/// The bytes of a regular file. `error` says why it could not be read; else it is cleared.
std::string FileContent(const std::string& path, std::error_code& error);

}  // namespace velmora
