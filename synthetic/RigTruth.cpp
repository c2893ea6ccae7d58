/// Truths of rigs, and their files: JSON with one object per moment.
#include "RigTruth.h"

#include <nlohmann/json.hpp>

#include "TruthJson.h"

namespace world {

namespace {

using nlohmann::json;

json ToJson(const RigTruthFrame& frame) {
  json object = ToJson(frame.pose);
  object["frame"] = frame.index;
  object["views"] = json::array();
  for (const TruthView& view : frame.views) object["views"].push_back(ToJson(view));
  return object;
}

RigTruthFrame FrameFrom(const json& object, int cameras, int discs) {
  RigTruthFrame frame;
  frame.index = Integer(object, "frame");
  frame.pose = PoseFrom(object);
  for (const json& view : List(Member(object, "views"), "views", cameras)) {
    frame.views.push_back(ViewFrom(view, discs));
  }
  return frame;
}

RigTruth RigTruthFrom(const json& document) {
  RigTruth truth;
  for (const json& camera : List(Member(document, "cameras"), "cameras")) {
    truth.rig.cameras.push_back(RigCameraFrom(camera));
  }
  truth.sheet = SheetFrom(document);
  truth.seed = SeedFrom(document);
  const int cameras = static_cast<int>(truth.rig.cameras.size());
  for (const json& frame : List(Member(document, "frames"), "frames")) {
    truth.frames.push_back(FrameFrom(frame, cameras, truth.sheet.Count()));
  }
  return truth;
}

}  // namespace

RigTruth RigTruthOf(const Rig& rig, const Scene& scene) {
  return {rig, scene.sheet, scene.seed, {}};
}

RigTruthFrame RigTruthFrameOf(const Rig& rig, const Sheet& sheet, const Pose& rigPose, int index,
                              const std::vector<std::string>& files) {
  RigTruthFrame frame = {index, rigPose, {}};
  for (std::size_t k = 0; k < rig.cameras.size(); ++k) {
    frame.views.push_back(ViewOf(rig.cameras[k], sheet, PoseFor(rig, k, rigPose), files.at(k)));
  }
  return frame;
}

Truth TruthOfCamera(const RigTruth& truth, std::size_t camera) {
  const RigCamera& itself = truth.rig.cameras.at(camera);
  Truth own;
  own.imageSize = itself.size;
  own.lens = itself.lens;
  own.sheet = truth.sheet;
  own.seed = truth.seed;
  for (const RigTruthFrame& frame : truth.frames) {
    const TruthView& view = frame.views.at(camera);
    if (view.file.empty()) continue;
    TruthFrame image;
    static_cast<TruthView&>(image) = view;
    image.index = frame.index;
    own.frames.push_back(image);
  }
  return own;
}

void SaveRigTruth(const RigTruth& truth, const std::string& path) {
  json document;
  AddSheetAndSeed(document, truth.sheet, truth.seed);
  document["cameras"] = json::array();
  for (const RigCamera& camera : truth.rig.cameras) document["cameras"].push_back(ToJson(camera));
  document["frames"] = json::array();
  for (const RigTruthFrame& frame : truth.frames) document["frames"].push_back(ToJson(frame));
  WriteDocument(document, path);
}

RigTruth LoadRigTruth(const std::string& path) {
  RigTruth truth;
  ReadDocument(path, [&](const json& document) { truth = RigTruthFrom(document); });
  return truth;
}

}  // namespace world
