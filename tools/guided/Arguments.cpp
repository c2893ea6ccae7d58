/// The arguments of the guided calibration.
#include "guided/Arguments.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <sstream>

#include "Numbers.h"

namespace guided {

namespace {

constexpr int WRONG_USAGE = 2;
constexpr float ROW_INTERVALS = 10.0F;

const char* const DESCRIPTION =
    "Calibrates a camera with the pose assistant: bring the printed 4x11 grid to where the drawn sheet is, "
    "pose after pose; snapshots and the computation follow by themselves.";

const char* const FOOTER =
    "Keys in the window: r starts again, q quits.\n"
    "Exit status: 0 calibrated, 1 ended before that, 2 wrong usage, unreadable input or no display.";

/// "0.3px" or "0.3" as a number of pixels; throws CLI's error otherwise.
double ParsePixels(const std::string& text) {
  std::istringstream stream(text);
  double pixels = 0.0;
  std::string unit;
  if (!(stream >> pixels) || !(pixels > 0.0) || !std::isfinite(pixels) ||
      (stream >> unit && (unit != "px" || stream >> unit))) {
    throw CLI::ValidationError("--until", "'" + text + "' is no number of pixels, such as 0.3px");
  }
  return pixels;
}

void DeclareEnd(CLI::App& app, std::string& until, Arguments& arguments) {
  auto* wish =
      app.add_option("--until", until,
                     "ask for the pose that tells most, again and again, until projections are known "
                     "to so many pixels over the whole image, such as 0.3px");
  wish->excludes(app.get_option("--poses"));
  app.add_option("--max-poses", arguments.mostPoses, "with --until: ask for so many poses at most")
      ->check(CLI::Range(6, 1000))
      ->capture_default_str()
      ->needs(wish);
}

void DeclareSource(CLI::App& app, app::Settings& settings) {
  CLI::Option_group* source = app.add_option_group("source", "Exactly one of these");
  source->add_option("--webcam", settings.webcam, "index of a camera")->check(FaultIfNegative, "NONNEGATIVE");
  source->add_option("--video", settings.video, "video file or URL");
  source->add_option("--rtmp", settings.rtmp, "address of an RTMP stream");
  source->add_option("--gstreamer", settings.gstreamerHost, "host of a GStreamer TCP stream");
  source->require_option(1);
  app.add_option("--port", settings.port, "port of the GStreamer stream")->capture_default_str();
  app.add_option("--codec", settings.codec, "codec of the GStreamer stream: h264 or mjpeg")
      ->check(CLI::IsMember({"h264", "mjpeg"}))
      ->capture_default_str();
}

void DeclareFrames(CLI::App& app, app::Settings& settings) {
  app.add_option("--width", settings.width, "width of the frames to work in, also asked of a camera")
      ->check(CLI::Range(64, 32000))
      ->capture_default_str();
  app.add_option("--height", settings.height, "height of these frames")
      ->check(CLI::Range(64, 32000))
      ->capture_default_str();
  app.add_option("--fps", settings.fps, "rate asked of a camera")
      ->check(FaultUnlessPositive, "POSITIVE")
      ->capture_default_str();
}

}  // namespace

Parsed ParseArguments(int argc, const char* const* argv, const std::string& shippedPoses) {
  Parsed parsed;
  Arguments& arguments = parsed.arguments;
  arguments.poses = shippedPoses;
  float hdist = 0.19F;
  std::string until;
  CLI::App app(DESCRIPTION, "velmora-guided");
  app.footer(FOOTER);
  DeclareSource(app, arguments.settings);
  DeclareFrames(app, arguments.settings);
  app.add_option("--hdist", hdist, "distance in metres across the ten row intervals of the grid")
      ->check(FaultUnlessPositive, "POSITIVE")
      ->capture_default_str();
  app.add_option("--poses", arguments.poses, "model file with the poses to reach")->capture_default_str();
  DeclareEnd(app, until, arguments);
  tools::AddEngineOptions(app, arguments);
  app.add_option("--output", arguments.output, "result file, without its extension .json")
      ->capture_default_str();
  try {
    app.parse(argc, argv);
    arguments.settings.hdist = hdist / ROW_INTERVALS;
    if (app.count("--until") > 0) arguments.until = ParsePixels(until);
    parsed.run = true;
  } catch (const CLI::ParseError& error) {
    parsed.exitStatus = app.exit(error) == 0 ? 0 : WRONG_USAGE;
  }
  return parsed;
}

std::string ShippedPoses(const std::string& executable) {
  const std::filesystem::path folder = std::filesystem::path(executable).parent_path().parent_path();
  return (folder / "share" / "velmora" / "poses-4x11.json").string();
}

}  // namespace guided
