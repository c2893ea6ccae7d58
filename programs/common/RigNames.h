/// What tables and files call the cameras of a rig and their images.
#pragma once

#include <string>
#include <vector>

namespace common {

struct RigNames {
  std::vector<std::string> cameras;
  /// The image's name for each moment and each camera; empty where there is no image with the grid.
  std::vector<std::vector<std::string>> images;

  /// "camera/image".
  std::string Image(size_t moment, size_t camera) const;
  /// The names of all images.
  std::vector<std::string> AllImages() const;
  /// The joined names of each moment's images.
  std::vector<std::string> Moments() const;
};

/// Names of pictures, joined by "+" where they differ; empty ones do not count.
std::string NameTogether(const std::vector<std::string>& names);

/// A text of the engine, with the names of cameras in place of their numbers.
std::string WithCameraNames(const std::string& text, const std::vector<std::string>& names);

}  // namespace common
