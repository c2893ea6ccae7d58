/// The Java virtual machine that a test program starts.
#pragma once

#include <jni.h>

namespace java_test {

/// The environment of the thread that calls first, which starts the machine with the tests' class path. Calls
/// are checked by the machine, which writes what it finds to standard output. Throws std::runtime_error when
/// there is no machine to start.
JNIEnv* Environment();

}  // namespace java_test
