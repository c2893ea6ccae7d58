/// The arguments of the headless tool.
#include "batch/Arguments.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "Calibrator.h"
#include "common/LensModels.h"

namespace {

batch::Parsed Parse(std::vector<std::string> words) {
  words.insert(words.begin(), "velmora-batch");
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  return batch::ParseArguments(static_cast<int>(words.size()), argv.data());
}

TEST(BatchArguments, DefaultsSuitTheShippedGrid) {
  const batch::Parsed parsed = Parse({"a.png"});
  ASSERT_TRUE(parsed.run);
  const batch::Arguments& arguments = parsed.arguments;
  EXPECT_EQ(arguments.inputs, std::vector<std::string>{"a.png"});
  EXPECT_FLOAT_EQ(arguments.hdist, 0.2F);
  EXPECT_EQ(arguments.model, common::MODEL_AUTO);
  EXPECT_EQ(arguments.grid, cv::Size(4, 11));
  EXPECT_EQ(arguments.frame, cv::Size(0, 0));
  EXPECT_EQ(arguments.maxViews, 30);
  EXPECT_EQ(arguments.finder, Calibrator::FINDER_ROBUST);
  EXPECT_EQ(arguments.output, "calibration");
  EXPECT_FALSE(arguments.strict);
}

TEST(BatchArguments, PartsAreViewsWhereTheSearchAndTheSolverSuitUnlessWholeGridsAreAskedFor) {
  EXPECT_TRUE(Parse({"a.png"}).arguments.TakesParts());
  EXPECT_FALSE(Parse({"a.png", "--whole-grids"}).arguments.TakesParts());
  EXPECT_FALSE(Parse({"a.png", "--finder", "standard"}).arguments.TakesParts());
  EXPECT_FALSE(Parse({"a.png", "--solver", "opencv"}).arguments.TakesParts());
}

TEST(BatchArguments, EveryOptionReachesItsSetting) {
  const batch::Parsed parsed =
      Parse({"a.png",    "b.avi", "--hdist",      "0.25", "--model",     "full", "--width",  "800",
             "--height", "600",   "--grid",       "3x9",  "--max-views", "12",   "--output", "out/left",
             "--every",  "7",     "--max-frames", "0"});
  ASSERT_TRUE(parsed.run);
  const batch::Arguments& arguments = parsed.arguments;
  EXPECT_EQ(arguments.inputs, (std::vector<std::string>{"a.png", "b.avi"}));
  EXPECT_FLOAT_EQ(arguments.hdist, 0.25F);
  EXPECT_EQ(arguments.model, Calibrator::MODEL_FULL);
  EXPECT_EQ(arguments.frame, cv::Size(800, 600));
  EXPECT_EQ(arguments.grid, cv::Size(3, 9));
  EXPECT_EQ(arguments.maxViews, 12);
  EXPECT_EQ(arguments.output, "out/left");
  EXPECT_EQ(arguments.sampling.every, 7);
  EXPECT_EQ(arguments.sampling.maxFrames, 0);
}

TEST(BatchArguments, ThereAreAsManyThreadsAsCoresUnlessANumberIsGiven) {
  EXPECT_EQ(Parse({"a.png"}).arguments.Threads(),
            static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, 256U)));
  EXPECT_EQ(Parse({"a.png", "--threads", "1"}).arguments.Threads(), 1);
  EXPECT_EQ(Parse({"a.png", "--threads", "256"}).arguments.Threads(), 256);
}

TEST(BatchArguments, TheSearchIsChosenByName) {
  EXPECT_EQ(Parse({"a.png", "--finder", "standard"}).arguments.finder, Calibrator::FINDER_STANDARD);
  EXPECT_EQ(Parse({"a.png", "--finder", "robust"}).arguments.finder, Calibrator::FINDER_ROBUST);
  EXPECT_EQ(Parse({"a.png", "--finder", "other"}).exitStatus, 2);
}

TEST(BatchArguments, CentresAreFineUnlessPlainOnesAreAskedFor) {
  EXPECT_TRUE(Parse({"a.png"}).arguments.fineCentres);
  EXPECT_TRUE(Parse({"a.png", "--centres", "fine"}).arguments.fineCentres);
  EXPECT_FALSE(Parse({"a.png", "--centres", "plain"}).arguments.fineCentres);
  EXPECT_EQ(Parse({"a.png", "--centres", "other"}).exitStatus, 2);
}

TEST(BatchArguments, TheSparseSolverAndTheUsualDiscAreTheDefault) {
  const batch::Arguments arguments = Parse({"a.png"}).arguments;
  EXPECT_EQ(arguments.solver, Calibrator::SOLVER_SPARSE);
  EXPECT_LT(arguments.disc, 0.0);
}

