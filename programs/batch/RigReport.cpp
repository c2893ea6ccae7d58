/// The table that ends the calibration of a rig.
#include "batch/RigReport.h"

#include <algorithm>
#include <iomanip>
#include <opencv2/calib3d.hpp>
#include <sstream>

#include "common/RigNames.h"

namespace batch {

namespace {

constexpr int OF_PIXELS = 3;  // digits
constexpr int OF_DEGREES = 4;
constexpr int OF_METRES = 6;

std::string Row(const std::string& parameter, double value, double deviation, int digits) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(digits) << "  " << std::left << std::setw(18) << parameter
       << std::right << std::setw(14) << value << " " << std::setw(14) << deviation << "\n";
  return text.str();
}

std::string Heading() {
  std::ostringstream text;
  text << "  " << std::left << std::setw(18) << "parameter" << std::right << std::setw(14) << "value"
       << " " << std::setw(14) << "std. dev."
       << "\n";
  return text.str();
}

/// Rotation and translation from the first camera's frame.
std::string PoseRows(const velmora::RigCamera& camera) {
  const char* const axes[] = {"x", "y", "z"};
  cv::Vec3d rotation;
  cv::Rodrigues(camera.R, rotation);
  std::string text;
  for (int i = 0; i < 3; ++i) {
    text += Row(std::string("rotation ") + axes[i] + ", deg", rotation[i] * 180.0 / CV_PI,
                camera.rotationDeviation[i], OF_DEGREES);
  }
  for (int i = 0; i < 3; ++i) {
    text += Row(std::string("translation ") + axes[i] + ", m", camera.T[i], camera.translationDeviation[i],
                OF_METRES);
  }
  return text;
}

std::string CameraText(const velmora::RigCamera& camera, const std::string& name, bool isFirst) {
  std::ostringstream text;
  text << std::fixed << "\nCamera " << name << ": " << camera.imageSize.width << " x "
       << camera.imageSize.height << ", " << camera.views << (camera.views == 1 ? " view" : " views")
       << ", RMS " << std::setprecision(6) << camera.rms << " px\n"
       << Heading();
  const cv::Mat& deviations = camera.stdDevIntrinsics;
  text << Row("fx", camera.K.at<double>(0, 0), deviations.at<double>(0), OF_PIXELS)
       << Row("fy", camera.K.at<double>(1, 1), deviations.at<double>(1), OF_PIXELS)
       << (isFirst ? "" : PoseRows(camera));
  return text.str();
}

/// The indexes, among the images that were used, of those that the solver rejected.
std::set<size_t> RejectedImages(const velmora::RigResult& result, const common::RigNames& names,
                                const std::vector<std::string>& used) {
  std::set<size_t> images;
  for (const velmora::RigLeftOut& left : result.leftOut) {
    if (left.point >= 0) continue;
    const auto image = std::find(used.begin(), used.end(), names.Image(left.view, left.camera));
    if (image != used.end()) images.insert(static_cast<size_t>(image - used.begin()));
  }
  return images;
}

}  // namespace

std::string RigTable(const velmora::RigResult& result, const common::RigNames& names,
                     const std::vector<common::Rejection>& rejected, const std::string& model) {
  const std::vector<std::string> used = names.AllImages();
  std::ostringstream text;
  text << common::ViewsTable(used, rejected, RejectedImages(result, names, used)) << "\n"
       << "Rig: " << result.cameras.size() << " cameras, "
       << (model.empty() ? "intrinsics given" : model + " model") << "\n"
       << std::fixed << std::setprecision(6) << "RMS reprojection error: " << result.rms << " px\n";
  for (size_t i = 0; i < result.cameras.size(); ++i) {
    text << CameraText(result.cameras[i], names.cameras[i], i == 0);
  }
  return text.str();
}

}  // namespace batch
