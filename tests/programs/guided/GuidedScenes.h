/// Views for the tests of what a guided calibration makes of them.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "guided/Outcome.h"
#include "unit/Collection.h"
#include "unit/StereoCollection.h"

namespace guided_test {

/// Of views that are points, not images: the centres are the true ones, and need no correction.
guided::ComputationSettings SettingsOfPoints(int model = common::MODEL_AUTO,
                                             const cv::Size& frame = unit::FRAME);
/// Of rendered images, as the program has them.
guided::ComputationSettings SettingsOfImages(int model = common::MODEL_AUTO);

/// What does nothing before a computation.
void JustCompute(std::shared_ptr<Calibrator> engine);

/// One of each view, with the numbers and names of a session: "pose 1", "pose 2" and so on.
std::vector<guided::NamedSnapshot> Named(const unit::PointLists& views);
std::vector<guided::NamedSnapshot> Named(const unit::PointPairs& pairs);

/// The views, but of one of them a camera does not see the first circles.
std::vector<guided::NamedSnapshot> WithAPart(std::vector<guided::NamedSnapshot> views, size_t which,
                                             size_t camera, size_t unseen);

/// Views of a camera with a little noise, the same every time.
unit::PointLists ViewsBy(const world::Camera& camera, int count);
/// Views of the camera of unit::NoisyViews that all face it: of no use for a focal length.
unit::PointLists FacingViews(int count);
/// A fisheye of 150 degrees, as large as unit::FRAME.
world::Camera Fisheye();

}  // namespace guided_test
