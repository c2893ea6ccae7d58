/// Registration where the listener's class or its method is not to be found.
#include <gtest/gtest.h>

#include "JvmFixture.h"
#include "jni/Jni.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

TEST(Registration, FailsWithAnErrorLineThatNamesWhatIsMissing) {
  JNIEnv* env = java_test::Environment();
  const auto calibrator = unit::MakeCalibrator();
  calibrator->RegisterJavaVM(env);
  const jni::LocalReference<jclass> type(
      env, env->FindClass("com/velotrix/quiverleaf/sdk/JNICalibrationListener"));
  env->ExceptionClear();
  const jni::LocalReference<jobject> object(
      env, type.Get() != nullptr ? env->AllocObject(type.Get()) : env->NewStringUTF("any object"));
  const std::string printed = unit::PrintedBy(
      [&] { EXPECT_FALSE(calibrator->RegisterCalibrationListener(env, object.Get(), 1, 0, 0)); });
  EXPECT_EQ(printed.find("ERROR : Cannot register the calibration listener: java.lang." VELMORA_MISSING), 0U)
      << printed;
  EXPECT_FALSE(env->ExceptionCheck());

  cv::Mat image(8, 8, CV_8UC3, cv::Scalar::all(0));
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->NextFrameRGB(image, 0, env, false); }), "");
}

}  // namespace
