/// The pose assistant's life cycle and its validation of poses.
#include "CalibAssistant.h"

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "Log.h"
#include "assistant/AssistantDrawing.h"
#include "assistant/AssistantModel.h"
#include "foundation/OneLine.h"

using namespace velmora;

namespace {

constexpr float NO_SCORE = 10000.0F;

/// The corners of the built-in sheet and the cut across one of them, clockwise from the top left; then the
/// cut.
const std::vector<cv::Point2f> SHEET_OUTLINE = {{0, 0},    {1753, 0},   {1753, 1239},
                                                {0, 1239}, {169, 1239}, {0, 1043}};
const int ROW_X[] = {1467, 1349, 1231, 1113, 994, 876, 758, 640, 522, 404, 286};
const int EVEN_ROW_Y[] = {206, 443, 679, 915};
const int ODD_ROW_Y[] = {324, 560, 797, 1033};

void RequireSheet(size_t circles, const cv::Size& pattern) {
  if (circles != static_cast<size_t>(pattern.area())) {
    throw std::runtime_error("the assistant guides a grid of 4 x 11 circles only");
  }
}

}  // namespace

CalibAssistant::CalibAssistant(const int& frameWidth, const int& frameHeight, const int& patternColumns,
                               const int& patternRows)
    : layers_(std::make_unique<DrawingLayers>()),
      creationTime_(std::chrono::steady_clock::now()),
      frameWidth_(frameWidth),
      frameHeight_(frameHeight),
      patternSize_(patternColumns, patternRows) {
  InitDefaultPattern();
}

CalibAssistant::~CalibAssistant() = default;

void CalibAssistant::InitDefaultPattern() {
  patternOutline_ = SHEET_OUTLINE;
  patternPoints_.clear();
  bool odd = false;
  for (const int x : ROW_X) {
    for (const int y : odd ? ODD_ROW_Y : EVEN_ROW_Y) {
      patternPoints_.emplace_back(static_cast<float>(x), static_cast<float>(y));
    }
    odd = !odd;
  }
}

bool CalibAssistant::LoadModel(const std::string& path) {
  return Load(path, false);
}

bool CalibAssistant::Load(const std::string& path, bool tellUnreadable) {
  const auto report = [&path](const std::exception& fault) {
    Log::error("Cannot use assistant model '%s': %s", path.c_str(), OneLine(fault.what()).c_str());
    return false;
  };
  try {
    RequireSheet(patternPoints_.size(), patternSize_);
    AssistantModel model = ReadAssistantModel(path, {frameWidth_, frameHeight_}, patternSize_);
    FitSheet(patternPoints_, patternOutline_, model);
    Take(std::move(model), false);
    return true;
  } catch (const UnreadableModel& fault) {
    return tellUnreadable && report(fault);
  } catch (const std::exception& fault) {
    return report(fault);
  }
}

bool CalibAssistant::StartAt(const std::vector<cv::Point2d>& centres) {
  try {
    RequireSheet(patternPoints_.size(), patternSize_);
    AssistantModel model = ModelOfPose(centres, {frameWidth_, frameHeight_}, patternSize_);
    FitSheet(patternPoints_, patternOutline_, model);
    Take(std::move(model), true);
    return true;
  } catch (const std::exception& fault) {
    Log::error("Cannot ask for that pose: %s", OneLine(fault.what()).c_str());
    return false;
  }
}

void CalibAssistant::Take(AssistantModel&& model, bool single) {
  const std::lock_guard<std::mutex> lock(lock_);
  poses_ = std::move(model.poses);
  homographies_ = std::move(model.homographies);
  scale_ = model.scale;
  single_ = single;
  poseIndex_ = 0;
  poseCount_ = static_cast<int>(poses_.size());
  ShowPose(0);
}

bool CalibAssistant::IsSinglePose() const {
  const std::lock_guard<std::mutex> lock(lock_);
  return single_;
}

void CalibAssistant::Start(const std::string& path) {
  if (!Load(path, true)) Stop();
}

void CalibAssistant::ShowPose(int index) {
  target_ = poses_[static_cast<size_t>(index)];
  homography_ = homographies_[static_cast<size_t>(index)];
}

void CalibAssistant::Stop() {
  const std::lock_guard<std::mutex> lock(lock_);
  poseIndex_ = -1;
  poseCount_ = -1;
  target_.release();
  homography_.release();
  poses_.clear();
  homographies_.clear();
}

void CalibAssistant::Reset() {
  const std::lock_guard<std::mutex> lock(lock_);
  if (poses_.empty()) return;
  poseIndex_ = 0;
  ShowPose(0);
}

bool CalibAssistant::Next() {
  const std::lock_guard<std::mutex> lock(lock_);
  if (poseIndex_ < poseCount_) ++poseIndex_;
  if (poseIndex_ >= poseCount_) return true;
  ShowPose(poseIndex_);
  return false;
}

int CalibAssistant::GetGoal() const {
  const std::lock_guard<std::mutex> lock(lock_);
  return poseCount_;
}

int CalibAssistant::GetRemainingPoseCount() const {
  const std::lock_guard<std::mutex> lock(lock_);
  return poseCount_ - poseIndex_;
}

float CalibAssistant::GetScore() const {
  const std::lock_guard<std::mutex> lock(lock_);
  return score_;
}

bool CalibAssistant::CheckValidity(const std::vector<cv::Point2d>& points) {
  const std::lock_guard<std::mutex> lock(lock_);
  score_ = NO_SCORE;
  if (points.empty() || poseIndex_ < 0) return false;
  cv::Mat detected;
  cv::Mat(points).convertTo(detected, CV_32F);
  if (detected.rows != target_.rows) return false;

  const cv::Size2f extent = cv::minAreaRect(target_).size;
  const float fx = static_cast<float>(frameWidth_) / extent.width;
  const float fy = static_cast<float>(frameHeight_) / extent.height;
  const double distance = cv::norm(detected - target_, cv::NORM_L2);
  // A target that fills little of the frame weighs its distance more.
  score_ = static_cast<float>(distance * std::sqrt((fx + fy) * 0.5F) / scale_);
  return score_ < static_cast<float>(SCORE_TH);
}

void CalibAssistant::DrawPose(cv::Mat& frame) {
  const std::lock_guard<std::mutex> lock(lock_);
  DrawPattern(frame);
}
