/// What a session holds, as if it were searched.
#pragma once

#include <map>
#include <opencv2/core.hpp>
#include <string>
#include <utility>
#include <vector>

#include "batch/SearchLog.h"
#include "batch/SharedSearch.h"
#include "velmora/Session.h"

namespace batch {

/// Makes of snapshots and of the log what a search hands over. Images are not read.
class SessionReplay {
 public:
  /// `frames` are the sizes of the cameras' images; `parts`: whether parts of the grid are views.
  SessionReplay(const std::vector<LoggedMoment>& moments, std::vector<cv::Size> frames, bool parts);

  /// Without a view where it is excluded or damaged.
  SearchedImages Of(const velmora::StoredSnapshot& snapshot) const;
  /// All moments in which no camera found the grid.
  std::vector<SearchedImages> WithoutView() const;

 private:
  using Key = std::pair<std::vector<std::string>, std::string>;  ///< origins, and the name of all images

  const LoggedMoment* LoggedOf(const velmora::StoredSnapshot& snapshot) const;
  SearchOutcome OutcomeOf(const velmora::StoredSnapshot& snapshot, size_t camera,
                          const LoggedMoment* logged) const;

  const std::vector<LoggedMoment>& moments_;
  const std::vector<cv::Size> frames_;
  const bool parts_;
  std::map<Key, const LoggedMoment*> byOrigin_;
};

}  // namespace batch
