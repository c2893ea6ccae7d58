/// What the cameras of a rig saw.
#pragma once

#include <deque>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "batch/PictureSearch.h"
#include "batch/Report.h"
#include "velmora/RigCalibration.h"

namespace batch {

/// The grids in the images of all cameras, moment by moment.
class RigViews {
 public:
  RigViews(const Arguments& arguments, std::vector<std::string> cameras);

  /// Looks at all pictures and tells of them on standard error. Raises InputError for unusable inputs, also
  /// when no picture of a camera can be read.
  void Look();

  /// Moments in which a camera found the grid.
  size_t Count() const { return images_.size(); }
  /// Of these the moments in which that camera did.
  size_t CountOf(size_t camera) const;

  /// Sets aside moments that are not needed: what is left are those that spread best.
  void Select();

  /// The moments that are left.
  velmora::RigRecords Records() const;
  /// The names of the images of these moments, of each camera; empty where there is none with the grid.
  const std::vector<std::vector<std::string>>& Images() const { return images_; }
  /// Of each of these moments: the names of its images, joined.
  const std::vector<std::string>& Moments() const { return moments_; }
  /// Of all images that are left: "camera/image".
  std::vector<std::string> Used() const;
  /// As it is told of.
  std::string NameOf(size_t moment, size_t camera) const;
  const std::vector<Rejection>& Rejected() const { return rejected_; }
  const std::vector<std::string>& Cameras() const { return cameras_; }
  std::vector<cv::Size> Frames() const;
  /// See PictureSearch; empty when a grid was found.
  std::string OtherGridText();

 private:
  /// What is told of the moment on standard error.
  std::string Take(std::vector<Picture>& pictures);

  const Arguments& arguments_;
  std::vector<std::string> cameras_;
  std::deque<PictureSearch> searches_;
  std::vector<std::string> moments_;
  std::vector<std::vector<std::string>> images_;  ///< of each moment, of each camera
  std::vector<std::vector<Centres>> centres_;     ///< of each camera, of each moment
  std::vector<Rejection> rejected_;
};

}  // namespace batch
