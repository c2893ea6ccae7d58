/// What the helper programs say of input that they cannot use: one line that names it, and status 2.
#include <gtest/gtest.h>

#include <algorithm>

#include "JSON.h"
#include "Process.h"

namespace {

using support::Process;
constexpr std::chrono::minutes LONG_ENOUGH{2};

/// Runs a program in the folder; what it said, of which there must be one line, and status 2.
std::string Complaint(const support::TemporaryFolder& folder, const std::vector<std::string>& command) {
  Process::Options options;
  options.folder = folder.Path();
  Process tool(command, options);
  EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), 2) << ::testing::PrintToString(command);
  std::string errors = tool.Errors();
  EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
  EXPECT_EQ(tool.Output(), "");
  return errors;
}

void WriteResult(const std::string& path, const cv::Mat& K) {
  JSON result;
  result.addInt("imgWidth", 640);
  result.addInt("imgHeight", 480);
  result.addDouble("error", 0.1);
  result.addMat("cameraMatrix", K);
  result.addMat("distCoefs", cv::Mat::zeros(1, 5, CV_64F));
  ASSERT_TRUE(result.save(path));
}

TEST(CompareProgram, NamesTheResultThatItCannotUse) {
  const support::TemporaryFolder folder;
  support::WriteText(folder.File("empty.json"), "");
  support::WriteText(folder.File("broken.json"), "{\"cameraMatrix\": {");
  support::WriteText(folder.File("list.json"), "[1, 2]");
  WriteResult(folder.File("small.json"), cv::Mat::eye(2, 2, CV_64F));
  WriteResult(folder.File("zero.json"), cv::Mat::zeros(3, 3, CV_64F));
  for (const std::string name : {"none", "empty", "broken", "list", "small", "zero"}) {
    EXPECT_NE(Complaint(folder, {VELMORA_COMPARE, name + ".json", "truth.json"}).find("'" + name + ".json'"),
              std::string::npos)
        << name;
  }
}

TEST(CompareProgram, NamesTheTruthThatItCannotUse) {
  const support::TemporaryFolder folder;
  WriteResult(folder.File("good.json"), cv::Mat::eye(3, 3, CV_64F));
  support::WriteText(folder.File("empty.json"), "");
  support::WriteText(folder.File("other.json"), "{\"name\": 1}");
  for (const std::string name : {"none.json", "empty.json", "other.json"}) {
    EXPECT_NE(Complaint(folder, {VELMORA_COMPARE, "good.json", name}).find("\"" + name + "\""),
              std::string::npos)
        << name;
  }
}

TEST(RenderProgram, NamesTheOptionOrTheFileThatItCannotUse) {
  const support::TemporaryFolder folder;
  support::WriteText(folder.File("empty.json"), "");
  const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
      {{"--views", "many"}, "--views"},
      {{"--views", "99999999"}, "--views"},
      {{"--views", "1", "--size", "0x0"}, "--size takes WIDTHxHEIGHT, such as 640x480 (each 1 to 8192)"},
      {{"--views", "1", "--size", "99999x99999"}, "--size"},
      {{"--views", "1", "--grid", "1000x11"}, "--grid"},
      {{"--views", "1", "--dist", "a,b"}, "--dist"},
      {{"--views", "1", "--dist", "1,2,3"}, "distortion coefficients"},
      {{"--views", "1", "--fisheye", "400"}, "--fisheye"},
      {{"--views", "1", "--fisheye", "180", "--dist=0,0,0,0"}, "--dist is of a pinhole"},
      {{"--views", "1", "--fisheye", "180", "--fisheye-dist", "1,2"}, "--fisheye-dist takes four numbers"},
      {{"--views", "1", "--seed", "x"}, "--seed"},
      {{"--views", "1", "--fx", "0"}, "--fx: '0' is not a positive number. See"},
      {{"--views", "1", "--cx", "nan"}, "--cx: 'nan' is not a usable number"},
      {{"--video", "v.avi", "--fps", "-3"}, "--fps: '-3' is not a positive number. See"},
      {{"--video", "v.avi", "--away", "-1"}, "--away: '-1' is neither zero nor a positive number. See"},
      {{"--video", "v.avi", "--seconds", "1e9"}, "frames"},
      {{"--video", "v.avi", "--follow", "none.json"}, "none.json"},
      {{"--video", "v.avi", "--follow", "empty.json"}, "empty.json"},
      {{"--sheet", "/nowhere/sheet.png"}, "/nowhere/sheet.png"},
      {{"--sheet"}, "--sheet"},
      {{"--unknown"}, "--unknown"},
      {{}, "nothing to do"}};
  for (const auto& [words, named] : wrong) {
    std::vector<std::string> command = {VELMORA_RENDER};
    command.insert(command.end(), words.begin(), words.end());
    EXPECT_NE(Complaint(folder, command).find(named), std::string::npos) << named;
  }
}

TEST(BatchUsage, SaysInFewWordsWhichNumberItCannotUse) {
  for (const std::string number : {"0", "-1"}) {
    Process tool({VELMORA_BATCH, "x.png", "--hdist", number});
    EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), 2);
    EXPECT_EQ(tool.Errors(),
              "ERROR: --hdist: '" + number + "' is not a positive number. See velmora-batch --help.\n");
  }
  for (const std::string number : {"nan", "1e99", "wide"}) {
    Process tool({VELMORA_BATCH, "x.png", "--hdist", number});
    EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), 2);
    EXPECT_EQ(tool.Errors(), "ERROR: --hdist: '" + number +
                                 "' is not a number of metres, such as 0.2. See velmora-batch --help.\n");
  }
  Process tool({VELMORA_BATCH, "x.png", "--disc", "-1"});
  EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), 2);
  EXPECT_EQ(tool.Errors(),
            "ERROR: --disc: '-1' is neither zero nor a positive number. See velmora-batch --help.\n");
}

TEST(CompareProgram, SaysInOrdinaryWordsWhatIsWrongWithAResult) {
  const support::TemporaryFolder folder;
  support::WriteText(folder.File("none.json"), "{}");
  support::WriteText(folder.File("text.json"), R"({"cameraMatrix": {"data": ["a"]}})");
  support::WriteText(folder.File("cut.json"), "{\"cameraMatrix\":");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"none", "it has no cameraMatrix"},
      {"text", "its cameraMatrix is not a matrix"},
      {"cut", "it is not JSON, or ends too early"}};
  for (const auto& [name, fault] : cases) {
    EXPECT_EQ(Complaint(folder, {VELMORA_COMPARE, name + ".json", "truth.json"}),
              "ERROR: '" + name + ".json' is not a result file: " + fault + ".\n");
  }
}

}  // namespace
