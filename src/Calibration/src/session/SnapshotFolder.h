/// The folder of a session's snapshots, in which each has a folder of its own.
#pragma once

#include <string>
#include <vector>

#include "velmora/Session.h"

namespace velmora {

/// Writes snapshots whole, reads them, deletes them. A snapshot is a folder "000123"; while it is written it
/// is ".new-000123", while it is deleted ".gone-000123". Keeps nothing but the path: it may be used from
/// several threads at once, for different snapshots.
class SnapshotFolder {
 public:
  explicit SnapshotFolder(std::string path) : path_(std::move(path)) {}

  /// Removes what was being written or deleted when a process ended; what cannot be removed stays and does no
  /// harm.
  void Sweep() const;

  /// All that are there, by their numbers, with their faults. `checkContent`: whether images are read.
  std::vector<StoredSnapshot> Read(const SessionSettings& settings, bool checkContent) const;

  /// Has the snapshot on the disk, whole, when it returns. Raises std::runtime_error, with nothing left
  /// behind.
  StoredSnapshot Write(int number, const SessionSnapshot& snapshot, const SessionSettings& settings) const;

  /// Deletes it: at once as to its number, then its files, of which some may stay until the next Sweep.
  /// Raises std::runtime_error when it stays.
  void Delete(int number) const;

  /// Where the snapshot is.
  std::string PathOf(int number) const;

 private:
  void WriteNew(const std::string& folder, StoredSnapshot& snapshot, const SessionSnapshot& given,
                const SessionSettings& settings) const;
  StoredSnapshot ReadOne(int number, const SessionSettings& settings, bool checkContent) const;

  std::string path_;
};

}  // namespace velmora
