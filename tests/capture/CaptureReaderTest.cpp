/// The reader's turns, its end, and what sources may do to it.
#include "capture/CaptureReader.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>

#include "capture/ReaderFixture.h"
#include "unit/ThreadGroup.h"

using namespace velmora;

namespace {

using Clock = std::chrono::steady_clock;

class Reader : public unit::ReaderFixture {
 protected:
  Reader() { left->deliver = Frames({640, 480}); }
  ~Reader() override { reader.reset(); }

  /// What is printed until the source was asked that many more times, and by closing.
  std::string PrintedInGrabs(int count) {
    return unit::PrintedBy([&] {
      EXPECT_TRUE(OpenCamera());
      EXPECT_TRUE(unit::Eventually([&] { return left->grabs >= count; }));
      reader->Close(words);
    });
  }
};

TEST_F(Reader, HandsOnEachFrameOfOneCamera) {
  ASSERT_TRUE(OpenCamera());
  const CapturedViews views = NextViews();
  EXPECT_EQ(views.frame.size(), cv::Size(640, 480));
  EXPECT_TRUE(views.right.empty());
  EXPECT_FALSE(views.pair);
  EXPECT_TRUE(reader->Running());
}

TEST_F(Reader, SplitsFramesOfASideBySideCamera) {
  left->reported[cv::CAP_PROP_FRAME_WIDTH] = 1280;
  left->deliver = Frames({1281, 480});
  ASSERT_TRUE(OpenCamera(0, 2));
  const CapturedViews views = NextViews();
  EXPECT_EQ(views.frame.size(), cv::Size(640, 480));
  EXPECT_EQ(views.right.size(), cv::Size(640, 480));
  EXPECT_FALSE(views.pair);
}

TEST_F(Reader, ReadsOnAfterEmptyFramesAndSaysSoOnce) {
  std::atomic<int> asked{0};
  left->deliver = [&] { return ++asked <= 3 ? cv::Mat() : Frames({640, 480})(); };
  const std::string printed = unit::PrintedBy([&] {
    ASSERT_TRUE(OpenCamera());
    EXPECT_FALSE(NextViews().frame.empty());
    reader.reset();
  });
  EXPECT_EQ(printed, "WARN  : The source delivers no frames.\n");
  EXPECT_GE(asked, 4);
}

TEST_F(Reader, PausesAfterAnEmptyFrame) {
  left->deliver = [] { return cv::Mat(); };
  ASSERT_TRUE(OpenCamera());
  const auto start = Clock::now();
  ASSERT_TRUE(unit::Eventually([&] { return left->grabs >= 4; }));
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(3 * 32 - 20));
}

/// A source of three frames, and nothing more.
class ReaderOfAFile : public Reader {
 protected:
  ReaderOfAFile() {
    left->deliver = [this] { return ++asked_ <= 3 ? Frames({640, 480})() : cv::Mat(); };
  }
  bool AwaitEnd() {
    return unit::Eventually([&] { return ends > 0; });
  }

  std::atomic<int> asked_{0};
};

TEST_F(ReaderOfAFile, TellsItsEndOnceAfterItsLastFrame) {
  EXPECT_FALSE(reader->SourceEnded());
  int endsAtLastFrame = -1;
  onViews = [&](CapturedViews&) { endsAtLastFrame = ends; };
  const std::string printed = unit::PrintedBy([&] {
    ASSERT_TRUE(reader->OpenContent("video"));
    ASSERT_TRUE(AwaitEnd());
    const int grabs = left->grabs;
    ASSERT_TRUE(unit::Eventually([&] { return left->grabs > grabs + 12; })) << "it may go on";
    EXPECT_TRUE(reader->SourceEnded());
    EXPECT_TRUE(reader->Running());
    reader->Close(words);
  });
  EXPECT_EQ(processed, 3);
  EXPECT_EQ(endsAtLastFrame, 0);
  EXPECT_EQ(ends, 1);
  EXPECT_FALSE(reader->SourceEnded());
  EXPECT_EQ(printed, "WARN  : The source delivers no frames.\nDEBUG : releasing\nDEBUG : closed\n");
}

TEST_F(ReaderOfAFile, TakesAPipelinesEndForOneToo) {
  ASSERT_TRUE(reader->OpenPipe("pipe"));
  EXPECT_TRUE(AwaitEnd());
}

TEST_F(ReaderOfAFile, ForgetsAnEndWhenFramesComeAgain) {
  ASSERT_TRUE(reader->OpenContent("stream"));
  ASSERT_TRUE(AwaitEnd());
  asked_ = 2;
  EXPECT_TRUE(unit::Eventually([&] { return ends == 2; })) << "told again after the next frames";
  EXPECT_EQ(processed, 4);
}

