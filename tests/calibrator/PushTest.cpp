/// Frames pushed in without a grabber: processed on the caller's thread.
#include <gtest/gtest.h>

#include <stdexcept>

#include "Matchers.h"
#include "calibrator/Pushes.h"
#include "imaging/FrameCodec.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

using unit::Kind;
class PushedFrame : public unit::Pushes {};
class PushedOnce : public unit::Pushes {};

std::string NameOf(const ::testing::TestParamInfo<Kind>& info) {
  return ::testing::PrintToString(info.param);
}

INSTANTIATE_TEST_SUITE_P(Kinds, PushedFrame, ::testing::Values(Kind::JPEG, Kind::RGB), NameOf);

TEST_P(PushedFrame, IsProcessedOnTheCallersThread) {
  Push(unit::ImageWithGrid());
  ASSERT_EQ(audience_.Calls().size(), 1U);
  EXPECT_EQ(audience_.Calls().front().thread, std::this_thread::get_id());
  EXPECT_TRUE(calibrator_->IsDetected());
}

TEST_P(PushedFrame, HandsOutTheAnnotatedFrameWithTheStatus) {
  const cv::Mat image = unit::ImageWithGrid();
  Push(image);
  const unit::Delivered delivered = audience_.Calls().at(0);
  EXPECT_EQ(delivered.status, calibrator_->GetStatus_QVX());
  EXPECT_EQ(delivered.Image().size(), unit::FRAME);
  // Drawn on: far more than the losses of the encoding.
  EXPECT_GT(cv::norm(delivered.Image(), image, cv::NORM_INF), 150.0);
}

TEST_P(PushedFrame, IsBroughtToTheProcessingSize) {
  Push(unit::PlainImage(80));
  EXPECT_EQ(audience_.Calls().at(0).Image().size(), unit::FRAME);
}

TEST_P(PushedFrame, SkipsDetectionWhenProcessingIsBypassed) {
  Bypass();
  const cv::Mat image = unit::ImageWithGrid();
  Push(image);
  EXPECT_FALSE(calibrator_->IsDetected());
  EXPECT_LT(cv::norm(audience_.Calls().at(0).Image(), image, cv::NORM_INF), 100.0);

  calibrator_->setBypassProcessing(false);
  Push(image);
  EXPECT_TRUE(calibrator_->IsDetected());
}

TEST_P(PushedFrame, IsDroppedWhileAnotherOfItsKindIsProcessed) {
  Bypass();
  audience_.HoldUpNext();
  std::thread first([&] { Push(unit::PlainImage(50)); });
  const bool held = audience_.AwaitHeld();
  Push(unit::PlainImage(100));
  audience_.Release();
  first.join();
  ASSERT_TRUE(held);
  Push(unit::PlainImage(150));
  EXPECT_EQ(audience_.Levels(), std::vector<int>({50, 150}));
}

TEST_P(PushedFrame, IsNotHinderedByOneOfTheOtherKind) {
  Bypass();
  audience_.HoldUpNext();
  std::thread first([&] { Push(unit::PlainImage(50)); });
  const bool held = audience_.AwaitHeld();
  Push(GetParam() == Kind::JPEG ? Kind::RGB : Kind::JPEG, unit::PlainImage(100));
  EXPECT_EQ(audience_.Levels(), std::vector<int>({50, 100}));
  audience_.Release();
  first.join();
  EXPECT_TRUE(held);
}

TEST_P(PushedFrame, OfNothingIsReportedAndTheStatusToldAllTheSame) {
  const std::string printed = unit::PrintedBy([&] { PushNothing(); });
  EXPECT_EQ(printed, GetParam() == Kind::JPEG ? "ERROR : Cannot convert B64 data to an image.\n"
                                              : "ERROR : Cannot process an image without data.\n");
  ASSERT_EQ(audience_.Calls().size(), 1U);
  EXPECT_TRUE(audience_.Calls().front().jpeg.empty());
  EXPECT_EQ(audience_.Calls().front().status, calibrator_->GetStatus_QVX());
  Push(unit::PlainImage(80));
  EXPECT_EQ(audience_.Calls().size(), 2U) << "the flag of the failed frame is still set";
}

TEST_P(PushedFrame, SurvivesAnExceptionOfDetection) {
  // No frame can be brought to this size.
  calibrator_ = std::make_unique<Calibrator>(unit::GRID, unit::UNIT, Calibrator::MONOCULAR, 0, 0);
  calibrator_->SetFrameListener(audience_.Listener());
  const std::string printed = unit::PrintedBy([&] { Push(unit::PlainImage(80)); });
  EXPECT_EQ(printed.substr(0, 34), "ERROR : Processing a frame failed:");
  Bypass();
  Push(unit::PlainImage(90));
  EXPECT_EQ(audience_.Levels(), std::vector<int>({80, 90}));
}

