/// A calibration session, stored as a folder.
#include "velmora/Session.h"

#include <map>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "session/ContentHash.h"
#include "session/Decisions.h"
#include "session/DiskSpace.h"
#include "session/FileContent.h"
#include "session/ImageFiles.h"
#include "session/Reasons.h"
#include "session/SessionFolder.h"
#include "session/SnapshotChecks.h"
#include "session/SnapshotFolder.h"

namespace velmora {

/// What the disk has, held in memory too. Who changes decisions or the list holds `changing_` from reading
/// them until the disk and the memory have them; `lock_` guards the memory and is held for copying alone, so
/// that nobody who only asks waits for the disk.
class Session::Impl {
 public:
  explicit Impl(OpenFolder folder)
      : path_(std::move(folder.path)),
        settings_(std::move(folder.settings)),
        warnings_(std::move(folder.warnings)),
        files_(SnapshotsIn(path_)),
        folderLock_(std::move(folder.lock)),
        decisions_(std::move(folder.decisions)),
        next_(folder.next) {
    for (StoredSnapshot& snapshot : folder.snapshots) {
      const int number = snapshot.number;
      snapshots_.emplace(number, std::move(snapshot));
    }
  }

  const std::string& Path() const { return path_; }
  const SessionSettings& Settings() const { return settings_; }
  const std::vector<std::string>& Warnings() const { return warnings_; }

  int Add(const SessionSnapshot& snapshot) {
    const std::string fault = FaultOf(snapshot, settings_);
    if (!fault.empty()) throw std::invalid_argument(fault);
    StoredSnapshot stored = files_.Write(TakeNumber(), snapshot, settings_);
    const int number = stored.number;
    const std::lock_guard<std::mutex> change(changing_);
    const std::lock_guard<std::mutex> hold(lock_);
    snapshots_.emplace(number, std::move(stored));
    decisions_.Add(number);
    return number;
  }

  std::vector<StoredSnapshot> All() const {
    const std::lock_guard<std::mutex> hold(lock_);
    std::vector<StoredSnapshot> all;
    all.reserve(snapshots_.size());
    for (const auto& [number, snapshot] : snapshots_) all.push_back(Decided(snapshot));
    return all;
  }

  StoredSnapshot One(int number) const {
    const std::lock_guard<std::mutex> hold(lock_);
    const auto found = snapshots_.find(number);
    if (found == snapshots_.end()) {
      throw std::invalid_argument("There is no snapshot " + std::to_string(number) + ".");
    }
    return Decided(found->second);
  }

  /// Applies the change to the decisions and returns its answer, once the disk has them.
  template <typename Change>
  auto Decide(const Change& makeChange) {
    const std::lock_guard<std::mutex> change(changing_);
    Decisions changed = Current();
    auto answer = makeChange(changed);
    if (answer) {
      WriteDecisions(path_, changed, Next());
      const std::lock_guard<std::mutex> hold(lock_);
      decisions_ = std::move(changed);
    }
    return answer;
  }

  Decisions Current() const {
    const std::lock_guard<std::mutex> hold(lock_);
    return decisions_;
  }

  /// The files go before the list of what is removed does: what is half deleted by then never comes back.
  int Purge() {
    const std::lock_guard<std::mutex> change(changing_);
    Decisions changed = Current();
    const std::vector<int> removed = changed.Removed();
    std::vector<int> deleted;
    std::exception_ptr failure;
    for (const int number : removed) {
      try {
        files_.Delete(number);
        deleted.push_back(number);
      } catch (const std::runtime_error&) {
        failure = std::current_exception();
        break;
      }
    }
    changed.Purge(deleted);
    Forget(deleted, changed);
    if (failure) std::rethrow_exception(failure);
    if (!deleted.empty()) WriteDecisions(path_, changed, Next());
    return static_cast<int>(deleted.size());
  }

  /// How many bytes a snapshot takes on the average.
  std::uint64_t BytesOfSnapshot() const {
    size_t count = 0;
    {
      const std::lock_guard<std::mutex> hold(lock_);
      count = snapshots_.size();
    }
    return count == 0 ? GuessedBytes(settings_) : BytesIn(SnapshotsIn(path_)) / count;
  }

 private:
  int TakeNumber() {
    const std::lock_guard<std::mutex> hold(lock_);
    return next_++;
  }

  int Next() const {
    const std::lock_guard<std::mutex> hold(lock_);
    return next_;
  }

  void Forget(const std::vector<int>& numbers, Decisions& changed) {
    const std::lock_guard<std::mutex> hold(lock_);
    for (const int number : numbers) snapshots_.erase(number);
    if (!numbers.empty()) decisions_ = changed;
  }

  StoredSnapshot Decided(StoredSnapshot snapshot) const {
    snapshot.decision = decisions_.Of(snapshot.number);
    return snapshot;
  }

  const std::string path_;
  const SessionSettings settings_;
  const std::vector<std::string> warnings_;
  const SnapshotFolder files_;
  const FolderLock folderLock_;

