/// A calibrator that reads files by itself.
#include <gtest/gtest.h>

#include <atomic>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <thread>

#include "Calibrator.h"
#include "CapturedStdout.h"
#include "TemporaryFolder.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"
#include "unit/StereoCollection.h"
#include "unit/ThreadGroup.h"

namespace {

/// Numbered images, which the capture library plays as a video.
class CalibratorCapture : public testing::Test {
 protected:
  /// What to open to have the images read, each `hold` times.
  std::string Sequence(const std::vector<cv::Mat>& images, int hold = 1) {
    int number = 0;
    for (const cv::Mat& image : images) {
      for (int i = 0; i < hold; ++i) {
        cv::imwrite(folder_.File(cv::format("picture-%03d.png", number++)), image);
      }
    }
    return folder_.File("picture-%03d.png");
  }

  /// What is printed from opening the content to closing it after its last frame. `watch` is called
  /// meanwhile.
  static std::string PrintedByReading(
      Calibrator& calibrator, const std::string& content, const std::function<void()>& watch = [] {}) {
    const support::CapturedStdout captured;
    EXPECT_TRUE(calibrator.OpenFFmpegContent(content));
    EXPECT_TRUE(unit::Eventually([&] {
      watch();
      return captured.Text().find("The source delivers no frames.") != std::string::npos;
    }));
    calibrator.CloseFFmpegContent();
    return captured.Text();
  }

  support::TemporaryFolder folder_;
};

TEST_F(CalibratorCapture, DetectsInWhatItReads) {
  const unit::ScopedLogLevel silent(0);
  const auto calibrator = unit::MakeCalibrator();
  ASSERT_TRUE(calibrator->OpenFFmpegContent(Sequence({unit::ImageWithGrid()})));
  EXPECT_TRUE(unit::Eventually([&] { return calibrator->IsDetected(); }));
  EXPECT_TRUE(calibrator->AddPoints());
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 1);
}

TEST_F(CalibratorCapture, StartsWithTheFrameAskedFor) {
  const std::string sequence = Sequence({unit::ImageWithGrid(), unit::ImageWithoutGrid()});
  const auto calibrator = unit::MakeCalibrator();
  bool detected = false;
  const std::string printed = PrintedByReading(*calibrator, sequence + " startingFrame=1",
                                               [&] { detected = detected || calibrator->IsDetected(); });
  EXPECT_FALSE(detected);
  EXPECT_EQ(printed.substr(0, printed.find('\n')), "INFO  : Start frame position set to 1");
}

TEST_F(CalibratorCapture, CalibratesFromWhatItReads) {
  const unit::ScopedLogLevel silent(0);
  const auto& views = unit::Rendered();
  const auto calibrator = unit::MakeCalibrator();
  // On the reader's thread, so that each image gives one snapshot however slow the test is.
  calibrator->SetFrameListener([&](const auto&, const auto&) { calibrator->AddPoints(); });
  ASSERT_TRUE(calibrator->OpenFFmpegContent(Sequence({views.images.begin(), views.images.begin() + 8})));
  ASSERT_TRUE(unit::Eventually([&] { return calibrator->GetNumberOfRecords() == 8; }));
  calibrator->CloseFFmpegContent();
  EXPECT_GT(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), 0.0F);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  const double focal = views.scene.camera.lens.K()(0, 0);
  EXPECT_NEAR(calibrator->GetK().at<double>(0, 0), focal, 0.01 * focal);
}

TEST_F(CalibratorCapture, AStereoCalibratorLeavesSingleFramesAlone) {
  const auto calibrator = unit::MakeCalibrator(Calibrator::STEREO);
  const std::string printed = PrintedByReading(*calibrator, Sequence({unit::ImageWithGrid()}));
  EXPECT_EQ(printed.find("ERROR"), std::string::npos) << printed;
  EXPECT_FALSE(calibrator->AddStereoPoints());
}

TEST_F(CalibratorCapture, KeepsItsProcessingSize) {
  const unit::ScopedLogLevel silent(0);
  cv::Mat large;
  cv::resize(unit::ImageWithGrid(), large, {1280, 960}, 0, 0, cv::INTER_LINEAR);
  const auto calibrator = unit::MakeCalibrator();
  ASSERT_TRUE(calibrator->OpenFFmpegContent(Sequence({large, large})));
  ASSERT_TRUE(unit::Eventually([&] { return calibrator->AddPoints(); }));
  calibrator->CloseFFmpegContent();
  for (const auto& view : unit::NoisyViews(5)) calibrator->AddPoints(view);
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  const cv::Mat K = calibrator->GetK();
  ASSERT_FALSE(K.empty());
  EXPECT_NEAR(K.at<double>(0, 2), unit::FRAME.width / 2.0, 20.0);
}

