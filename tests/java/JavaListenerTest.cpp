/// The Java listener in a real virtual machine.
#include <gtest/gtest.h>

#include <atomic>

#include "JvmFixture.h"
#include "Recorder.h"
#include "calibrator/Pushes.h"
#include "imaging/FrameCodec.h"
#include "jni/JavaThread.h"
#include "jni/Jni.h"
#include "unit/Scopes.h"

using namespace velmora;

using java_test::Recorder;

namespace {

/// A calibrator in the machine, with its processing bypassed: it is the delivery that counts here.
class JavaListening : public ::testing::Test {
 protected:
  void SetUp() override {
    calibrator_->RegisterJavaVM(env_);
    calibrator_->setBypassProcessing(true);
  }
  bool Register(const Recorder& recorder, bool sendImage, int width = 0, int height = 0) {
    return calibrator_->RegisterCalibrationListener(env_, recorder.Get(), sendImage ? 1 : 0, width, height);
  }
  void Push(JNIEnv* env) {
    cv::Mat image = unit::ImageWithGrid();
    calibrator_->NextFrameRGB(image, 0, env, false);
  }
  void CollectGarbage() {
    const jni::LocalReference<jclass> type(env_, env_->FindClass("com/velotrix/quiverleaf/sdk/Recorder"));
    env_->CallStaticVoidMethod(type.Get(), env_->GetStaticMethodID(type.Get(), "collectGarbage", "()V"));
    jni::Check(env_);
  }
  /// Registers a listener that only the engine refers to, and returns a weak reference to it.
  jweak RegisterOnlyHeldByTheEngine() {
    const Recorder recorder(env_);
    EXPECT_TRUE(Register(recorder, true));
    return env_->NewWeakGlobalRef(recorder.Get());
  }
  bool IsCollected(jweak listener) {
    CollectGarbage();
    return env_->IsSameObject(listener, nullptr) == JNI_TRUE;
  }

