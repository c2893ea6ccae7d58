/// Reads the assistant's model file.
#include "AssistantModel.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "JSON.h"

namespace {

/// Throws unless the pose can serve as a target.
void CheckPose(const cv::Mat& pose, const std::string& key, int circles) {
  if (pose.type() != CV_32FC2 || pose.cols != 1 || pose.rows != circles) {
    throw std::runtime_error("'" + key + "' is not a list of " + std::to_string(circles) + " points");
  }
  if (!cv::checkRange(pose)) throw std::runtime_error("'" + key + "' holds numbers that are not finite");
  const cv::Size2f extent = cv::minAreaRect(pose).size;
  if (std::min(extent.width, extent.height) < 1.0F)
    throw std::runtime_error("the points of '" + key + "' span no area");
}

/// Scales the pose evenly while its centre follows the frame's proportions on each axis.
void MapToFrame(cv::Mat& pose, float sx, float sy, float scale) {
  const cv::Scalar mean = cv::mean(pose);
  const auto cx = static_cast<float>(mean[0]);
  const auto cy = static_cast<float>(mean[1]);
  for (int i = 0; i < pose.rows; ++i) {
    auto& point = pose.at<cv::Point2f>(i);
    point.x = (point.x - cx) * scale + sx * cx;
    point.y = (point.y - cy) * scale + sy * cy;
  }
}

AssistantModel Parse(JSON& document, const cv::Size& frame, const cv::Size& pattern) {
  const int count = document.readInt("count");
  const int width = document.readInt("imgWidth");
  const int height = document.readInt("imgHeight");
  if (count < 1) throw std::runtime_error("it holds no pose");
  if (width < 1 || height < 1) throw std::runtime_error("its image size is not positive");
  const float sx = static_cast<float>(frame.width) / static_cast<float>(width);
  const float sy = static_cast<float>(frame.height) / static_cast<float>(height);

  AssistantModel model;
  model.scale = std::min(sx, sy);
  for (int i = 0; i < count; ++i) {
    const std::string key = "points" + std::to_string(i);
    cv::Mat pose = document.readMat(key);
    CheckPose(pose, key, pattern.area());
    MapToFrame(pose, sx, sy, model.scale);
    model.poses.push_back(pose);
  }
  return model;
}

}  // namespace

AssistantModel ReadAssistantModel(const std::string& path, const cv::Size& frame, const cv::Size& pattern) {
  JSON document;
  try {
    if (!document.load(path)) throw std::runtime_error("it cannot be read");
    return Parse(document, frame, pattern);
  } catch (const nlohmann::json::exception& fault) {
    throw std::runtime_error(fault.what());
  } catch (const cv::Exception& fault) {
    throw std::runtime_error(fault.what());
  }
}