TEST_F(CalibratorCapture, TellsThatItsSourceHasEnded) {
  const unit::ScopedLogLevel silent(0);
  const auto calibrator = unit::MakeCalibrator();
  std::atomic<int> frames{0};
  std::atomic<int> framesAtEnd{-1};
  calibrator->SetFrameListener([&](const auto&, const auto&) { ++frames; });
  calibrator->SetSourceEndListener([&] {
    framesAtEnd = frames.load();
    calibrator->SetSourceEndListener({});  // as any listener may
    throw 7;
  });
  EXPECT_FALSE(calibrator->HasSourceEnded());
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(calibrator->OpenFFmpegContent(Sequence({unit::ImageWithoutGrid()}, 3)));
    EXPECT_TRUE(unit::Eventually([&] { return calibrator->HasSourceEnded(); }));
    calibrator->CloseSource();
    EXPECT_FALSE(calibrator->HasSourceEnded());
  }
  EXPECT_EQ(framesAtEnd, 3);
}

TEST_F(CalibratorCapture, ReportsASourceEndListenerThatThrows) {
  const auto calibrator = unit::MakeCalibrator();
  calibrator->SetSourceEndListener([] { throw std::runtime_error("two\nlines\n"); });
  const std::string content = Sequence({unit::ImageWithoutGrid()});
  EXPECT_EQ(unit::PrintedBy([&] {
              ASSERT_TRUE(calibrator->OpenFFmpegContent(content));
              EXPECT_TRUE(unit::Eventually([&] { return calibrator->HasSourceEnded(); }));
              calibrator->EndSources();
            }),
            "WARN  : The source delivers no frames.\nERROR : The source's listener failed: two lines\n");
}

TEST_F(CalibratorCapture, TakesASourceThatDidNotOpenForOneThatHasEnded) {
  const unit::ScopedLogLevel silent(0);
  const auto calibrator = unit::MakeCalibrator();
  std::atomic<int> told{0};
  calibrator->SetSourceEndListener([&] { ++told; });
  EXPECT_FALSE(calibrator->OpenFFmpegContent(folder_.File("missing.avi")));
  EXPECT_TRUE(calibrator->HasSourceEnded());
  EXPECT_EQ(told, 0);
  // Frames come from elsewhere now.
  cv::Mat frame = unit::ImageWithoutGrid();
  calibrator->NextFrameRGB(frame, 0, nullptr, false);
  EXPECT_FALSE(calibrator->HasSourceEnded());
  EXPECT_FALSE(calibrator->OpenFFmpegContent(folder_.File("missing.avi")));
  EXPECT_TRUE(calibrator->HasSourceEnded());
  ASSERT_TRUE(calibrator->OpenFFmpegContent(Sequence({unit::ImageWithoutGrid()}, 50)));
  EXPECT_FALSE(calibrator->OpenFFmpegContent(folder_.File("missing.avi"))) << "one is open";
  EXPECT_FALSE(calibrator->HasSourceEnded());
}

TEST_F(CalibratorCapture, DestroyingItStopsTheReaderFirst) {
  auto calibrator = unit::MakeCalibrator();
  ASSERT_TRUE(calibrator->OpenFFmpegContent(Sequence({unit::ImageWithGrid()}, 50)));
  EXPECT_TRUE(unit::Eventually([&] { return calibrator->IsDetected(); }));
  calibrator.reset();
}

TEST_F(CalibratorCapture, TheReaderDoesNothingOnAThreadThatIsNotItsOwn) {
  const auto calibrator = unit::MakeCalibrator();
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->cameraReader(); }), "");
}

