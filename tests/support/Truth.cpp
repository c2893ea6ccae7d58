/// Truth files: JSON with one object per picture.
#include "Truth.h"

#include <cmath>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace world {

namespace {

using nlohmann::json;

json ToJson(const cv::Matx33d& matrix) {
  json rows = json::array();
  for (int i = 0; i < 3; ++i) rows.push_back({matrix(i, 0), matrix(i, 1), matrix(i, 2)});
  return rows;
}

json ToJson(const cv::Vec3d& v) {
  return json::array({v[0], v[1], v[2]});
}

json ToJson(const std::vector<cv::Point2d>& points) {
  json list = json::array();
  for (const cv::Point2d& p : points) {
    list.push_back(std::isfinite(p.x) && std::isfinite(p.y) ? json::array({p.x, p.y}) : json());
  }
  return list;
}

[[noreturn]] void Fault(const std::string& what) {
  throw std::runtime_error(what);
}

const json& Member(const json& object, const char* key) {
  if (!object.is_object()) Fault(std::string("no object around \"") + key + "\"");
  const auto found = object.find(key);
  if (found == object.end()) Fault(std::string("\"") + key + "\" is missing");
  return *found;
}

double Number(const json& value, const char* key) {
  if (!value.is_number()) Fault(std::string("\"") + key + "\" holds something that is not a number");
  return value.get<double>();
}

int Integer(const json& object, const char* key) {
  const json& value = Member(object, key);
  if (!value.is_number_integer()) Fault(std::string("\"") + key + "\" is not a whole number");
  const auto number = value.get<std::int64_t>();
  if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max()) {
    Fault(std::string("\"") + key + "\" is out of range");
  }
  return static_cast<int>(number);
}

/// A list of `count` elements; any number of them when `count` is negative.
const json& List(const json& value, const char* key, int count = -1) {
  if (!value.is_array() || (count >= 0 && value.size() != static_cast<std::size_t>(count))) {
    Fault(std::string("\"") + key + "\" is not a list" +
          (count >= 0 ? " of " + std::to_string(count) + " elements" : std::string()));
  }
  return value;
}

cv::Vec3d Vector3(const json& object, const char* key) {
  const json& list = List(Member(object, key), key, 3);
  return {Number(list[0], key), Number(list[1], key), Number(list[2], key)};
}

cv::Matx33d Matrix3(const json& object, const char* key) {
  const json& rows = List(Member(object, key), key, 3);
  cv::Matx33d matrix;
  for (int i = 0; i < 3; ++i) {
    const json& row = List(rows[static_cast<std::size_t>(i)], key, 3);
    for (int j = 0; j < 3; ++j) matrix(i, j) = Number(row[static_cast<std::size_t>(j)], key);
  }
  return matrix;
}

cv::Size ImageSize(const json& object) {
  const json& member = Member(object, "imageSize");
  const cv::Size size = {Integer(member, "width"), Integer(member, "height")};
  if (size.width < 1 || size.height < 1) Fault("\"imageSize\" is not positive");
  return size;
}

Lens LensOf(const json& object) {
  std::vector<double> D;
  for (const json& value : List(Member(object, "D"), "D")) D.push_back(Number(value, "D"));
  return Lens(Matrix3(object, "K"), D);
}

TruthRight RightFrom(const json& object) {
  return {ImageSize(object), LensOf(object), Matrix3(object, "R"), Vector3(object, "T")};
}

TruthView ViewFrom(const json& object, int count) {
  TruthView view;
  const json& file = Member(object, "file");
  const json& whole = Member(object, "whole");
  if (!file.is_string()) Fault("\"file\" is not a text");
  if (!whole.is_boolean()) Fault("\"whole\" is neither true nor false");
  view.file = file.get<std::string>();
  view.whole = whole.get<bool>();
  view.pose.rvec = Vector3(object, "rvec");
  view.pose.tvec = Vector3(object, "tvec");
  const double none = std::numeric_limits<double>::quiet_NaN();
  for (const json& point : List(Member(object, "centres"), "centres", count)) {
    if (point.is_null()) {
      view.centres.emplace_back(none, none);
    } else {
      List(point, "centres", 2);
      view.centres.emplace_back(Number(point[0], "centres"), Number(point[1], "centres"));
    }
  }
  return view;
}

TruthFrame FrameFrom(const json& object, int count, bool pair) {
  TruthFrame frame;
  static_cast<TruthView&>(frame) = ViewFrom(object, count);
  frame.index = Integer(object, "frame");
  if (pair) frame.right = ViewFrom(Member(object, "right"), count);
  return frame;
}

