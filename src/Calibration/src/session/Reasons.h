/// Says in plain English why a file could not be written or read.
#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace velmora {

/// "the disk is full" and the like.
std::string ReasonOf(const std::error_code& error);

/// Raises std::runtime_error with "WHAT: REASON."
[[noreturn]] void Refuse(const std::string& what, const std::error_code& error);

inline std::error_code LastSystemError() {
  return {errno, std::generic_category()};
}

/// The path, or another text, in quotation marks.
inline std::string Quoted(const std::string& text) {
  return "\"" + text + "\"";
}

}  // namespace velmora
