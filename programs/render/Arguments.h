/// The command line of the renderer.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace render {

/// The command line as given.
struct Arguments {
  std::string output = ".";
  bool overwrite = false;
  std::string video;
  std::string sheet;
  int views = 0;
  double seconds = 20.0;
  double fps = 25.0;
  int away = 0;
  std::string follow;
  std::string size = "640x480";
  std::string grid = "4x11";
  /// Of a pinhole; 60 degrees by default.
  std::optional<double> fieldOfView;
  /// The field of view of a fisheye.
  std::optional<double> fisheye;
  std::vector<double> fisheyeDistortion;
  std::optional<double> fx, fy, cx, cy;
  std::vector<double> distortion;
  double unit = 0.02;
  double blur = 0.0;
  double noise = 0.0;
  double light = 0.0;
  int clutter = 0;
  bool spread = false;
  std::uint64_t seed = 1;
  bool rig = false;
  /// The number of cameras of a rig; 0 of a pair.
  int cameras = 0;
  bool ring = false;
  bool leaveOutEmpty = false;
  double baseline = 0.1;
  std::optional<double> toeIn;
  std::vector<double> rightDistortion;
  std::string combine;

  bool IsFisheye() const { return fisheye.has_value() || !fisheyeDistortion.empty(); }
};

/// Declares all options; parsing then fills the arguments.
void Declare(CLI::App& app, Arguments& arguments);

}  // namespace render
