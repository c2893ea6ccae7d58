/// Renders what one camera sees.
#include "render/OneCamera.h"

#include <iostream>

#include "Renderer.h"
#include "Truth.h"
#include "render/Files.h"
#include "render/Followed.h"
#include "render/OutputFolder.h"
#include "render/Progress.h"
#include "render/Scenes.h"

namespace render {

void RenderPictures(const Arguments& a) {
  const world::Scene scene = SceneOf(a);
  const std::vector<world::Pose> poses = ViewsOf(a, scene, a.views);
  const std::filesystem::path folder(a.output);
  std::cout << PrepareFolders({folder}, a.views, a.overwrite);
  world::Renderer renderer(scene);
  world::Truth truth = world::TruthOf(scene);
  Progress progress;
  for (int k = 0; k < a.views; ++k) {
    const std::string name = PictureName(k);
    const world::Pose& pose = poses[static_cast<std::size_t>(k)];
    WritePicture((folder / name).string(), renderer.Render(pose, static_cast<std::uint64_t>(k)));
    truth.frames.push_back(world::TruthFrameOf(scene, pose, k, name));
    progress.Step(k + 1, a.views);
  }
  world::SaveTruth(truth, (folder / "truth.json").string());
}

void RenderVideo(const Arguments& a) {
  const world::Scene scene = SceneOf(a);
  const int frames = FramesOf(a);
  const std::vector<world::Pose> views =
      a.follow.empty() ? ViewsOf(a, scene, KeysOf(a)) : FollowedViews(a.follow, scene);
  const world::Trajectory path = world::ThroughViews(scene.camera, scene.sheet, views, a.seconds, a.away);
  cv::VideoWriter video = OpenVideo(a.video, a.fps, scene.camera.size);
  world::Renderer renderer(scene);
  world::Truth truth = world::TruthOf(scene);
  Progress progress;
  for (int k = 0; k < frames; ++k) {
    const world::Pose pose = path.At(k / a.fps);
    video.write(renderer.Render(pose, static_cast<std::uint64_t>(k)));
    truth.frames.push_back(world::TruthFrameOf(scene, pose, k));
    progress.Step(k + 1, frames);
  }
  video.release();
  world::SaveTruth(truth, TruthName(a.video));
}

}  // namespace render
