/// The rigs that the synthetic world is tested with.
#pragma once

#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>
#include <vector>

#include "Rig.h"

/// Two 60 degree cameras 0.1 m apart, with light, different distortions.
inline world::Pair OrdinaryRig() {
  return world::SideBySidePair({640, 480}, 60.0, 0.1, 0.0, {-0.1, 0.03, 0.0005, -0.0003, 0.0},
                               {-0.12, 0.04, -0.0004, 0.0005, 0.0});
}

/// Fields of view of 55 to 80 degrees at baselines of 0.05 to 0.15 m, parallel and with a toe-in, and one of
/// different cameras, the right one turned about all axes and moved along them.
inline std::vector<world::Pair> ManyRigs() {
  std::vector<world::Pair> rigs = {OrdinaryRig()};
  for (const double degrees : {55.0, 65.0, 80.0}) {
    for (const double baseline : {0.05, 0.1, 0.15}) {
      for (const double toeIn : {0.0, 12.0}) {
        rigs.push_back(world::SideBySidePair({640, 480}, degrees, baseline, toeIn,
                                             {-0.1, 0.02, 0.0, 0.0, 0.0}, {-0.08, 0.01, 0.001, 0.0, 0.0}));
      }
    }
  }
  world::Pair uneven = world::SideBySidePair(world::CameraFromFieldOfView({640, 480}, 60.0),
                                             world::CameraFromFieldOfView({1280, 720}, 70.0), 0.12, 5.0);
  cv::Matx33d rotation;
  cv::Rodrigues(cv::Vec3d(-0.02, 0.01, 0.05), rotation);
  uneven.R = rotation * uneven.R;
  uneven.T += cv::Vec3d(0.005, 0.02, -0.01);
  rigs.push_back(uneven);
  return rigs;
}
