/// The options of the tools that say where pictures come from, and in which frames to work.
#include "common/SourceOptions.h"

#include <CLI/CLI.hpp>

#include "common/CommandLine.h"
#include "common/Numbers.h"

namespace common {

void AddSourceOptions(CLI::App& app, SourceSettings& settings) {
  CLI::Option_group* source = app.add_option_group("Source (exactly one)");
  source->add_option("--webcam", settings.webcam, "index of a camera")
      ->check(FaultIfNegative, "not negative");
  source->add_option("--video", settings.video, "video file or URL")->type_name("FILE");
  source->add_option("--rtmp", settings.rtmp, "address of an RTMP stream")->type_name("URL");
  source->add_option("--gstreamer", settings.gstreamerHost, "host of a GStreamer TCP stream")
      ->type_name("HOST");
  source->require_option(1);
  app.add_option("--port", settings.port, "port of the GStreamer stream")
      ->type_name("NUMBER")
      ->capture_default_str();
  app.add_option("--codec", settings.codec, "codec of the GStreamer stream: h264 or mjpeg")
      ->check(CLI::IsMember({"h264", "mjpeg"}))
      ->type_name("NAME")
      ->capture_default_str();
}

void AddRightOptions(CLI::App& app, SourceSettings& settings) {
  auto* webcam = app.add_option("--webcam_right", settings.webcamRight, "index of the right camera of a pair")
                     ->check(FaultIfNegative, "not negative")
                     ->needs(app.get_option("--webcam"));
  auto* video = app.add_option("--video_right", settings.videoRight, "the right camera's video file or URL")
                    ->type_name("FILE")
                    ->needs(app.get_option("--video"));
  AddSplitOption(app, settings.split)->excludes(webcam)->excludes(video);
}

void AddFrameOptions(CLI::App& app, SourceSettings& settings) {
  auto* width =
      app.add_option("--width", settings.width,
                     "width to work at: asked of a camera; frames of other sources are brought to it "
                     "(default: that of what arrives)")
          ->check(CLI::Range(64, 32000))
          ->type_name("PIXELS");
  auto* height = app.add_option("--height", settings.height, "height to work at")
                     ->check(CLI::Range(64, 32000))
                     ->type_name("PIXELS");
  width->needs(height);
  height->needs(width);
  app.add_option("--fps", settings.fps, "rate asked of a camera")
      ->check(FaultUnlessPositive, "positive")
      ->capture_default_str();
}

CLI::Option* AddSplitOption(CLI::App& app, Split& split) {
  const std::vector<std::pair<std::string, int>> ways = {{"horizontal", static_cast<int>(Split::Horizontal)},
                                                         {"vertical", static_cast<int>(Split::Vertical)}};
  return app
      .add_option("--split", split,
                  "each image holds a pair: horizontal (upper is left) or vertical (left is left)")
      ->transform(OneOf(ways))
      ->type_name("WAY");
}

}  // namespace common
