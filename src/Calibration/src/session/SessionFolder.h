/// A session's folder as a whole: made, opened, and what is in it besides snapshots.
#pragma once

#include <string>
#include <vector>

#include "session/Decisions.h"
#include "session/FolderLock.h"
#include "velmora/Session.h"

namespace velmora {

/// A folder that this process has locked, and what it holds.
struct OpenFolder {
  std::string path;  ///< absolute
  FolderLock lock;
  SessionSettings settings;
  std::vector<StoredSnapshot> snapshots{};
  Decisions decisions{};
  int next = 1;  ///< the number of the next snapshot
  std::vector<std::string> warnings{};
};

/// These raise what Session::Create and Session::Open do.
OpenFolder MakeFolder(const std::string& folder, const SessionSettings& settings);
OpenFolder ReadFolder(const std::string& folder, const SessionSettings* expected,
                      const SessionOptions& options);

/// Whether there is anything at the path, a link that leads nowhere too.
bool IsThere(const std::string& path);

/// Where the snapshots of a session are.
std::string SnapshotsIn(const std::string& session);

/// Has the decisions on the disk when it returns. Raises std::runtime_error.
void WriteDecisions(const std::string& session, const Decisions& decisions, int next);

/// Why a file of that name cannot be added to a session's own, as a sentence; empty when it can.
std::string FaultOfName(const std::string& name);

}  // namespace velmora
