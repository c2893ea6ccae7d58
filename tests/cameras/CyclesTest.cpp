/// Opening and closing over and over costs nothing that is not given back.
#include "cameras/FakeCameras.h"
#include "cameras/Resources.h"
#include "unit/Collection.h"
#include "unit/StereoCollection.h"

namespace {

using Cycles = cameras::CameraTest;

constexpr int CYCLES = 20;

/// Threads and descriptors after each of many cycles are those after the first ones, in which libraries set
/// themselves up.
void ExpectLevel(const std::function<void()>& cycle) {
  for (int i = 0; i < 3; ++i) cycle();
  const cameras::Resources before = cameras::ResourcesInUse();
  for (int i = 0; i < CYCLES; ++i) cycle();
  const cameras::Resources after = cameras::ResourcesInUse();
  EXPECT_EQ(after.threads, before.threads);
  EXPECT_EQ(after.descriptors, before.descriptors);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // these keep what was freed
  EXPECT_LT(after.residentKilobytes, before.residentKilobytes + CYCLES * 256);
#endif
}

TEST_F(Cycles, OfOneCameraKeepThreadsDescriptorsAndMemoryLevel) {
  cameras_.Provide(0, {unit::ImageWithGrid()});
  const auto calibrator = unit::MakeCalibrator();
  const unit::ScopedLogLevel silent(0);
  ExpectLevel([&] {
    ASSERT_TRUE(calibrator->OpenNativeCamera(0, 640, 480, 30, 0));
    ASSERT_TRUE(unit::Eventually([&] { return calibrator->AddPoints(); }));
    calibrator->CloseNativeCamera();
    calibrator->Reset();
  });
}

TEST_F(Cycles, OfAPairKeepThreadsDescriptorsAndMemoryLevel) {
  const unit::ImagePair pair = unit::PairWithGrid();
  cameras_.Provide(0, {pair.left});
  cameras_.Provide(1, {pair.right});
  const auto calibrator = unit::MakeCalibrator(Calibrator::STEREO);
  const unit::ScopedLogLevel silent(0);
  ExpectLevel([&] {
    ASSERT_TRUE(calibrator->OpenNativeStereoCamera(0, 1, 640, 480, 30));
    ASSERT_TRUE(unit::Eventually([&] { return calibrator->AddStereoPoints(); }));
    calibrator->CloseStereoNativeCamera();
    calibrator->Reset();
  });
}

}  // namespace
