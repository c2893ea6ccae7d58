/// Finds, by their names, the images of several cameras that were taken at the same time.
#pragma once

#include <string>
#include <vector>

namespace batch {

/// By what each of these files' names differs from the others, without the extension of an image: what all of
/// them begin with is taken away, and what all of them end with, but no part of a number or a word:
/// left_001.png and left_002.png differ by 001 and 002. The name of a single file is kept as it is.
std::vector<std::string> DifferingParts(const std::vector<std::string>& files);

/// The images of a camera.
struct CameraFiles {
  std::string camera;  ///< its name, for errors
  std::vector<std::string> files;
};

/// The images of all cameras that were taken at the same time.
struct Moment {
  std::string key;                 ///< the differing part of their names
  std::vector<std::string> files;  ///< one for each camera; empty where it has none
};

/// The moments in the order of their keys. Raises InputError, which names the camera, for a video or an
/// address, for two images of one camera with the same differing part, and for a camera that has none in
/// common with any other.
std::vector<Moment> MatchByNames(const std::vector<CameraFiles>& cameras);

}  // namespace batch
