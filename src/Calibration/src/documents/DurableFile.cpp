/// Writes files so that they outlast an end of the process, and a loss of power, once a function has
/// returned.
#include "documents/DurableFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace velmora {

namespace {

std::error_code LastError() {
  return {errno, std::generic_category()};
}

/// The file as `flags` open it, with that content on the disk.
std::error_code Write(const std::string& path, int flags, std::string_view bytes) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | flags, 0666);
  if (descriptor < 0) return LastError();
  std::error_code error;
  if (!WriteAll(descriptor, bytes) || fsync(descriptor) != 0) error = LastError();
  if (close(descriptor) != 0 && !error) error = LastError();
  if (error) std::remove(path.c_str());
  return error;
}

}  // namespace

bool WriteAll(int descriptor, std::string_view bytes) {
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count = write(descriptor, bytes.data() + done, bytes.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count == 0) errno = EIO;  // the system says nothing, and no error must not be taken for success
    if (count <= 0) return false;
    done += static_cast<size_t>(count);
  }
  return true;
}

std::error_code WriteNewFile(const std::string& path, std::string_view bytes) {
  return Write(path, O_EXCL, bytes);
}

std::error_code ReplaceFile(const std::string& path, std::string_view bytes) {
  const std::filesystem::path target(path);
  const std::string beside = (target.parent_path() / (".new-" + target.filename().string())).string();
  if (const std::error_code error = Write(beside, O_TRUNC, bytes)) return error;
  if (std::rename(beside.c_str(), path.c_str()) != 0) {
    const std::error_code error = LastError();
    std::remove(beside.c_str());
    return error;
  }
  return SyncFolder(target.has_parent_path() ? target.parent_path().string() : ".");
}

std::error_code SyncFolder(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return LastError();
  std::error_code error;
  // Some file systems keep names without being asked, and know no such wish.
  if (fsync(descriptor) != 0 && errno != EINVAL && errno != ENOTSUP) error = LastError();
  close(descriptor);
  return error;
}

}  // namespace velmora
