/// Reads the assistant's model file.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

/// The poses of a model, mapped to the frame, each circles x 1 of two floats.
struct AssistantModel {
  std::vector<cv::Mat> poses;
  float scale = 1.0F;
};

/// Reads and maps the model. Raises std::runtime_error with the fault in words when the file cannot be read,
/// is no JSON, lacks a member, holds no pose, or a pose that has another number of circles or spans no area.
AssistantModel ReadAssistantModel(const std::string& path, const cv::Size& frame, const cv::Size& pattern);