  std::mutex changing_;      ///< taken before lock_
  mutable std::mutex lock_;  ///< guards all that follows
  std::map<int, StoredSnapshot> snapshots_;
  Decisions decisions_;
  int next_;
};

namespace {

const std::string EXTENSION = ".velmora";

std::string WithoutExtension(const std::string& name) {
  const bool has = name.size() > EXTENSION.size() &&
                   name.compare(name.size() - EXTENSION.size(), EXTENSION.size(), EXTENSION) == 0;
  return has ? name.substr(0, name.size() - EXTENSION.size()) : name;
}

}  // namespace

std::string Session::FolderOf(const std::string& name) {
  return WithoutExtension(name) + EXTENSION;
}

std::string Session::FreeFolder(const std::string& name) {
  const std::string stem = WithoutExtension(name);
  std::string folder = stem + EXTENSION;
  for (int number = 2; IsThere(folder); ++number) {
    folder = stem;
    folder.append("-").append(std::to_string(number)).append(EXTENSION);
  }
  return folder;
}

std::string Session::ContentKey(const std::string& file) {
  std::error_code error;
  const std::uint64_t hash = FileHash(file, error);
  if (error) Refuse("Cannot read " + Quoted(file), error);
  return HexOf(hash);
}

std::unique_ptr<Session> Session::Create(const std::string& folder, const SessionSettings& settings) {
  return std::unique_ptr<Session>(new Session(std::make_unique<Impl>(MakeFolder(folder, settings))));
}

std::unique_ptr<Session> Session::Open(const std::string& folder, const SessionOptions& options) {
  return std::unique_ptr<Session>(new Session(std::make_unique<Impl>(ReadFolder(folder, nullptr, options))));
}

std::unique_ptr<Session> Session::Open(const std::string& folder, const SessionSettings& expected,
                                       const SessionOptions& options) {
  return std::unique_ptr<Session>(
      new Session(std::make_unique<Impl>(ReadFolder(folder, &expected, options))));
}

Session::Session(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {
}

Session::~Session() = default;

const SessionSettings& Session::Settings() const {
  return impl_->Settings();
}

const std::string& Session::Folder() const {
  return impl_->Path();
}

std::string Session::PathFor(const std::string& name) const {
  const std::string fault = FaultOfName(name);
  if (!fault.empty()) throw std::invalid_argument(fault);
  return impl_->Path() + "/" + name;
}

std::vector<std::string> Session::Warnings() const {
  return impl_->Warnings();
}

int Session::Add(const SessionSnapshot& snapshot) {
  return impl_->Add(snapshot);
}

std::vector<StoredSnapshot> Session::Snapshots() const {
  return impl_->All();
}

StoredSnapshot Session::Snapshot(int number) const {
  return impl_->One(number);
}

cv::Mat Session::LoadImage(int number, int camera) const {
  const StoredSnapshot snapshot = impl_->One(number);
  const bool kept = camera >= 0 && static_cast<size_t>(camera) < snapshot.images.size() &&
                    snapshot.images[static_cast<size_t>(camera)].kind != StoredImage::Kind::None;
  if (!kept) {
    throw std::invalid_argument("Snapshot " + std::to_string(number) + " has no image of camera " +
                                std::to_string(camera) + ".");
  }
  return Loaded(snapshot.images[static_cast<size_t>(camera)]);
}

void Session::Exclude(const std::vector<int>& numbers) {
  impl_->Decide([&numbers](Decisions& decisions) { return decisions.Exclude(numbers); });
}

void Session::Include(const std::vector<int>& numbers) {
  impl_->Decide([&numbers](Decisions& decisions) { return decisions.Include(numbers); });
}

void Session::Remove(const std::vector<int>& numbers) {
  impl_->Decide([&numbers](Decisions& decisions) { return decisions.Remove(numbers); });
}

void Session::BringBack(const std::vector<int>& numbers) {
  impl_->Decide([&numbers](Decisions& decisions) { return decisions.BringBack(numbers); });
}

std::optional<SessionStep> Session::Undo() {
  return impl_->Decide([](Decisions& decisions) { return decisions.Undo(); });
}

std::optional<SessionStep> Session::Redo() {
  return impl_->Decide([](Decisions& decisions) { return decisions.Redo(); });
}

bool Session::CanUndo() const {
  return impl_->Current().CanUndo();
}

bool Session::CanRedo() const {
  return impl_->Current().CanRedo();
}

int Session::Purge() {
  return impl_->Purge();
}

std::uint64_t Session::BytesTaken() const {
  return BytesIn(impl_->Path());
}

std::uint64_t Session::BytesFree() const {
  return BytesFreeAt(impl_->Path());
}

std::string Session::DiskWarning(int snapshots) const {
  return WarningOf(BytesFree(), impl_->BytesOfSnapshot(), snapshots);
}

}  // namespace velmora
