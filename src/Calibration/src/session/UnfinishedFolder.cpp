/// A folder that is made beside its place and put there when all is in it.
#include "session/UnfinishedFolder.h"

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include "documents/DurableFile.h"
#include "session/Reasons.h"

namespace velmora {

namespace {

namespace fs = std::filesystem;

/// Folders of that beginning whose number is that of no process.
std::vector<fs::path> LeftBehind(const fs::path& parent, const std::string& beginning) {
  std::vector<fs::path> folders;
  std::error_code error;
  for (fs::directory_iterator entry(parent, error), end; !error && entry != end; entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (name.compare(0, beginning.size(), beginning) != 0) continue;
    const long process = std::strtol(name.c_str() + beginning.size(), nullptr, 10);
    if (process > 0 && kill(static_cast<pid_t>(process), 0) != 0 && errno == ESRCH) {
      folders.push_back(entry->path());
    }
  }
  return folders;
}

}  // namespace

UnfinishedFolder::UnfinishedFolder(const std::string& place, const std::string& failure)
    : place_(place), failure_(failure) {
  RequireNothingThere();
  const fs::path parent = fs::path(place_).parent_path();
  const std::string beginning = ".new-" + fs::path(place_).filename().string() + "-";
  std::error_code ignored;
  for (const fs::path& folder : LeftBehind(parent, beginning)) fs::remove_all(folder, ignored);
  static std::atomic<unsigned> counter{0};
  path_ = (parent / (beginning + std::to_string(getpid()) + "-" + std::to_string(counter++))).string();
  if (mkdir(path_.c_str(), 0777) != 0) Refuse(failure_, LastSystemError());
}

UnfinishedFolder::~UnfinishedFolder() {
  std::error_code ignored;
  if (!finished_) fs::remove_all(path_, ignored);
}

void UnfinishedFolder::Finish() {
  if (const std::error_code error = SyncFolder(path_)) Refuse(failure_, error);
  RequireNothingThere();
  // Over a folder with something in it, which another process made meanwhile, this fails.
  if (std::rename(path_.c_str(), place_.c_str()) != 0) Refuse(failure_, LastSystemError());
  path_ = place_;
  if (const std::error_code error = SyncFolder(fs::path(place_).parent_path().string())) {
    Refuse(failure_, error);
  }
  finished_ = true;
}

void UnfinishedFolder::RequireNothingThere() const {
  std::error_code error;
  if (fs::exists(fs::symlink_status(place_, error)))
    throw std::runtime_error(failure_ + ": it exists already.");
}

}  // namespace velmora
