/// The pose assistant's life cycle and its validation of poses.
#include "CalibAssistant.h"

#include <chrono>
#include <cmath>
#include <mutex>
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

struct CalibAssistant::Impl {
  Impl(const cv::Size& frame, const cv::Size& pattern) : frameSize(frame), patternSize(pattern) {}

  bool Load(const std::string& path, bool tellUnreadable);
  void ShowPose(int index);
  void Take(AssistantModel&& model, bool single);

  const cv::Size frameSize;
  const cv::Size patternSize;
  std::vector<cv::Point2f> patternPoints;
  std::vector<cv::Point2f> patternOutline;
  const std::chrono::steady_clock::time_point creationTime = std::chrono::steady_clock::now();

  mutable std::mutex lock;  ///< guards all that follows
  DrawingLayers layers;     ///< room that the drawings share
  float score = NO_SCORE;
  float scale = 1.0F;
  bool isSingle = false;
  int poseIndex = -1;
  int poseCount = -2;
  std::vector<cv::Mat> poses;
  std::vector<cv::Mat> homographies;  ///< of the sheet, one for each pose
  cv::Mat target;                     ///< the pose to reach now
  cv::Mat homography;                 ///< of the sheet, in that pose
};

CalibAssistant::CalibAssistant(const int& frameWidth, const int& frameHeight, const int& patternColumns,
                               const int& patternRows)
    : impl_(
          std::make_unique<Impl>(cv::Size(frameWidth, frameHeight), cv::Size(patternColumns, patternRows))) {
  InitDefaultPattern();
}

CalibAssistant::~CalibAssistant() = default;

void CalibAssistant::InitDefaultPattern() {
  impl_->patternOutline = SHEET_OUTLINE;
  impl_->patternPoints.clear();
  bool odd = false;
  for (const int x : ROW_X) {
    for (const int y : odd ? ODD_ROW_Y : EVEN_ROW_Y) {
      impl_->patternPoints.emplace_back(static_cast<float>(x), static_cast<float>(y));
    }
    odd = !odd;
  }
}

bool CalibAssistant::LoadModel(const std::string& path) {
  return impl_->Load(path, false);
}

bool CalibAssistant::Impl::Load(const std::string& path, bool tellUnreadable) {
  const auto report = [&path](const std::exception& fault) {
    Log::error("Cannot use assistant model '%s': %s", path.c_str(), OneLine(fault.what()).c_str());
    return false;
  };
  try {
    RequireSheet(patternPoints.size(), patternSize);
    AssistantModel model = ReadAssistantModel(path, frameSize, patternSize);
    FitSheet(patternPoints, patternOutline, model);
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
    RequireSheet(impl_->patternPoints.size(), impl_->patternSize);
    AssistantModel model = ModelOfPose(centres, impl_->frameSize, impl_->patternSize);
    FitSheet(impl_->patternPoints, impl_->patternOutline, model);
    impl_->Take(std::move(model), true);
    return true;
  } catch (const std::exception& fault) {
    Log::error("Cannot ask for that pose: %s", OneLine(fault.what()).c_str());
    return false;
  }
}

void CalibAssistant::Impl::Take(AssistantModel&& model, bool single) {
  const std::lock_guard<std::mutex> guard(lock);
  poses = std::move(model.poses);
  homographies = std::move(model.homographies);
  scale = model.scale;
  isSingle = single;
  poseIndex = 0;
  poseCount = static_cast<int>(poses.size());
  ShowPose(0);
}

bool CalibAssistant::IsSinglePose() const {
  const std::lock_guard<std::mutex> lock(impl_->lock);
  return impl_->isSingle;
}

void CalibAssistant::Start(const std::string& path) {
  if (!impl_->Load(path, true)) Stop();
}

void CalibAssistant::Impl::ShowPose(int index) {
  target = poses[static_cast<size_t>(index)];
  homography = homographies[static_cast<size_t>(index)];
}

void CalibAssistant::Stop() {
  const std::lock_guard<std::mutex> lock(impl_->lock);
  impl_->poseIndex = -1;
  impl_->poseCount = -1;
  impl_->target.release();
  impl_->homography.release();
  impl_->poses.clear();
  impl_->homographies.clear();
}

void CalibAssistant::Reset() {
  const std::lock_guard<std::mutex> lock(impl_->lock);
  if (impl_->poses.empty()) return;
  impl_->poseIndex = 0;
  impl_->ShowPose(0);
}

bool CalibAssistant::Next() {
  const std::lock_guard<std::mutex> lock(impl_->lock);
  if (impl_->poseIndex < impl_->poseCount) ++impl_->poseIndex;
  if (impl_->poseIndex >= impl_->poseCount) return true;
  impl_->ShowPose(impl_->poseIndex);
  return false;
}

int CalibAssistant::GetGoal() const {
  const std::lock_guard<std::mutex> lock(impl_->lock);
  return impl_->poseCount;
}

int CalibAssistant::GetRemainingPoseCount() const {
  const std::lock_guard<std::mutex> lock(impl_->lock);
  return impl_->poseCount - impl_->poseIndex;
}

float CalibAssistant::GetScore() const {
  const std::lock_guard<std::mutex> lock(impl_->lock);
  return impl_->score;
}

bool CalibAssistant::CheckValidity(const std::vector<cv::Point2d>& points) {
  const std::lock_guard<std::mutex> lock(impl_->lock);
  impl_->score = NO_SCORE;
  if (points.empty() || impl_->poseIndex < 0) return false;
  cv::Mat detected;
  cv::Mat(points).convertTo(detected, CV_32F);
  if (detected.rows != impl_->target.rows) return false;

  const cv::Size2f extent = cv::minAreaRect(impl_->target).size;
  const float fx = static_cast<float>(impl_->frameSize.width) / extent.width;
  const float fy = static_cast<float>(impl_->frameSize.height) / extent.height;
  const double distance = cv::norm(detected - impl_->target, cv::NORM_L2);
  // A target that fills little of the frame weighs its distance more.
  impl_->score = static_cast<float>(distance * std::sqrt((fx + fy) * 0.5F) / impl_->scale);
  return impl_->score < static_cast<float>(SCORE_TH);
}

void CalibAssistant::DrawPose(cv::Mat& frame) {
  const std::lock_guard<std::mutex> lock(impl_->lock);
  DrawPattern(frame);
}

void CalibAssistant::DrawPattern(cv::Mat& frame) {
  if (impl_->poseIndex < 0) return;
  const std::chrono::nanoseconds age = std::chrono::steady_clock::now() - impl_->creationTime;
  DrawTarget({impl_->patternPoints, impl_->patternOutline, impl_->homography, impl_->patternSize.width,
              impl_->scale, impl_->score, impl_->frameSize, static_cast<double>(age.count()) / 1e9},
             frame, impl_->layers);
}
