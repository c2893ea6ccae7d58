/// The folder of a session's snapshots, in which each has a folder of its own.
#include "session/SnapshotFolder.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "documents/DurableFile.h"
#include "session/FileContent.h"
#include "session/ImageFiles.h"
#include "session/Reasons.h"
#include "session/SnapshotChecks.h"
#include "session/SnapshotDocument.h"
#include "session/UtcTime.h"

namespace velmora {

namespace {

namespace fs = std::filesystem;

const char* const DOCUMENT = "/snapshot.json";
const std::string NEW = ".new-";
const std::string GONE = ".gone-";

std::string NameOf(int number) {
  constexpr size_t DIGITS = 6;
  const std::string digits = std::to_string(number);
  return std::string(DIGITS - std::min(DIGITS, digits.size()), '0') + digits;
}

/// Nothing for names of other folders.
std::optional<int> NumberOf(const std::string& name) {
  constexpr size_t MOST_DIGITS = 9;
  if (name.size() > MOST_DIGITS || name.find_first_not_of("0123456789") != std::string::npos)
    return std::nullopt;
  const int number = name.empty() ? 0 : std::stoi(name);
  return number > 0 && NameOf(number) == name ? std::optional<int>(number) : std::nullopt;
}

bool BeginsWith(const std::string& text, const std::string& beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

std::vector<std::string> NamesIn(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    names.push_back(entry->path().filename().string());
  }
  return names;
}

void Check(const std::error_code& error) {
  if (error) throw std::system_error(error);
}

}  // namespace

std::string SnapshotFolder::PathOf(int number) const {
  return path_ + "/" + NameOf(number);
}

void SnapshotFolder::Sweep() const {
  std::error_code ignored;
  for (const std::string& name : NamesIn(path_)) {
    if (BeginsWith(name, NEW) || BeginsWith(name, GONE)) fs::remove_all(path_ + "/" + name, ignored);
  }
}

std::vector<StoredSnapshot> SnapshotFolder::Read(const SessionSettings& settings, bool checkContent) const {
  std::vector<int> numbers;
  for (const std::string& name : NamesIn(path_)) {
    if (const auto number = NumberOf(name)) numbers.push_back(*number);
  }
  std::sort(numbers.begin(), numbers.end());
  std::vector<StoredSnapshot> snapshots;
  snapshots.reserve(numbers.size());
  for (const int number : numbers) snapshots.push_back(ReadOne(number, settings, checkContent));
  return snapshots;
}

StoredSnapshot SnapshotFolder::ReadOne(int number, const SessionSettings& settings, bool checkContent) const {
  const std::string folder = PathOf(number);
  StoredSnapshot snapshot;
  std::string fault;
  std::error_code error;
  const std::string text = FileContent(folder + DOCUMENT, error);
  if (error) {
    fault = fs::exists(folder + DOCUMENT) ? "Its snapshot.json cannot be read: " + ReasonOf(error) + "."
                                          : "Its snapshot.json is missing.";
  } else {
    try {
      snapshot = SnapshotOf(text, folder);
      fault = FaultOf(snapshot.observations, settings);
      if (!fault.empty()) fault = "Its snapshot.json makes no sense. " + fault;
    } catch (const std::runtime_error& damage) {
      fault = std::string("Its snapshot.json ") + damage.what() + ".";
    }
  }
  snapshot.number = number;
  for (StoredImage& image : snapshot.images) {
    const std::string damage = FaultOf(image, checkContent);
    if (damage.empty()) continue;
    if (image.kind == StoredImage::Kind::Reference) {
      image.fault = "The file " + Quoted(image.path) + " " + damage + ".";
    } else if (fault.empty()) {
      fault = "Its image " + fs::path(image.path).filename().string() + " " + damage + ".";
    }
  }
  snapshot.fault = fault;
  return snapshot;
}

StoredSnapshot SnapshotFolder::Write(int number, const SessionSnapshot& snapshot,
                                     const SessionSettings& settings) const {
  const std::string folder = PathOf(number);
  const std::string beside = path_ + "/" + NEW + NameOf(number);
  StoredSnapshot stored;
  stored.number = number;
  std::error_code ignored;
  try {
    WriteNew(beside, stored, snapshot, settings);
    fs::rename(beside, folder);
    Check(SyncFolder(path_));
  } catch (const std::exception& failure) {
    // It may be in its place already, and must not be taken for one that was added.
    fs::rename(folder, beside, ignored);
    fs::remove_all(beside, ignored);
    const auto* refused = dynamic_cast<const std::system_error*>(&failure);
    if (refused == nullptr) throw;
    Refuse("Cannot store the snapshot in " + Quoted(path_), refused->code());
  }
  return stored;
}

void SnapshotFolder::WriteNew(const std::string& folder, StoredSnapshot& snapshot,
                              const SessionSnapshot& given, const SessionSettings& settings) const {
  snapshot.observations = given.observations;
  snapshot.name = given.name;
  snapshot.takenAt = given.takenAt.empty() ? UtcText(std::chrono::system_clock::now()) : given.takenAt;
  snapshot.score = given.score;
  snapshot.images.resize(settings.imageSizes.size());
  snapshot.origins = given.origins;
  snapshot.origins.resize(settings.imageSizes.size());
  std::error_code ignored;
  if (fs::create_directory(path_, ignored)) Check(SyncFolder(fs::path(path_).parent_path().string()));
  fs::remove_all(folder);
  fs::create_directory(folder);
  for (size_t i = 0; settings.keepsImages && i < given.images.size(); ++i) {
    const ImageToKeep kept = Kept(given.images[i], i, PathOf(snapshot.number));
    snapshot.images[i] = kept.stored;
    const bool own =
        kept.stored.kind == StoredImage::Kind::Png || kept.stored.kind == StoredImage::Kind::Copy;
    const fs::path file = fs::path(folder) / fs::path(kept.stored.path).filename();
    if (own) Check(WriteNewFile(file.string(), kept.bytes));
  }
  Check(WriteNewFile(folder + DOCUMENT, TextOf(snapshot)));
  Check(SyncFolder(folder));
}

void SnapshotFolder::Delete(int number) const {
  const std::string gone = path_ + "/" + GONE + NameOf(number);
  std::error_code error;
  fs::rename(PathOf(number), gone, error);
  if (error) Refuse("Cannot delete " + Quoted(PathOf(number)), error);
  if (SyncFolder(path_)) return;  // it may come back after a loss of power, whole or not at all
  fs::remove_all(gone, error);
}

}  // namespace velmora
