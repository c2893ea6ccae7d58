/// What exported Java functions answer with whose faults are exceptions with the engine's sentences.
#pragma once

#include <jni.h>

#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "binding/JavaArguments.h"

namespace velmora::jni {

/// The result of the work. What makes no sense becomes an IllegalArgumentException, what the disk refuses an
/// IOException (or what `refusal` names), with the engine's sentences; `neutral` is returned then.
template <typename Result, typename Work>
Result Told(JNIEnv* env, Result neutral, Work work, const char* refusal = "java/io/IOException") {
  const auto raise = [env](const char* type, const std::exception& fault) {
    ThrowInJava(env, type, fault.what());
  };
  try {
    return work();
  } catch (const JavaException& fault) {
    raise("java/lang/RuntimeException", fault);
  } catch (const std::out_of_range& fault) {
    raise("java/lang/IndexOutOfBoundsException", fault);
  } catch (const std::invalid_argument& fault) {
    raise("java/lang/IllegalArgumentException", fault);
  } catch (const BadArgument& fault) {
    raise("java/lang/IllegalArgumentException", fault);
  } catch (const std::runtime_error& fault) {
    raise(refusal, fault);
  } catch (const std::exception& fault) {
    raise("java/lang/RuntimeException", fault);
  }
  return neutral;
}

/// The text that the work gives, as a Java string.
template <typename Work>
jstring TextTold(JNIEnv* env, Work work, const char* refusal = "java/io/IOException") {
  return Told(
      env, static_cast<jstring>(nullptr), [&] { return Returned(env, ToJava(env, work())); }, refusal);
}

/// The bytes of a PNG file.
inline jbyteArray PngOf(JNIEnv* env, const cv::Mat& image) {
  std::vector<unsigned char> bytes;
  if (!cv::imencode(".png", image, bytes)) throw std::runtime_error("The image cannot be handed out as PNG.");
  return Returned(env, ToJava(env, bytes));
}

}  // namespace velmora::jni
