/// The command line: pairing, conversions and messages.
#include "velmora/Options.h"

#include <gtest/gtest.h>

#include <limits>

#include <sstream>

#include "velmora/HelpText.h"

using app::CommandLine;
using app::Settings;
using common::Split;

namespace {

using Arguments = std::vector<std::string>;

class Options : public testing::Test {
 protected:
  CommandLine Read(const Arguments& arguments) { return app::ReadCommandLine(arguments, out_, err_); }

  /// The settings of a command line that is without fault.
  Settings Accepted(const Arguments& arguments) {
    const CommandLine read = Read(arguments);
    EXPECT_FALSE(read.exitStatus.has_value());
    EXPECT_EQ(out_.str(), "");
    EXPECT_EQ(err_.str(), "");
    return read.settings;
  }

  void ExpectRefused(const Arguments& arguments, const std::string& message) {
    EXPECT_EQ(Read(arguments).exitStatus, -1);
    EXPECT_EQ(out_.str(), "");
    EXPECT_EQ(err_.str(), message);
  }

  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(Options, NoArgumentPrintsTheHelpOnStandardOutputWithStatusOne) {
  EXPECT_EQ(Read({}).exitStatus, 1);
  EXPECT_EQ(out_.str(), app::HelpText());
  EXPECT_EQ(err_.str(), "");
}

TEST_F(Options, HelpFirstPrintsTheHelpWhateverFollows) {
  EXPECT_EQ(Read({"--help", "--nonsense"}).exitStatus, 1);
  EXPECT_EQ(out_.str(), app::HelpText());
  EXPECT_EQ(err_.str(), "");
}

TEST_F(Options, HelpAnywhereElseIsAnUnknownOption) {
  ExpectRefused({"--webcam", "0", "--help"},
                "ERROR: option '--help' doesn't exist. Please use '--help' for more information.\n");
}

TEST_F(Options, HelpAsAValueIsAValue) {
  EXPECT_EQ(Accepted({"--output", "--help"}).output, "--help");
}

TEST_F(Options, AMisspeltOptionIsUnknown) {
  ExpectRefused({"--Width", "640"},
                "ERROR: option '--Width' doesn't exist. Please use '--help' for more information.\n");
}

TEST_F(Options, AStrayValueIsUnknown) {
  ExpectRefused({"--webcam", "0", "1"},
                "ERROR: option '1' doesn't exist. Please use '--help' for more information.\n");
}

TEST_F(Options, AnEmptyArgumentIsUnknown) {
  ExpectRefused({""}, "ERROR: option '' doesn't exist. Please use '--help' for more information.\n");
}

TEST_F(Options, OnlyTheFirstUnknownArgumentIsReported) {
  ExpectRefused({"first", "second"},
                "ERROR: option 'first' doesn't exist. Please use '--help' for more information.\n");
}

TEST_F(Options, AnUnknownArgumentKeepsLaterValuesFromBeingChecked) {
  ExpectRefused({"--model", "foo", "bar"},
                "ERROR: option 'bar' doesn't exist. Please use '--help' for more information.\n");
}

TEST_F(Options, TheLastArgumentLacksItsValue) {
  ExpectRefused({"--width", "320", "--webcam"}, "ERROR: missing value after '--webcam'.\n");
}

TEST_F(Options, EveryOptionTakesAValue) {
  for (const char* option : {"--width", "--height", "--fps", "--hdist", "--model", "--split", "--output",
                             "--video", "--video_right", "--webcam", "--webcam_right", "--gstreamer",
                             "--rtmp", "--codec", "--port", "--calib_left", "--calib_right", "--select"}) {
    std::ostringstream err;
    EXPECT_FALSE(app::PairOptions({option}, err).has_value());
    EXPECT_EQ(err.str(), std::string("ERROR: missing value after '") + option + "'.\n");
    const auto pairs = app::PairOptions({option, "value"}, err);
    ASSERT_TRUE(pairs.has_value()) << option;
    EXPECT_EQ(*pairs, (app::OptionValues{{option, "value"}}));
  }
}

TEST_F(Options, AValueMayLookLikeAnOption) {
  std::ostringstream err;
  const auto pairs = app::PairOptions({"--width", "--fps"}, err);
  ASSERT_TRUE(pairs.has_value());
  EXPECT_EQ(*pairs, (app::OptionValues{{"--width", "--fps"}}));
}

TEST_F(Options, ARepeatedOptionKeepsItsLastValue) {
  EXPECT_EQ(Accepted({"--width", "320", "--height", "200", "--width", "1280"}).width, 1280);
}

TEST_F(Options, DefaultsAreThoseOfTheHelpText) {
  const Settings settings = Accepted({"--output", ""});
  EXPECT_EQ(settings.width, 640);
  EXPECT_EQ(settings.height, 480);
  EXPECT_EQ(settings.fps, 60);
  EXPECT_EQ(settings.model, 20);
  EXPECT_EQ(settings.split, Split::None);
  EXPECT_EQ(settings.output, "");
  EXPECT_EQ(settings.codec, "h264");
  EXPECT_EQ(settings.port, "5000");
  EXPECT_FALSE(settings.select || settings.calibLeft || settings.calibRight || settings.gstreamerHost ||
               settings.rtmp || settings.video || settings.videoRight || settings.webcam ||
               settings.webcamRight);
}

TEST_F(Options, TheDefaultDistanceIsHandedOverUndivided) {
  EXPECT_EQ(Accepted({"--fps", "30"}).hdist, 0.19F);
}

TEST_F(Options, AGivenDistanceIsDividedByTenInSinglePrecision) {
  EXPECT_EQ(Accepted({"--hdist", "0.18"}).hdist, 0.18F / 10.0F);
  EXPECT_EQ(Accepted({"--hdist", "0.19"}).hdist, 0.19F / 10.0F);
  EXPECT_EQ(Accepted({"--hdist", "25"}).hdist, 2.5F);
}

TEST_F(Options, ADistanceThatIsNoNumberIsZero) {
  EXPECT_EQ(Accepted({"--hdist", "wide"}).hdist, 0.0F);
}

TEST_F(Options, NumbersAreReadToTheFirstOtherCharacterInBaseTen) {
  const Settings settings =
      Accepted({"--width", "800px", "--height", " 0600", "--fps", "-5", "--webcam", "0x1"});
  EXPECT_EQ(settings.width, 800);
  EXPECT_EQ(settings.height, 600);
  EXPECT_EQ(settings.fps, -5);
  EXPECT_EQ(settings.webcam, 0);
}

TEST_F(Options, NumbersBeyondAnIntAreTheNearestOne) {
  const Settings settings = Accepted({"--webcam", "99999999999", "--fps", "-99999999999"});
  EXPECT_EQ(settings.webcam, std::numeric_limits<int>::max());
  EXPECT_EQ(settings.fps, std::numeric_limits<int>::min());
}

TEST_F(Options, TextThatIsNoNumberIsZero) {
  const Settings settings = Accepted(
      {"--width", "wide", "--height", "", "--fps", "--width", "--webcam", "front", "--webcam_right", "back"});
  EXPECT_EQ(settings.width, 0);
  EXPECT_EQ(settings.height, 0);
  EXPECT_EQ(settings.fps, 0);
  EXPECT_EQ(settings.webcam, 0);
  EXPECT_EQ(settings.webcamRight, 0);
}

TEST_F(Options, TheThreeModelsAreKnown) {
  EXPECT_EQ(Accepted({"--model", "classic"}).model, 10);
  EXPECT_EQ(Accepted({"--model", "rational"}).model, 20);
  EXPECT_EQ(Accepted({"--model", "full"}).model, 30);
}

TEST_F(Options, AnUnknownModelNamesClassicButStaysRational) {
  const CommandLine read = Read({"--model", "foo"});
  EXPECT_FALSE(read.exitStatus.has_value());
  EXPECT_EQ(read.settings.model, 20);
  EXPECT_EQ(err_.str(), "'foo' is an unknown model. Set to 'classic' by default.\n");
  EXPECT_EQ(out_.str(), "");
}

TEST_F(Options, BothSplitsAreKnown) {
  EXPECT_EQ(Accepted({"--split", "horizontal"}).split, Split::Horizontal);
  EXPECT_EQ(Accepted({"--split", "vertical"}).split, Split::Vertical);
}

TEST_F(Options, AnUnknownSplitIsVertical) {
  const CommandLine read = Read({"--split", "diagonal"});
  EXPECT_FALSE(read.exitStatus.has_value());
  EXPECT_EQ(read.settings.split, Split::Vertical);
  EXPECT_EQ(err_.str(),
            "'diagonal' is an unknown value for the '--split' option. Set to 'vertical' by default.\n");
  EXPECT_EQ(out_.str(), "");
}

TEST_F(Options, TheModelIsReportedBeforeTheSplit) {
  Read({"--split", "diagonal", "--model", "foo"});
  EXPECT_EQ(err_.str(),
            "'foo' is an unknown model. Set to 'classic' by default.\n"
            "'diagonal' is an unknown value for the '--split' option. Set to 'vertical' by default.\n");
}

TEST_F(Options, TextsAreTakenAsGiven) {
  const Settings settings = Accepted(
      {"--output", "out dir/name.json", "--calib_left", "l.json",  "--calib_right", "r.json", "--select",
       "both",     "--gstreamer",       "host",         "--codec", "vp8",           "--port", "05000",
       "--rtmp",   "rtmp://host/app",   "--video",      "a.mp4",   "--video_right", "b.mp4"});
  EXPECT_EQ(settings.output, "out dir/name.json");
  EXPECT_EQ(settings.calibLeft, "l.json");
  EXPECT_EQ(settings.calibRight, "r.json");
  EXPECT_EQ(settings.select, "both");
  EXPECT_EQ(settings.gstreamerHost, "host");
  EXPECT_EQ(settings.codec, "vp8");
  EXPECT_EQ(settings.port, "05000");
  EXPECT_EQ(settings.rtmp, "rtmp://host/app");
  EXPECT_EQ(settings.video, "a.mp4");
  EXPECT_EQ(settings.videoRight, "b.mp4");
}

}  // namespace
