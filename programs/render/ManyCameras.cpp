/// Renders what the cameras of a rig see at once.
#include "render/ManyCameras.h"

#include <iostream>
#include <stdexcept>
#include <system_error>

#include "RigRenderer.h"
#include "RigTruth.h"
#include "Views.h"
#include "render/Files.h"
#include "render/OutputFolder.h"
#include "render/Progress.h"
#include "render/Scenes.h"

namespace render {

namespace {

namespace fs = std::filesystem;

std::string FolderName(std::size_t camera) {
  return "camera-" + std::to_string(camera);
}

/// The cameras' folders; with more of them in an earlier run, those too, apart.
struct Folders {
  std::vector<fs::path> own;
  std::vector<fs::path> further;
};

Folders FoldersIn(const fs::path& folder, std::size_t cameras) {
  Folders folders;
  for (std::size_t k = 0; k < cameras; ++k) folders.own.push_back(folder / FolderName(k));
  for (std::size_t k = cameras; fs::exists(folder / FolderName(k)); ++k) {
    folders.further.push_back(folder / FolderName(k));
  }
  return folders;
}

/// A picture of an earlier run would be taken for one of this moment.
void Remove(const fs::path& picture) {
  std::error_code fault;
  fs::remove(picture, fault);
  if (fault) throw std::runtime_error("cannot remove \"" + picture.string() + "\": " + fault.message());
}

/// The pictures of one moment, from the rig's folder; an empty name for one that is left out.
std::vector<std::string> NamesOf(const Arguments& a, const world::Rig& rig, const world::Sheet& sheet,
                                 const world::Pose& pose, int number) {
  std::vector<std::string> names;
  for (std::size_t k = 0; k < rig.cameras.size(); ++k) {
    const bool wanted =
        !a.leaveOutEmpty || world::ShowsSheet(rig.cameras[k], sheet, world::PoseFor(rig, k, pose));
    names.push_back(wanted ? FolderName(k) + "/" + PictureName(number) : "");
  }
  return names;
}

}  // namespace

void RenderRigPictures(const Arguments& a) {
  const world::Scene scene = SceneOf(a);
  const world::Rig rig = RigOf(a);
  const std::vector<world::Pose> poses = ShotsOf(a, rig, scene.sheet);
  const fs::path folder(a.output);
  const Folders folders = FoldersIn(folder, rig.cameras.size());
  std::cout << PrepareFolders(folders.own, a.views, a.overwrite, folders.further);
  world::RigRenderer renderer(rig, scene);
  world::RigTruth truth = world::RigTruthOf(rig, scene);
  Progress progress;
  for (int k = 0; k < a.views; ++k) {
    const world::Pose& pose = poses[static_cast<std::size_t>(k)];
    const std::vector<std::string> names = NamesOf(a, rig, scene.sheet, pose, k);
    const std::vector<cv::Mat> pictures = renderer.Render(pose, static_cast<std::uint64_t>(k));
    for (std::size_t camera = 0; camera < names.size(); ++camera) {
      if (names[camera].empty()) {
        Remove(folders.own[camera] / PictureName(k));
      } else {
        WritePicture((folder / names[camera]).string(), pictures[camera]);
      }
    }
    truth.frames.push_back(world::RigTruthFrameOf(rig, scene.sheet, pose, k, names));
    progress.Step(k + 1, a.views);
  }
  world::SaveRigTruth(truth, (folder / "truth.json").string());
  for (std::size_t camera = 0; camera < folders.own.size(); ++camera) {
    SaveOwnTruth(world::TruthOfCamera(truth, camera), folders.own[camera]);
  }
}

}  // namespace render
