/// The renderer as a user runs it: what it says, when it is quiet, and which folders it refuses.
#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>

#include "Process.h"

namespace {

using support::Process;
using support::TemporaryFolder;

constexpr std::chrono::minutes LONG_ENOUGH{2};

struct Outcome {
  int status;
  std::string output;
  std::string errors;
};

Outcome RunIn(const TemporaryFolder& folder, const std::vector<std::string>& command) {
  Process::Options options;
  options.folder = folder.Path();
  Process tool(command, options);
  const int status = tool.WaitForExit(LONG_ENOUGH);
  return {status, tool.Output(), tool.Errors()};
}

/// Runs the renderer with these and a small picture size.
Outcome Render(const TemporaryFolder& folder, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), VELMORA_RENDER);
  arguments.insert(arguments.end(), {"--size", "160x120"});
  return RunIn(folder, arguments);
}

int CountFiles(const std::string& folder) {
  const std::filesystem::directory_iterator files(folder);
  return static_cast<int>(std::distance(begin(files), end(files)));
}

TEST(RenderTool, SaysItsVersionAndItsOptions) {
  const TemporaryFolder folder;
  const Outcome version = RunIn(folder, {VELMORA_RENDER, "--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "velmora-render " VELMORA_VERSION "\n");
  const Outcome help = RunIn(folder, {VELMORA_RENDER, "-h"});
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.output.find("--overwrite"), std::string::npos);
}

TEST(RenderTool, AsksForASheetNameThatEndsInPng) {
  const TemporaryFolder folder;
  const Outcome outcome = Render(folder, {"--sheet", "sheet.pdf"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.errors, "ERROR: --sheet takes a file name that ends in .png.\n");
}

TEST(RenderTool, SaysWhatToDoWithTheSheet) {
  const TemporaryFolder folder;
  const Outcome outcome = Render(folder, {"--sheet", "sheet.png"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(outcome.output.rfind("sheet.png: 296.8 x 209.8 mm, A4 in landscape\n", 0), 0U) << outcome.output;
  EXPECT_EQ(cv::imread(folder.File("sheet.png")).size(), cv::Size(1753, 1239));
}

TEST(RenderTool, WritesItsOwnPicturesAnewWithoutAsking) {
  const TemporaryFolder folder;
  for (const std::string count : {"2", "2", "3"}) {
    const Outcome outcome = Render(folder, {"--views", count, "--output", "out"});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.output + outcome.errors, "");
  }
  EXPECT_EQ(CountFiles(folder.File("out")), 4);
}

TEST(RenderTool, RefusesAFolderWhoseOtherPicturesWouldStay) {
  const TemporaryFolder folder;
  ASSERT_EQ(Render(folder, {"--views", "4", "--output", "out"}).status, 0);
  const Outcome fewer = Render(folder, {"--views", "2", "--seed", "5", "--output", "out"});
  EXPECT_EQ(fewer.status, 2);
  EXPECT_EQ(fewer.errors,
            "ERROR: \"out\" holds 2 other pictures (view002.png to view003.png): give another "
            "folder, or --overwrite, which replaces or removes pictures named viewNNN.png.\n");
  EXPECT_EQ(CountFiles(folder.File("out")), 5);

  std::filesystem::create_directory(folder.File("mine"));
  support::WriteText(folder.File("mine/Holiday.JPG"), "");
  const Outcome foreign = Render(folder, {"--views", "2", "--output", "mine"});
  EXPECT_EQ(foreign.status, 2);
  EXPECT_NE(foreign.errors.find("\"mine\" holds 1 other picture (Holiday.JPG): "), std::string::npos)
      << foreign.errors;
  EXPECT_EQ(CountFiles(folder.File("mine")), 1);
}

TEST(RenderTool, RefusesToWriteOverPicturesThatItMayNotHaveRendered) {
  const TemporaryFolder folder;
  support::WriteText(folder.File("view000.png"), "mine");
  const Outcome outcome = Render(folder, {"--views", "2"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_NE(outcome.errors.find("holds 1 other picture (view000.png): "), std::string::npos)
      << outcome.errors;
  EXPECT_EQ(support::ReadText(folder.File("view000.png")), "mine");
}

TEST(RenderTool, RemovesEarlierPicturesAndNoOthersWhenToldToOverwrite) {
  const TemporaryFolder folder;
  ASSERT_EQ(Render(folder, {"--views", "4", "--output", "out"}).status, 0);
  support::WriteText(folder.File("out/photo.jpg"), "mine");
  support::WriteText(folder.File("out/view2.png"), "mine");
  const Outcome outcome = Render(folder, {"--views", "2", "--overwrite", "--output", "out"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(outcome.output,
            "\"out\": 2 earlier pictures (view000.png to view001.png) replaced\n"
            "\"out\": 2 earlier pictures (view002.png to view003.png) removed\n"
            "\"out\": 2 other pictures (photo.jpg to view2.png) left, which were not rendered here\n");
  EXPECT_FALSE(std::filesystem::exists(folder.File("out/view002.png")));
  EXPECT_EQ(support::ReadText(folder.File("out/photo.jpg")), "mine");
  EXPECT_EQ(support::ReadText(folder.File("out/view2.png")), "mine");
}

TEST(RenderTool, LooksAtBothFoldersOfAPairBeforeItRemovesAnything) {
  const TemporaryFolder folder;
  ASSERT_EQ(Render(folder, {"--rig", "--views", "3", "--output", "out"}).status, 0);
  const Outcome refused = Render(folder, {"--rig", "--views", "1", "--output", "out"});
  EXPECT_EQ(refused.status, 2);
  EXPECT_NE(refused.errors.find("\"out/left\" holds 2 other pictures"), std::string::npos) << refused.errors;
  std::filesystem::remove(folder.File("out/left/view001.png"));
  std::filesystem::remove(folder.File("out/left/view002.png"));
  const Outcome right = Render(folder, {"--rig", "--views", "1", "--output", "out"});
  EXPECT_NE(right.errors.find("\"out/right\" holds 2 other pictures"), std::string::npos) << right.errors;
  EXPECT_EQ(Render(folder, {"--rig", "--views", "1", "--overwrite", "--output", "out"}).status, 0);
  EXPECT_EQ(CountFiles(folder.File("out/right")), 2);
}

TEST(RenderTool, ShowsItsProgressOnATerminalOnly) {
  const TemporaryFolder folder;
  const std::string command = VELMORA_RENDER " --views 3 --size 160x120 --output ";
  const Outcome quiet = RunIn(folder, {"sh", "-c", command + "quiet"});
  EXPECT_EQ(quiet.status, 0);
  EXPECT_EQ(quiet.output + quiet.errors, "");
  const Outcome shown = RunIn(folder, {"script", "-qec", command + "shown", "/dev/null"});
  EXPECT_EQ(shown.status, 0);
  EXPECT_NE(shown.output.find("\r2/3 rendered, 66 %"), std::string::npos) << shown.output;
  EXPECT_EQ(shown.output.find('\n'), std::string::npos) << shown.output;
  EXPECT_EQ(shown.output.back(), '\r');
}

}  // namespace
