/// Keeps a calibration session in a folder, so that nothing that was taken is lost.
#pragma once

#include <cstdint>
#include <memory>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Export.h"
#include "velmora/GridSnapshot.h"

namespace velmora {

/// What a session goes by; fixed when it is created. The words are those of the programs' options and are
/// kept as they are given.
struct SessionSettings {
  cv::Size grid;                     ///< circles per row, rows; both positive
  double unit = 0.0;                 ///< metres between adjacent rows; positive
  std::vector<cv::Size> imageSizes;  ///< of each camera, one or more: the size that centres are in, pixels
  std::string lensModel;             ///< "classic", "rational", "full", "fisheye", "auto"
  std::string finder;                ///< "standard", "robust"
  std::string solver;                ///< "opencv", "sparse"
  double discRadius = 0.0;           ///< of the target's discs, metres; 0: not known
  std::string sheetShape;            ///< "flat", "bent", "free", "auto"
  bool fineCentres = false;          ///< whether centres are measured anew
  std::string source;                ///< where images come from, as it was given
  bool keepsImages = true;           ///< false: only what was observed is stored, whatever images are given
};

/// What one camera observed of the grid in one snapshot. All lists are in the order of the grid's points, and
/// empty when the camera did not see the grid.
struct SessionObservation {
  std::vector<cv::Point2d> centres;  ///< all points of the grid, pixels; finite
  /// Of each point 1, or 0 where it was not seen and is only where it would be; between them where it counts
  /// for less. Empty: all were seen.
  std::vector<double> weights{};
  /// Of each point the standard deviation along an axis, pixels, 0 where it is not known. Empty: not known.
  std::vector<double> deviations{};
  std::vector<double> radii{};  ///< of the discs, pixels, 0 where it is not known. Empty: not known.
};

/// An image to be kept: pixels or a file, or neither.
struct SessionImage {
  cv::Mat pixels;  ///< as it was searched: 8 or 16 bits, 1, 3 (BGR) or 4 channels, of the camera's image size
  std::string path;   ///< of an image file; with pixels it must be empty
  bool copy = false;  ///< whether that file is copied into the session, or only its path and hash are noted
};

/// A snapshot to be added.
struct SessionSnapshot {
  std::vector<SessionObservation> observations;  ///< of each camera; at least one saw the grid
  std::vector<SessionImage> images;              ///< of each camera; an empty list: none
  std::string name;                              ///< what the source calls it, such as a file name
  std::string takenAt;                           ///< UTC, ISO 8601 ("2026-05-04T12:30:00.250Z"); empty: now
  std::optional<double> score;                   ///< how well it served, where that was measured; finite
  /// Of each camera a text by which the program knows its image again, whatever becomes of the file and
  /// whether or not images are kept, such as ContentKey gives; an empty list: none.
  std::vector<std::string> origins{};
};

/// An image that is kept.
struct StoredImage {
  enum class Kind {
    None,
    Png,       ///< the session's own, without loss
    Copy,      ///< the session's own copy of a file
    Reference  ///< a file elsewhere
  };

  Kind kind = Kind::None;
  std::string path;         ///< where the image is, absolute
  std::string source;       ///< of a copy, which file it was copied from, absolute
  std::uint64_t bytes = 0;  ///< the size of the file
  std::uint64_t hash = 0;   ///< FNV-1a, 64 bits, of the file's content
  /// Why a file elsewhere can no longer serve: it is gone, or has changed. What was observed in it counts all
  /// the same. Empty: it was as noted when the session was opened.
  std::string fault;
};

enum class SnapshotDecision {
  Used,
  Excluded,  ///< kept, not computed with
  Removed    ///< as if it had never been taken, until it is brought back or purged
};

/// A snapshot of a session.
struct VELMORA_API StoredSnapshot {
  int number = 0;  ///< from 1 in the order of adding; numbers are never used again
  std::vector<SessionObservation> observations{};  ///< of each camera
  std::vector<StoredImage> images{};               ///< of each camera
  std::string name{};
  std::string takenAt{};
  std::optional<double> score{};
  std::vector<std::string> origins{};  ///< of each camera; empty texts where none was given
  SnapshotDecision decision = SnapshotDecision::Used;
  /// What is damaged, as a sentence: such a snapshot is not used, whatever was decided, and lacks what could
  /// not be read. Empty: it is whole.
  std::string fault{};

  /// Whether computations take it: it is whole, and neither excluded nor removed.
  bool IsUsed() const { return fault.empty() && decision == SnapshotDecision::Used; }
};

/// What a calibrator took (Calibrator::GetSnapshot), to be stored; with its frames as pixels.
VELMORA_API SessionSnapshot ToBeStored(const GridSnapshot& snapshot);
/// What was stored, for Calibrator::AddSnapshot, without frames; exactly what ToBeStored was given. A camera
/// that did not see the grid has no centres, which no calibrator takes.
VELMORA_API GridSnapshot FromStored(const StoredSnapshot& snapshot);

/// What was done at once, and can be undone at once.
struct SessionStep {
  enum class Kind { Add, Exclude, Include, Remove, BringBack };

