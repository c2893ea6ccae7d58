/// The Java virtual machine that a test program starts.
#include "JvmFixture.h"

#include <stdexcept>
#include <string>

namespace java_test {

namespace {

JNIEnv* Start() {
  std::string classPath = "-Djava.class.path=" VELMORA_CLASS_PATH;
  std::string check = "-Xcheck:jni";
  JavaVMOption options[] = {{classPath.data(), nullptr}, {check.data(), nullptr}};
  JavaVMInitArgs arguments{};
  arguments.version = JNI_VERSION_1_6;
  arguments.nOptions = 2;
  arguments.options = options;
  JavaVM* machine = nullptr;
  void* env = nullptr;
  if (JNI_CreateJavaVM(&machine, &env, &arguments) != JNI_OK) {
    throw std::runtime_error("cannot start a Java virtual machine");
  }
  return static_cast<JNIEnv*>(env);
}

}  // namespace

JNIEnv* Environment() {
  static JNIEnv* env = Start();
  return env;
}

}  // namespace java_test
