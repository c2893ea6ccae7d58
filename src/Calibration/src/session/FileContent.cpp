/// Reads a file whole.
#include "session/FileContent.h"

#include <cerrno>
#include <filesystem>
#include <fstream>

namespace velmora {

std::string FileContent(const std::string& path, std::error_code& error) {
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error) return "";
  std::ifstream file(path, std::ios::binary);
  std::string bytes(static_cast<size_t>(size), '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(size));
  if (!file) error = std::make_error_code(std::errc::io_error);
  return error ? "" : bytes;
}

}  // namespace velmora
