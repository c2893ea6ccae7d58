/// Keeps a folder to one program at a time.
#pragma once

#include <sys/types.h>

#include <string>

namespace velmora {

/// Holds a lock file while it lives. The system's lock on the file is what counts: it ends with the process,
/// however that ends, so that what is left of a dead one is taken over. The file tells the process number.
class FolderLock {
 public:
  /// Locks the file, which is made if it is not there. Raises std::runtime_error "WHAT is in use by process
  /// N." when that is taken. A file that can only be read is locked all the same; where there is none and
  /// none can be made there is nothing that two could write at once, and nothing is locked.
  FolderLock(const std::string& path, const std::string& what);
  ~FolderLock();
  FolderLock(FolderLock&& other) noexcept;
  FolderLock& operator=(FolderLock&&) = delete;
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  void Take(const std::string& path, const std::string& what) const;

  int descriptor_ = -1;
  pid_t owner_;
};

}  // namespace velmora
