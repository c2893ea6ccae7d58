/// Native code with faults that a checking virtual machine reports.
#include <jni.h>

#include <string>
#include <thread>

namespace {

/// More references than a native frame has room for, none of them deleted.
void Leak(JNIEnv* env) {
  constexpr int REFERENCES = 40;
  for (int i = 0; i < REFERENCES; ++i) env->NewStringUTF("kept");
}

/// Leaks references on a thread with no Java method beneath.
void LeakOnAThread(JNIEnv* env) {
  JavaVM* machine = nullptr;
  env->GetJavaVM(&machine);
  std::thread([machine] {
    void* own = nullptr;
    machine->AttachCurrentThread(&own, nullptr);
    Leak(static_cast<JNIEnv*>(own));
    machine->DetachCurrentThread();
  }).join();
}

/// Calls on although an exception may be pending.
void CallUnchecked(JNIEnv* env, jclass type) {
  env->CallStaticVoidMethod(type, env->GetStaticMethodID(type, "fail", "()V"));
  env->GetStaticMethodID(type, "fail", "()V");
}

/// Uses what is no reference.
void UseGarbage(JNIEnv* env) {
  long long garbage[4] = {};
  env->GetObjectClass(reinterpret_cast<jobject>(garbage));
}

}  // namespace

extern "C" JNIEXPORT void JNICALL Java_com_velotrix_quiverleaf_sdk_PlantedFault_plant(JNIEnv* env,
                                                                                      jclass type,
                                                                                      jstring kind) {
  const char* const text = env->GetStringUTFChars(kind, nullptr);
  const std::string name = text;
  env->ReleaseStringUTFChars(kind, text);
  if (name == "leak") Leak(env);
  if (name == "leak-on-a-thread") LeakOnAThread(env);
  if (name == "unchecked") CallUnchecked(env, type);
  if (name == "garbage") UseGarbage(env);
}
