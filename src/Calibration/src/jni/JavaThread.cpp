/// Threads of the engine that call into Java.
#include "jni/JavaThread.h"

#include <jni.h>

#include "Log.h"

namespace velmora {

namespace {

constexpr jint LEAST_VERSION = JNI_VERSION_1_6;

}  // namespace

JavaVM* JavaMachineOf(JNIEnv* env) {
  JavaVM* machine = nullptr;
  if (env == nullptr || env->GetJavaVM(&machine) != JNI_OK) {
    Log::error("There is no Java virtual machine.");
    return nullptr;
  }
  return machine;
}

JavaThread::JavaThread(JavaVM* machine) : machine_(machine) {
  if (machine_ == nullptr) return;
  void* env = nullptr;
  if (machine_->GetEnv(&env, LEAST_VERSION) != JNI_OK) {
    // As a daemon: a program that ends with a source open is not kept alive by it.
    attachedHere_ = machine_->AttachCurrentThreadAsDaemon(&env, nullptr) == JNI_OK;
    if (!attachedHere_) env = nullptr;
  }
  env_ = static_cast<JNIEnv*>(env);
}

JavaThread::~JavaThread() {
  if (attachedHere_) machine_->DetachCurrentThread();
}

}  // namespace velmora
