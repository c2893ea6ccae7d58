/// Renders pictures or a video of the printed sheet, with their truth beside them.
#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/videoio.hpp>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Renderer.h"
#include "Trajectory.h"
#include "Truth.h"
#include "Views.h"

namespace {

constexpr int USAGE_ERROR = 2;
constexpr int LARGEST_SIDE = 8192;
constexpr int MOST_FRAMES = 1000000;
/// In a video, how long the sheet takes from one view to the next.
constexpr double SECONDS_PER_VIEW = 1.2;

/// The command line as given.
struct Arguments {
  std::string output = ".";
  std::string video;
  std::string sheet;
  int views = 0;
  double seconds = 20.0;
  double fps = 25.0;
  int away = 0;
  std::string size = "640x480";
  std::string grid = "4x11";
  double fieldOfView = 60.0;
  std::optional<double> fx, fy, cx, cy;
  std::vector<double> distortion;
  double unit = 0.02;
  double blur = 0.0;
  double noise = 0.0;
  double light = 0.0;
  int clutter = 0;
  bool spread = false;
  std::uint64_t seed = 1;
};

void Declare(CLI::App& app, Arguments& a) {
  app.add_option("-o,--output", a.output, "Folder of the pictures and truth.json, made when absent")
      ->capture_default_str();
  app.add_option("--views", a.views, "Render this many pictures")->check(CLI::Range(1, 100000));
  app.add_option("--video", a.video,
                 "Render a video (.avi); the truth goes to FILE.truth.json, without \".avi\"");
  app.add_option("--seconds", a.seconds, "Duration of the video")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  app.add_option("--fps", a.fps, "Frames per second of the video")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  app.add_option("--away", a.away,
                 "In the video, take the sheet out of the image after every N views (0: never)")
      ->capture_default_str()
      ->check(CLI::NonNegativeNumber);
  app.add_option("--sheet", a.sheet, "Write the flat sheet as a PNG of 150 dpi");
  app.add_option("--size", a.size, "Image size, WxH")->capture_default_str();
  app.add_option("--grid", a.grid, "Discs, COLUMNSxROWS")->capture_default_str();
  app.add_option("--fov", a.fieldOfView, "Horizontal field of view, degrees")
      ->capture_default_str()
      ->check(CLI::Range(1.0, 170.0));
  app.add_option("--fx", a.fx, "Focal length, pixels; instead of --fov")->check(CLI::PositiveNumber);
  app.add_option("--fy", a.fy, "Focal length along y; that of x by default")->check(CLI::PositiveNumber);
  app.add_option("--cx", a.cx, "Principal point; the middle of the image by default");
  app.add_option("--cy", a.cy, "Principal point; the middle of the image by default");
  app.add_option("--dist", a.distortion, "Distortion coefficients k1,k2,p1,p2,k3,...")->delimiter(',');
  app.add_option("--unit", a.unit, "Distance of neighbouring rows, metres")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  app.add_option("--blur", a.blur, "Gaussian blur, sigma in pixels")->check(CLI::Range(0.0, 100.0));
  app.add_option("--noise", a.noise, "Sensor noise, sigma in grey levels")->check(CLI::Range(0.0, 255.0));
  app.add_option("--light", a.light, "Unevenness of the light")->check(CLI::Range(0.0, 1.0));
  app.add_option("--clutter", a.clutter, "Objects behind the sheet")->check(CLI::Range(0, 100000));
  app.add_flag("--spread", a.spread, "The fixed, well-conditioned list of views instead of random ones");
  app.add_option("--seed", a.seed, "Seed of everything random")->capture_default_str();
}

/// "WxH" with positive numbers up to `most`.
cv::Size ParseSize(const std::string& text, const std::string& option, int most) {
  std::istringstream stream(text);
  cv::Size size;
  char separator = '\0';
  const bool parsed = static_cast<bool>(stream >> size.width >> separator >> size.height);
  if (!parsed || stream.peek() != std::istringstream::traits_type::eof() || separator != 'x' ||
      size.width < 1 || size.height < 1 || size.width > most || size.height > most) {
    throw std::invalid_argument(option + " wants two numbers from 1 to " + std::to_string(most) +
                                " joined by an x");
  }
  return size;
}

world::Camera CameraOf(const Arguments& a) {
  const cv::Size size = ParseSize(a.size, "--size", LARGEST_SIDE);
  world::Camera camera = world::CameraFromFieldOfView(size, a.fieldOfView);
  cv::Matx33d K = camera.lens.K();
  if (a.fx) K(0, 0) = K(1, 1) = *a.fx;
  if (a.fy) K(1, 1) = *a.fy;
  if (a.cx) K(0, 2) = *a.cx;
  if (a.cy) K(1, 2) = *a.cy;
  camera.lens = world::Lens(K, a.distortion);
  return camera;
}

world::Scene SceneOf(const Arguments& a) {
  world::Scene scene;
  scene.camera = CameraOf(a);
  scene.sheet = world::Sheet(ParseSize(a.grid, "--grid", 100), a.unit);
  scene.blur = a.blur;
  scene.noise = a.noise;
  scene.light = a.light;
  scene.clutter = a.clutter;
  scene.seed = a.seed;
  return scene;
}

std::vector<world::Pose> ViewsOf(const Arguments& a, const world::Scene& scene, int count) {
  return a.spread ? world::SpreadViews(scene.camera, count, scene.sheet)
                  : world::SampleViews(scene.camera, count, scene.seed, scene.sheet);
}

void WritePicture(const std::string& path, const cv::Mat& picture) {
  bool written = false;
  try {
    written = cv::imwrite(path, picture);
  } catch (const cv::Exception&) {
    written = false;
  }
  if (!written) throw std::runtime_error("cannot write \"" + path + "\"");
}

void RenderPictures(const Arguments& a) {
  const world::Scene scene = SceneOf(a);
  const std::vector<world::Pose> poses = ViewsOf(a, scene, a.views);
  std::error_code fault;
  std::filesystem::create_directories(a.output, fault);
  if (fault) throw std::runtime_error("cannot make the folder \"" + a.output + "\": " + fault.message());
  const std::filesystem::path folder(a.output);
  world::Renderer renderer(scene);
  world::Truth truth = world::TruthOf(scene);
  for (int k = 0; k < a.views; ++k) {
    std::ostringstream name;
    name << "view" << std::setw(3) << std::setfill('0') << k << ".png";
    const world::Pose& pose = poses[static_cast<std::size_t>(k)];
    WritePicture((folder / name.str()).string(), renderer.Render(pose, static_cast<std::uint64_t>(k)));
    truth.frames.push_back(world::TruthFrameOf(scene, pose, k, name.str()));
  }
  world::SaveTruth(truth, (folder / "truth.json").string());
}

/// Opens the video, or says why it cannot be.
cv::VideoWriter OpenVideo(const std::string& path, double fps, cv::Size size) {
  if (std::filesystem::path(path).extension() != ".avi") {
    throw std::invalid_argument("--video wants a file name that ends in .avi");
  }
  // The video library would report an unwritable file in words of its own.
  if (!std::ofstream(path, std::ios::binary | std::ios::app))
    throw std::runtime_error("cannot write \"" + path + "\"");
  const int codec = cv::VideoWriter::fourcc('M', 'J', 'P', 'G');
  cv::VideoWriter video(path, cv::CAP_OPENCV_MJPEG, codec, fps, size, true);
  if (!video.isOpened()) video.open(path, codec, fps, size, true);
  if (!video.isOpened()) throw std::runtime_error("cannot open \"" + path + "\" as an MJPG video");
  video.set(cv::VIDEOWRITER_PROP_QUALITY, 95.0);
  return video;
}

void RenderVideo(const Arguments& a) {
  const world::Scene scene = SceneOf(a);
  const double product = std::round(a.seconds * a.fps);
  if (!(product >= 1.0 && product <= MOST_FRAMES)) {
    throw std::invalid_argument("a video has 1 to " + std::to_string(MOST_FRAMES) + " frames");
  }
  const int frames = static_cast<int>(product);
  const int count = std::min(200, std::max(2, static_cast<int>(a.seconds / SECONDS_PER_VIEW)));
  const world::Trajectory path =
      world::ThroughViews(scene.camera, scene.sheet, ViewsOf(a, scene, count), a.seconds, a.away);
  cv::VideoWriter video = OpenVideo(a.video, a.fps, scene.camera.size);
  world::Renderer renderer(scene);
  world::Truth truth = world::TruthOf(scene);
  for (int k = 0; k < frames; ++k) {
    const world::Pose pose = path.At(k / a.fps);
    video.write(renderer.Render(pose, static_cast<std::uint64_t>(k)));
    truth.frames.push_back(world::TruthFrameOf(scene, pose, k));
  }
  video.release();
  world::SaveTruth(truth, std::filesystem::path(a.video).replace_extension(".truth.json").string());
}

void Run(const Arguments& a) {
  if (a.views == 0 && a.video.empty() && a.sheet.empty()) {
    throw std::invalid_argument("nothing to do: give --views, --video or --sheet");
  }
  if (a.views > 0 && !a.video.empty()) throw std::invalid_argument("give either --views or --video");
  if (!a.sheet.empty()) {
    WritePicture(a.sheet, world::Sheet(ParseSize(a.grid, "--grid", 100), a.unit).Draw());
  }
  if (a.views > 0) RenderPictures(a);
  if (!a.video.empty()) RenderVideo(a);
}

}  // namespace

int main(int argc, char** argv) {
  Arguments arguments;
  CLI::App app("Renders pictures of the printed circles grid with known truth.", "velmora-render");
  Declare(app, arguments);
  try {
    app.parse(argc, argv);
    Run(arguments);
    return 0;
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return 0;
  } catch (const std::exception& fault) {
    std::cerr << "velmora-render: " << fault.what() << '\n';
    return USAGE_ERROR;
  }
}
