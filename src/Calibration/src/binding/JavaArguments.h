/// What the exported Java functions have in common: arguments that are checked, and exceptions that stop at
/// the border.
#pragma once

#include <jni.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "Log.h"
#include "jni/Jni.h"

namespace velmora::jni {

/// An argument that a call cannot be made with. It is reported in the log; the call has no effect.
class BadArgument : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws an exception of that class ("java/lang/RuntimeException"), unless one is pending already.
inline void ThrowInJava(JNIEnv* env, const char* name, const std::string& words) {
  if (env->ExceptionCheck()) return;
  const LocalReference<jclass> type(env, env->FindClass(name));
  if (type.Get() == nullptr) return;
  const jmethodID make = env->GetMethodID(type.Get(), "<init>", "(Ljava/lang/String;)V");
  if (make == nullptr) return;
  try {
    const auto text = ToJava(env, words);
    const LocalReference<jobject> exception(env, env->NewObject(type.Get(), make, text.Get()));
    if (exception.Get() != nullptr) env->Throw(static_cast<jthrowable>(exception.Get()));
  } catch (const std::exception&) {
    env->ThrowNew(type.Get(), "an error without a description");
  }
}

inline void ThrowRuntimeException(JNIEnv* env, const std::string& words) {
  ThrowInJava(env, "java/lang/RuntimeException", words);
}

/// The result of the work. What it throws becomes a Java RuntimeException (for a number that there is not, an
/// IndexOutOfBoundsException), or an error line for a bad argument; `neutral` is returned then.
template <typename Result, typename Work>
Result AtBorder(JNIEnv* env, Result neutral, Work work) {
  try {
    return work();
  } catch (const BadArgument& fault) {
    Log::error("%s", fault.what());
  } catch (const std::out_of_range& fault) {
    ThrowInJava(env, "java/lang/IndexOutOfBoundsException", fault.what());
  } catch (const std::exception& fault) {
    ThrowRuntimeException(env, fault.what());
  } catch (...) {
    ThrowRuntimeException(env, "an error without a description");
  }
  return neutral;
}

template <typename Work>
void AtBorder(JNIEnv* env, Work work) {
  AtBorder(env, 0, [&] {
    work();
    return 0;
  });
}

/// A text that may not be null.
inline std::string Text(JNIEnv* env, jstring text, const char* name) {
  if (text == nullptr) throw BadArgument(std::string("The ") + name + " is null.");
  return FromJava(env, text);
}

/// The name of something outside: not null, and without NUL, which would end it early.
inline std::string Name(JNIEnv* env, jstring text, const char* name) {
  std::string result = Text(env, text, name);
  if (result.find('\0') != std::string::npos) {
    throw BadArgument(std::string("The ") + name + " holds a NUL character.");
  }
  return result;
}

inline std::vector<int> Integers(JNIEnv* env, jintArray numbers, const char* name) {
  if (numbers == nullptr) throw BadArgument(std::string("The ") + name + " are null.");
  std::vector<jint> given(static_cast<size_t>(env->GetArrayLength(numbers)));
  env->GetIntArrayRegion(numbers, 0, static_cast<jsize>(given.size()), given.data());
  Check(env);
  return {given.begin(), given.end()};
}

/// The local reference, handed over to Java.
template <typename Object>
Object Returned(JNIEnv* env, const LocalReference<Object>& reference) {
  return static_cast<Object>(env->NewLocalRef(reference.Get()));
}

}  // namespace velmora::jni
