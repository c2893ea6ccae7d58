/// The interactive loop for a pair with a scripted feed, screen and engine: keys, texts, images, order of the
/// steps.
#include "velmora/StereoLoop.h"

#include <gtest/gtest.h>

#include <deque>
#include <filesystem>
#include <sstream>
#include <stdexcept>

#include "TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;

constexpr int ENTER = 13;
constexpr int NO_KEY = -1;

using Journal = std::vector<std::string>;

cv::Mat Coloured(int colour) {
  return cv::Mat(4, 4, CV_8UC1, cv::Scalar(colour));
}

/// Hands out pairs of the scripted colours; the right one is lighter by one.
class ScriptedFeed final : public common::PairFeed {
 public:
  bool Take(common::FramePair& pair, std::chrono::milliseconds) override {
    if (colours.empty()) return false;
    pair = {Coloured(colours.front()), Coloured(colours.front() + 1)};
    colours.pop_front();
    return true;
  }
  bool FailedToStart() const override { return broken; }

  std::deque<int> colours;
  bool broken = false;
};

/// Presses the scripted keys, one per wait, and q once they are used up.
class ScriptedScreen final : public common::Screen {
 public:
  explicit ScriptedScreen(Journal& journal) : journal_(journal) {}

  void Show(const std::string& window, const cv::Mat& image) override {
    journal_.push_back("show " + window + " " + std::to_string(image.ptr<uchar>(0)[0]));
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

 private:
  Journal& journal_;
};

/// Finds the grid in all pairs but those of colour 0; marks the images it was given by adding 100.
class ScriptedEngine final : public app::StereoEngine {
 public:
  explicit ScriptedEngine(Journal& journal) : journal_(journal) {}

  bool Detect(common::FramePair& pair, app::PairPoints& points) override {
    const int colour = pair.left.at<uchar>(0, 0);
    journal_.push_back("detect " + std::to_string(colour));
    points.left.assign(1, cv::Point2d(colour, colour));
    points.right.assign(1, cv::Point2d(colour + 1, colour + 1));
    pair.left.setTo(colour + 100);
    pair.right.setTo(colour + 101);
    return colour != 0;
  }
  void Add(const app::PairPoints& points) override {
    added.push_back({points.left.front().x, points.right.front().x});
    ++count;
  }
  int CountSnapshots() override { return count; }
  float Compute(int model) override {
    journal_.push_back("compute " + std::to_string(model));
    if (fails) throw std::runtime_error("no solution");
    return 0.5F;
  }
  void Save(const std::string& path) override { journal_.push_back("save '" + path + "'"); }
  void Reset() override {
    journal_.push_back("reset");
    count = 0;
  }

  std::vector<std::pair<double, double>> added;
  int count = 0;
  bool fails = false;

 private:
  Journal& journal_;
};

class StereoLoop : public testing::Test {
 protected:
  int RunLoop(const std::deque<int>& colours, const std::deque<int>& keys) {
    feed_.colours = colours;
    screen_.keys = keys;
    return app::StereoLoop(engine_, feed_, screen_, options_, folders_, out_, err_).Run();
  }

  /// The names of the images in a folder.
  static std::vector<std::string> ImagesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

