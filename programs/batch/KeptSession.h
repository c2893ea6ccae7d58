/// The session that keeps what a run finds.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "batch/Arguments.h"
#include "batch/KnownImages.h"
#include "batch/SearchLog.h"
#include "batch/SharedSearch.h"
#include "batch/ViewNotes.h"
#include "velmora/Session.h"

namespace batch {

/// Stands between the search and what is made of it: each moment of images in which a camera found the grid
/// becomes a snapshot before a word is said of it, and what is computed comes from the snapshots, in their
/// order, whichever run took them. A session that is not there is created with the first view. Of one thread,
/// but for NoteFiles and Known. What the disk or the session refuses is raised as InputError.
class KeptSession {
 public:
  KeptSession() = default;

  /// Opens the session that the arguments name, if it is there, and fills in what they leave open.
  void Open(Arguments& arguments);
  /// Before the search: the arguments are settled. Images are brought to their processing size on their way
  /// into the session, so that the run has none.
  void Begin(Arguments& arguments);

  /// The arguments of the search.
  const Arguments& SearchArguments() const { return search_; }
  /// Of the next images, on the thread of the search's owner.
  void NoteFrames(std::vector<NamedImage>& inputs) { origins_.NoteFrames(inputs); }
  /// Thread-safe.
  void NoteFiles(std::vector<NamedImage>& inputs) const { origins_.NoteFiles(inputs); }
  /// What the session tells of an image. Thread-safe.
  std::optional<SearchOutcome> Known(const NamedImage& input) const { return known_.Find(input.origin); }
  /// Stores what was found; what is to be told of it. The steps are those of the search.
  std::string Take(SearchedImages& images, const SearchSteps& steps);
  /// What is to be told at once, besides; empty most of the time.
  std::string News() { return std::exchange(news_, ""); }

  /// After the search: excludes and includes as the arguments say, and tells how much there is.
  void Conclude();
  /// Hands over all that counts, views first, in their order.
  void Replay(const std::function<void(SearchedImages&)>& take) const;

  /// Keeps what became of the snapshots, for the list, by their numbers.
  void Write(const std::map<int, ViewNote>& notes) const;
  /// Prints the views on standard output.
  void PrintList();
  /// Where things are when the run was interrupted, and how to go on.
  std::string Whereabouts() const;

 private:
  void CheckSizes(SearchedImages& images);
  void Create(const SearchSteps& steps);
  void Store(const SearchedImages& images);
  void WarnOfTheDisk(int snapshots);
  void Decide();
  std::vector<int> NumbersOf(const std::vector<std::string>& names) const;
  std::string Named() const { return "the session '" + search_.session + "'"; }

  Arguments search_;
  std::string kind_;
  std::vector<std::string> cameras_;  ///< their names
  std::unique_ptr<velmora::Session> session_;
  SearchLog log_;
  KnownImages known_;
  UnmatchedSnapshots unmatched_;
  ImageOrigins origins_;
  std::vector<cv::Size> inputSizes_;  ///< of each camera's images; empty: not known yet
  std::vector<bool> hasImage_;        ///< of each camera: this run has had one
  int moments_ = 0;                   ///< that this run has taken
  int searched_ = 0;                  ///< images of this run
  int recognised_ = 0;
  bool warned_ = false;  ///< of the disk
  std::string news_;
};

}  // namespace batch
