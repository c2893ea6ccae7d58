/// The flow of frames from sources and pushes to listeners, without a calibrator.
#include "calibrator/FrameFlow.h"

#include <gtest/gtest.h>

#include <future>

#include "calibrator/Pushes.h"
#include "capture/FakeSource.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

class Flowing : public ::testing::Test {
 protected:
  /// Marks each frame that comes by, and counts them.
  FrameWork Work() {
    return {[this](CapturedViews& views) {
              views.frame.at<cv::Vec3b>(0, 0) = {9, 8, 7};
              ++processed_;
              pair_ = views.pair;
            },
            [](const cv::Mat& frame) { return frame.cols == 13 ? "thirteen is too wide" : ""; },
            [this] { return "status " + std::to_string(processed_.load()); }};
  }
  std::unique_ptr<FrameFlow> NewFlow() {
    return std::make_unique<FrameFlow>(Work(), this,
                                       [this] { return std::make_unique<unit::FakeSource>(device_); });
  }
  static cv::Mat Picture(int width = 16) { return cv::Mat(12, width, CV_8UC3, cv::Scalar::all(50)); }

  std::shared_ptr<unit::FakeDevice> device_ = std::make_shared<unit::FakeDevice>();
  std::atomic<int> processed_{0};
  std::atomic<bool> pair_{false};
  unit::Audience audience_;
  std::unique_ptr<FrameFlow> flow_ = NewFlow();
};

TEST_F(Flowing, ProcessesAPushedImageInPlaceAndHandsItOn) {
  flow_->SetFrameListener(audience_.Listener());
  cv::Mat image = Picture();
  flow_->PushRgb(image, 1, nullptr, false);
  EXPECT_EQ(image.at<cv::Vec3b>(0, 0), cv::Vec3b(9, 8, 7));
  ASSERT_EQ(audience_.Calls().size(), 1U);
  EXPECT_EQ(audience_.Calls()[0].status, "status 1");
  EXPECT_EQ(audience_.Calls()[0].Image().size(), cv::Size(16, 12));
}

TEST_F(Flowing, HandsFramesOnAsTheyAreWhenProcessingIsBypassed) {
  flow_->SetBypass(true);
  flow_->SetFrameListener(audience_.Listener());
  cv::Mat image = Picture();
  flow_->PushRgb(image, 1, nullptr, false);
  EXPECT_EQ(processed_, 0);
  EXPECT_EQ(audience_.Calls().size(), 1U);
}

TEST_F(Flowing, TellsTheStatusWithoutAPictureWhenATextIsNone) {
  flow_->SetFrameListener(audience_.Listener());
  std::string text = "no picture";
  EXPECT_EQ(unit::PrintedBy([&] { flow_->PushJpeg(text, 1, nullptr, false); }),
            "ERROR : Cannot convert B64 data to an image.\n");
  ASSERT_EQ(audience_.Calls().size(), 1U);
  EXPECT_TRUE(audience_.Calls()[0].jpeg.empty());
}

TEST_F(Flowing, GoesOnWhenProcessingOrAListenerThrows) {
  FrameWork work = Work();
  work.process = [](CapturedViews&) { throw std::runtime_error("no luck"); };
  FrameFlow flow(work, this);
  flow.SetFrameListener([](const std::vector<unsigned char>&, const std::string&) { throw 7; });
  cv::Mat image = Picture();
  EXPECT_EQ(unit::PrintedBy([&] { flow.PushRgb(image, 1, nullptr, false); }),
            "ERROR : Processing a frame failed: no luck\nERROR : The frame listener failed.\n");
}

TEST_F(Flowing, WorksOnTheGrabbersThreadWhenItIsOpen) {
  flow_->SetFrameListener(audience_.Listener());
  unit::PrintedBy([&] {
    flow_->OpenJpegGrabber();
    std::string text = unit::JpegB64(Picture());
    flow_->PushJpeg(text, 1, nullptr, false);
    EXPECT_TRUE(audience_.AwaitCalls(1));
    flow_->End();
  });
  EXPECT_NE(audience_.Calls()[0].thread, std::this_thread::get_id());
}

TEST_F(Flowing, ReadsASourceUntilItEndsAndSaysSo) {
  std::atomic<int> left{3};
  device_->deliver = [&] { return left-- > 0 ? Picture() : cv::Mat(); };
  std::promise<void> ended;
  flow_->SetFrameListener(audience_.Listener());
  flow_->SetSourceEndListener([&] { ended.set_value(); });
  unit::PrintedBy([&] {
    ASSERT_TRUE(flow_->OpenContent("film.avi"));
    ASSERT_EQ(ended.get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready);
    flow_->CloseSource();
  });
  EXPECT_EQ(processed_, 3);
  EXPECT_FALSE(pair_);
  EXPECT_EQ(audience_.Calls().size(), 3U);
}

TEST_F(Flowing, SaysOnceWhatItCannotProcessOfASource) {
  std::atomic<int> left{5};
  device_->deliver = [&] { return left-- > 0 ? Picture(13) : cv::Mat(); };
  std::promise<void> ended;
  flow_->SetSourceEndListener([&] { ended.set_value(); });
  const std::string printed = unit::PrintedBy([&] {
    ASSERT_TRUE(flow_->OpenContent("film.avi"));
    ASSERT_EQ(ended.get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready);
    flow_->CloseSource();
  });
  EXPECT_EQ(processed_, 0);
  const size_t first = printed.find("thirteen is too wide");
  ASSERT_NE(first, std::string::npos);
  EXPECT_EQ(printed.find("thirteen is too wide", first + 1), std::string::npos);
}

TEST_F(Flowing, NotesASourceThatCannotBeOpened) {
  device_->opens = [](const std::string&) { return false; };
  unit::PrintedBy([&] { EXPECT_FALSE(flow_->OpenContent("film.avi")); });
  EXPECT_TRUE(flow_->HasSourceEnded());
  cv::Mat image = Picture();
  flow_->PushRgb(image, 1, nullptr, false);
  EXPECT_FALSE(flow_->HasSourceEnded());
}

TEST_F(Flowing, LetsNobodyElseRunItsThreadsBodies) {
  EXPECT_EQ(unit::PrintedBy([&] {
              flow_->ReadSource();
              flow_->GrabJpegs();
              flow_->GrabRgb();
            }),
            "");
}

}  // namespace