TEST(BatchArguments, TheSolverAndTheDiscCanBeChosen) {
  const batch::Parsed parsed = Parse({"a.png", "--solver", "opencv", "--disc", "0"});
  ASSERT_TRUE(parsed.run);
  EXPECT_EQ(parsed.arguments.solver, Calibrator::SOLVER_OPENCV);
  EXPECT_EQ(parsed.arguments.disc, 0.0);
  EXPECT_EQ(Parse({"a.png", "--solver", "sparse"}).arguments.solver, Calibrator::SOLVER_SPARSE);
  EXPECT_FALSE(Parse({"a.png", "--solver", "guess"}).run);
  EXPECT_FALSE(Parse({"a.png", "--disc", "-0.01"}).run);
}

TEST(BatchArguments, TheResultsNameMayHaveItsExtension) {
  EXPECT_EQ(Parse({"a.png", "--output", "out/left.json"}).arguments.output, "out/left");
  EXPECT_EQ(Parse({"a.png", "--output", ".json"}).exitStatus, 2);
  EXPECT_EQ(Parse({"a.png", "--output", "out/"}).exitStatus, 2);
}

TEST(BatchArguments, AWorthlessResultGetsAStatusOfItsOwnOnDemand) {
  EXPECT_TRUE(Parse({"a.png", "--strict"}).arguments.strict);
}

TEST(BatchArguments, PosesAreRecordedFromOneCameraOnly) {
  const batch::Parsed parsed = Parse({"a.png", "--record-model", "poses.json"});
  ASSERT_TRUE(parsed.run);
  EXPECT_EQ(parsed.arguments.recordModel, "poses.json");
  EXPECT_EQ(Parse({"a.png"}).arguments.recordModel, "");
  EXPECT_EQ(Parse({"a.png", "--record-model", "poses.json", "--split", "vertical"}).exitStatus, 2);
}

TEST(BatchArguments, APairIsGivenByTwoInputsOrASplit) {
  EXPECT_FALSE(Parse({"a.png"}).arguments.IsPair());
  const batch::Parsed lists = Parse({"l1.png", "l2.png", "--right", "r1.png", "r2.png"});
  ASSERT_TRUE(lists.run);
  EXPECT_TRUE(lists.arguments.IsPair());
  EXPECT_EQ(lists.arguments.inputs, (std::vector<std::string>{"l1.png", "l2.png"}));
  EXPECT_EQ(lists.arguments.rightInputs, (std::vector<std::string>{"r1.png", "r2.png"}));
  const batch::Parsed split = Parse({"a.avi", "--split", "vertical"});
  ASSERT_TRUE(split.run);
  EXPECT_TRUE(split.arguments.IsPair());
  EXPECT_EQ(split.arguments.split, common::Split::Vertical);
  EXPECT_EQ(Parse({"a.avi", "--split", "horizontal"}).arguments.split, common::Split::Horizontal);
}

TEST(BatchArguments, LensesAreRefinedForPairsOfTheSparseSolverOnly) {
  EXPECT_FALSE(Parse({"a.png", "--right", "b.png"}).arguments.refineLenses);
  EXPECT_TRUE(Parse({"a.png", "--right", "b.png", "--refine-lenses"}).arguments.refineLenses);
  EXPECT_EQ(Parse({"a.png", "--refine-lenses"}).exitStatus, 2);
  EXPECT_EQ(Parse({"a.png", "--split", "vertical", "--refine-lenses", "--solver", "opencv"}).exitStatus, 2);
}

TEST(BatchArguments, ResultFilesOfThePairsCamerasAllowEveryModel) {
  const batch::Parsed parsed = Parse({"a.avi", "--split", "vertical", "--calib_left", "l.json",
                                      "--calib_right", "r.json", "--model", "classic"});
  ASSERT_TRUE(parsed.run);
  EXPECT_EQ(parsed.arguments.calibLeft, "l.json");
  EXPECT_EQ(parsed.arguments.calibRight, "r.json");
}

TEST(BatchArguments, ARigIsGivenByAnInputOfEachCamera) {
  EXPECT_FALSE(Parse({"a.png"}).arguments.IsRig());
  const batch::Parsed parsed = Parse({"--rig", "left/", "middle/", "right.avi", "--hdist", "0.3"});
  ASSERT_TRUE(parsed.run);
  EXPECT_TRUE(parsed.arguments.IsRig());
  EXPECT_FALSE(parsed.arguments.IsPair());
  EXPECT_EQ(parsed.arguments.rig, (std::vector<std::string>{"left/", "middle/", "right.avi"}));
  EXPECT_EQ(parsed.arguments.match, batch::Match::Order);
  EXPECT_TRUE(parsed.arguments.intrinsics.empty());
  EXPECT_EQ(parsed.arguments.model, Calibrator::MODEL_RATIONAL);
  const batch::Parsed named = Parse(
      {"--rig", "a", "b", "--match", "names", "--intrinsics", "a.json", "b.json", "--model", "classic"});
  ASSERT_TRUE(named.run);
  EXPECT_EQ(named.arguments.match, batch::Match::Names);
  EXPECT_EQ(named.arguments.intrinsics, (std::vector<std::string>{"a.json", "b.json"}));
  EXPECT_EQ(named.arguments.model, Calibrator::MODEL_CLASSIC);
  EXPECT_EQ(Parse({"--rig", "a", "b", "--match", "order"}).arguments.match, batch::Match::Order);
}

