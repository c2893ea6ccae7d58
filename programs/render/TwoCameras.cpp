/// Renders what two cameras see at once.
#include "render/TwoCameras.h"

#include <iostream>

#include "RigRenderer.h"
#include "Truth.h"
#include "render/Files.h"
#include "render/OutputFolder.h"
#include "render/Progress.h"
#include "render/Scenes.h"

namespace render {

namespace {

/// The pair in one picture, as the command line wants it.
cv::Mat Combined(const Arguments& a, const std::vector<cv::Mat>& pair) {
  return a.combine == "vertical" ? world::SideBySide(pair) : world::OneAboveTheOther(pair);
}

/// The name of a camera's own video.
std::string NameOf(const std::string& video, const std::string& camera) {
  const std::filesystem::path path(video);
  const std::filesystem::path name(path.stem().string() + "_" + camera + path.extension().string());
  return (path.parent_path() / name).string();
}

/// Where the frames of both cameras go: to one video or to two.
class PairVideo {
 public:
  explicit PairVideo(const Arguments& arguments) : arguments_(arguments) {}

  void Write(const std::vector<cv::Mat>& pair) {
    if (!arguments_.combine.empty()) {
      Write(left_, arguments_.video, Combined(arguments_, pair));
    } else {
      Write(left_, NameOf(arguments_.video, "left"), pair[0]);
      Write(right_, NameOf(arguments_.video, "right"), pair[1]);
    }
  }

 private:
  void Write(cv::VideoWriter& video, const std::string& path, const cv::Mat& picture) {
    if (!video.isOpened()) video = OpenVideo(path, arguments_.fps, picture.size());
    video.write(picture);
  }

  const Arguments& arguments_;
  cv::VideoWriter left_;
  cv::VideoWriter right_;
};

}  // namespace

void RenderPicturePairs(const Arguments& a) {
  const world::Scene scene = SceneOf(a);
  const world::Pair rig = PairOf(a);
  const std::vector<world::Pose> poses = ViewsOf(a, rig, scene.sheet, a.views);
  const std::filesystem::path folder(a.output);
  const bool combined = !a.combine.empty();
  const std::vector<std::filesystem::path> own = {folder / "left", folder / "right"};
  std::cout << PrepareFolders(combined ? std::vector{folder} : own, a.views, a.overwrite);
  world::RigRenderer renderer(rig, scene);
  world::Truth truth = world::TruthOf(rig, scene);
  Progress progress;
  for (int k = 0; k < a.views; ++k) {
    const world::Pose& pose = poses[static_cast<std::size_t>(k)];
    const std::vector<cv::Mat> pair = renderer.Render(pose, static_cast<std::uint64_t>(k));
    const std::string name = PictureName(k);
    const std::string left = combined ? name : "left/" + name;
    const std::string right = combined ? name : "right/" + name;
    WritePicture((folder / left).string(), combined ? Combined(a, pair) : pair[0]);
    if (!combined) WritePicture((folder / right).string(), pair[1]);
    truth.frames.push_back(world::TruthFrameOf(rig, scene, pose, k, left, right));
    progress.Step(k + 1, a.views);
  }
  world::SaveTruth(truth, (folder / "truth.json").string());
  if (combined) return;
  SaveOwnTruth(world::LeftOf(truth), folder / "left");
  SaveOwnTruth(world::RightOf(truth), folder / "right");
}

void RenderVideoPair(const Arguments& a) {
  const world::Scene scene = SceneOf(a);
  const world::Pair rig = PairOf(a);
  const int frames = FramesOf(a);
  const world::Trajectory path =
      world::ThroughViews(rig, scene.sheet, ViewsOf(a, rig, scene.sheet, KeysOf(a)), a.seconds, a.away);
  world::RigRenderer renderer(rig, scene);
  world::Truth truth = world::TruthOf(rig, scene);
  {
    PairVideo video(a);
    Progress progress;
    for (int k = 0; k < frames; ++k) {
      const world::Pose pose = path.At(k / a.fps);
      video.Write(renderer.Render(pose, static_cast<std::uint64_t>(k)));
      truth.frames.push_back(world::TruthFrameOf(rig, scene, pose, k));
      progress.Step(k + 1, frames);
    }
  }
  world::SaveTruth(truth, TruthName(a.video));
  if (!a.combine.empty()) return;
  world::SaveTruth(world::LeftOf(truth), TruthName(NameOf(a.video, "left")));
  world::SaveTruth(world::RightOf(truth), TruthName(NameOf(a.video, "right")));
}

}  // namespace render
