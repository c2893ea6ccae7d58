/// Help, version and mistakes at the command line, as a user of the tools meets them.
#include <gtest/gtest.h>

#include <algorithm>

#include "Process.h"

namespace {

using support::Process;
constexpr std::chrono::minutes LONG_ENOUGH{1};

const std::vector<std::string> PROGRAMS = {VELMORA_BATCH, VELMORA_GUIDED, VELMORA_COMPARE, VELMORA_POSES,
                                           VELMORA_RENDER};

std::string NameOf(const std::string& program) {
  return program.substr(program.rfind('/') + 1);
}

std::string Told(const std::string& program, const std::string& option) {
  Process tool({program, option});
  EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), 0) << tool.Errors();
  EXPECT_EQ(tool.Errors(), "");
  return tool.Output();
}

/// The one line about a mistake; status 2.
std::string Complaint(const std::string& program, const std::vector<std::string>& words) {
  std::vector<std::string> command = {program};
  command.insert(command.end(), words.begin(), words.end());
  Process tool(command);
  EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), 2);
  const std::string errors = tool.Errors();
  EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
  EXPECT_EQ(tool.Output(), "");
  return errors;
}

TEST(CommandLine, TellsItsVersion) {
  for (const std::string& program : PROGRAMS) {
    EXPECT_EQ(Told(program, "--version"), NameOf(program) + " " VELMORA_VERSION "\n");
  }
}

TEST(CommandLine, HelpsInWordsOfNoParser) {
  for (const std::string& program : PROGRAMS) {
    const std::string help = Told(program, "--help");
    EXPECT_EQ(Told(program, "-h"), help);
    for (const char* notation : {"INT", "FLOAT", "ENUM", "TEXT", "REQUIRED", "Excludes", "Needs:", "OPTIONS",
                                 "Option Group", " in [", "{", "POSITIVE", ":="}) {
      EXPECT_EQ(help.find(notation), std::string::npos) << program << ": " << notation << "\n" << help;
    }
  }
}

TEST(CommandLine, HelpNamesRangesDefaultsAndWhatGoesTogether) {
  const std::string batch = Told(VELMORA_BATCH, "--help");
  for (const char* part :
       {"--hdist METRES", "default: 0.2, that of", "16 to 32000", "(5 to 10000; default: 30)",
        "with --calib_right", "not with --right", "--strict"}) {
    EXPECT_NE(batch.find(part), std::string::npos) << part << "\n" << batch;
  }
  const std::string guided = Told(VELMORA_GUIDED, "--help");
  for (const char* part :
       {"not with --until", "with --until", "Source (exactly one)", "default: that of what arrives",
        "not with --video_right; not with --webcam_right"}) {
    EXPECT_NE(guided.find(part), std::string::npos) << part << "\n" << guided;
  }
}

TEST(CommandLine, SaysInOneLineWhatIsWrong) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
      {{}, "nothing to do: name images, a folder or a video"},
      {{"x.png", "--hdist", "20cm"}, "--hdist: '20cm' is not a number of metres, such as 0.2"},
      {{"x.png", "--hdist", "0"}, "--hdist: '0' is not a positive number"},
      {{"x.png", "--hdist"}, "--hdist needs a value"},
      {{"x.png", "--hdist", "1", "--hdist", "2"}, "--hdist is given more than once"},
      {{"x.png", "--modle=full"}, "unknown option --modle (did you mean --model?)"},
      {{"x.png", "--gird", "4x5"}, "unknown option --gird (did you mean --grid?)"},
      {{"x.png", "--nothing-like-it"}, "unknown option --nothing-like-it"},
      {{"x.png", "--model", "wide"}, "--model: 'wide' is not one of auto, classic, fisheye, full, rational"},
      {{"x.png", "--finder", "other"}, "--finder: 'other' is not one of standard, robust"},
      {{"x.png", "--centres", "other"}, "--centres: 'other' is not one of fine, plain"},
      {{"x.png", "--max-views", "4"}, "--max-views: '4' is not a number from 5 to 10000"},
      {{"x.png", "--every", "1.5"}, "--every: '1.5' is not a whole number of reasonable size"},
      {{"x.png", "--calib_left", "a"}, "--calib_left goes only with --calib_right"},
      {{"x.png", "--output", ".json"}, "--output: a name is needed"}};
  for (const auto& [words, message] : wrong) {
    EXPECT_EQ(Complaint(VELMORA_BATCH, words), "ERROR: " + message + ". See velmora-batch --help.\n");
  }
  EXPECT_EQ(
      Complaint(VELMORA_GUIDED, {}),
      "ERROR: give exactly one of --webcam, --video, --rtmp, --gstreamer. See velmora-guided --help.\n");
  EXPECT_EQ(Complaint(VELMORA_GUIDED, {"--webcam", "0", "--until", "abc"}),
            "ERROR: --until: 'abc' is not a number of pixels such as 0.3px. See velmora-guided --help.\n");
  EXPECT_EQ(
      Complaint(VELMORA_COMPARE, {}),
      "ERROR: give a result file and a truth file, or another result file. See velmora-compare --help.\n");
  EXPECT_EQ(Complaint(VELMORA_POSES, {"list.txt", "--fov", "10"}),
            "ERROR: --fov: '10' is not a number from 20 to 120. See velmora-poses --help.\n");
  EXPECT_EQ(Complaint(VELMORA_RENDER, {"--veiws", "3"}),
            "ERROR: unknown option --veiws (did you mean --views?). See velmora-render --help.\n");
}

}  // namespace
