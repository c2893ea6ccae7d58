/// A listener of the Java side, as the tests see it.
#pragma once

#include <string>
#include <vector>

#include "jni/Jni.h"
#include "unit/Scopes.h"

namespace java_test {

using namespace velmora;

/// A com.velotrix.quiverleaf.sdk.Recorder. For the thread of its environment only.
class Recorder {
 public:
  explicit Recorder(JNIEnv* env)
      : env_(env),
        type_(env, env->FindClass("com/velotrix/quiverleaf/sdk/Recorder")),
        object_(env, env->NewObject(type_.Get(), env->GetMethodID(type_.Get(), "<init>", "()V"))) {
    jni::Check(env);
  }

  jobject Get() const { return object_.Get(); }
  int Calls() { return Int("calls"); }
  int LivingArrays() { return Int("livingArrays"); }
  std::vector<unsigned char> Image() {
    return jni::FromJava(env_, Object<jbyteArray>("image", "()[B").Get());
  }
  std::string Status() {
    return jni::FromJava(env_, Object<jstring>("status", "()Ljava/lang/String;").Get());
  }
  void Fail(bool fail) {
    env_->CallVoidMethod(Get(), env_->GetMethodID(type_.Get(), "fail", "(Z)V"), fail);
    jni::Check(env_);
  }
  int Threads() {
    const int count =
        env_->CallStaticIntMethod(type_.Get(), env_->GetStaticMethodID(type_.Get(), "threads", "()I"));
    jni::Check(env_);
    return count;
  }
  bool AwaitCalls(int count) {
    return unit::Eventually([&] { return Calls() >= count; });
  }

 private:
  int Int(const char* name) {
    const int value = env_->CallIntMethod(Get(), env_->GetMethodID(type_.Get(), name, "()I"));
    jni::Check(env_);
    return value;
  }
  template <typename Type>
  jni::LocalReference<Type> Object(const char* name, const char* signature) {
    jni::LocalReference<Type> object(env_, static_cast<Type>(env_->CallObjectMethod(
                                               Get(), env_->GetMethodID(type_.Get(), name, signature))));
    jni::Check(env_);
    return object;
  }

  JNIEnv* env_;
  jni::LocalReference<jclass> type_;
  jni::LocalReference<jobject> object_;
};

}  // namespace java_test