TEST_F(CalibratorCapture, EachOperationHasItsWords) {
  const unit::ScopedLogLevel everything{5};
  const auto calibrator = unit::MakeCalibrator();
  const std::string sequence = Sequence({unit::ImageWithoutGrid()}, 3);
  const auto openAndClose = [&](void (Calibrator::*close)()) {
    EXPECT_TRUE(calibrator->OpenFFmpegContent(sequence));
    return unit::PrintedBy([&] { (calibrator.get()->*close)(); });
  };
  const auto contains = [](const std::string& text, const std::string& words) {
    EXPECT_NE(text.find(words), std::string::npos) << text;
  };
  contains(openAndClose(&Calibrator::CloseFFmpegContent),
           "TRACE : Waiting for FFmpeg content thread to finish\n");
  contains(openAndClose(&Calibrator::CloseFFmpegContent),
           "DEBUG : Release FFmpeg content\nDEBUG : FFmpeg content closed\n");
  contains(openAndClose(&Calibrator::CloseGstreamerPipe),
           "TRACE : Waiting for gstreamer pipe thread to finish\n");
  contains(openAndClose(&Calibrator::CloseGstreamerPipe),
           "DEBUG : Release gstreamer pipe\nDEBUG : Gstreamer pipe closed\n");
  contains(openAndClose(&Calibrator::CloseNativeCamera), "TRACE : Waiting for camera thread to finish\n");
  contains(openAndClose(&Calibrator::CloseNativeCamera), "DEBUG : Release camera\nDEBUG : Camera closed\n");
  contains(openAndClose(&Calibrator::CloseStereoNativeCamera),
           "DEBUG : Release left camera\nDEBUG : Left camera closed\n");
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->CloseFFmpegContent(); }),
            "ERROR : Can't close FFmpeg content. FFmpeg content is not opened.\n");
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->CloseGstreamerPipe(); }),
            "ERROR : Can't close gstreamer pipe. Pipe is not opened.\n");
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->CloseNativeCamera(); }),
            "ERROR : Can't close native camera. Native camera is not opened.\n");
}

TEST_F(CalibratorCapture, ClosingWhatWasNeverOpenedPrintsNothing) {
  const auto calibrator = unit::MakeCalibrator();
  EXPECT_EQ(unit::PrintedBy([&] {
              calibrator->CloseNativeCamera();
              calibrator->CloseFFmpegContent();
              calibrator->CloseGstreamerPipe();
            }),
            "");
}

TEST_F(CalibratorCapture, FramesThatCannotBeProcessedAreReportedOnceAndReadOver) {
  const cv::Mat tooLong(4000, 1, CV_8UC3, cv::Scalar::all(7));
  const cv::Mat deep(48, 64, CV_16UC1, cv::Scalar(1000));
  const auto calibrator = unit::MakeCalibrator();
  const std::string sequence = Sequence({tooLong, tooLong, deep, deep, unit::ImageWithGrid()});
  const std::string printed = PrintedByReading(*calibrator, sequence);
  const std::string before = printed.substr(0, printed.find("WARN"));
  EXPECT_EQ(
      before,
      "ERROR : A frame was left out: Cannot process a frame of 1 x 4000 pixels.\n"
      "ERROR : A frame was left out: Cannot process a frame of OpenCV type 2: 8 bits and 1, 3 or 4 channels "
      "are needed.\n");
  EXPECT_TRUE(calibrator->IsDetected()) << printed;
}

TEST_F(CalibratorCapture, ReadsWhileOthersAskAddAndReset) {
  const unit::ScopedLogLevel silent(0);
  const auto calibrator = unit::MakeCalibrator();
  const auto& views = unit::Rendered();
  const std::string sequence = Sequence({views.images.begin(), views.images.begin() + 5}, 2);
  std::atomic<bool> reading{true};
  std::atomic<int> added{0};
  unit::ThreadGroup threadGroup;
  threadGroup.Add([&] {
    for (int round = 0; round < 4; ++round) {
      EXPECT_TRUE(calibrator->OpenFFmpegContent(sequence));
      EXPECT_TRUE(unit::Eventually([&, before = added.load()] { return added > before; }));
      calibrator->CloseFFmpegContent();
    }
    reading = false;
  });
  threadGroup.Add([&] {
    while (reading) {
      added += calibrator->AddPoints() ? 1 : 0;
      std::this_thread::yield();
    }
  });
  threadGroup.Add([&] {
    while (reading) {
      calibrator->GetStatus();
      calibrator->GetStatus_QVX();
      calibrator->IsDetected();
      calibrator->Reset();
      std::this_thread::yield();
    }
  });
  threadGroup.RunToTheEnd();
  EXPECT_GE(added, 4);
}

}  // namespace
