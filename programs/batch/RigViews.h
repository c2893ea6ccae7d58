/// What the cameras of a rig saw.
#pragma once

#include <deque>
#include <map>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "batch/ImageSearch.h"
#include "batch/RigCameras.h"
#include "batch/SharedSearch.h"
#include "batch/ViewNotes.h"
#include "common/Report.h"
#include "common/RigNames.h"
#include "velmora/RigCalibration.h"

namespace batch {

/// The grids in the images of all cameras, moment by moment.
class RigViews {
 public:
  RigViews(const Arguments& arguments, std::vector<std::string> cameras);

  /// Searches all images and reports on them on standard error. Raises InputError for unusable inputs, also
  /// when no image of a camera can be read.
  void Look(const RunContext& context);

  /// Moments in which a camera found the grid.
  size_t Count() const { return names_.images.size(); }
  /// The number of these moments in which that camera did.
  size_t CountOf(size_t camera) const;

  /// Sets aside moments that are not needed: what is left are those that spread best.
  void Select();

  /// What became of each view of a session by that result, which was of the moments that are left.
  std::map<int, ViewNote> Notes(const velmora::RigResult& result) const;

  /// The moments that are left.
  velmora::RigRecords Records() const;
  /// The circles that the camera saw in them.
  std::vector<Centres> CirclesOf(size_t camera) const;
  /// The names of the cameras and of their images.
  const common::RigNames& Names() const { return names_; }
  const std::vector<common::Rejection>& Rejected() const { return rejected_; }
  std::vector<cv::Size> Frames() const;
  /// See ImageSearch; empty when a grid was found.
  std::string OtherGridText();

 private:
  /// What is told of the moment on standard error.
  std::string Take(SearchedImages& searched);

  const Arguments& arguments_;
  common::RigNames names_;
  std::vector<int> numbers_;       ///< of the moments, in the session
  std::map<int, ViewNote> notes_;  ///< of moments that are not left
  std::deque<ImageSearch> searches_;
  std::vector<std::vector<GridView>>
      grids_;  ///< of each camera, of each moment; without points where it saw none
  std::vector<common::Rejection> rejected_;
};

}  // namespace batch
