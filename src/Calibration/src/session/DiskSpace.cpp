/// What a session takes of its disk, and what is left.
#include "session/DiskSpace.h"

#include <filesystem>

#include "session/Reasons.h"

namespace velmora {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t MEGABYTE = 1000000;

}  // namespace

std::uint64_t BytesIn(const std::string& folder) {
  std::uint64_t bytes = 0;
  std::error_code error;
  constexpr auto OPTIONS = fs::directory_options::skip_permission_denied;
  for (fs::recursive_directory_iterator entry(folder, OPTIONS, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code gone;  // while it was looked at
    if (!entry->is_regular_file(gone)) continue;
    const std::uintmax_t size = entry->file_size(gone);
    if (!gone) bytes += size;
  }
  return bytes;
}

std::uint64_t BytesFreeAt(const std::string& folder) {
  std::error_code error;
  const fs::space_info space = fs::space(folder, error);
  if (error) Refuse("Cannot tell how much is free at " + Quoted(folder), error);
  return space.available;
}

std::uint64_t GuessedBytes(const SessionSettings& settings) {
  // Numbers with all their digits, five for each point; images in colour, hardly compressed.
  constexpr std::uint64_t BYTES_OF_POINT = 200;
  constexpr std::uint64_t BYTES_OF_PIXEL = 3;
  std::uint64_t bytes = 0;
  for (const cv::Size& size : settings.imageSizes) {
    bytes += static_cast<std::uint64_t>(settings.grid.width) *
             static_cast<std::uint64_t>(settings.grid.height) * BYTES_OF_POINT;
    if (!settings.keepsImages) continue;
    bytes +=
        static_cast<std::uint64_t>(size.width) * static_cast<std::uint64_t>(size.height) * BYTES_OF_PIXEL;
  }
  return bytes;
}

std::string WarningOf(std::uint64_t free, std::uint64_t each, int snapshots) {
  if (each == 0 || snapshots < 1) return "";
  const std::uint64_t fitting = free / each;
  if (fitting >= static_cast<std::uint64_t>(snapshots)) return "";
  return "Only " + std::to_string(free / MEGABYTE) + " MB are free on the session's disk: enough for about " +
         std::to_string(fitting) + (fitting == 1 ? " snapshot." : " snapshots.");
}

}  // namespace velmora
