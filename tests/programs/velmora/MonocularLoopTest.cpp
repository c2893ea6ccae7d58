/// The interactive loop with a scripted feed, screen and engine: keys, texts, order of the steps.
#include "velmora/MonocularLoop.h"

#include <gtest/gtest.h>

#include <deque>
#include <sstream>
#include <stdexcept>

namespace {

constexpr int ENTER = 13;
constexpr int NO_KEY = -1;
constexpr char SEPARATOR[] = "---------------------------------------------------------";

/// What the loop did, in order.
using Journal = std::vector<std::string>;

cv::Mat Coloured(int colour) {
  return cv::Mat(4, 4, CV_8UC1, cv::Scalar(colour));
}

/// Hands out the scripted frames; an empty one stands for "nothing new".
class ScriptedFeed final : public common::FrameFeed {
 public:
  bool Take(cv::Mat& frame, std::chrono::milliseconds patience) override {
    patiences.push_back(patience.count());
    if (frames.empty() || frames.front().empty()) {
      if (!frames.empty()) frames.pop_front();
      return false;
    }
    frame = frames.front();
    frames.pop_front();
    return true;
  }
  bool FailedToStart() const override { return broken; }

  std::deque<cv::Mat> frames;
  std::vector<long> patiences;
  bool broken = false;
};

/// Presses the scripted keys, one per wait, and q once they are used up.
class ScriptedScreen final : public common::Screen {
 public:
  explicit ScriptedScreen(Journal& journal) : journal_(journal) {}

  void Show(const std::string& window, const cv::Mat& image) override {
    journal_.push_back("show " + window + " " + std::to_string(image.ptr<uchar>(0)[0]));
    shown = image.clone();
  }
  int WaitKey(int milliseconds) override {
    journal_.push_back("wait " + std::to_string(milliseconds));
    if (keys.empty()) return 'q';
    const int key = keys.front();
    keys.pop_front();
    return key;
  }
  void Close(const std::string& window) override { journal_.push_back("close " + window); }

  std::deque<int> keys;
  cv::Mat shown;

 private:
  Journal& journal_;
};

/// Finds the grid in all frames but those of colour 0; marks the frames it was given by adding 100.
class ScriptedEngine final : public app::MonocularEngine {
 public:
  explicit ScriptedEngine(Journal& journal) : journal_(journal) {}

  bool Detect(cv::Mat& frame, std::vector<cv::Point2d>& points) override {
    const int colour = frame.at<uchar>(0, 0);
    journal_.push_back("detect " + std::to_string(colour));
    points.assign(1, cv::Point2d(colour, colour));
    frame.setTo(colour + 100);
    return colour != 0;
  }
  void Add(const std::vector<cv::Point2d>& points) override {
    added.push_back(points);
    ++count;
  }
  int CountSnapshots() override { return count; }
  float Compute(int model) override {
    journal_.push_back("compute " + std::to_string(model));
    if (!failure.empty()) throw std::runtime_error(failure);
    return error;
  }
  void Save(const std::string& path) override { journal_.push_back("save '" + path + "'"); }
  void Review() override { journal_.push_back("review"); }
  void Reset() override {
    journal_.push_back("reset");
    count = 0;
  }

  std::vector<std::vector<cv::Point2d>> added;
  int count = 0;
  float error = 0.25F;
  std::string failure;

 private:
  Journal& journal_;
};

class MonocularLoop : public testing::Test {
 protected:
  int RunLoop() { return app::MonocularLoop(engine_, feed_, screen_, options_, out_, err_).Run(); }

  /// Frames of these colours, and a key for each.
  void Script(const std::vector<int>& colours, const std::deque<int>& keys) {
    for (const int colour : colours) feed_.frames.push_back(Coloured(colour));
    screen_.keys = keys;
  }

  /// The journal's entries that begin with one of these words.
  Journal Entries(const std::vector<std::string>& words) const {
    Journal entries;
    for (const std::string& entry : journal_) {
      for (const std::string& word : words) {
        if (entry.rfind(word, 0) == 0) entries.push_back(entry);
      }
    }
    return entries;
  }

