/// Threads of the engine that call into Java.
#pragma once

#include "JavaTypes.h"

namespace velmora {

/// The virtual machine of the environment; null, with an error line, when there is none.
JavaVM* JavaMachineOf(JNIEnv* env);

/// Attaches this thread to the virtual machine until the end of the scope, unless it is attached already.
class JavaThread {
 public:
  /// Without a machine nothing is attached.
  explicit JavaThread(JavaVM* machine);
  ~JavaThread();  // NOLINT(performance-trivially-destructible): it is not where there is Java
  JavaThread(const JavaThread&) = delete;
  JavaThread& operator=(const JavaThread&) = delete;

  /// Null when the thread is not attached.
  JNIEnv* Environment() const { return env_; }

 private:
  JavaVM* machine_;
  JNIEnv* env_ = nullptr;
  bool attachedHere_ = false;
};

}  // namespace velmora