TEST_F(ReaderOfAFile, ForgetsAnEndWithTheNextOpenAndOnRequest) {
  ASSERT_TRUE(reader->OpenContent("video"));
  ASSERT_TRUE(AwaitEnd());
  reader->ForgetEnd();
  EXPECT_FALSE(reader->SourceEnded());
  reader->Close(words);
  reader->NoteFailedOpen();
  EXPECT_TRUE(reader->SourceEnded());
  left->deliver = Frames({640, 480});
  ASSERT_TRUE(OpenCamera());
  EXPECT_FALSE(reader->SourceEnded());
  reader->NoteFailedOpen();  // of an Open that was refused while this one is read
  EXPECT_FALSE(reader->SourceEnded());
}

TEST_F(ReaderOfAFile, DoesNotTakeASilentCameraForOneThatHasEnded) {
  ASSERT_TRUE(OpenCamera());
  ASSERT_TRUE(unit::Eventually([&] { return left->grabs > 15; }));
  EXPECT_EQ(ends, 0);
  EXPECT_FALSE(reader->SourceEnded());
}

TEST_F(Reader, TellsTheEndOfACameraThatIsGoneButNotOfOneThatIsClosed) {
  ASSERT_TRUE(OpenCamera());
  NextViews();
  reader->Close(words);
  EXPECT_EQ(ends, 0);
  ASSERT_TRUE(OpenCamera());
  NextViews();
  left->opened = false;
  EXPECT_TRUE(unit::Eventually([&] { return ends == 1; }));
  EXPECT_TRUE(reader->SourceEnded());
}

TEST_F(Reader, EndsWithinATenthOfASecondWithoutFrames) {
  left->deliver = [] { return cv::Mat(); };
  std::vector<Clock::duration> waits;
  for (int round = 0; round < 5; ++round) {
    ASSERT_TRUE(OpenCamera());
    const int before = left->grabs;
    ASSERT_TRUE(unit::Eventually([&] { return left->grabs > before; }));
    const auto start = Clock::now();
    reader->Close(words);
    waits.push_back(Clock::now() - start);
  }
  EXPECT_LT(*std::min_element(waits.begin(), waits.end()), std::chrono::milliseconds(100));
}

TEST_F(Reader, APairWithoutARightFrameIsNotProcessed) {
  std::atomic<bool> silent{true};
  right->deliver = [&] { return silent ? cv::Mat() : Frames({640, 480})(); };
  ASSERT_TRUE(reader->OpenCameraPair(0, 1, Vga()));
  ASSERT_TRUE(unit::Eventually([&] { return right->grabs >= 3; }));
  EXPECT_EQ(processed, 0);
  silent = false;
  EXPECT_TRUE(NextViews().pair);
  reader.reset();
}

TEST_F(Reader, AnExceptionOfTheSourceIsReportedOnceAndReadOver) {
  left->deliver = [&]() -> cv::Mat {
    if (left->grabs <= 3) throw std::runtime_error("broken frame " + std::to_string(left->grabs));
    return Frames({640, 480})();
  };
  const std::string printed = PrintedInGrabs(6);
  EXPECT_EQ(printed.substr(0, printed.find('\n')), "ERROR : The source failed: broken frame 1");
  EXPECT_EQ(printed.find("ERROR", 1), std::string::npos) << printed;
  EXPECT_GE(processed, 1);
}

TEST_F(Reader, AnExceptionOfTheProcessingIsReportedOnceAndReadOver) {
  onViews = [](CapturedViews&) { throw std::runtime_error("cannot be\nprocessed"); };
  const std::string printed = PrintedInGrabs(5);
  EXPECT_EQ(printed.substr(0, printed.find('\n')), "ERROR : A frame was left out: cannot be");
  EXPECT_EQ(printed.find("ERROR", 1), std::string::npos) << printed;
  EXPECT_GE(processed, 4);
}

TEST_F(Reader, ACauseIsReportedAgainInTheNextRun) {
  onViews = [](CapturedViews&) { throw std::runtime_error("cause"); };
  EXPECT_NE(PrintedInGrabs(2).find("cause"), std::string::npos);
  EXPECT_NE(PrintedInGrabs(left->grabs + 2).find("cause"), std::string::npos);
}

TEST_F(Reader, FramesTooNarrowToSplitAreReportedOnce) {
  left->reported[cv::CAP_PROP_FRAME_WIDTH] = 1280;
  left->deliver = Frames({1, 480});
  const std::string printed = PrintedInGrabs(3);
  const std::string line = "ERROR : Cannot split a frame one pixel wide.\n";
  ASSERT_NE(printed.find(line), std::string::npos) << printed;
  EXPECT_EQ(printed.find(line), printed.rfind(line));
  EXPECT_EQ(processed, 0);
}

