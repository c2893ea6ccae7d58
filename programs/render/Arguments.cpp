/// The options of the renderer.
#include "render/Arguments.h"

#include <CLI/CLI.hpp>
#include <charconv>

#include "common/Numbers.h"

namespace render {

namespace {

void DeclareWork(CLI::App& app, Arguments& a) {
  app.add_option("-o,--output", a.output, "Folder of the pictures and truth.json, made when absent")
      ->type_name("FOLDER")
      ->capture_default_str();
  app.add_flag("--overwrite", a.overwrite,
               "Write into a folder that holds other pictures; those rendered earlier are removed");
  app.add_option("--views", a.views, "Render this many pictures")->check(CLI::Range(1, 100000));
  app.add_option("--video", a.video,
                 "Render a video (.avi); the truth goes to FILE.truth.json, without \".avi\"")
      ->type_name("FILE");
  app.add_option("--seconds", a.seconds, "Duration of the video")
      ->capture_default_str()
      ->check(common::FaultUnlessPositive, "POSITIVE");
  app.add_option("--fps", a.fps, "Frames per second of the video")
      ->capture_default_str()
      ->check(common::FaultUnlessPositive, "POSITIVE");
  app.add_option("--away", a.away,
                 "In the video, take the sheet out of the image after every N views (0: never)")
      ->capture_default_str()
      ->check(common::FaultIfNegative, "NONNEGATIVE");
  app.add_option("--follow", a.follow,
                 "In the video, take the sheet through the poses of this model of the assistant")
      ->type_name("FILE");
  app.add_option("--sheet", a.sheet, "Write the flat sheet to print, as a PNG in its true size")
      ->type_name("FILE");
}

void DeclareScene(CLI::App& app, Arguments& a) {
  app.add_option("--size", a.size, "Image size, pixels")->type_name("WIDTHxHEIGHT")->capture_default_str();
  app.add_option("--grid", a.grid, "Discs in a row, and rows")
      ->type_name("COLUMNSxROWS")
      ->capture_default_str();
  app.add_option("--fov", a.fieldOfView, "Horizontal field of view, degrees")
      ->default_str("60")
      ->check(CLI::Range(1.0, 170.0));
  app.add_option("--fisheye", a.fisheye,
                 "A fisheye instead of a pinhole, with this horizontal field of view, degrees")
      ->check(CLI::Range(1.0, 350.0))
      ->type_name("FIELD");
  app.add_option("--fisheye-dist", a.fisheyeDistortion,
                 "Coefficients k1,k2,k3,k4 of the fisheye; with --fisheye or --fx")
      ->delimiter(',');
  app.add_option("--fx", a.fx, "Focal length, pixels; instead of --fov or --fisheye")
      ->check(common::FaultUnlessPositive, "POSITIVE");
  app.add_option("--fy", a.fy, "Focal length along y; that of x by default")
      ->check(common::FaultUnlessPositive, "POSITIVE");
  app.add_option("--cx", a.cx, "Principal point; the middle of the image by default")
      ->check(common::FaultUnlessFinite);
  app.add_option("--cy", a.cy, "Principal point; the middle of the image by default")
      ->check(common::FaultUnlessFinite);
  app.add_option("--dist", a.distortion, "Distortion coefficients k1,k2,p1,p2,k3,...")->delimiter(',');
  app.add_option("--unit", a.unit, "Distance of neighbouring rows, metres")
      ->capture_default_str()
      ->check(common::FaultUnlessPositive, "POSITIVE");
  app.add_option("--blur", a.blur, "Gaussian blur, sigma in pixels")->check(CLI::Range(0.0, 100.0));
  app.add_option("--noise", a.noise, "Sensor noise, sigma in grey levels")->check(CLI::Range(0.0, 255.0));
  app.add_option("--light", a.light, "Unevenness of the light")->check(CLI::Range(0.0, 1.0));
  app.add_option("--clutter", a.clutter, "Objects behind the sheet")->check(CLI::Range(0, 100000));
  app.add_flag("--spread", a.spread, "The fixed, well-conditioned list of views instead of random ones");
  app.add_option("--seed", a.seed, "Seed of everything random")->capture_default_str();
}

/// The number of cameras that --rig is given.
int CamerasIn(const std::string& text) {
  constexpr int MOST_CAMERAS = 100;
  int count = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, fault] = std::from_chars(text.data(), end, count);
  if (fault != std::errc() || stop != end || count < 2 || count > MOST_CAMERAS) {
    throw CLI::ValidationError(
        "--rig", "'" + text + "' is not a number of cameras from 2 to " + std::to_string(MOST_CAMERAS));
  }
  return count;
}

void DeclareRig(CLI::App& app, Arguments& a) {
  const auto take = [&a](const std::string& count) {
    a.rig = true;
    a.cameras = count.empty() ? 0 : CamerasIn(count);
  };
  CLI::Option* rig = app.add_option_function<std::string>(
      "--rig", take,
      "Two cameras: folders left and right in that of the pictures, videos FILE_left.avi and FILE_right.avi. "
      "With a number: so many cameras in a row, folders camera-0, camera-1, ...");
  rig->expected(0, 1)->type_name("[N]");
  CLI::Option* ring = app.add_flag("--ring", a.ring,
                                   "With a number of cameras: in a ring around the sheet instead of a row; "
                                   "from three on, the grid is never to be found by all of them at once")
                          ->needs(rig);
  app.add_flag("--leave-out-empty", a.leaveOutEmpty,
               "With a number of cameras: no picture where nothing of the sheet is in it, instead of one of "
               "the background")
      ->needs(rig);
  app.add_option("--baseline", a.baseline, "Distance of the cameras, metres; in a row, of neighbours")
      ->capture_default_str()
      ->check(common::FaultUnlessPositive, "POSITIVE")
      ->needs(rig)
      ->excludes(ring);
  app.add_option("--toe-in", a.toeIn, "Angle at which the cameras' axes meet, degrees")
      ->default_str("0")
      ->check(CLI::Range(-90.0, 90.0))
      ->needs(rig);
  app.add_option("--dist-right", a.rightDistortion,
                 "Distortion coefficients of the right camera; those of the left one by default")
      ->delimiter(',')
      ->needs(rig);
  app.add_option("--combine", a.combine,
                 "Both cameras in one picture or video: vertical (side by side) or horizontal (the left one "
                 "above the right one)")
      ->check(CLI::IsMember({"vertical", "horizontal"}))
      ->type_name("WAY")
      ->needs(rig);
}

}  // namespace

void Declare(CLI::App& app, Arguments& arguments) {
  DeclareWork(app, arguments);
  DeclareScene(app, arguments);
  DeclareRig(app, arguments);
}

}  // namespace render
