/// The two ways of pushing frames, as one thing to test.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "Calibrator.h"
#include "base64.h"
#include "calibrator/Audience.h"
#include "unit/Collection.h"

namespace unit {

inline std::string Base64Of(const std::vector<unsigned char>& bytes) {
  return base64_encode(bytes.data(), static_cast<unsigned>(bytes.size()));
}

/// The image as a Base64 JPEG of the best quality.
inline std::string JpegB64(const cv::Mat& pushed) {
  std::vector<unsigned char> bytes;
  cv::imencode(".jpg", pushed, bytes, {cv::IMWRITE_JPEG_QUALITY, 100});
  return Base64Of(bytes);
}

inline cv::Mat PlainImage(int level) {
  return cv::Mat(48, 64, CV_8UC3, cv::Scalar::all(level));
}

enum class Kind { JPEG, RGB };

inline void PrintTo(Kind kind, std::ostream* out) {
  *out << (kind == Kind::JPEG ? "Jpeg" : "Rgb");
}

/// A calibrator with a listener, and pushes of one kind.
class Pushes : public ::testing::TestWithParam<Kind> {
 protected:
  Pushes() { calibrator_->SetFrameListener(audience_.Listener()); }

  void Open() { Open(GetParam()); }
  void Close() { Close(GetParam()); }
  void Push(const cv::Mat& pushed) { Push(GetParam(), pushed); }

  void Open(Kind kind) {
    kind == Kind::JPEG ? calibrator_->OpenJpegB64FrameGrabber() : calibrator_->OpenRGBFrameGrabber();
  }
  void Close(Kind kind) {
    kind == Kind::JPEG ? calibrator_->CloseJpegB64FrameGrabber() : calibrator_->CloseRGBFrameGrabber();
  }
  void Push(Kind kind, const cv::Mat& pushed) {
    if (kind == Kind::JPEG) {
      std::string text = JpegB64(pushed);
      calibrator_->NextFrameJpegB64(text, 7, nullptr, false);
    } else {
      cv::Mat image = pushed.clone();
      calibrator_->NextFrameRGB(image, 7, nullptr, false);
    }
  }
  /// Pushes what holds no image.
  void PushNothing() {
    if (GetParam() == Kind::JPEG) {
      std::string text;
      calibrator_->NextFrameJpegB64(text, 7, nullptr, false);
    } else {
      cv::Mat image;
      calibrator_->NextFrameRGB(image, 7, nullptr, false);
    }
  }
  /// No detection, so that plain images come back as they are.
  void Bypass() { calibrator_->setBypassProcessing(true); }
  /// Waits for the grabbers' threads.
  void Destroy() { calibrator_.reset(); }

  /// The lines that a grabber prints over one opening.
  std::string StartedLine() const {
    return GetParam() == Kind::JPEG ? "INFO  : Base64 JPEG grabber started.\n"
                                    : "INFO  : RGB frame grabber started.\n";
  }
  std::string ExitedLine() const {
    return GetParam() == Kind::JPEG ? "INFO  : Base64 JPEG grabber exited.\n"
                                    : "INFO  : RGB frame grabber exited.\n";
  }

  Audience audience_;
  std::unique_ptr<Calibrator> calibrator_ = MakeCalibrator();
};

}  // namespace unit