TEST_F(Reader, EndsByItselfWhenTheSourceIsNoLongerOpen) {
  const std::string printed = unit::PrintedBy([&] {
    ASSERT_TRUE(OpenCamera());
    NextViews();
    left->opened = false;
    EXPECT_TRUE(unit::Eventually([&] { return !reader->Running(); }));
    reader->Close(words);
  });
  EXPECT_EQ(printed, "WARN  : The source is no longer open. Reading ends.\nERROR : not opened\n");
  EXPECT_TRUE(OpenCamera()) << "opens again";
  EXPECT_FALSE(NextViews().frame.empty());
}

TEST_F(Reader, ACloseWaitsForTheFrameAtHand) {
  std::promise<void> entered;
  std::promise<void> leave;
  std::atomic<bool> finished{false};
  bool first = true;
  onViews = [&](CapturedViews&) {
    if (!first) return;
    first = false;
    entered.set_value();
    leave.get_future().wait();
    finished = true;
  };
  ASSERT_TRUE(OpenCamera());
  entered.get_future().wait();
  auto closing = std::async(std::launch::async, [&] {
    reader->Close(words);
    return finished.load();
  });
  ASSERT_TRUE(unit::Eventually([&] { return reader->StopRequested(); }));
  EXPECT_TRUE(left->opened);
  leave.set_value();
  EXPECT_TRUE(closing.get());
  EXPECT_FALSE(left->opened);
}

TEST_F(Reader, DestroyingItStopsItFirst) {
  ASSERT_TRUE(reader->OpenCameraPair(0, 1, Vga()));
  reader.reset();
  EXPECT_FALSE(left->opened);
  EXPECT_FALSE(right->opened);
}

TEST_F(Reader, ACloseOnItsOwnThreadReleasesTheSourceAndEndsIt) {
  onViews = [&](CapturedViews&) { reader->Close(words); };
  const unit::ScopedLogLevel everything{5};
  const std::string printed = unit::PrintedBy([&] {
    ASSERT_TRUE(OpenCamera());
    EXPECT_TRUE(unit::Eventually([&] { return processed == 1 && !reader->Running(); }));
  });
  EXPECT_EQ(printed, "TRACE : waiting\nDEBUG : releasing\nDEBUG : closed\n");
  EXPECT_FALSE(left->opened);
  onViews = [](CapturedViews&) {};
  EXPECT_TRUE(OpenCamera()) << "opens again";
  EXPECT_FALSE(NextViews().frame.empty());
}

TEST_F(Reader, AnOpenOnItsOwnThreadIsRefused) {
  std::promise<std::string> answers;
  bool first = true;
  onViews = [&](CapturedViews&) {
    if (!first) return;
    first = false;
    answers.set_value(unit::PrintedBy([&] {
      EXPECT_FALSE(OpenCamera());
      reader->Close(words);
      EXPECT_FALSE(OpenCamera());
    }));
  };
  ASSERT_TRUE(OpenCamera());
  EXPECT_EQ(answers.get_future().get(),
            "ERROR : Native camera is already opened.\nDEBUG : releasing\nDEBUG : closed\n"
            "ERROR : A source cannot be opened on the reader's own thread.\n");
}

TEST_F(Reader, ReadingOnAnotherThreadReturnsAtOnce) {
  reader->Read([](CapturedViews&) { ADD_FAILURE(); });
  ASSERT_TRUE(OpenCamera());
  reader->Read([](CapturedViews&) { ADD_FAILURE(); });
}

TEST_F(Reader, OpensAndClosesOfManyThreadsAtOnceLeaveOneState) {
  const unit::ScopedLogLevel silent(0);
  right->deliver = Frames({640, 480});
  onViews = [&](CapturedViews&) {
    if (processed % 50 == 0) reader->Close(words);
  };
  std::atomic<int> opened{0};
  unit::ThreadGroup threadGroup;
  for (int thread = 0; thread < 4; ++thread) {
    threadGroup.Add([&, thread] {
      for (int round = 0; round < 25; ++round) {
        opened += thread % 2 == 0 ? OpenCamera() : reader->OpenCameraPair(0, 1, Vga());
        reader->Format();
        if (thread == 0) reader->Close(words);
        reader->ClosePair();
      }
    });
  }
  threadGroup.RunToTheEnd();
  EXPECT_GE(opened, 1);
  reader->ClosePair();
  EXPECT_FALSE(reader->Running());
  EXPECT_FALSE(left->opened);
  EXPECT_FALSE(right->opened);
  onViews = [](CapturedViews&) {};
  ASSERT_TRUE(OpenCamera());
  EXPECT_FALSE(NextViews().frame.empty());
}

}  // namespace
