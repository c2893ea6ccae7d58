/// The application up to the point where a window would open: order of the checks, texts, exit statuses.
#include "velmora/Application.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

constexpr char NO_SOURCE[] = "ERROR: no video source given. Please use '--help' for more information.\n";

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

Outcome Start(const std::vector<std::string>& arguments) {
  std::ostringstream out;
  std::ostringstream err;
  const int status = app::RunApplication(arguments, out, err);
  return {status, out.str(), err.str()};
}

void ExpectError(const std::vector<std::string>& arguments, const std::string& lines) {
  const Outcome outcome = Start(arguments);
  EXPECT_EQ(outcome.status, -1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, lines);
}

TEST(Application, HelpEndsWithStatusOne) {
  const Outcome outcome = Start({"--help"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out.substr(0, 40), "Welcome to the Calibration application.\n");
  EXPECT_EQ(outcome.err, "");
}

TEST(Application, FrameSizesThatNoFrameHasEndWithStatusMinusOne) {
  constexpr char WRONG[] = "ERROR: '--width' and '--height' take whole numbers from 1 to 32767.\n";
  ExpectError({"--video", "none.avi", "--width", "0"}, WRONG);
  ExpectError({"--video", "none.avi", "--height", "wide"}, WRONG);
  ExpectError({"--video", "none.avi", "--width", "99999999999"}, WRONG);
}

TEST(Application, AWrongArgumentEndsWithStatusMinusOne) {
  ExpectError({"--webcam"}, "ERROR: missing value after '--webcam'.\n");
}

TEST(Application, NoSourceIsReportedAfterEveryOtherMessage) {
  ExpectError(
      {"--model", "foo", "--split", "diagonal", "--select", "both"},
      std::string("'foo' is an unknown model. Set to 'classic' by default.\n"
                  "'diagonal' is an unknown value for the '--split' option. Set to 'vertical' by default.\n"
                  "'both' is an unknown value for the '--select' option. Set to 'left' by default.\n") +
          NO_SOURCE);
}

TEST(Application, TheSelectionIsCheckedBeforeTheSourceIsOpened) {
  ExpectError({"--video", testing::TempDir() + "missing.mp4", "--select", "left"},
              "ERROR: Select option cannot be applied for non-stereo input.\n");
}

TEST(Application, TheResultFilesAreAskedForBeforeTheSourceIsOpened) {
  const std::string missing = testing::TempDir() + "missing.mp4";
  ExpectError({"--video", missing, "--video_right", missing},
              "ERROR: In the stereo case, left camera calibration file has to be provided.\n");
  ExpectError({"--video", missing, "--video_right", missing, "--calib_left", "left.json"},
              "ERROR: In the stereo case, right camera calibration file has to be provided.\n");
}

TEST(Application, TheSourceOfAPairIsOpenedAfterTheOptionsHaveHadTheirSay) {
  ExpectError({"--split", "vertical", "--calib_left", "left.json", "--calib_right", "right.json"}, NO_SOURCE);
}

TEST(Application, AVideoThatDoesNotOpenIsNamed) {
  const std::string missing = testing::TempDir() + "missing.mp4";
  ExpectError({"--video", missing}, "ERROR: cannot open video '" + missing + "'.\n");
}

TEST(Application, AWebcamThatDoesNotOpenIsNamed) {
  ExpectError({"--webcam", "87"}, "ERROR: cannot open webcam 87.\n");
}

}  // namespace