  support::TemporaryFolder folder_;
  app::StereoLoop::Folders folders_{folder_.File("res/left/"), folder_.File("res/right/")};
  Journal journal_;
  ScriptedFeed feed_;
  ScriptedScreen screen_{journal_};
  ScriptedEngine engine_{journal_};
  app::LoopOptions options_{Calibrator::MODEL_RATIONAL, "pair", false, cv::Size(64, 48), "webcam 3"};
  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(StereoLoop, BothImagesAreShownInWindowsOfTheirOwn) {
  EXPECT_EQ(RunLoop({1}, {'q'}), 1);
  EXPECT_EQ(journal_, (Journal{"detect 1", "show Frame 101", "show FrameRight 102", "wait 1"}));
  EXPECT_EQ(out_.str(), "Bye.\n");
}

TEST_F(StereoLoop, ARecordedPairWaits20MillisecondsForAKeyAndALiveOneOne) {
  RunLoop({1}, {'q'});
  EXPECT_EQ(journal_.back(), "wait 1");
  options_.videoFile = true;
  RunLoop({1}, {'q'});
  EXPECT_EQ(journal_.back(), "wait 20");
}

TEST_F(StereoLoop, ThreePressesWithOneFailedDetectionWriteThreeImagesASideAndAddTwoSnapshots) {
  RunLoop({1, 0, 3}, {'p', 'p', 'p'});
  EXPECT_EQ(out_.str(),
            "New points added. Total number of pictures: 1\n"
            "Failed to add points. Total number of pictures: 1\n"
            "New points added. Total number of pictures: 2\n"
            "Bye.\n");
  const std::vector<std::string> names = {"0.jpg", "1.jpg", "2.jpg"};
  EXPECT_EQ(ImagesIn(folders_.left), names);
  EXPECT_EQ(ImagesIn(folders_.right), names);
  EXPECT_EQ(engine_.added, (std::vector<std::pair<double, double>>{{1, 2}, {3, 4}}));
  EXPECT_EQ(err_.str(), "");
}

TEST_F(StereoLoop, TheFoldersAreMadeWhenTheyAreFirstNeeded) {
  RunLoop({1, 1}, {NO_KEY});
  EXPECT_FALSE(fs::exists(folders_.left));
  RunLoop({1}, {'p'});
  EXPECT_TRUE(fs::exists(folders_.left + "0.jpg"));
}

TEST_F(StereoLoop, AnImageThatCannotBeWrittenIsReportedAndTheSnapshotKept) {
  support::WriteText(folder_.File("res"), "a file where the folders should be");
  RunLoop({1}, {'p'});
  EXPECT_EQ(err_.str(), "ERROR: cannot write '" + folders_.left + "0.jpg'.\nERROR: cannot write '" +
                            folders_.right + "0.jpg'.\n");
  EXPECT_EQ(out_.str(), "New points added. Total number of pictures: 1\nBye.\n");
}

TEST_F(StereoLoop, EnterComputesSavesAndStartsOverWithoutAReview) {
  RunLoop({1, 2, 3}, {'p', ENTER, 'p'});
  EXPECT_EQ(journal_, (Journal{"detect 1",    "show Frame 101", "show FrameRight 102", "wait 1",  //
                               "detect 2",    "show Frame 102", "show FrameRight 103", "wait 1",  //
                               "close Frame", "compute 20",     "save 'pair'",         "reset",   //
                               "detect 3",    "show Frame 103", "show FrameRight 104", "wait 1",  //
                               "detect 3",    "show Frame 103", "show FrameRight 104", "wait 10"}));
  const std::string separator(57, '-');
  EXPECT_EQ(out_.str(), "New points added. Total number of pictures: 1\n\n" + separator +
                            "\n\nComputing stereo calibration, model 'rational'. This may take a while...\n"
                            "Calibration computed! Error = 0.5\n\n\n" +
                            separator + "\n\nNew points added. Total number of pictures: 1\nBye.\n");
}

TEST_F(StereoLoop, ThePictureCounterSurvivesACalibration) {
  RunLoop({1, 2, 3}, {'p', ENTER, 'p'});
  EXPECT_EQ(ImagesIn(folders_.left), (std::vector<std::string>{"0.jpg", "1.jpg"}));
}

TEST_F(StereoLoop, TheModelIsNamed) {
  for (const auto& [model, name] : {std::pair<int, std::string>{10, "classic"}, {30, "full"}}) {
    options_.model = model;
    out_.str("");
    RunLoop({1}, {ENTER});
    EXPECT_NE(
        out_.str().find("Computing stereo calibration, model '" + name + "'. This may take a while...\n"),
        std::string::npos);
  }
}

TEST_F(StereoLoop, AFailedComputationIsReportedInOneLineAndKeepsTheSnapshots) {
  engine_.fails = true;
  RunLoop({1, 2}, {'p', ENTER});
  EXPECT_EQ(err_.str(), "ERROR: the calibration failed: no solution.\n");
  EXPECT_EQ(engine_.count, 1);
}

TEST_F(StereoLoop, TheKeysGoOnWorkingOnTheLastPairOfAnEndedVideo) {
  options_.videoFile = true;
  EXPECT_EQ(RunLoop({5}, {NO_KEY, NO_KEY, 'p', 'q'}), 1);
  EXPECT_EQ(engine_.added, (std::vector<std::pair<double, double>>{{5, 6}}));
}

TEST_F(StereoLoop, APressBeforeTheFirstPairWritesNothing) {
  EXPECT_EQ(RunLoop({}, {'p'}), 1);
  EXPECT_EQ(out_.str(), "Failed to add points. Total number of pictures: 0\nBye.\n");
  EXPECT_FALSE(fs::exists(folders_.left));
}

TEST_F(StereoLoop, ASourceThatDeliversNothingAtAllIsNamed) {
  feed_.broken = true;
  EXPECT_EQ(RunLoop({}, {}), -1);
  EXPECT_EQ(err_.str(), "ERROR: cannot read webcam 3.\n");
}

}  // namespace