TEST(BatchArguments, WrongUsageEndsWithStatusTwo) {
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"a.png", "--model", "wide"},
      {"a.png", "--hdist", "0"},
      {"a.png", "--hdist", "-0.1"},
      {"a.png", "--hdist", "wide"},
      {"a.png", "--hdist", "20cm"},
      {"a.png", "--hdist", "nan"},
      {"a.png", "--hdist", "1e300"},
      {"a.png", "--hdist"},
      {"a.png", "--disc", "nan"},
      {"a.png", "--grid", ""},
      {"a.png", "--grid", "4"},
      {"a.png", "--grid", "4x11x2"},
      {"a.png", "--grid", "1x11"},
      {"a.png", "--grid", "4x101"},
      {"a.png", "--max-views", "4"},
      {"a.png", "--max-views", "99999999999"},
      {"a.png", "--width", "0"},
      {"a.png", "--width", "32001"},
      {"a.png", "--every", "0"},
      {"a.png", "--threads", "0"},
      {"a.png", "--threads", "257"},
      {"a.png", "--threads", "all"},
      {"a.png", "--unknown", "1"},
      {"a.png", "--output"},
      {"a.png", "--output", ""},
      {"a.png", "--split", "diagonal"},
      {"a.png", "--right", "b.png", "--split", "vertical"},
      {"a.png", "--right", "b.png", "--calib_left", "l.json"},
      {"a.png", "--calib_left", "l.json", "--calib_right", "r.json"},
      {"a.png", "--right", "b.png", "--model", "auto"},
      {"a.png", "--right", "b.png", "--model", "classic"}};
  for (const auto& words : wrong) {
    const batch::Parsed parsed = Parse(words);
    EXPECT_FALSE(parsed.run) << ::testing::PrintToString(words);
    EXPECT_EQ(parsed.exitStatus, 2) << ::testing::PrintToString(words);
  }
}

TEST(BatchArguments, HelpEndsWithStatusZero) {
  const batch::Parsed parsed = Parse({"--help"});
  EXPECT_FALSE(parsed.run);
  EXPECT_EQ(parsed.exitStatus, 0);
}

TEST(BatchArguments, OfASessionFillInWhatIsNotGivenBeforeTheyAreChecked) {
  std::vector<char*> argv;
  std::vector<std::string> words = {"velmora-batch", "--session", "desk/", "--hdist", "0.3"};
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  const batch::Parsed parsed =
      batch::ParseArguments(static_cast<int>(words.size()), argv.data(), [](batch::Arguments& arguments) {
        EXPECT_EQ(arguments.session, "desk");
        EXPECT_TRUE(arguments.WasGiven("--hdist"));
        EXPECT_FALSE(arguments.WasGiven("--model"));
        arguments.pairOfSession = true;
      });
  ASSERT_TRUE(parsed.run);
  EXPECT_FALSE(parsed.arguments.HasInputs());
  EXPECT_EQ(parsed.arguments.modelName, "rational") << "that of a pair";
  EXPECT_EQ(parsed.arguments.Outputs(), std::vector<std::string>{"desk/calibration"});
}

TEST(BatchArguments, OfResultsAreInTheSessionAndWhereverElseIsAskedFor) {
  EXPECT_EQ(Parse({"a.png"}).arguments.Outputs(), std::vector<std::string>{"calibration"});
  EXPECT_EQ(Parse({"a.png", "--session", "desk", "--output", "my.json"}).arguments.Outputs(),
            (std::vector<std::string>{"desk/calibration", "my"}));
}

TEST(BatchArguments, OfASessionDoNotGoWithoutOneOrWithEachOther) {
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"a.png", "--list"},
        {"a.png", "--exclude", "b.png"},
        {"a.png", "--keep-images"},
        {"a.png", "--session", ""},
        {"a.png", "--session", "desk", "--list"},
        {"a.png", "--session", "desk", "--keep-images", "--no-images"},
        {"a.png", "--session", "desk", "--record-model", "poses.json"}}) {
    const batch::Parsed parsed = Parse(words);
    EXPECT_FALSE(parsed.run) << words.back();
    EXPECT_EQ(parsed.exitStatus, 2) << words.back();
  }
}

}  // namespace
