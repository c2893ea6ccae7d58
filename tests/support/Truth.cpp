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

TruthFrame FrameFrom(const json& object, int count) {
  TruthFrame frame;
  const json& file = Member(object, "file");
  const json& whole = Member(object, "whole");
  if (!file.is_string()) Fault("\"file\" is not a text");
  if (!whole.is_boolean()) Fault("\"whole\" is neither true nor false");
  frame.file = file.get<std::string>();
  frame.whole = whole.get<bool>();
  frame.index = Integer(object, "frame");
  frame.pose.rvec = Vector3(object, "rvec");
  frame.pose.tvec = Vector3(object, "tvec");
  const double none = std::numeric_limits<double>::quiet_NaN();
  for (const json& point : List(Member(object, "centres"), "centres", count)) {
    if (point.is_null()) {
      frame.centres.emplace_back(none, none);
    } else {
      List(point, "centres", 2);
      frame.centres.emplace_back(Number(point[0], "centres"), Number(point[1], "centres"));
    }
  }
  return frame;
}

Truth TruthFrom(const json& document) {
  Truth truth;
  const json& size = Member(document, "imageSize");
  truth.imageSize = {Integer(size, "width"), Integer(size, "height")};
  if (truth.imageSize.width < 1 || truth.imageSize.height < 1) Fault("\"imageSize\" is not positive");
  std::vector<double> D;
  for (const json& value : List(Member(document, "D"), "D")) D.push_back(Number(value, "D"));
  truth.lens = Lens(Matrix3(document, "K"), D);
  const json& grid = Member(document, "grid");
  truth.sheet =
      Sheet({Integer(grid, "columns"), Integer(grid, "rows")}, Number(Member(document, "unit"), "unit"));
  const json& seed = Member(document, "seed");
  if (!seed.is_number_integer()) Fault("\"seed\" is not a whole number");
  truth.seed = seed.get<std::uint64_t>();
  for (const json& frame : List(Member(document, "frames"), "frames")) {
    truth.frames.push_back(FrameFrom(frame, truth.sheet.Count()));
  }
  return truth;
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

TruthFrame TruthFrameOf(const Scene& scene, const Pose& pose, int index, const std::string& file) {
  TruthFrame frame;
  frame.file = file;
  frame.index = index;
  frame.pose = pose;
  frame.centres = TrueCentres(scene.camera.lens, scene.sheet, pose);
  frame.whole = DiscsInside(scene.camera, scene.sheet, pose);
  return frame;
}

void SaveTruth(const Truth& truth, const std::string& path) {
  json document;
  document["imageSize"] = {{"width", truth.imageSize.width}, {"height", truth.imageSize.height}};
  document["K"] = ToJson(truth.lens.K());
  document["D"] = truth.lens.D();
  document["unit"] = truth.sheet.Unit();
  document["grid"] = {{"columns", truth.sheet.Grid().width}, {"rows", truth.sheet.Grid().height}};
  document["seed"] = truth.seed;
  document["frames"] = json::array();
  for (const TruthFrame& frame : truth.frames) {
    document["frames"].push_back({{"file", frame.file},
                                  {"frame", frame.index},
                                  {"rvec", ToJson(frame.pose.rvec)},
                                  {"tvec", ToJson(frame.pose.tvec)},
                                  {"centres", ToJson(frame.centres)},
                                  {"whole", frame.whole}});
  }
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