Truth TruthFrom(const json& document) {
  Truth truth;
  truth.imageSize = ImageSize(document);
  truth.lens = LensOf(document);
  const json& grid = Member(document, "grid");
  truth.sheet =
      Sheet({Integer(grid, "columns"), Integer(grid, "rows")}, Number(Member(document, "unit"), "unit"));
  const json& seed = Member(document, "seed");
  if (!seed.is_number_integer()) Fault("\"seed\" is not a whole number");
  truth.seed = seed.get<std::uint64_t>();
  const auto right = document.find("right");
  if (right != document.end()) truth.right = RightFrom(*right);
  for (const json& frame : List(Member(document, "frames"), "frames")) {
    truth.frames.push_back(FrameFrom(frame, truth.sheet.Count(), truth.right.has_value()));
  }
  return truth;
}

json ToJson(cv::Size size) {
  return {{"width", size.width}, {"height", size.height}};
}

json ToJson(const TruthRight& right) {
  return {{"imageSize", ToJson(right.imageSize)},
          {"K", ToJson(right.lens.K())},
          {"D", right.lens.D()},
          {"R", ToJson(right.R)},
          {"T", ToJson(right.T)}};
}

json ToJson(const TruthView& view) {
  return {{"file", view.file},
          {"rvec", ToJson(view.pose.rvec)},
          {"tvec", ToJson(view.pose.tvec)},
          {"centres", ToJson(view.centres)},
          {"whole", view.whole}};
}

json ToJson(const TruthFrame& frame) {
  json object = ToJson(static_cast<const TruthView&>(frame));
  object["frame"] = frame.index;
  if (frame.right) object["right"] = ToJson(*frame.right);
  return object;
}

TruthView ViewOf(const Camera& camera, const Sheet& sheet, const Pose& pose, const std::string& file) {
  return {file, pose, TrueCentres(camera.lens, sheet, pose), DiscsInside(camera, sheet, pose)};
}

/// The right camera of a pair's truth.
const TruthRight& RightCameraOf(const Truth& truth) {
  if (!truth.right) throw std::invalid_argument("the truth is of one camera, not of a pair");
  return *truth.right;
}

}  // namespace

Truth TruthOf(const Scene& scene) {
  Truth truth;
  truth.imageSize = scene.camera.size;
  truth.lens = scene.camera.lens;
  truth.sheet = scene.sheet;
  truth.seed = scene.seed;
  return truth;
}

Truth TruthOf(const Rig& rig, const Scene& scene) {
  Truth truth = TruthOf(scene);
  truth.imageSize = rig.left.size;
  truth.lens = rig.left.lens;
  truth.right = TruthRight{rig.right.size, rig.right.lens, rig.R, rig.T};
  return truth;
}

TruthFrame TruthFrameOf(const Scene& scene, const Pose& pose, int index, const std::string& file) {
  TruthFrame frame;
  static_cast<TruthView&>(frame) = ViewOf(scene.camera, scene.sheet, pose, file);
  frame.index = index;
  return frame;
}

TruthFrame TruthFrameOf(const Rig& rig, const Scene& scene, const Pose& leftPose, int index,
                        const std::string& leftFile, const std::string& rightFile) {
  TruthFrame frame;
  static_cast<TruthView&>(frame) = ViewOf(rig.left, scene.sheet, leftPose, leftFile);
  frame.index = index;
  frame.right = ViewOf(rig.right, scene.sheet, RightPose(rig, leftPose), rightFile);
  return frame;
}

Rig RigOf(const Truth& truth) {
  const TruthRight& right = RightCameraOf(truth);
  return {{truth.imageSize, truth.lens}, {right.imageSize, right.lens}, right.R, right.T};
}

Truth LeftOf(const Truth& truth) {
  RightCameraOf(truth);
  Truth left = truth;
  left.right.reset();
  for (TruthFrame& frame : left.frames) frame.right.reset();
  return left;
}

Truth RightOf(const Truth& truth) {
  const TruthRight& camera = RightCameraOf(truth);
  Truth right = truth;
  right.imageSize = camera.imageSize;
  right.lens = camera.lens;
  right.right.reset();
  for (TruthFrame& frame : right.frames) {
    static_cast<TruthView&>(frame) = TruthView(frame.right.value());
    frame.right.reset();
  }
  return right;
}

void SaveTruth(const Truth& truth, const std::string& path) {
  json document;
  document["imageSize"] = ToJson(truth.imageSize);
  document["K"] = ToJson(truth.lens.K());
  document["D"] = truth.lens.D();
  document["unit"] = truth.sheet.Unit();
  document["grid"] = {{"columns", truth.sheet.Grid().width}, {"rows", truth.sheet.Grid().height}};
  document["seed"] = truth.seed;
  if (truth.right) document["right"] = ToJson(*truth.right);
  document["frames"] = json::array();
  for (const TruthFrame& frame : truth.frames) document["frames"].push_back(ToJson(frame));
  std::ofstream file(path);
  file << document.dump(1) << '\n';
  file.close();
  if (!file) throw std::runtime_error("cannot write \"" + path + "\"");
}

Truth LoadTruth(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read \"" + path + "\"");
  try {
    return TruthFrom(json::parse(file));
  } catch (const std::exception& fault) {
    throw std::runtime_error("\"" + path + "\" is not a truth file: " + fault.what());
  }
}

}  // namespace world
