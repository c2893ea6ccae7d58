/// The arguments of the guided calibration.
#include "guided/Arguments.h"

#include <gtest/gtest.h>

#include "Calibrator.h"

namespace {

guided::Parsed Parse(std::vector<const char*> words) {
  words.insert(words.begin(), "velmora-guided");
  return guided::ParseArguments(static_cast<int>(words.size()), words.data(), "shipped.json");
}

TEST(GuidedArguments, DefaultsSuitTheShippedSheetAndPoses) {
  const guided::Parsed parsed = Parse({"--webcam", "1"});
  ASSERT_TRUE(parsed.run);
  const guided::Arguments& arguments = parsed.arguments;
  EXPECT_EQ(arguments.source.webcam, 1);
  EXPECT_FALSE(arguments.sizeGiven);
  EXPECT_FALSE(arguments.fast);
  EXPECT_FALSE(arguments.silent);
  EXPECT_FLOAT_EQ(guided::UnitOf(arguments), 0.02F);
  EXPECT_EQ(arguments.poses, "shipped.json");
  EXPECT_EQ(arguments.output, "calibration");
  EXPECT_FALSE(arguments.strict);
}

TEST(GuidedArguments, EveryOptionReachesItsSetting) {
  const guided::Parsed parsed =
      Parse({"--gstreamer", "127.0.0.1", "--port", "6000", "--codec", "mjpeg", "--width", "1280", "--height",
             "720", "--fps", "25", "--hdist", "0.2", "--poses", "mine.json", "--output", "out"});
  ASSERT_TRUE(parsed.run);
  const guided::Arguments& arguments = parsed.arguments;
  EXPECT_EQ(arguments.source.gstreamerHost, "127.0.0.1");
  EXPECT_EQ(arguments.source.port, "6000");
  EXPECT_EQ(arguments.source.codec, "mjpeg");
  EXPECT_TRUE(arguments.sizeGiven);
  EXPECT_EQ(arguments.source.width, 1280);
  EXPECT_EQ(arguments.source.height, 720);
  EXPECT_EQ(arguments.source.fps, 25);
  EXPECT_FLOAT_EQ(guided::UnitOf(arguments), 0.02F);
  EXPECT_EQ(arguments.poses, "mine.json");
  EXPECT_EQ(arguments.output, "out");
  EXPECT_EQ(Parse({"--video", "a.avi"}).arguments.source.video, "a.avi");
  EXPECT_EQ(Parse({"--rtmp", "rtmp://here"}).arguments.source.rtmp, "rtmp://here");
}

TEST(GuidedArguments, TheSearchIsChosenByName) {
  EXPECT_EQ(Parse({"--webcam", "0"}).arguments.finder, Calibrator::FINDER_ROBUST);
  EXPECT_EQ(Parse({"--webcam", "0", "--finder", "standard"}).arguments.finder, Calibrator::FINDER_STANDARD);
  EXPECT_EQ(Parse({"--webcam", "0", "--finder", "other"}).exitStatus, 2);
}

TEST(GuidedArguments, CentresAreFineUnlessPlainOnesAreAskedFor) {
  EXPECT_TRUE(Parse({"--webcam", "0"}).arguments.fineCentres);
  EXPECT_FALSE(Parse({"--webcam", "0", "--centres", "plain"}).arguments.fineCentres);
  EXPECT_EQ(Parse({"--webcam", "0", "--centres", "other"}).exitStatus, 2);
}

TEST(GuidedArguments, TheSolverIsChosenAsInTheHeadlessTool) {
  EXPECT_EQ(Parse({"--webcam", "0"}).arguments.solver, Calibrator::SOLVER_SPARSE);
  EXPECT_LT(Parse({"--webcam", "0"}).arguments.disc, 0.0);
  const guided::Parsed parsed = Parse({"--webcam", "0", "--solver", "opencv", "--disc", "0.004"});
  EXPECT_EQ(parsed.arguments.solver, Calibrator::SOLVER_OPENCV);
  EXPECT_EQ(parsed.arguments.disc, 0.004);
  EXPECT_EQ(Parse({"--webcam", "0", "--solver", "other"}).exitStatus, 2);
  EXPECT_EQ(Parse({"--webcam", "0", "--disc", "-1"}).exitStatus, 2);
}

TEST(GuidedArguments, TheResultsNameMayHaveItsExtension) {
  EXPECT_EQ(Parse({"--webcam", "0", "--output", "left.json", "--strict"}).arguments.output, "left");
  EXPECT_TRUE(Parse({"--webcam", "0", "--strict"}).arguments.strict);
  EXPECT_EQ(Parse({"--webcam", "0", "--output", ".json"}).exitStatus, 2);
}

TEST(GuidedArguments, AWishIsANumberOfPixels) {
  EXPECT_EQ(Parse({"--webcam", "0"}).arguments.until, 0.0);
  EXPECT_EQ(Parse({"--webcam", "0", "--until", "0.3px"}).arguments.until, 0.3);
  EXPECT_EQ(Parse({"--webcam", "0", "--until", "0.25"}).arguments.until, 0.25);
  EXPECT_EQ(Parse({"--webcam", "0", "--until", "2 px", "--max-poses", "9"}).arguments.mostPoses, 9);
  for (const char* wrong : {"", "px", "0", "-1", "nan", "inf", "0.3mm", "0.3px px", "0.3pxx"}) {
    EXPECT_EQ(Parse({"--webcam", "0", "--until", wrong}).exitStatus, 2) << wrong;
  }
  EXPECT_EQ(Parse({"--webcam", "0", "--max-poses", "9"}).exitStatus, 2);
  EXPECT_EQ(Parse({"--webcam", "0", "--until", "1px", "--max-poses", "3"}).exitStatus, 2);
  EXPECT_EQ(Parse({"--webcam", "0", "--until", "1px", "--poses", "mine.json"}).exitStatus, 2);
}

TEST(GuidedArguments, ExactlyOneSourceIsWanted) {
  EXPECT_EQ(Parse({}).exitStatus, 2);
  EXPECT_EQ(Parse({"--webcam", "0", "--video", "a.avi"}).exitStatus, 2);
  EXPECT_EQ(Parse({"--webcam", "-1"}).exitStatus, 2);
  EXPECT_EQ(Parse({"--video", "a.avi", "--hdist", "0"}).exitStatus, 2);
  EXPECT_EQ(Parse({"--help"}).exitStatus, 0);
  EXPECT_FALSE(Parse({"--help"}).run);
}

TEST(GuidedArguments, PairsAreNamedAsInTheApplication) {
  const guided::Arguments webcams =
      Parse({"--webcam", "1", "--webcam_right", "2", "--select", "right"}).arguments;
  EXPECT_EQ(webcams.source.webcamRight, 2);
  EXPECT_EQ(webcams.select, common::Camera::Right);
  EXPECT_EQ(Parse({"--video", "l.avi", "--video_right", "r.avi"}).arguments.source.videoRight, "r.avi");
  EXPECT_EQ(Parse({"--rtmp", "rtmp://here", "--split", "horizontal"}).arguments.source.split,
            common::Split::Horizontal);
  const std::vector<std::vector<const char*>> wrong = {
      {"--webcam", "1", "--webcam_right", "1"},
      {"--webcam", "1", "--video_right", "r.avi"},
      {"--video", "l.avi", "--webcam_right", "1"},
      {"--webcam", "1", "--webcam_right", "2", "--split", "vertical"},
      {"--webcam", "1", "--split", "diagonal"},
      {"--webcam", "1", "--select", "left"},
      {"--webcam", "1", "--split", "vertical", "--select", "middle"}};
  for (const auto& words : wrong) {
    EXPECT_EQ(Parse(words).exitStatus, 2) << ::testing::PrintToString(words);
  }
}

TEST(GuidedArguments, PairsNeedAModelThatPairsAreComputedWith) {
  const auto status = [](std::vector<const char*> words, const char* model) {
    words.insert(words.end(), {"--model", model});
    const guided::Parsed parsed = Parse(words);
    return parsed.run ? 0 : parsed.exitStatus;
  };
  for (const std::vector<const char*>& pair :
       {std::vector<const char*>{"--webcam", "0", "--split", "vertical"},
        {"--webcam", "0", "--webcam_right", "1"},
        {"--video", "a.avi", "--video_right", "b.avi"}}) {
    EXPECT_EQ(status(pair, "classic"), 2);
    for (const char* model : {"auto", "rational", "full"}) EXPECT_EQ(status(pair, model), 0) << model;
    std::vector<const char*> one = pair;
    one.insert(one.end(), {"--select", "left"});
    EXPECT_EQ(status(one, "classic"), 0);
  }
  EXPECT_EQ(status({"--webcam", "0"}, "classic"), 0);
}

TEST(GuidedArguments, HowTheSourceIsPlayedIsChosen) {
  EXPECT_TRUE(Parse({"--video", "a.avi", "--fast"}).arguments.fast);
  EXPECT_TRUE(Parse({"--video", "a.avi", "--no-sound"}).arguments.silent);
  EXPECT_EQ(Parse({"--webcam", "0", "--width", "640"}).exitStatus, 2);
  EXPECT_EQ(Parse({"--webcam", "0", "--height", "480"}).exitStatus, 2);
}

TEST(GuidedArguments, TheSessionIsChosen) {
  const guided::Arguments usual = Parse({"--webcam", "0"}).arguments;
  EXPECT_EQ(usual.session, "");
  EXPECT_TRUE(usual.keepImages);
  EXPECT_FALSE(usual.close);
  const guided::Arguments chosen =
      Parse({"--webcam", "0", "--session", "desk.velmora", "--no-images", "--close"}).arguments;
  EXPECT_EQ(chosen.session, "desk.velmora");
  EXPECT_FALSE(chosen.keepImages);
  EXPECT_TRUE(chosen.close);
}

TEST(GuidedArguments, CamerasAreListedWithoutASource) {
  const guided::Parsed parsed = Parse({"--list-cameras"});
  EXPECT_TRUE(parsed.listCameras);
  EXPECT_FALSE(parsed.run);
  EXPECT_FALSE(Parse({"--webcam", "0"}).listCameras);
}

TEST(GuidedArguments, NumbersThatCannotBeAreRefused) {
  const std::vector<std::pair<const char*, const char*>> wrong = {
      {"--hdist", ""},      {"--hdist", "wide"},     {"--hdist", "-1"},    {"--hdist", "nan"},
      {"--hdist", "1e300"}, {"--width", "0"},        {"--width", "32001"}, {"--height", "tall"},
      {"--fps", "0"},       {"--fps", "99999999999"}};
  for (const auto& [option, value] : wrong) {
    EXPECT_EQ(Parse({"--video", "a.avi", option, value}).exitStatus, 2) << option << " " << value;
  }
  EXPECT_EQ(Parse({"--video", "a.avi", "--hdist"}).exitStatus, 2);
}

TEST(GuidedArguments, TheShippedPosesAreBesideTheProgramsFolder) {
  EXPECT_EQ(guided::ShippedPoses("/usr/bin/velmora-guided"), "/usr/share/velmora/poses-4x11.json");
}

}  // namespace
