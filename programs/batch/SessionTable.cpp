/// The list of a session's views.
#include "batch/SessionTable.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iomanip>
#include <sstream>

namespace batch {

namespace {

namespace fs = std::filesystem;
using velmora::SnapshotDecision;
using velmora::StoredSnapshot;

/// Of the files that a session has of a snapshot, in its folder.
std::uint64_t BytesOf(const velmora::Session& session, int number) {
  std::ostringstream name;
  name << session.Folder() << "/snapshots/" << std::setw(6) << std::setfill('0') << number;
  std::uint64_t bytes = 0;
  std::error_code error;
  for (fs::directory_iterator entry(name.str(), error), end; !error && entry != end; entry.increment(error)) {
    std::error_code gone;
    const std::uintmax_t size = entry->file_size(gone);
    if (!gone) bytes += size;
  }
  return bytes;
}

const char* DecisionText(const StoredSnapshot& snapshot) {
  if (!snapshot.fault.empty()) return "damaged";
  switch (snapshot.decision) {
    case SnapshotDecision::Used:
      return "used";
    case SnapshotDecision::Excluded:
      return "excluded";
    case SnapshotDecision::Removed:
      break;
  }
  return "removed";
}

std::string RmsText(const std::map<int, ViewNote>& notes, int number) {
  const auto note = notes.find(number);
  if (note == notes.end() || note->second.rms < 0.0) return "-";
  std::ostringstream text;
  text << std::fixed << std::setprecision(4) << note->second.rms;
  return text.str();
}

std::string Remark(const StoredSnapshot& snapshot, const std::map<int, ViewNote>& notes) {
  if (!snapshot.fault.empty()) return snapshot.fault;
  const auto note = notes.find(snapshot.number);
  return note == notes.end() || !snapshot.IsUsed() ? "" : note->second.reason;
}

}  // namespace

std::string MegabytesText(std::uint64_t bytes) {
  constexpr double MEGABYTE = 1e6;
  std::ostringstream text;
  text << std::fixed << std::setprecision(1) << static_cast<double>(bytes) / MEGABYTE << " MB";
  return text.str();
}

std::string SessionTable(const velmora::Session& session, const std::map<int, ViewNote>& notes) {
  constexpr double KILOBYTE = 1e3;
  const std::vector<StoredSnapshot> snapshots = session.Snapshots();
  int width = 4;
  for (const StoredSnapshot& snapshot : snapshots) {
    width = std::max(width, static_cast<int>(snapshot.name.size()));
  }
  std::ostringstream text;
  const auto row = [&](const std::string& number, const std::string& name, const std::string& decision,
                       const std::string& rms, const std::string& size, const std::string& remark) {
    text << std::right << std::setw(5) << number << "  " << std::left << std::setw(width) << name << "  "
         << std::setw(8) << decision << std::right << std::setw(9) << rms << std::setw(9) << size
         << (remark.empty() ? "" : "  " + remark) << "\n";
  };
  row("no.", "name", "decision", "RMS, px", "kB", "");
  size_t used = 0;
  for (const StoredSnapshot& snapshot : snapshots) {
    used += snapshot.IsUsed() ? 1 : 0;
    std::ostringstream size;
    size << std::fixed << std::setprecision(1)
         << static_cast<double>(BytesOf(session, snapshot.number)) / KILOBYTE;
    row(std::to_string(snapshot.number), snapshot.name, DecisionText(snapshot),
        snapshot.IsUsed() ? RmsText(notes, snapshot.number) : "-", size.str(), Remark(snapshot, notes));
  }
  text << used << " of " << snapshots.size() << (snapshots.size() == 1 ? " view" : " views") << " used; "
       << MegabytesText(session.BytesTaken()) << " on the disk\n";
  return text.str();
}

}  // namespace batch
