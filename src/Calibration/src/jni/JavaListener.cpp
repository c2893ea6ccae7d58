/// The Java object that gets the processed frames.
#include "jni/JavaListener.h"

#include <utility>

#include "Log.h"
#include "foundation/OneLine.h"
#include "jni/Jni.h"

namespace velmora {

struct JavaListener::References {
  References(JNIEnv* env, jobject object, jclass type)
      : listener(env, object),
        listenerClass(env, type),
        onFrame(env->GetMethodID(type, "onFrame", "([BLjava/lang/String;)V")) {
    jni::Check(env);
  }

  jni::GlobalReference listener;
  jni::GlobalReference listenerClass;  ///< the method's number is good as long as the class is there
  jmethodID onFrame;
};

JavaListener::JavaListener(std::unique_ptr<const References> references, bool sendsImage,
                           const cv::Size& imageSize)
    : references_(std::move(references)), sendsImage_(sendsImage), imageSize_(imageSize) {
}

JavaListener::~JavaListener() = default;

std::shared_ptr<const JavaListener> JavaListener::Make(JNIEnv* env, jobject listener, bool sendsImage,
                                                       const cv::Size& imageSize) {
  if (env == nullptr) {
    Log::error("Cannot register a calibration listener without a Java environment.");
    return nullptr;
  }
  try {
    const jni::LocalReference<jclass> type(
        env, env->FindClass("com/velotrix/quiverleaf/sdk/JNICalibrationListener"));
    jni::Check(env);
    if (!env->IsInstanceOf(listener, type.Get())) throw jni::JavaException("the object is of another class");
    auto references = std::make_unique<const References>(env, listener, type.Get());
    return std::shared_ptr<const JavaListener>(
        new JavaListener(std::move(references), sendsImage, imageSize));
  } catch (const std::exception& fault) {
    Log::error("Cannot register the calibration listener: %s", OneLine(fault.what()).c_str());
    return nullptr;
  }
}

void JavaListener::OnFrame(JNIEnv* env, const std::vector<unsigned char>& jpeg,
                           const std::string& json) const {
  static const std::vector<unsigned char> NO_IMAGE = {0};
  try {
    const auto bytes = jni::ToJava(env, sendsImage_ ? jpeg : NO_IMAGE);
    const auto text = jni::ToJava(env, json);
    env->CallVoidMethod(references_->listener.Get(), references_->onFrame, bytes.Get(), text.Get());
    jni::Check(env);
  } catch (const std::exception& fault) {
    Log::error("The calibration listener failed: %s", OneLine(fault.what()).c_str());
  }
}

}  // namespace velmora
