/// The assistant's sheet, and the poses of it that a model file asks for.
#pragma once

#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmora {

/// The poses of a model, mapped to the frame.
struct AssistantModel {
  std::vector<cv::Mat> poses;         ///< each circles x 1 of two floats
  std::vector<cv::Mat> homographies;  ///< from the sheet to each pose; left empty by the reading
  float scale = 1.0F;
};

/// Raised for a model file that cannot be read at all.
class UnreadableModel : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads and maps the model. Raises UnreadableModel when the file cannot be read, and std::runtime_error with
/// the fault in words when it is no JSON, lacks a member, holds no pose, or a pose that has another number of
/// circles or spans no area.
AssistantModel ReadAssistantModel(const std::string& path, const cv::Size& frame, const cv::Size& pattern);

/// The model of one pose, given by centres in the frame. The scale is that of a model for 640 x 480 pixels.
/// Raises std::runtime_error as above.
AssistantModel ModelOfPose(const std::vector<cv::Point2d>& centres, const cv::Size& frame,
                           const cv::Size& pattern);

/// Fits the sheet, of these circles and this outline, to each pose. Raises std::runtime_error for a pose in
/// which the sheet cannot be drawn.
void FitSheet(const std::vector<cv::Point2f>& circles, const std::vector<cv::Point2f>& outline,
              AssistantModel& model);

}  // namespace velmora