  Kind kind = Kind::Add;
  std::vector<int> numbers;  ///< of the snapshots that it changed, ascending
};

/// How a session is opened.
struct SessionOptions {
  /// Whether the content of every image is compared with its hash, which reads them all: about a second for
  /// each gigabyte. Without it an image counts as whole when its file has its size.
  bool checkImages = true;
};

/// A calibration session: a folder with what was taken, what was decided of it, and what came of it (see
/// docs/formats.md). What Add returned for is on the disk, whole, and outlasts an end of the process at any
/// moment; what was being written then is swept away when the session is opened the next time.
///
/// One process at a time has a session open. All functions are thread-safe, but for destruction. Errors are
/// std::invalid_argument for arguments that make no sense and std::runtime_error for what the disk refuses,
/// with sentences in plain English; after one, everything is as it was.
class VELMORA_API Session {
 public:
  /// The folder of the session of that name: with ".velmora" appended, unless it ends so.
  static std::string FolderOf(const std::string& name);
  /// The first of NAME.velmora, NAME-2.velmora, NAME-3.velmora and so on that does not exist.
  static std::string FreeFolder(const std::string& name);
  /// The FNV-1a hash of 64 bits of a file's content, as a snapshot has it of its images, in 16 hexadecimal
  /// digits. Raises std::runtime_error for what cannot be read.
  static std::string ContentKey(const std::string& file);

  /// Creates the folder, whose parent must exist, and opens it. Raises for settings that make no sense and
  /// when there is anything at that path.
  static std::unique_ptr<Session> Create(const std::string& folder, const SessionSettings& settings);
  /// Opens a session. Raises when the folder is none, when it is of another format or damaged as a whole, and
  /// when another process, or this one, has it open: the text names the process. Where the folder can only be
  /// read, everything that would write into it raises.
  static std::unique_ptr<Session> Open(const std::string& folder, const SessionOptions& options = {});
  /// Opens a session that has these settings: also raises when its grid, its unit (beyond a millionth of it),
  /// its number of cameras or one of their image sizes is another; the text names both. Other settings may
  /// differ.
  static std::unique_ptr<Session> Open(const std::string& folder, const SessionSettings& expected,
                                       const SessionOptions& options = {});

  /// Lets other processes open it.
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const SessionSettings& Settings() const;
  const std::string& Folder() const;  ///< absolute
  /// The path of a further file in the session's folder, such as a result. Raises std::invalid_argument for
  /// names with a slash, names with a dot at their start and those of the session's own files.
  std::string PathFor(const std::string& name) const;
  /// What was found damaged besides snapshots when the session was opened, as sentences.
  std::vector<std::string> Warnings() const;

  /// Stores a snapshot and returns its number; it is used. Takes as long as the disk needs to have it all.
  int Add(const SessionSnapshot& snapshot);

  /// All snapshots, removed and damaged ones too, in the order of their numbers.
  std::vector<StoredSnapshot> Snapshots() const;
  /// That snapshot. Raises std::invalid_argument when there is none of that number.
  StoredSnapshot Snapshot(int number) const;
  /// The image of a camera (from 0): a PNG as it was given; another file as 8-bit BGR, as the sensor saw it.
  /// Raises std::invalid_argument when the snapshot keeps none, std::runtime_error when its file is missing
  /// or not what was stored.
  cv::Mat LoadImage(int number, int camera) const;

  /// These change snapshots all at once, on the disk before they return. Those that are so already stay.
  /// Raises std::invalid_argument for numbers that do not exist; Exclude and Include for removed ones.
  void Exclude(const std::vector<int>& numbers);
  void Include(const std::vector<int>& numbers);
  void Remove(const std::vector<int>& numbers);
  void BringBack(const std::vector<int>& numbers);  ///< as they were before: excluded ones excluded

  /// Takes back what was done last, or does again what was taken back last, since the session was opened;
  /// says what that was, nothing when there is none. A snapshot whose adding is undone is removed.
  std::optional<SessionStep> Undo();
  std::optional<SessionStep> Redo();
  bool CanUndo() const;
  bool CanRedo() const;

  /// Deletes the files of removed snapshots and returns how many there were. What was done before cannot be
  /// undone afterwards.
  int Purge();

  std::uint64_t BytesTaken() const;  ///< by all files in the folder
  std::uint64_t BytesFree() const;   ///< on its disk, for this user
  /// A warning, as a sentence, when less is free than that number of further snapshots will need; else empty.
  /// What one needs is what those that are there take on the average, or guessed from the image sizes.
  std::string DiskWarning(int snapshots = 30) const;

 private:
  class Impl;
  explicit Session(std::unique_ptr<Impl> impl);

  const std::unique_ptr<Impl> impl_;
};

}  // namespace velmora