TEST_P(PushedFrame, SurvivesAListenerThatThrows) {
  Bypass();
  int calls = 0;
  calibrator_->SetFrameListener([&](const std::vector<unsigned char>&, const std::string&) {
    if (++calls == 1) throw std::runtime_error("the disk is full");
    throw 5;
  });
  const std::string printed = unit::PrintedBy([&] {
    Push(unit::PlainImage(80));
    Push(unit::PlainImage(80));
  });
  EXPECT_EQ(printed,
            "ERROR : The frame listener failed: the disk is full\n"
            "ERROR : The frame listener failed.\n");
  EXPECT_EQ(calls, 2);
}

TEST_P(PushedFrame, MayCallEverythingFromWithinTheListener) {
  int calls = 0;
  calibrator_->SetFrameListener([&](const std::vector<unsigned char>&, const std::string&) {
    ++calls;
    Push(unit::PlainImage(90));  // dropped: this one is not done
    calibrator_->AddPoints();
    calibrator_->GetStatus_QVX();
    calibrator_->Reset();
    calibrator_->RegisterCalibrationListener(nullptr, nullptr, 1, 0, 0);
    Open();
    Close();
    calibrator_->SetFrameListener(audience_.Listener());
  });
  const unit::ScopedLogLevel silent(0);
  Push(unit::ImageWithGrid());
  EXPECT_EQ(calls, 1);
  Push(unit::PlainImage(80));
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(audience_.Calls().size(), 1U);
}

TEST_P(PushedFrame, NeedsNoListener) {
  calibrator_->SetFrameListener(nullptr);
  EXPECT_EQ(unit::PrintedBy([&] { Push(unit::ImageWithGrid()); }), "");
  EXPECT_TRUE(calibrator_->IsDetected());
  EXPECT_TRUE(audience_.Calls().empty());
}

TEST_F(PushedOnce, OfAnUnsupportedImageIsReportedAndTheStatusTold) {
  for (const bool bypass : {false, true}) {
    calibrator_->setBypassProcessing(bypass);
    for (const int type : {CV_32FC3, CV_16UC1, CV_8UC2}) {
      cv::Mat image(8, 8, type, cv::Scalar::all(0));
      const size_t before = audience_.Calls().size();
      const std::string printed =
          unit::PrintedBy([&] { calibrator_->NextFrameRGB(image, 0, nullptr, false); });
      EXPECT_EQ(printed, "ERROR : Cannot process an image of OpenCV type " + std::to_string(type) +
                             ": 8 bits and 1, 3 or 4 channels are needed.\n");
      ASSERT_EQ(audience_.Calls().size(), before + 1);
      EXPECT_TRUE(audience_.Calls().back().jpeg.empty());
    }
  }
}

TEST_F(PushedOnce, LeavesTheAnnotatedFrameInTheImageAndTheFirstPixelsAlone) {
  cv::Mat image = unit::ImageWithGrid();
  const cv::Mat pixels = image;
  calibrator_->NextFrameRGB(image, 0, nullptr, false);
  EXPECT_SAME_MAT(pixels, unit::ImageWithGrid());
  EXPECT_EQ(audience_.Calls().at(0).jpeg, EncodeJpeg(image, cv::Size()));
}

TEST_F(PushedOnce, OfATextThatHoldsNoPictureIsReported) {
  std::string text = base64_encode(reinterpret_cast<const unsigned char*>("no picture"), 10);
  EXPECT_EQ(unit::PrintedBy([&] { calibrator_->NextFrameJpegB64(text, 0, nullptr, false); }),
            "ERROR : Cannot convert B64 data to an image.\n");
  EXPECT_TRUE(audience_.Calls().at(0).jpeg.empty());
}

TEST_F(PushedOnce, IntoAStereoCalibratorHandsTheFrameOutAsItIs) {
  calibrator_ = unit::MakeCalibrator(Calibrator::STEREO);
  calibrator_->SetFrameListener(audience_.Listener());
  Push(Kind::RGB, unit::PlainImage(70));
  EXPECT_EQ(audience_.Calls().at(0).Image().size(), unit::PlainImage(70).size());
}

TEST(JavaSide, RefusesToRegisterWithoutAnEnvironment) {
  const auto calibrator = unit::MakeCalibrator();
  int object = 0;
  const std::string printed = unit::PrintedBy([&] {
    calibrator->RegisterJavaVM(nullptr);
    EXPECT_FALSE(
        calibrator->RegisterCalibrationListener(nullptr, reinterpret_cast<jobject>(&object), 1, 0, 0));
  });
  EXPECT_EQ(printed.find("ERROR : "), 0U);
  EXPECT_NE(printed.find("\nERROR : Cannot register a calibration listener"), std::string::npos) << printed;
}

TEST(JavaSide, HasNothingToCallWithoutAListener) {
  const auto calibrator = unit::MakeCalibrator();
  EXPECT_EQ(unit::PrintedBy([&] {
              EXPECT_FALSE(calibrator->RegisterCalibrationListener(nullptr, nullptr, 1, 0, 0));
              calibrator->onCalibrationCallback(nullptr, {1, 2, 3}, "{}");
              cv::Mat frame = unit::PlainImage(10);
              calibrator->callbackListener(frame, nullptr);
            }),
            "");
}

}  // namespace
