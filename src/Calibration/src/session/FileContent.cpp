/// Reads a file from its beginning to its end.
#include "session/FileContent.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <vector>

#include "session/ContentHash.h"

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

std::uint64_t FileHash(const std::string& path, std::error_code& error) {
  constexpr std::streamsize PIECE = 1 << 20;
  error.clear();
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) error = {errno, std::generic_category()};
  std::vector<char> piece(static_cast<size_t>(PIECE));
  std::uint64_t hash = HASH_OF_NOTHING;
  while (file.good()) {
    file.read(piece.data(), PIECE);
    hash = ContentHash({piece.data(), static_cast<size_t>(file.gcount())}, hash);
  }
  if (!error && !file.eof()) error = std::make_error_code(std::errc::io_error);
  return hash;
}

}  // namespace velmora
