/// A session's folder as a whole: made, opened, and what is in it besides snapshots.
#include "session/SessionFolder.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "documents/DurableFile.h"
#include "session/DecisionFile.h"
#include "session/FileContent.h"
#include "session/Reasons.h"
#include "session/SettingsFile.h"
#include "session/SnapshotFolder.h"
#include "session/UnfinishedFolder.h"
#include "session/UtcTime.h"

namespace velmora {

namespace {

namespace fs = std::filesystem;

const char* const SETTINGS = "session.json";
const char* const DECISIONS = "decisions.json";
const char* const DAMAGED_DECISIONS = "decisions-damaged.json";
const char* const LOCK = "lock";
const char* const SNAPSHOTS = "snapshots";

/// Absolute, so that it stays the same wherever the process goes, and without a slash at its end.
std::string Absolute(const std::string& folder) {
  if (folder.empty()) throw std::invalid_argument("The folder of a session needs a name.");
  fs::path path = fs::absolute(folder).lexically_normal();
  if (!path.has_filename()) path = path.parent_path();
  return path.string();
}

std::string SessionNamed(const std::string& path) {
  return "The session " + Quoted(path);
}

/// What session.json says. Nothing is changed.
SessionSettings ReadSettings(const std::string& path) {
  std::error_code error;
  if (!fs::exists(path, error)) throw std::runtime_error("There is no session " + Quoted(path) + ".");
  if (!fs::is_directory(path, error)) throw std::runtime_error(Quoted(path) + " is no folder.");
  const std::string file = path + "/" + SETTINGS;
  if (!fs::exists(file, error)) {
    throw std::runtime_error(Quoted(path) + " is no calibration session: it holds no session.json.");
  }
  const std::string text = FileContent(file, error);
  if (error) Refuse("Cannot read " + Quoted(file), error);
  return SettingsOf(text, SessionNamed(path));
}

/// The lists of decisions.json. One that is damaged is put aside, with a warning.
DecisionLists ReadDecisions(const std::string& path, std::vector<std::string>& warnings) {
  const std::string file = path + "/" + DECISIONS;
  std::error_code error;
  if (!fs::exists(file, error)) return {};
  std::string damage;
  const std::string text = FileContent(file, error);
  if (error) Refuse("Cannot read " + Quoted(file), error);
  try {
    return DecisionListsOf(text);
  } catch (const std::runtime_error& fault) {
    damage = fault.what();
  }
  fs::rename(file, path + "/" + DAMAGED_DECISIONS, error);
  warnings.push_back("Its decisions.json " + damage + ": no snapshot counts as excluded or removed." +
                     (error ? "" : std::string(" The file is kept as ") + DAMAGED_DECISIONS + "."));
  return {};
}

}  // namespace

bool IsThere(const std::string& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

std::string SnapshotsIn(const std::string& session) {
  return session + "/" + SNAPSHOTS;
}

OpenFolder MakeFolder(const std::string& folder, const SessionSettings& settings) {
  const std::string fault = FaultOf(settings);
  if (!fault.empty()) throw std::invalid_argument(fault);
  const std::string path = Absolute(folder);
  const std::string failure = "Cannot create the session " + Quoted(path);
  // Made beside its place, so that it is there whole or not at all.
  UnfinishedFolder unfinished(path, failure);
  const auto check = [&failure](const std::error_code& error) {
    if (error) Refuse(failure, error);
  };
  std::error_code error;
  fs::create_directory(SnapshotsIn(unfinished.Path()), error);
  check(error);
  const std::string created = UtcText(std::chrono::system_clock::now());
  check(WriteNewFile(unfinished.Path() + "/" + SETTINGS, TextOf(settings, created)));
  FolderLock lock(unfinished.Path() + "/" + LOCK, SessionNamed(path));
  unfinished.Finish();
  // What is read is what was written, but for texts that were no UTF-8.
  return {path, std::move(lock), ReadSettings(path)};
}

OpenFolder ReadFolder(const std::string& folder, const SessionSettings* expected,
                      const SessionOptions& options) {
  const std::string path = Absolute(folder);
  SessionSettings settings = ReadSettings(path);
  if (expected != nullptr) RequireSame(settings, *expected, SessionNamed(path));
  OpenFolder opened{path, FolderLock(path + "/" + LOCK, SessionNamed(path)), std::move(settings)};
  std::error_code ignored;
  fs::remove(path + "/.new-" + DECISIONS, ignored);
  const SnapshotFolder snapshots(SnapshotsIn(path));
  snapshots.Sweep();
  opened.snapshots = snapshots.Read(opened.settings, options.checkImages);
  const DecisionLists lists = ReadDecisions(path, opened.warnings);
  std::vector<int> numbers;
  for (const StoredSnapshot& snapshot : opened.snapshots) numbers.push_back(snapshot.number);
  opened.decisions = Decisions(numbers, lists.excluded, lists.removed);
  opened.next = std::max({1, lists.next, numbers.empty() ? 1 : numbers.back() + 1});
  return opened;
}

void WriteDecisions(const std::string& session, const Decisions& decisions, int next) {
  const std::string text = TextOf(DecisionLists{decisions.Excluded(), decisions.Removed(), next});
  const std::error_code error = ReplaceFile(session + "/" + DECISIONS, text);
  if (error) Refuse("Cannot store the decision in " + Quoted(session), error);
}

std::string FaultOfName(const std::string& name) {
  if (name.empty()) return "A file needs a name.";
  if (name.front() == '.' || name.find('/') != std::string::npos || name.find('\0') != std::string::npos) {
    return Quoted(name) + " is no name of a file in a session.";
  }
  for (const char* own : {SETTINGS, DECISIONS, DAMAGED_DECISIONS, LOCK, SNAPSHOTS}) {
    if (name == own) return Quoted(name) + " is a file of the session itself.";
  }
  return "";
}

}  // namespace velmora
