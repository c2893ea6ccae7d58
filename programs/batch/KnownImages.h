/// The images that a session has seen, by their content.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "batch/ImageStream.h"
#include "batch/SearchLog.h"
#include "batch/SingleSearch.h"
#include "velmora/Session.h"

namespace batch {

/// Of a camera that saw the grid; all circles were seen where the session has no weights.
GridView ViewOf(const velmora::SessionObservation& observation);

/// What was found in images when the session was opened. It does not change: any thread may ask.
class KnownImages {
 public:
  KnownImages() = default;
  KnownImages(const std::vector<velmora::StoredSnapshot>& snapshots, const SearchLog& log);

  /// Nothing for an image that is to be searched. A view that a damaged snapshot has is not known.
  std::optional<SearchOutcome> Find(const std::string& origin) const;

 private:
  std::map<std::string, SearchOutcome> outcomes_;
};

/// The snapshots of a session that images of this run have not been matched with.
class UnmatchedSnapshots {
 public:
  UnmatchedSnapshots() = default;
  /// Damaged ones are none.
  explicit UnmatchedSnapshots(const std::vector<velmora::StoredSnapshot>& snapshots);

  /// The first that is of images of these origins, and is one no longer; 0 when there is none. Images that
  /// the same file gave twice are two snapshots, however often they come.
  int Take(const std::vector<std::string>& origins);

 private:
  std::map<std::vector<std::string>, std::vector<int>> numbers_;  ///< the first one last
};

/// Notes by what the session knows images again. Nothing is noted of a file that cannot be read, and of
/// streams and pipes. A file that has the path, the size and the time of change of one that the log knows is
/// that file, and is not read.
class ImageOrigins {
 public:
  ImageOrigins() = default;
  explicit ImageOrigins(const SearchLog& log);

  /// Of image files. Thread-safe.
  void NoteFiles(std::vector<NamedImage>& inputs) const;
  /// Of frames of videos, each of which is read as a whole once at most.
  void NoteFrames(std::vector<NamedImage>& inputs);

 private:
  struct File {
    std::string hash;
    std::string stamp;
  };
  File Look(const std::string& file) const;

  std::map<std::string, std::string> hashes_;  ///< by stamp; these do not change
  std::map<std::string, File> videos_;         ///< by path
};

}  // namespace batch
