/// What the application says when it cannot start, and its help, as the shell sees them.
#include <gtest/gtest.h>

#include "Footage.h"
#include "Session.h"

using namespace system_test;  // NOLINT

namespace {

/// A video that can be read, for starts that fail for another reason.
class Start : public testing::Test {
 protected:
  std::string Video() {
    WriteVideo(folder_.File("sheet.avi"), {EmptyView(SmallCamera())}, 5);
    return folder_.File("sheet.avi");
  }

  static void ExpectOneErrorLine(const Ending& ending, const std::string& beginning) {
    EXPECT_EQ(ending.status, 255);
    EXPECT_EQ(ending.output, "");
    EXPECT_EQ(ending.errors.substr(0, beginning.size()), beginning);
    EXPECT_EQ(ending.errors.find('\n'), ending.errors.size() - 1) << ending.errors;
  }

  support::TemporaryFolder folder_;
};

TEST_F(Start, NoArgumentPrintsTheHelpWithStatusOne) {
  const Ending ending = RunToEnd({});
  EXPECT_EQ(ending.status, 1);
  EXPECT_EQ(ending.errors, "");
  EXPECT_EQ(ending.output, support::ReadText(VELMORA_HELP_TEXT));
  EXPECT_EQ(RunToEnd({"--help"}).output, ending.output);
}

TEST_F(Start, AnUnknownOptionEndsWithStatus255) {
  const Ending ending = RunToEnd({"--webcam", "0", "--help"});
  EXPECT_EQ(ending.status, 255);
  EXPECT_EQ(ending.output, "");
  EXPECT_EQ(ending.errors,
            "ERROR: option '--help' doesn't exist. Please use '--help' for more information.\n");
}

TEST_F(Start, NoDisplayIsReportedInOneLine) {
  ExpectOneErrorLine(RunToEnd({"--video", Video()}), "ERROR: ");
}

TEST_F(Start, ADisplayThatDoesNotAnswerIsReportedInOneLine) {
  ExpectOneErrorLine(RunToEnd({"--video", Video()}, ":97"), "ERROR: ");
}

TEST_F(Start, AVideoThatIsNotThereIsNamed) {
  const std::string path = folder_.File("missing.mp4");
  ExpectOneErrorLine(RunToEnd({"--video", path}), "ERROR: cannot open video '" + path + "'.\n");
}

TEST_F(Start, AFolderIsNoVideo) {
  ExpectOneErrorLine(RunToEnd({"--video", folder_.Path()}),
                     "ERROR: cannot open video '" + folder_.Path() + "'.\n");
}

TEST_F(Start, AnEmptyFileIsNoVideo) {
  const std::string path = folder_.File("empty.avi");
  support::WriteText(path, "");
  ExpectOneErrorLine(RunToEnd({"--video", path}), "ERROR: cannot open video '" + path + "'.\n");
}

TEST_F(Start, ACameraThatIsNotThereIsNamed) {
  ExpectOneErrorLine(RunToEnd({"--webcam", "87"}), "ERROR: cannot open webcam 87.\n");
}

TEST_F(Start, TheRightVideoOfAPairHasToOpenToo) {
  const std::string missing = folder_.File("missing.mp4");
  ExpectOneErrorLine(RunToEnd({"--video", Video(), "--video_right", missing, "--select", "left"}),
                     "ERROR: cannot open video '" + missing + "'.\n");
}

TEST_F(Start, AStreamThatNobodyServesIsNamed) {
  ExpectOneErrorLine(RunToEnd({"--gstreamer", "127.0.0.1", "--port", "1"}),
                     "ERROR: cannot open GStreamer stream of host '127.0.0.1', port '1'.\n");
}

}  // namespace
