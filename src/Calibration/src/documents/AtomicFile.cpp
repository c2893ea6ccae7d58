/// Writes a text file so that an earlier one stays whole until the new one is complete.
#include "documents/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "documents/DurableFile.h"

namespace velmora {

namespace {

namespace fs = std::filesystem;

WriteOutcome WriteDirectly(const std::string& path, const std::string& text) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (descriptor < 0) return WriteOutcome::NotOpened;
  const bool written = WriteAll(descriptor, text);
  const bool closed = close(descriptor) == 0;
  return written && closed ? WriteOutcome::Written : WriteOutcome::Failed;
}

/// Opens a new file beside the target, with a name that no other writer uses. Negative when the folder takes
/// none.
int CreateBeside(const std::string& target, std::string& beside) {
  static std::atomic<unsigned> counter{0};
  beside = target + "." + std::to_string(getpid()) + "-" + std::to_string(counter++) + ".tmp";
  return open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
}

/// Gives the new file owner, group and rights of the earlier one, as far as the system lets it: a file system
/// whose files all belong to one user refuses that, and needs it not. False for other failures.
bool KeepRightsOf(const std::string& target, int descriptor) {
  constexpr mode_t RIGHTS = 07777;
  struct stat earlier {};
  struct stat now {};
  if (stat(target.c_str(), &earlier) != 0) return true;
  if (fchown(descriptor, earlier.st_uid, earlier.st_gid) != 0 &&
      fchown(descriptor, static_cast<uid_t>(-1), earlier.st_gid) != 0) {
    errno = 0;  // only the superuser may give files away, and only members a group
  }
  if (fchmod(descriptor, earlier.st_mode & RIGHTS) == 0 || errno == EPERM || errno == ENOTSUP) return true;
  return fstat(descriptor, &now) == 0 && (now.st_mode & RIGHTS) == (earlier.st_mode & RIGHTS);
}

/// True for a link that the kernel makes up, as of an open file: where it leads is not told by its text.
bool IsKernelsOwn(const fs::path& link) {
  std::error_code error;
  const fs::path folder = fs::canonical(link.parent_path(), error);
  return !error && folder.string().rfind("/proc/", 0) == 0;
}

/// Follows symbolic links, so that a link stays a link; one that leads nowhere yet is followed as well. The
/// result is a link only when they lead in a circle, or is the kernel's own.
std::string Resolved(const std::string& path) {
  constexpr int MOST_LINKS = 40;
  std::error_code error;
  fs::path target = path;
  for (int links = 0; links < MOST_LINKS && fs::is_symlink(target, error) && !IsKernelsOwn(target); ++links) {
    const fs::path next = fs::read_symlink(target, error);
    if (error) break;
    target = target.parent_path() / next;
  }
  return target.string();
}

}  // namespace

WriteOutcome WriteFileAtomically(const std::string& path, const std::string& text) {
  const std::string target = Resolved(path);
  std::error_code error;
  if (target.empty()) return WriteOutcome::NotOpened;
  if (fs::is_symlink(target, error)) {
    return IsKernelsOwn(target) ? WriteDirectly(path, text) : WriteOutcome::NotOpened;
  }
  const bool exists = fs::exists(target, error);
  if (exists && !fs::is_regular_file(target, error)) return WriteDirectly(target, text);
  // A rename would replace a file that may not be written to.
  if (exists && access(target.c_str(), W_OK) != 0) return WriteOutcome::NotOpened;

  std::string beside;
  const int descriptor = CreateBeside(target, beside);
  if (descriptor < 0) return WriteDirectly(target, text);
  bool done = WriteAll(descriptor, text) && KeepRightsOf(target, descriptor);
  done = fsync(descriptor) == 0 && done;
  done = close(descriptor) == 0 && done;
  if (done && std::rename(beside.c_str(), target.c_str()) == 0) return WriteOutcome::Written;
  std::remove(beside.c_str());
  // A target may take new content and yet no other file in its place: a mount point, somebody else's file in
  // a shared folder.
  return done ? WriteDirectly(target, text) : WriteOutcome::Failed;
}

}  // namespace velmora
