/// Calibrators addressed by number: each function finds its calibrator and calls it.
#include <cmath>
#include <opencv2/imgcodecs.hpp>

#include "Calibration.h"
#include "Log.h"
#include "base64.h"
#include "binding/Registry.h"
#include "calibrator/OwnThread.h"
#include "imaging/FrameCodec.h"

using namespace velmora;

namespace {

constexpr int LARGEST_GRID_SIDE = 1000;
constexpr int LARGEST_FRAME_SIDE = 32767;

/// What the action gives for the calibrator of that number; `missing` without one. It lives as long as the
/// action runs.
template <typename Result, typename Action>
Result With(int id, Result missing, Action action) {
  const auto calibrator = Registry::Instance().Find(id);
  return calibrator == nullptr ? missing : static_cast<Result>(action(*calibrator));
}

template <typename Action>
void With(int id, Action action) {
  const auto calibrator = Registry::Instance().Find(id);
  if (calibrator != nullptr) action(*calibrator);
}

bool WithinReason(int side, int largest) {
  return side >= 1 && side <= largest;
}

/// Replaces the text by the picture's; false, with an error line, when it cannot be encoded.
void Encode(const cv::Mat& image, int quality, std::string& base64Jpeg) {
  std::vector<unsigned char> bytes;
  if (!cv::imencode(".jpg", image, bytes, {cv::IMWRITE_JPEG_QUALITY, quality})) {
    Log::error("Error while encoding the output frame.");
    return;
  }
  base64Jpeg = base64_encode(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

}  // namespace

int Calibration::NewCalibrator(const int& a, const int& b, const float& c, const int& d, const int& e,
                               const int& f) {
  if (!WithinReason(a, LARGEST_GRID_SIDE) || !WithinReason(b, LARGEST_GRID_SIDE) ||
      !WithinReason(e, LARGEST_FRAME_SIDE) || !WithinReason(f, LARGEST_FRAME_SIDE) || !std::isfinite(c)) {
    Log::error("Cannot create a calibrator for a grid of %d x %d, unit %g, and frames of %d x %d.", a, b,
               static_cast<double>(c), e, f);
    return -1;
  }
  return Registry::Instance().Add(std::make_unique<Calibrator>(cv::Size(a, b), c, d, e, f));
}

bool Calibration::DeleteCalibrator(const int& id) {
  const auto calibrator = Registry::Instance().Remove(id);
  if (calibrator == nullptr) return false;
  // Even while others hold it: nothing more comes from it. On its own thread that is left to its destruction.
  if (!OwnThread::Of(calibrator.get())) calibrator->EndSources();
  return true;
}

bool Calibration::exist(const int& id) {
  return Registry::Instance().Find(id) != nullptr;
}

void Calibration::ResetCalibrator(const int& id) {
  With(id, [](Calibrator& calibrator) { calibrator.Reset(); });
}

bool Calibration::DetectPattern(const int& id, const int& width, const int& height, const int& type,
                                unsigned char* data) {
  return With(id, false, [&](Calibrator& calibrator) {
    if (data == nullptr || !WithinReason(width, LARGEST_FRAME_SIDE) ||
        !WithinReason(height, LARGEST_FRAME_SIDE)) {
      Log::error("Cannot process a frame of %d x %d pixels.", width, height);
      return false;
    }
    cv::Mat image(height, width, type & CV_MAT_TYPE_MASK, data);
    std::vector<cv::Point2d> points;
    return calibrator.DetectPoints(image, points, true);
  });
}

bool Calibration::DetectPattern(const int& id, cv::Mat& image) {
  return With(id, false, [&](Calibrator& calibrator) {
    std::vector<cv::Point2d> points;
    return calibrator.DetectPoints(image, points, true);
  });
}

bool Calibration::DetectPattern(const int& id, std::string& base64Jpeg, const int& quality) {
  return With(id, false, [&](Calibrator& calibrator) {
    cv::Mat image = DecodeJpegB64(base64Jpeg);
    if (image.empty()) {
      Log::error("Cannot convert B64 data to an image.");
      return false;
    }
    std::vector<cv::Point2d> points;
    const bool found = calibrator.DetectPoints(image, points, true);
    Encode(image, quality, base64Jpeg);
    return found;
  });
}

bool Calibration::IsDetected(const int& id) {
  return With(id, false, [](Calibrator& calibrator) { return calibrator.IsDetected(); });
}

void Calibration::SetFlip(const int& id, const bool& flip) {
  With(id, [&](Calibrator& calibrator) { calibrator.SetFlipImage(flip); });
}

bool Calibration::GetFlip(const int& id) {
  return With(id, false, [](Calibrator& calibrator) { return calibrator.GetFlipImage(); });
}

bool Calibration::StartAssistant(const int& id, const std::string& modelPath) {
  return With(id, false, [&](Calibrator& calibrator) {
    calibrator.EnableAssistant(modelPath);
    return true;
  });
}

bool Calibration::StopAssistant(const int& id) {
  return With(id, false, [](Calibrator& calibrator) {
    calibrator.DisableAssistant();
    return true;
  });
}

int Calibration::GetAssistantGoal(const int& id) {
  return With(id, -3, [](Calibrator& calibrator) { return calibrator.GetAssistantGoal(); });
}

bool Calibration::AddPicture(const int& id) {
  return With(id, false, [](Calibrator& calibrator) { return calibrator.AddPoints(); });
}

bool Calibration::AddStereoPicture(const int& id) {
  return With(id, false, [](Calibrator& calibrator) { return calibrator.AddStereoPoints(); });
}

void Calibration::Calibrate(const int& id, const int& model) {
  With(id, [&](Calibrator& calibrator) { calibrator.ComputeCalibrationMultithread(model); });
}

void Calibration::CalibrateStereo(const int& id, const std::string& left, const std::string& right,
                                  const int& model) {
  With(id, [&](Calibrator& calibrator) { calibrator.ComputeCalibrationStereo(left, right, model, false); });
}

// The three defaults below differ on purpose, so that callers can tell them apart.

int Calibration::GetStatus(const int& id) {
  return With(id, -1, [](Calibrator& calibrator) { return calibrator.GetStatus(); });
}

int Calibration::GetPictureCount(const int& id) {
  return With(id, -2, [](Calibrator& calibrator) { return calibrator.GetNumberOfRecords(); });
}

float Calibration::GetError(const int& id) {
  return With(id, -2.0F, [](Calibrator& calibrator) { return calibrator.GetRMS(); });
}

std::string Calibration::GetCalibrationJSON(const int& id, const bool& save, const std::string& path) {
  return With(id, std::string(), [&](Calibrator& calibrator) { return calibrator.SaveResult(save, path); });
}
