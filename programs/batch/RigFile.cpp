/// The result file of a rig.
#include "batch/RigFile.h"

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "JSON.h"
#include "common/RigNames.h"

namespace batch {

namespace {

using nlohmann::json;

/// Row by row; numbers that are not finite become null when they are written.
json Rows(const cv::Mat& matrix) {
  json rows = json::array();
  for (int y = 0; y < matrix.rows; ++y) {
    rows.push_back(std::vector<double>(matrix.ptr<double>(y), matrix.ptr<double>(y) + matrix.cols));
  }
  return rows;
}

json List(const cv::Mat& vector) {
  return std::vector<double>(vector.begin<double>(), vector.end<double>());
}

json List(const cv::Vec3d& vector) {
  return {vector[0], vector[1], vector[2]};
}

json Object(const velmora::RigCamera& camera, const std::string& name) {
  json object = {{"name", name},
                 {"imageSize", {{"width", camera.imageSize.width}, {"height", camera.imageSize.height}}},
                 {"K", Rows(camera.K)},
                 {"stdDevIntrinsics", List(camera.stdDevIntrinsics)},
                 {"camera_from_rig",
                  {{"R", Rows(cv::Mat(camera.R))},
                   {"T", List(camera.T)},
                   {"rotationDeviation", List(camera.rotationDeviation)},
                   {"translationDeviation", List(camera.translationDeviation)}}},
                 {"rms", camera.rms},
                 {"views", camera.views}};
  // No reader is to take the coefficients of one lens for those of the other.
  if (camera.fisheye) {
    object["lensModel"] = "kannala-brandt";
    object["fisheyeCoefs"] = List(camera.D);
  } else {
    object["D"] = List(camera.D);
  }
  return object;
}

json Object(const velmora::RigView& view, const std::vector<std::string>& images) {
  json object = {{"images", json::array()}, {"rms", json::array()}, {"rig_from_target", nullptr}};
  for (const std::string& image : images) object["images"].push_back(image.empty() ? json() : json(image));
  for (const double rms : view.rms) object["rms"].push_back(rms < 0.0 ? json() : json(rms));
  if (view.used) object["rig_from_target"] = {{"rvec", List(view.rvec)}, {"tvec", List(view.tvec)}};
  return object;
}

json Object(const velmora::RigLeftOut& left, const common::RigNames& names) {
  return {{"view", left.view},
          {"camera", names.cameras[left.camera]},
          {"image", names.images[left.view][left.camera]},
          {"point", left.point},
          {"residual", left.residual},
          {"reason", left.reason}};
}

json Object(const PairVerdict::Deviations& deviations) {
  return {{"rotation", deviations.rotation},
          {"baseline", deviations.baseline},
          {"direction", deviations.direction}};
}

/// What was rejected is listed once, for the whole rig.
json CameraVerdict(const CalibrationVerdict& verdict) {
  json object = json::parse(verdict.ToJson());
  object.erase("leftOut");
  return object;
}

json Object(const velmora::RigVerdict& verdict, const std::vector<std::string>& cameras) {
  json object = {{"grade", verdict.ToString()},
                 {"remarks", json::array()},
                 {"formal", json::array()},
                 {"jackknife", json::array()},
                 {"disagreement", verdict.disagreement},
                 {"disagreements", json::array()},
                 {"sheetBend", verdict.sheetBend},
                 {"cameras", json::array()}};
  for (const auto& remark : verdict.remarks) {
    object["remarks"].push_back({{"reason", common::WithCameraNames(remark.reason, cameras)},
                                 {"advice", common::WithCameraNames(remark.advice, cameras)}});
  }
  for (const auto& deviations : verdict.formal) object["formal"].push_back(Object(deviations));
  for (const auto& deviations : verdict.jackknife) object["jackknife"].push_back(Object(deviations));
  for (const auto& item : verdict.disagreements) {
    object["disagreements"].push_back({{"view", item.view}, {"factor", item.factor}});
  }
  if (!verdict.sheet.points.empty()) object["sheet"] = json::parse(verdict.sheet.ToJson());
  for (const auto& camera : verdict.cameras) object["cameras"].push_back(CameraVerdict(camera));
  return object;
}

}  // namespace

std::string RigJson(const velmora::RigResult& result, const common::RigNames& names,
                    const std::string& model) {
  json object = {{"model", model.empty() ? json() : json(model)},
                 {"rms", result.rms},
                 {"cameras", json::array()},
                 {"views", json::array()},
                 {"left_out", json::array()},
                 {"recounted", json::array()},
                 {"verdict", Object(result.verdict, names.cameras)}};
  for (size_t i = 0; i < result.cameras.size(); ++i) {
    object["cameras"].push_back(Object(result.cameras[i], names.cameras[i]));
  }
  for (size_t i = 0; i < result.views.size(); ++i) {
    object["views"].push_back(Object(result.views[i], names.images[i]));
  }
  for (const velmora::RigLeftOut& left : result.leftOut) object["left_out"].push_back(Object(left, names));
  for (const velmora::RigRecounted& item : result.recounted) {
    object["recounted"].push_back({{"view", item.view},
                                   {"camera", names.cameras[item.camera]},
                                   {"image", names.images[item.view][item.camera]}});
  }
  return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

bool SaveRig(const std::string& text, const std::string& path) {
  JSON document;
  document.fromJson(text);
  if (!document.save(path)) return false;
  std::ifstream file(path);
  const std::string written((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  const json read = json::parse(written, nullptr, false);
  return read == json::parse(text);
}

}  // namespace batch
