/// Truths, and their files: JSON with one object per image.
#include "Truth.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "TruthJson.h"

namespace world {

namespace {

using nlohmann::json;

TruthFrame FrameFrom(const json& object, int count, bool pair) {
  TruthFrame frame;
  static_cast<TruthView&>(frame) = ViewFrom(object, count);
  frame.index = Integer(object, "frame");
  if (pair) frame.right = ViewFrom(Member(object, "right"), count);
  return frame;
}

Truth TruthFrom(const json& document) {
  if (document.is_object() && document.contains("cameras")) {
    throw std::runtime_error("it is of a rig; the truth of each camera is beside its pictures");
  }
  Truth truth;
  const Camera camera = CameraFrom(document);
  truth.imageSize = camera.size;
  truth.lens = camera.lens;
  truth.sheet = SheetFrom(document);
  truth.seed = SeedFrom(document);
  const auto right = document.find("right");
  if (right != document.end()) truth.right = RigCameraFrom(*right);
  for (const json& frame : List(Member(document, "frames"), "frames")) {
    truth.frames.push_back(FrameFrom(frame, truth.sheet.Count(), truth.right.has_value()));
  }
  return truth;
}

json ToJson(const TruthFrame& frame) {
  json object = ToJson(static_cast<const TruthView&>(frame));
  object["frame"] = frame.index;
  if (frame.right) object["right"] = ToJson(*frame.right);
  return object;
}

/// The right camera of a pair's truth.
const RigCamera& RightCameraOf(const Truth& truth) {
  if (!truth.right) throw std::invalid_argument("the truth is of one camera, not of a pair");
  return *truth.right;
}

}  // namespace

TruthView ViewOf(const Camera& camera, const Sheet& sheet, const Pose& pose, const std::string& file) {
  const bool whole = FacesCamera(pose) && DiscsInside(camera, sheet, pose);
  return {file, pose, TrueCentres(camera.lens, sheet, pose), whole};
}

Truth TruthOf(const Scene& scene) {
  Truth truth;
  truth.imageSize = scene.camera.size;
  truth.lens = scene.camera.lens;
  truth.sheet = scene.sheet;
  truth.seed = scene.seed;
  return truth;
}

Truth TruthOf(const Pair& pair, const Scene& scene) {
  Truth truth = TruthOf(scene);
  truth.imageSize = pair.left.size;
  truth.lens = pair.left.lens;
  truth.right = RigCamera{pair.right, pair.R, pair.T};
  return truth;
}

TruthFrame TruthFrameOf(const Scene& scene, const Pose& pose, int index, const std::string& file) {
  TruthFrame frame;
  static_cast<TruthView&>(frame) = ViewOf(scene.camera, scene.sheet, pose, file);
  frame.index = index;
  return frame;
}

TruthFrame TruthFrameOf(const Pair& pair, const Scene& scene, const Pose& leftPose, int index,
                        const std::string& leftFile, const std::string& rightFile) {
  TruthFrame frame;
  static_cast<TruthView&>(frame) = ViewOf(pair.left, scene.sheet, leftPose, leftFile);
  frame.index = index;
  frame.right = ViewOf(pair.right, scene.sheet, RightPose(pair, leftPose), rightFile);
  return frame;
}

Pair PairOf(const Truth& truth) {
  const RigCamera& right = RightCameraOf(truth);
  return {{truth.imageSize, truth.lens}, right, right.R, right.T};
}

Truth LeftOf(const Truth& truth) {
  RightCameraOf(truth);
  Truth left = truth;
  left.right.reset();
  for (TruthFrame& frame : left.frames) frame.right.reset();
  return left;
}

Truth RightOf(const Truth& truth) {
  const RigCamera& camera = RightCameraOf(truth);
  Truth right = truth;
  right.imageSize = camera.size;
  right.lens = camera.lens;
  right.right.reset();
  for (TruthFrame& frame : right.frames) {
    static_cast<TruthView&>(frame) = TruthView(frame.right.value());
    frame.right.reset();
  }
  return right;
}

void SaveTruth(const Truth& truth, const std::string& path) {
  json document = ToJson(Camera{truth.imageSize, truth.lens});
  AddSheetAndSeed(document, truth.sheet, truth.seed);
  if (truth.right) document["right"] = ToJson(*truth.right);
  document["frames"] = json::array();
  for (const TruthFrame& frame : truth.frames) document["frames"].push_back(ToJson(frame));
  WriteDocument(document, path);
}

Truth LoadTruth(const std::string& path) {
  Truth truth;
  ReadDocument(path, [&](const json& document) { truth = TruthFrom(document); });
  return truth;
}

}  // namespace world
