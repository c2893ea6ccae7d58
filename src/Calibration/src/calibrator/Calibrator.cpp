/// The calibrator's construction, status, switches and life cycle.
#include "Calibrator.h"

#include <system_error>
#include <thread>

#include "CalibAssistant.h"
#include "JSON.h"
#include "Log.h"
#include "calibrator/Delivery.h"
#include "calibrator/SolverChoice.h"
#include "capture/CaptureReader.h"
#include "capture/Preview.h"
#include "finder/FinderChoice.h"
#include "foundation/OneLine.h"
#include "foundation/Version.h"
#include "model/Codes.h"
#include "model/LensModel.h"
#include "model/TargetGeometry.h"

using namespace velmora;

static_assert(Calibrator::MODEL_CLASSIC == velmora::MODEL_CLASSIC);
static_assert(Calibrator::MODEL_RATIONAL == velmora::MODEL_RATIONAL);
static_assert(Calibrator::MODEL_FULL == velmora::MODEL_FULL);
static_assert(Calibrator::SOLVER_OPENCV == velmora::SOLVER_OPENCV);
static_assert(Calibrator::SOLVER_SPARSE == velmora::SOLVER_SPARSE);
static_assert(Calibrator::FINDER_STANDARD == velmora::FINDER_STANDARD);
static_assert(Calibrator::FINDER_ROBUST == velmora::FINDER_ROBUST);
static_assert(Calibrator::STATUS_NOT_READY == velmora::STATUS_NOT_READY);
static_assert(Calibrator::STATUS_READY == velmora::STATUS_READY);
static_assert(Calibrator::STATUS_COMPLETED == velmora::STATUS_COMPLETED);
static_assert(Calibrator::STATUS_PROGRESS == velmora::STATUS_PROGRESS);

const std::string Calibrator::VERSION = velmora::VERSION;

Calibrator::Calibrator(const cv::Size& patternSize, const float& unit, const int& kind, const int& frameWidth,
                       const int& frameHeight)
    : kind_(kind),
      patternSize_(patternSize),
      frameWidth_(frameWidth),
      frameHeight_(frameHeight),
      objectTemplate_(MakeObjectTemplate(patternSize, unit)),
      finder_(std::make_unique<FinderChoice>()),
      solver_(std::make_unique<SolverChoice>()),
      delivery_(std::make_unique<Delivery>(*this)),
      preview_(std::make_unique<Preview>()),
      capture_(std::make_unique<CaptureReader>([this] { cameraReader(); })) {
}

Calibrator::~Calibrator() {
  // Frames first: what they show may start a computation.
  EndSources();
  {
    std::unique_lock<std::mutex> lock(backgroundLock_);
    backgroundDone_.wait(lock, [this] { return backgroundTasks_ == 0; });
  }
  DisableAssistant();
  try {
    StopModelRecording();
  } catch (const std::exception& fault) {
    Log::error("Cannot save the recorded model: %s", OneLine(fault.what()).c_str());
  }
}

void Calibrator::SetStatus(const int& value) {
  const std::lock_guard<std::mutex> lock(statusLock_);
  status_ = value;
}

int Calibrator::GetStatus() {
  const std::lock_guard<std::mutex> lock(statusLock_);
  return status_;
}

int Calibrator::ReadStatus() {
  return GetStatus();
}

bool Calibrator::isCalibrating() {
  return GetStatus() == STATUS_PROGRESS;
}

bool Calibrator::IsComputing() {
  const std::lock_guard<std::mutex> lock(backgroundLock_);
  return backgroundTasks_ > 0;
}

bool Calibrator::HasFailed() {
  const std::lock_guard<std::mutex> lock(statusLock_);
  return failed_;
}

int Calibrator::Completed() {
  const std::lock_guard<std::mutex> lock(statusLock_);
  return completed_;
}

/// For a computation that may have ended before it was marked as under way. When another is under way, or
/// brought a result meanwhile, that one ended last, or kept this one from beginning.
void Calibrator::NoteEndWithoutResult(int completedBefore) {
  const std::lock_guard<std::mutex> lock(statusLock_);
  if (completed_ == completedBefore && status_ != STATUS_PROGRESS) failed_ = true;
}

bool Calibrator::IsDetected() {
  const std::lock_guard<std::mutex> lock(pointsLock_);
  return kind_ == MONOCULAR && !lastPoints_.empty();
}

int Calibrator::GetNumberOfRecords() {
  const std::lock_guard<std::mutex> lock(dataLock_);
  return static_cast<int>(records_.objectRecords.size());
}

void Calibrator::Reset() {
  const std::lock_guard<std::mutex> data(dataLock_);
  const std::lock_guard<std::mutex> lock(statusLock_);
  if (status_ == STATUS_PROGRESS) return;
  records_ = Records{};
  results_ = Results{};
  status_ = STATUS_NOT_READY;
  failed_ = false;
}

std::string Calibrator::GetVersion() {
  return VERSION;
}

void Calibrator::SetFlipImage(const bool& flip) {
  flipImage_ = flip;
}

bool Calibrator::GetFlipImage() {
  return flipImage_;
}

void Calibrator::EnableAssistant(const std::string& modelPath) {
  auto assistant =
      std::make_shared<CalibAssistant>(frameWidth_, frameHeight_, patternSize_.width, patternSize_.height);
  assistant->Start(modelPath);
  const std::lock_guard<std::mutex> data(dataLock_);
  assistant_ = std::move(assistant);
  const std::lock_guard<std::mutex> lock(statusLock_);
  failed_ = false;  // a new computation is to come
}

void Calibrator::DisableAssistant() {
  const std::lock_guard<std::mutex> lock(dataLock_);
  assistant_.reset();
}

std::shared_ptr<CalibAssistant> Calibrator::Assistant() {
  const std::lock_guard<std::mutex> lock(dataLock_);
  return assistant_;
}

int Calibrator::GetAssistantGoal() {
  const auto assistant = Assistant();
  return assistant == nullptr ? -1 : assistant->GetGoal();
}

void Calibrator::RunInBackground(const char* name, std::function<void()> task) {
  const auto finish = [this](int completedBefore) {
    NoteEndWithoutResult(completedBefore);
    // Notified under the lock: the destructor may end the calibrator as soon as it is free.
    const std::lock_guard<std::mutex> lock(backgroundLock_);
    --backgroundTasks_;
    backgroundDone_.notify_all();
  };
  {
    const std::lock_guard<std::mutex> lock(backgroundLock_);
    ++backgroundTasks_;
  }
  try {
    std::thread([this, name, finish, task = std::move(task)] {
      const int completedBefore = Completed();
      try {
        task();
      } catch (const std::exception& fault) {
        Log::error("%s failed: %s", name, OneLine(fault.what()).c_str());
      } catch (...) {  // a progress listener may throw anything
        Log::error("%s failed.", name);
      }
      finish(completedBefore);
    }).detach();
  } catch (const std::system_error& fault) {
    Log::error("%s failed: %s", name, fault.what());
    finish(Completed());
  }
}
