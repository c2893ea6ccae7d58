/// Reads the assistant's model file and fits the sheet to its poses.
#include "assistant/AssistantModel.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "JSON.h"

namespace velmora {

namespace {

/// No sheet that somebody can reach has a corner further from the frame's; drawing needs a bound.
constexpr double FARTHEST = 30000.0;

/// True when the points come out in front of the viewer, within the bounds of drawing.
bool CanBeDrawn(const std::vector<cv::Point2f>& points, const cv::Mat& homography) {
  const double* const h = homography.ptr<double>();
  return std::all_of(points.begin(), points.end(), [h](const cv::Point2d& p) {
    const double w = h[6] * p.x + h[7] * p.y + h[8];
    const double x = h[0] * p.x + h[1] * p.y + h[2];
    const double y = h[3] * p.x + h[4] * p.y + h[5];
    return w > 0.0 && std::abs(x) < FARTHEST * w && std::abs(y) < FARTHEST * w;
  });
}

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

/// What the reading gives; what the JSON library or OpenCV have against it becomes those words.
template <typename Reading>
auto InWords(const std::string& fault, Reading reading) {
  try {
    return reading();
  } catch (const nlohmann::json::exception&) {
    throw std::runtime_error(fault);
  } catch (const cv::Exception&) {
    throw std::runtime_error(fault);  // sizes that no matrix can have
  }
}

int ReadNumber(JSON& document, const char* key) {
  return InWords(std::string("it has no number '") + key + "'", [&] { return document.readInt(key); });
}

AssistantModel Parse(JSON& document, const cv::Size& frame, const cv::Size& pattern) {
  const int count = ReadNumber(document, "count");
  const int width = ReadNumber(document, "imgWidth");
  const int height = ReadNumber(document, "imgHeight");
  if (count < 1) throw std::runtime_error("it holds no pose");
  if (width < 1 || height < 1) throw std::runtime_error("its image size is not positive");
  const float sx = static_cast<float>(frame.width) / static_cast<float>(width);
  const float sy = static_cast<float>(frame.height) / static_cast<float>(height);

  AssistantModel model;
  model.scale = std::min(sx, sy);
  for (int i = 0; i < count; ++i) {
    const std::string key = "points" + std::to_string(i);
    cv::Mat pose = InWords("it has no list of points '" + key + "'", [&] { return document.readMat(key); });
    CheckPose(pose, key, pattern.area());
    MapToFrame(pose, sx, sy, model.scale);
    model.poses.push_back(pose);
  }
  return model;
}

}  // namespace

AssistantModel ReadAssistantModel(const std::string& path, const cv::Size& frame, const cv::Size& pattern) {
  JSON document;
  const bool read = InWords("it is no JSON text", [&] { return document.load(path); });
  if (!read) throw UnreadableModel("it cannot be read");
  return Parse(document, frame, pattern);
}

AssistantModel ModelOfPose(const std::vector<cv::Point2d>& centres, const cv::Size& frame,
                           const cv::Size& pattern) {
  constexpr float USUAL_WIDTH = 640.0F;
  constexpr float USUAL_HEIGHT = 480.0F;
  AssistantModel model;
  cv::Mat pose;
  if (!centres.empty()) cv::Mat(centres).convertTo(pose, CV_32F);
  CheckPose(pose, "centres", pattern.area());
  model.scale = std::min(static_cast<float>(frame.width) / USUAL_WIDTH,
                         static_cast<float>(frame.height) / USUAL_HEIGHT);
  model.poses.push_back(pose);
  return model;
}

void FitSheet(const std::vector<cv::Point2f>& circles, const std::vector<cv::Point2f>& outline,
              AssistantModel& model) {
  model.homographies.clear();
  for (size_t i = 0; i < model.poses.size(); ++i) {
    const cv::Mat homography = cv::findHomography(circles, model.poses[i]);
    if (homography.empty() || !CanBeDrawn(outline, homography) || !CanBeDrawn(circles, homography)) {
      throw std::runtime_error("the points of 'points" + std::to_string(i) + "' are no picture of the sheet");
    }
    model.homographies.push_back(homography);
  }
}

}  // namespace velmora
