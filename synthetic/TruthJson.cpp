/// Reads and writes parts of truth files.
#include "TruthJson.h"

#include <cmath>
#include <fstream>
#include <limits>
#include <stdexcept>

namespace world {

using nlohmann::json;

namespace {

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

constexpr const char* FISHEYE = "kannala-brandt";

[[noreturn]] void Fault(const std::string& what) {
  throw std::runtime_error(what);
}

double Number(const json& value, const char* key) {
  if (!value.is_number()) Fault(std::string("\"") + key + "\" holds something that is not a number");
  return value.get<double>();
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

/// The curve of an object that names its lens model.
FisheyeCurve CurveFrom(const json& object) {
  const json& model = Member(object, "lensModel");
  if (model != FISHEYE) Fault(std::string("\"lensModel\" is not \"") + FISHEYE + "\"");
  const json& list = List(Member(object, "fisheyeCoefs"), "fisheyeCoefs", 4);
  FisheyeCurve::Coefficients k = {};
  for (std::size_t i = 0; i < k.size(); ++i) k[i] = Number(list[i], "fisheyeCoefs");
  return FisheyeCurve(k);
}

}  // namespace

json ToJson(const Pose& pose) {
  return {{"rvec", ToJson(pose.rvec)}, {"tvec", ToJson(pose.tvec)}};
}

json ToJson(const Camera& camera) {
  json object = {{"imageSize", {{"width", camera.size.width}, {"height", camera.size.height}}},
                 {"K", ToJson(camera.lens.K())}};
  if (camera.lens.IsFisheye()) {
    object["lensModel"] = FISHEYE;
    object["fisheyeCoefs"] = camera.lens.Curve()->D();
  } else {
    object["D"] = camera.lens.D();
  }
  return object;
}

json ToJson(const RigCamera& camera) {
  json object = ToJson(static_cast<const Camera&>(camera));
  object["R"] = ToJson(camera.R);
  object["T"] = ToJson(camera.T);
  return object;
}

json ToJson(const TruthView& view) {
  json object = ToJson(view.pose);
  object["file"] = view.file;
  object["centres"] = ToJson(view.centres);
  object["whole"] = view.whole;
  return object;
}

const json& Member(const json& object, const char* key) {
  if (!object.is_object()) Fault(std::string("no object around \"") + key + "\"");
  const auto found = object.find(key);
  if (found == object.end()) Fault(std::string("\"") + key + "\" is missing");
  return *found;
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

const json& List(const json& value, const char* key, int count) {
  if (!value.is_array() || (count >= 0 && value.size() != static_cast<std::size_t>(count))) {
    Fault(std::string("\"") + key + "\" is not a list" +
          (count >= 0 ? " of " + std::to_string(count) + " elements" : std::string()));
  }
  return value;
}

Camera CameraFrom(const json& object) {
  const cv::Size size = ImageSize(object);
  if (object.contains("lensModel")) return {size, Lens(Matrix3(object, "K"), CurveFrom(object))};
  std::vector<double> D;
  for (const json& value : List(Member(object, "D"), "D")) D.push_back(Number(value, "D"));
  return {size, Lens(Matrix3(object, "K"), D)};
}

RigCamera RigCameraFrom(const json& object) {
  return {CameraFrom(object), Matrix3(object, "R"), Vector3(object, "T")};
}

Pose PoseFrom(const json& object) {
  return {Vector3(object, "rvec"), Vector3(object, "tvec")};
}

TruthView ViewFrom(const json& object, int discs) {
  TruthView view;
  const json& file = Member(object, "file");
  const json& whole = Member(object, "whole");
  if (!file.is_string()) Fault("\"file\" is not a text");
  if (!whole.is_boolean()) Fault("\"whole\" is neither true nor false");
  view.file = file.get<std::string>();
  view.whole = whole.get<bool>();
  view.pose = PoseFrom(object);
  const double none = std::numeric_limits<double>::quiet_NaN();
  for (const json& point : List(Member(object, "centres"), "centres", discs)) {
    if (point.is_null()) {
      view.centres.emplace_back(none, none);
    } else {
      List(point, "centres", 2);
      view.centres.emplace_back(Number(point[0], "centres"), Number(point[1], "centres"));
    }
  }
  return view;
}

Sheet SheetFrom(const json& object) {
  const json& grid = Member(object, "grid");
  return Sheet({Integer(grid, "columns"), Integer(grid, "rows")}, Number(Member(object, "unit"), "unit"));
}

std::uint64_t SeedFrom(const json& object) {
  const json& seed = Member(object, "seed");
  if (!seed.is_number_integer()) Fault("\"seed\" is not a whole number");
  return seed.get<std::uint64_t>();
}

void AddSheetAndSeed(json& object, const Sheet& sheet, std::uint64_t seed) {
  object["unit"] = sheet.Unit();
  object["grid"] = {{"columns", sheet.Grid().width}, {"rows", sheet.Grid().height}};
  object["seed"] = seed;
}

void WriteDocument(const json& document, const std::string& path) {
  std::ofstream file(path);
  file << document.dump(1) << '\n';
  file.close();
  if (!file) throw std::runtime_error("cannot write \"" + path + "\"");
}

void ReadDocument(const std::string& path, const std::function<void(const json&)>& read) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read \"" + path + "\"");
  try {
    read(json::parse(file));
  } catch (const std::exception& fault) {
    throw std::runtime_error("\"" + path + "\" is not a truth file: " + fault.what());
  }
}

}  // namespace world