  JNIEnv* env_ = java_test::Environment();
  std::unique_ptr<Calibrator> calibrator_ = unit::MakeCalibrator();
};

TEST_F(JavaListening, GetsASingleZeroByteAndTheStatusWithoutImages) {
  Recorder recorder(env_);
  ASSERT_TRUE(Register(recorder, false, 200, 100));
  Push(env_);
  EXPECT_EQ(recorder.Calls(), 1);
  EXPECT_EQ(recorder.Image(), std::vector<unsigned char>({0}));
  EXPECT_EQ(recorder.Status(), calibrator_->GetStatus_QVX());
}

TEST_F(JavaListening, GetsTheFrameAsJpegInTheSizeAskedFor) {
  Recorder recorder(env_);
  ASSERT_TRUE(Register(recorder, true, 200, 100));
  Push(env_);
  EXPECT_EQ(recorder.Image(), EncodeJpeg(unit::ImageWithGrid(), {200, 100}));
  EXPECT_EQ(recorder.Status(), calibrator_->GetStatus_QVX());
}

TEST_F(JavaListening, GetsTheFrameInItsOwnSizeWhenASideIsZero) {
  for (const cv::Size& size : {cv::Size(0, 100), cv::Size(200, 0), cv::Size(0, 0)}) {
    Recorder recorder(env_);
    ASSERT_TRUE(Register(recorder, true, size.width, size.height));
    Push(env_);
    EXPECT_EQ(recorder.Image(), EncodeJpeg(unit::ImageWithGrid(), cv::Size())) << size;
  }
}

TEST_F(JavaListening, GetsNoBytesOfAFrameThatIsNoneButTheStatus) {
  Recorder recorder(env_);
  ASSERT_TRUE(Register(recorder, true));
  std::string text = "no picture";
  const unit::ScopedLogLevel silent(0);
  calibrator_->NextFrameJpegB64(text, 0, env_, false);
  EXPECT_EQ(recorder.Calls(), 1);
  EXPECT_TRUE(recorder.Image().empty());
  EXPECT_EQ(recorder.Status(), calibrator_->GetStatus_QVX());
}

TEST_F(JavaListening, TracesEncodingAndCall) {
  Recorder recorder(env_);
  ASSERT_TRUE(Register(recorder, true));
  const unit::ScopedLogLevel everything(5);
  EXPECT_EQ(unit::PrintedBy([&] { Push(env_); }),
            "TRACE : JPEG response encoded and processed, ready to be passed to JNI callback.\n"
            "TRACE : JNI callback called.\n");
}

TEST_F(JavaListening, IsCalledByTheThreadsOfBothGrabbers) {
  Recorder recorder(env_);
  ASSERT_TRUE(Register(recorder, true));
  calibrator_->OpenRGBFrameGrabber();
  Push(nullptr);
  ASSERT_TRUE(recorder.AwaitCalls(1));
  calibrator_->OpenJpegB64FrameGrabber();
  std::string text = unit::JpegB64(unit::ImageWithGrid());
  calibrator_->NextFrameJpegB64(text, 0, nullptr, false);
  EXPECT_TRUE(recorder.AwaitCalls(2));
}

TEST_F(JavaListening, IsNotReachedByThreadsWithoutAnEnvironment) {
  calibrator_ = unit::MakeCalibrator();  // one that knows no virtual machine
  calibrator_->setBypassProcessing(true);
  unit::Audience audience;
  calibrator_->SetFrameListener(audience.Listener());
  Recorder recorder(env_);
  ASSERT_TRUE(Register(recorder, true));
  Push(nullptr);
  calibrator_->OpenRGBFrameGrabber();
  Push(env_);
  EXPECT_TRUE(audience.AwaitCalls(2));
  calibrator_.reset();
  EXPECT_EQ(recorder.Calls(), 0);
}

TEST_F(JavaListening, HasItsExceptionsLoggedAndGetsTheNextFrame) {
  Recorder recorder(env_);
  ASSERT_TRUE(Register(recorder, true));
  recorder.Fail(true);
  EXPECT_EQ(unit::PrintedBy([&] { Push(env_); }),
            "ERROR : The calibration listener failed: java.lang.IllegalStateException: not today\n");
  EXPECT_FALSE(env_->ExceptionCheck());
  recorder.Fail(false);
  EXPECT_EQ(unit::PrintedBy([&] { Push(env_); }), "");
  EXPECT_EQ(recorder.Calls(), 2);
}

TEST_F(JavaListening, EndsNoGrabberWithItsExceptions) {
  Recorder recorder(env_);
  ASSERT_TRUE(Register(recorder, true));
  recorder.Fail(true);
  const unit::ScopedLogLevel silent(0);
  calibrator_->OpenRGBFrameGrabber();
  for (int i = 1; i <= 3; ++i) {
    Push(nullptr);
    ASSERT_TRUE(recorder.AwaitCalls(i));
  }
}

TEST_F(JavaListening, IsReleasedWhenReplacedClearedOrItsCalibratorDestroyed) {
  const jweak first = RegisterOnlyHeldByTheEngine();
  EXPECT_FALSE(IsCollected(first));
  const jweak second = RegisterOnlyHeldByTheEngine();
  EXPECT_TRUE(IsCollected(first));
  EXPECT_FALSE(IsCollected(second));
  EXPECT_FALSE(calibrator_->RegisterCalibrationListener(env_, nullptr, 1, 0, 0));
  EXPECT_TRUE(IsCollected(second));
  const jweak third = RegisterOnlyHeldByTheEngine();
  EXPECT_FALSE(IsCollected(third));
  // Destroyed where Java does not know the thread.
  std::thread([this] { calibrator_.reset(); }).join();
  EXPECT_TRUE(IsCollected(third));
  for (const jweak listener : {first, second, third}) env_->DeleteWeakGlobalRef(listener);
}

TEST_F(JavaListening, IsNotCalledOnceClearedOrReplaced) {
  Recorder first(env_);
  Recorder second(env_);
  ASSERT_TRUE(Register(first, true));
  ASSERT_TRUE(Register(second, true));
  Push(env_);
  EXPECT_FALSE(calibrator_->RegisterCalibrationListener(env_, nullptr, 1, 0, 0));
  Push(env_);
  EXPECT_EQ(first.Calls(), 0);
  EXPECT_EQ(second.Calls(), 1);
}

TEST_F(JavaListening, RefusesAnObjectOfAnotherClassAndClearsTheEarlierOne) {
  Recorder recorder(env_);
  ASSERT_TRUE(Register(recorder, true));
  const jni::LocalReference<jstring> text(env_, env_->NewStringUTF("no listener"));
  EXPECT_EQ(unit::PrintedBy(
                [&] { EXPECT_FALSE(calibrator_->RegisterCalibrationListener(env_, text.Get(), 1, 0, 0)); }),
            "ERROR : Cannot register the calibration listener: the object is of another class\n");
  Push(env_);
  EXPECT_EQ(recorder.Calls(), 0);
}

TEST_F(JavaListening, LeavesNoReferencesOnAThreadThatStaysAttached) {
  constexpr int FRAMES = 50;  // more than the local references that the machine lets pass without a word
  Recorder recorder(env_);
  const std::string printed = unit::PrintedBy([&] {
    const unit::ScopedLogLevel errors(1);
    ASSERT_TRUE(Register(recorder, true));
    calibrator_->OpenRGBFrameGrabber();
    for (int i = 1; i <= FRAMES; ++i) {
      Push(nullptr);
      ASSERT_TRUE(recorder.AwaitCalls(i));
    }
    // The thread is attached still. The last call may be under way still.
    EXPECT_TRUE(unit::Eventually([&] { return recorder.LivingArrays() == 0; }));
    calibrator_.reset();
  });
  EXPECT_EQ(printed, "") << "the machine's own checks found something";
}

TEST_F(JavaListening, HasGrabbersThatLeaveTheMachineWhenClosed) {
  Recorder recorder(env_);
  ASSERT_TRUE(Register(recorder, true));
  const int before = recorder.Threads();
  calibrator_->OpenRGBFrameGrabber();
  Push(nullptr);
  ASSERT_TRUE(recorder.AwaitCalls(1));
  EXPECT_EQ(recorder.Threads(), before + 1);
  calibrator_->CloseRGBFrameGrabber();
  EXPECT_TRUE(unit::Eventually([&] { return recorder.Threads() == before; }));
}

TEST_F(JavaListening, GetsWhatIsPassedToItsCallDirectly) {
  Recorder recorder(env_);
  ASSERT_TRUE(Register(recorder, true));
  calibrator_->onCalibrationCallback(env_, {1, 2, 255}, "{\"it\": \"é\"}");
  EXPECT_EQ(recorder.Image(), std::vector<unsigned char>({1, 2, 255}));
  EXPECT_EQ(recorder.Status(), "{\"it\": \"é\"}");
}

TEST_F(JavaListening, GetsTextsBeyondTheFirstPlaneUnharmed) {
  // In UTF-16 a pair of units; the machine's own kind of UTF-8 has another form of it.
  Recorder recorder(env_);
  ASSERT_TRUE(Register(recorder, true));
  const std::string status = "{\"it\": \"\xF0\x9F\x98\x80 caf\xC3\xA9\"}";
  const std::string printed = unit::PrintedBy([&] { calibrator_->onCalibrationCallback(env_, {1}, status); });
  EXPECT_EQ(recorder.Status(), status);
  EXPECT_EQ(printed, "");
}

TEST_F(JavaListening, MayBeReplacedAndClearedWhileFramesFlow) {
  const unit::ScopedLogLevel silent(0);
  Recorder recorder(env_);
  calibrator_->OpenRGBFrameGrabber();
  std::atomic<bool> flowing{true};
  JavaVM* machine = JavaMachineOf(env_);
  std::thread pushing([&] {
    const JavaThread thread(machine);
    cv::Mat small(16, 16, CV_8UC3, cv::Scalar::all(50));
    std::string text = unit::JpegB64(small);
    while (flowing) {
      cv::Mat image = small.clone();
      calibrator_->NextFrameRGB(image, 0, nullptr, false);
      calibrator_->NextFrameJpegB64(text, 0, thread.Environment(), false);
    }
  });
  for (int round = 0; round < 300; ++round) {
    EXPECT_TRUE(Register(recorder, round % 2 == 0));
    if (round % 3 == 0) calibrator_->RegisterCalibrationListener(env_, nullptr, 0, 0, 0);
  }
  ASSERT_TRUE(Register(recorder, true));
  const int before = recorder.Calls();
  EXPECT_TRUE(recorder.AwaitCalls(before + 3));
  flowing = false;
  pushing.join();
}

}  // namespace