  Journal journal_;
  ScriptedFeed feed_;
  ScriptedScreen screen_{journal_};
  ScriptedEngine engine_{journal_};
  app::LoopOptions options_{Calibrator::MODEL_RATIONAL, "result", false, cv::Size(64, 48), "webcam 3"};
  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(MonocularLoop, QuittingSaysByeAndGivesStatusOne) {
  Script({1}, {'q'});
  EXPECT_EQ(RunLoop(), 1);
  EXPECT_EQ(out_.str(), "Bye.\n");
  EXPECT_EQ(err_.str(), "");
  EXPECT_EQ(journal_, (Journal{"detect 1", "show Frame 101", "wait 1"}));
}

TEST_F(MonocularLoop, ALiveFrameWaitsOneMillisecondForAKey) {
  Script({1, 2}, {NO_KEY, 'q'});
  RunLoop();
  EXPECT_EQ(Entries({"wait"}), (Journal{"wait 1", "wait 1"}));
}

TEST_F(MonocularLoop, ARecordedFrameWaits42MillisecondsForAKey) {
  options_.videoFile = true;
  Script({1, 2}, {NO_KEY, 'q'});
  RunLoop();
  EXPECT_EQ(Entries({"wait"}), (Journal{"wait 42", "wait 42"}));
}

TEST_F(MonocularLoop, LowerCasePAddsThePointsOfTheFrameOnTheScreen) {
  Script({1, 2, 3}, {'p', NO_KEY, 'p'});
  RunLoop();
  EXPECT_EQ(
      out_.str(),
      "New points added. Total number of pictures: 1\nNew points added. Total number of pictures: 2\nBye.\n");
  EXPECT_EQ(engine_.added, (std::vector<std::vector<cv::Point2d>>{{{1, 1}}, {{3, 3}}}));
}

TEST_F(MonocularLoop, WithoutTheGridInViewThePictureIsRefusedAndTheTotalUnchanged) {
  Script({1, 0}, {'p', 'p'});
  RunLoop();
  EXPECT_EQ(out_.str(),
            "New points added. Total number of pictures: 1\nFailed to add points. Total number of pictures: "
            "1\nBye.\n");
  EXPECT_EQ(engine_.added.size(), 1U);
}

TEST_F(MonocularLoop, UpperCaseLettersAndOtherKeysDoNothing) {
  Script({1, 1, 1, 1, 1, 1, 1}, {'P', 'Q', NO_KEY, 10, 27, ' ', 'p' + 0x100000});
  EXPECT_EQ(RunLoop(), 1);
  EXPECT_EQ(out_.str(), "Bye.\n");
  EXPECT_TRUE(engine_.added.empty());
  EXPECT_EQ(Entries({"compute", "close"}), Journal{});
  EXPECT_EQ(Entries({"wait"}).size(), 8U) << "Q must not quit";
}

TEST_F(MonocularLoop, EnterComputesSavesReviewsAndStartsOver) {
  Script({1, 2, 3}, {'p', ENTER, 'p'});
  RunLoop();
  EXPECT_EQ(journal_, (Journal{"detect 1", "show Frame 101", "wait 1", "detect 2", "show Frame 102", "wait 1",
                               "close Frame", "compute 20", "save 'result'", "review", "reset", "detect 3",
                               "show Frame 103", "wait 1", "detect 3", "show Frame 103", "wait 10"}));
  EXPECT_EQ(out_.str(),
            std::string("New points added. Total number of pictures: 1\n\n") + SEPARATOR +
                "\n\nComputing monocular calibration, model 'rational'. This may take a while...\n"
                "Calibration computed! Error = 0.25\n\n\n" +
                SEPARATOR + "\n\nNew points added. Total number of pictures: 1\nBye.\n");
  EXPECT_EQ(err_.str(), "");
}

TEST_F(MonocularLoop, TheSeparatorIs57Hyphens) {
  Script({1}, {ENTER});
  RunLoop();
  EXPECT_EQ(out_.str().substr(0, 60), "\n" + std::string(57, '-') + "\n\n");
}

TEST_F(MonocularLoop, TheModelIsNamedAndHandedOver) {
  const std::vector<std::pair<int, std::string>> models = {
      {10, "Computing monocular calibration, model 'classic'. This may take a while...\n"},
      {20, "Computing monocular calibration, model 'rational'. This may take a while...\n"},
      {30, "Computing monocular calibration, model 'full'. This may take a while...\n"},
      {15, ""}};
  for (const auto& [model, message] : models) {
    options_.model = model;
    out_.str("");
    journal_.clear();
    Script({1}, {ENTER});
    RunLoop();
    EXPECT_EQ(out_.str(), std::string("\n") + SEPARATOR + "\n\n" + message +
                              "Calibration computed! Error = 0.25\n\n\n" + SEPARATOR + "\n\nBye.\n");
    EXPECT_EQ(Entries({"compute"}), Journal{"compute " + std::to_string(model)});
  }
}

TEST_F(MonocularLoop, TheErrorIsPrintedAsAFloatInTheDefaultFormat) {
  engine_.error = 0.123456789F;
  Script({1}, {ENTER});
  RunLoop();
  EXPECT_NE(out_.str().find("Calibration computed! Error = 0.123457\n\n"), std::string::npos);
}

TEST_F(MonocularLoop, WhenNothingWasComputedTheLoopCarriesOnAllTheSame) {
  engine_.error = -1.0F;
  Script({1}, {ENTER});
  EXPECT_EQ(RunLoop(), 1);
  EXPECT_NE(out_.str().find("Calibration computed! Error = -1\n\n"), std::string::npos);
  EXPECT_EQ(Entries({"compute", "save", "review", "reset"}),
            (Journal{"compute 20", "save 'result'", "review", "reset"}));
}

TEST_F(MonocularLoop, AFailedComputationIsReportedInOneLineAndKeepsTheSnapshots) {
  engine_.failure = "first line:\n second line\n";
  Script({1, 2, 3}, {'p', ENTER, 'p'});
  EXPECT_EQ(RunLoop(), 1);
  EXPECT_EQ(err_.str(), "ERROR: the calibration failed: first line: second line.\n");
  EXPECT_EQ(out_.str(),
            std::string("New points added. Total number of pictures: 1\n\n") + SEPARATOR +
                "\n\nComputing monocular calibration, model 'rational'. This may take a while...\n\n" +
                SEPARATOR + "\n\nNew points added. Total number of pictures: 2\nBye.\n");
  EXPECT_EQ(Entries({"save", "review", "reset"}), Journal{});
}

TEST_F(MonocularLoop, TheKeysGoOnWorkingOnTheLastFrameOfAnEndedVideo) {
  options_.videoFile = true;
  Script({5}, {NO_KEY, NO_KEY, 'p', NO_KEY, NO_KEY, ENTER, NO_KEY, 'q'});
  EXPECT_EQ(RunLoop(), 1);
  EXPECT_EQ(engine_.added, (std::vector<std::vector<cv::Point2d>>{{{5, 5}}}));
  EXPECT_EQ(journal_, (Journal{"detect 5", "show Frame 105", "wait 42",  // the only frame
                               "wait 10", "wait 10",                     // p
                               "detect 5", "show Frame 105", "wait 10", "wait 10", "wait 10",    // ENTER
                               "close Frame", "compute 20", "save 'result'", "review", "reset",  //
                               "detect 5", "show Frame 105", "wait 10", "wait 10"}));
}

TEST_F(MonocularLoop, APictureThatWasRefusedNeedsNoNewDetection) {
  Script({0}, {NO_KEY, 'p', NO_KEY, NO_KEY});
  RunLoop();
  EXPECT_EQ(Entries({"detect"}), Journal{"detect 0"});
}

TEST_F(MonocularLoop, AWindowClosedByItsUserComesBack) {
  Script({5}, std::deque<int>(101, NO_KEY));
  RunLoop();
  EXPECT_EQ(Entries({"detect", "show"}),
            (Journal{"detect 5", "show Frame 105", "show Frame 105", "show Frame 105"}));
}

TEST_F(MonocularLoop, TheFirstFrameIsAwaitedForOneSecondAndTheOthersNotAtAll) {
  Script({1, 2}, {NO_KEY, NO_KEY, NO_KEY});
  RunLoop();
  EXPECT_EQ(feed_.patiences, (std::vector<long>{1000, 0, 0, 0}));
}

TEST_F(MonocularLoop, ASourceWithoutAFrameYetIsWaitedForBehindAPictureThatSaysSo) {
  feed_.frames = {cv::Mat(), cv::Mat(), Coloured(4)};
  screen_.keys = {NO_KEY, 'p', NO_KEY};
  EXPECT_EQ(RunLoop(), 1);
  EXPECT_EQ(journal_, (Journal{"show Frame 0", "wait 10", "wait 10", "detect 4", "show Frame 104", "wait 1",
                               "wait 10"}));
  EXPECT_EQ(out_.str(), "Failed to add points. Total number of pictures: 0\nBye.\n");
}

TEST_F(MonocularLoop, TheWaitingPictureHasTheProcessingSizeAndSomethingToRead) {
  options_.size = cv::Size(640, 480);
  RunLoop();
  EXPECT_EQ(screen_.shown.size(), cv::Size(640, 480));
  const cv::Scalar mean = cv::mean(screen_.shown);
  EXPECT_GT(mean[0], 0.5);
  EXPECT_LT(mean[0], 20.0);
}

TEST_F(MonocularLoop, TheWaitingPictureReturnsAfterEnter) {
  Script({}, {ENTER, NO_KEY});
  EXPECT_EQ(RunLoop(), 1);
  EXPECT_EQ(journal_, (Journal{"show Frame 0", "wait 10", "close Frame", "compute 20", "save 'result'",
                               "review", "reset", "show Frame 0", "wait 10", "wait 10"}));
}

TEST_F(MonocularLoop, ASourceThatDeliversNothingAtAllIsNamed) {
  feed_.broken = true;
  EXPECT_EQ(RunLoop(), -1);
  EXPECT_EQ(err_.str(), "ERROR: cannot read webcam 3.\n");
  EXPECT_EQ(out_.str(), "");
  EXPECT_EQ(journal_, Journal{});
}

TEST_F(MonocularLoop, TheFrameItselfIsLeftUndecorated) {
  const cv::Mat frame = Coloured(9);
  feed_.frames = {frame};
  RunLoop();
  EXPECT_EQ(frame.at<uchar>(0, 0), 9);
}

}  // namespace
