/// Leads the user from pose to pose by an assistant.
#include "calibrator/Guidance.h"

#include "CalibAssistant.h"
#include "calibrator/Snapshots.h"

namespace velmora {

namespace {

std::shared_ptr<CalibAssistant> NewAssistant(const cv::Size& grid, const cv::Size& size) {
  return std::make_shared<CalibAssistant>(size.width, size.height, grid.width, grid.height);
}

}  // namespace

void Guidance::Start(const std::string& modelPath) {
  auto assistant = NewAssistant(grid_, processingSize_);
  assistant->Start(modelPath);
  Replace(std::move(assistant));
}

bool Guidance::StartAt(const std::vector<cv::Point2d>& centres) {
  auto assistant = NewAssistant(grid_, processingSize_);
  if (!assistant->StartAt(centres)) return false;
  Replace(std::move(assistant));
  return true;
}

void Guidance::End() {
  Replace(nullptr);
}

void Guidance::Replace(std::shared_ptr<CalibAssistant> assistant) {
  const std::lock_guard<std::mutex> lock(lock_);
  assistant_.swap(assistant);
}

void Guidance::EndIf(const std::shared_ptr<CalibAssistant>& assistant) {
  const std::lock_guard<std::mutex> lock(lock_);
  if (assistant_ == assistant) assistant_.reset();
}

std::shared_ptr<CalibAssistant> Guidance::Current() const {
  const std::lock_guard<std::mutex> lock(lock_);
  return assistant_;
}

int Guidance::Goal() const {
  const auto assistant = Current();
  return assistant == nullptr ? -1 : assistant->GetGoal();
}

Guidance::Step Guidance::Assess(const std::shared_ptr<CalibAssistant>& assistant,
                                const std::vector<cv::Point2d>& points, const std::function<size_t()>& take) {
  if (!assistant->CheckValidity(points)) return Step::Elsewhere;
  const size_t count = take();
  if (count == 0) return Step::Elsewhere;
  if (!assistant->Next()) return Step::Taken;
  // The computation would end guidance too, but its thread may start after the next frame, which would then
  // be taken once more at the last pose.
  if (count >= Snapshots::ENOUGH || assistant->IsSinglePose()) EndIf(assistant);
  return assistant->IsSinglePose() ? Step::Taken : Step::Finished;
}

}  // namespace velmora
