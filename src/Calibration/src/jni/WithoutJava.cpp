/// The Java half of an engine that is built without a JDK: it says so.
#include "Log.h"
#include "jni/JavaListener.h"
#include "jni/JavaThread.h"

namespace velmora {

struct JavaListener::References {};

JavaListener::~JavaListener() = default;

std::shared_ptr<const JavaListener> JavaListener::Make(JNIEnv* /*env*/, jobject /*listener*/,
                                                       bool /*sendsImage*/, const cv::Size& /*imageSize*/) {
  Log::error("Cannot register a calibration listener: the engine was built without Java.");
  return nullptr;
}

void JavaListener::OnFrame(JNIEnv* /*env*/, const std::vector<unsigned char>& /*jpeg*/,
                           const std::string& /*json*/) const {
}

JavaVM* JavaMachineOf(JNIEnv* /*env*/) {
  Log::error("Cannot register a Java virtual machine: the engine was built without Java.");
  return nullptr;
}

JavaThread::JavaThread(JavaVM* machine) : machine_(machine) {
}

JavaThread::~JavaThread() = default;

}  // namespace velmora
