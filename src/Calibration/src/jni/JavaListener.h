/// The Java object that gets the processed frames.
#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "JavaTypes.h"

namespace velmora {

/// A registered com.velotrix.quiverleaf.sdk.JNICalibrationListener. It holds the object and its class until
/// it is destroyed, which may happen on any thread.
class JavaListener {
 public:
  /// Null, with an error line, when the class or its method cannot be found or the object is not an instance
  /// of it.
  static std::shared_ptr<const JavaListener> Make(JNIEnv* env, jobject listener, bool sendsImage,
                                                  const cv::Size& imageSize);
  ~JavaListener();
  JavaListener(const JavaListener&) = delete;
  JavaListener& operator=(const JavaListener&) = delete;

  bool SendsImage() const { return sendsImage_; }
  /// The size that images are wanted in; their own unless both sides are positive.
  const cv::Size& ImageSize() const { return imageSize_; }

  /// Calls onFrame with the bytes, or with a single zero byte when no image is wanted. What Java throws is
  /// written to the log.
  void OnFrame(JNIEnv* env, const std::vector<unsigned char>& jpeg, const std::string& json) const;

 private:
  struct References;
  JavaListener(std::unique_ptr<const References> references, bool sendsImage, const cv::Size& imageSize);

  const std::unique_ptr<const References> references_;
  const bool sendsImage_;
  const cv::Size imageSize_;
};

}  // namespace velmora
