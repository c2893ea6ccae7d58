/// velmora-poses: makes a model of the assistant from a list of poses.
#include <CLI/CLI.hpp>
#include <iostream>

#include "Calibration.h"
#include "common/CommandLine.h"
#include "common/ExitStatus.h"
#include "common/Messages.h"
#include "poses/PoseList.h"
#include "poses/PoseModel.h"

namespace {

const char* const DESCRIPTION =
    "Makes a model of the pose assistant (4x11 circles) from a list of poses: one a line, as x, y (-1 to 1), "
    "span (share of the image), tilts about the vertical and the horizontal axis and roll (degrees).";

struct Arguments {
  std::string list;
  std::string output = "poses.json";
  int width = 640;
  int height = 480;
  double fieldOfView = 64.0;
};

std::vector<std::vector<cv::Point2d>> CentresOf(const std::string& name,
                                                const std::vector<world::Appearance>& list,
                                                const world::Camera& camera) {
  try {
    return poses::CentresOf(list, camera);
  } catch (const std::runtime_error& fault) {
    throw std::runtime_error("'" + name + "': " + fault.what());
  }
}

void Run(const Arguments& arguments) {
  // The log has a remark on every matrix of points.
  Calibration::SetLogLevel(0);
  const cv::Size frame(arguments.width, arguments.height);
  const auto list = poses::ReadPoseList(arguments.list);
  const world::Camera camera = world::CameraFromFieldOfView(frame, arguments.fieldOfView);
  JSON model = poses::ModelOf(CentresOf(arguments.list, list, camera), frame);
  JSON written;
  if (!model.save(arguments.output) || !written.load(arguments.output) ||
      written.toJson() != model.toJson()) {
    throw std::runtime_error("cannot write '" + arguments.output + "'");
  }
  std::cout << list.size() << " poses written to " << arguments.output << std::endl;
}

}  // namespace

int main(int argc, char** argv) {
  Arguments arguments;
  CLI::App app(DESCRIPTION, "velmora-poses");
  common::PrepareCommandLine(app);
  app.add_option("list", arguments.list, "the list of poses")->required();
  app.add_option("-o,--output", arguments.output, "the model file")->type_name("FILE")->capture_default_str();
  app.add_option("--width", arguments.width, "width of the model's frames")
      ->capture_default_str()
      ->check(CLI::Range(64, 32000))
      ->type_name("PIXELS");
  app.add_option("--height", arguments.height, "height of the model's frames")
      ->capture_default_str()
      ->check(CLI::Range(64, 32000))
      ->type_name("PIXELS");
  app.add_option("--fov", arguments.fieldOfView,
                 "horizontal field of view that the poses are drawn for, degrees")
      ->capture_default_str()
      ->check(CLI::Range(20, 120))
      ->type_name("DEGREES");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return common::EndOfParsing(app, error, "name a list of poses");
  }
  try {
    Run(arguments);
    return common::SUCCESS;
  } catch (const std::exception& fault) {
    common::PrintError(std::cerr, fault);
    return common::UNUSABLE;
  }
}
