/// Owners of what the Java Native Interface hands out, and conversions.
#include "jni/Jni.h"

#include "jni/JavaThread.h"

namespace velmora::jni {

namespace {

/// The exception in its own words. It may fail to find some: what it throws then is dropped.
std::string Describe(JNIEnv* env, jthrowable exception) {
  std::string words;
  const LocalReference<jclass> type(env, env->GetObjectClass(exception));
  const jmethodID toString = env->GetMethodID(type.Get(), "toString", "()Ljava/lang/String;");
  if (toString != nullptr) {
    const LocalReference<jstring> text(env, static_cast<jstring>(env->CallObjectMethod(exception, toString)));
    if (!env->ExceptionCheck()) words = FromJava(env, text.Get());
  }
  if (env->ExceptionCheck()) env->ExceptionClear();
  return words.empty() ? "a Java exception without a description" : words;
}

}  // namespace

void Check(JNIEnv* env) {
  if (!env->ExceptionCheck()) return;
  const LocalReference<jthrowable> exception(env, env->ExceptionOccurred());
  env->ExceptionClear();
  throw JavaException(Describe(env, exception.Get()));
}

GlobalReference::GlobalReference(JNIEnv* env, jobject object)
    : machine_(JavaMachineOf(env)), object_(env->NewGlobalRef(object)) {
  if (object_ == nullptr) {
    Check(env);
    throw JavaException("no global reference was given");
  }
}

GlobalReference::~GlobalReference() {
  const JavaThread thread(machine_);
  // A machine that has ended took its references along.
  if (thread.Environment() != nullptr) thread.Environment()->DeleteGlobalRef(object_);
}

LocalReference<jbyteArray> ToJava(JNIEnv* env, const std::vector<unsigned char>& bytes) {
  const auto length = static_cast<jsize>(bytes.size());
  LocalReference<jbyteArray> result(env, env->NewByteArray(length));
  Check(env);
  env->SetByteArrayRegion(result.Get(), 0, length, reinterpret_cast<const jbyte*>(bytes.data()));
  Check(env);
  return result;
}

LocalReference<jdoubleArray> ToJava(JNIEnv* env, const std::vector<double>& numbers) {
  const auto length = static_cast<jsize>(numbers.size());
  LocalReference<jdoubleArray> result(env, env->NewDoubleArray(length));
  Check(env);
  env->SetDoubleArrayRegion(result.Get(), 0, length, numbers.data());
  Check(env);
  return result;
}

std::vector<unsigned char> FromJava(JNIEnv* env, jbyteArray bytes) {
  if (bytes == nullptr) return {};
  const jsize length = env->GetArrayLength(bytes);
  std::vector<unsigned char> result(static_cast<size_t>(length));
  env->GetByteArrayRegion(bytes, 0, length, reinterpret_cast<jbyte*>(result.data()));
  Check(env);
  return result;
}

}  // namespace velmora::jni
