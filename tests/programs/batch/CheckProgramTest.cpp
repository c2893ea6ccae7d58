/// The check of an earlier result, as a user runs it on rendered images.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Process.h"
#include "TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using support::Process;
using Words = std::vector<std::string>;
constexpr std::chrono::minutes LONG_ENOUGH{4};

struct Outcome {
  int status = 0;
  std::string output;
  std::string errors;
};

Outcome Ended(const Words& words) {
  Process program(words);
  Outcome outcome;
  outcome.status = program.WaitForExit(LONG_ENOUGH);
  outcome.output = program.Output();
  outcome.errors = program.Errors();
  return outcome;
}

bool Has(const std::string& text, const std::string& words) {
  return text.find(words) != std::string::npos;
}

/// A camera that is calibrated once, and later images of it and of others.
class CheckProgram : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new support::TemporaryFolder;
    Render("views", {"--views", "12", "--spread"});
    EXPECT_EQ(Ended({VELMORA_BATCH, File("views"), "--output", File("camera")}).status, 0);
  }
  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }

  static std::string File(const std::string& name) { return folder_->File(name); }

  static void Render(const std::string& name, const Words& options) {
    Words words = {VELMORA_RENDER, "--noise", "2", "--output", File(name)};
    words.insert(words.end(), options.begin(), options.end());
    const Outcome outcome = Ended(words);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
  }

  static Outcome Check(const Words& options) {
    Words words = {VELMORA_BATCH, "--check", File("camera.json")};
    words.insert(words.end(), options.begin(), options.end());
    return Ended(words);
  }

 private:
  static support::TemporaryFolder* folder_;
};
support::TemporaryFolder* CheckProgram::folder_ = nullptr;

TEST_F(CheckProgram, PassesTheCameraThatStayedAsItWas) {
  Render("same", {"--views", "5", "--seed", "11"});
  const Outcome outcome = Check({File("same")});
  EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.errors;
  EXPECT_TRUE(Has(outcome.output, "5 of 5 images used")) << outcome.output;
  EXPECT_TRUE(Has(outcome.output, "\nview004.png ")) << outcome.output;
  EXPECT_TRUE(Has(outcome.output, "\nStill calibrated: ")) << outcome.output;
  EXPECT_FALSE(Has(outcome.output, "No verdict")) << outcome.output;
  EXPECT_FALSE(fs::exists("calibration.json"));
}

TEST_F(CheckProgram, FailsALensThatWasZoomed) {
  // 60 degrees are 554.26 pixels.
  Render("zoomed", {"--views", "5", "--seed", "12", "--fx", "557.03"});
  const Outcome outcome = Check({File("zoomed")});
  EXPECT_EQ(outcome.status, 1) << outcome.output << outcome.errors;
  EXPECT_TRUE(Has(outcome.output, "\nNo longer calibrated: ")) << outcome.output;
  EXPECT_TRUE(Has(outcome.output, "focal length +0.5")) << outcome.output;
  EXPECT_TRUE(Has(outcome.output, "focus and zoom")) << outcome.output;
  const Outcome allowed = Check({File("zoomed"), "--tolerance", "3"});
  EXPECT_EQ(allowed.status, 0) << allowed.output;
  EXPECT_TRUE(Has(allowed.output, "no more than the 3.0 px that are allowed")) << allowed.output;
}

TEST_F(CheckProgram, FailsASensorThatMoved) {
  Render("shifted", {"--views", "5", "--seed", "13", "--fov", "60", "--cx", "322.5"});
  const Outcome outcome = Check({File("shifted")});
  EXPECT_EQ(outcome.status, 1) << outcome.output << outcome.errors;
  EXPECT_TRUE(Has(outcome.output, "principal point +")) << outcome.output;
}

TEST_F(CheckProgram, SaysWhereNoVerdictLiesBesideTheResult) {
  Render("again", {"--views", "5", "--seed", "14"});
  fs::copy_file(File("camera.json"), File("alone.json"));
  const Outcome outcome = Ended({VELMORA_BATCH, "--check", File("alone.json"), File("again")});
  EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.errors;
  EXPECT_TRUE(Has(outcome.output, "No verdict lies beside the result")) << outcome.output;
}

TEST_F(CheckProgram, EndsWithOneWhereNoImageHoldsTheGrid) {
  Render("empty", {"--views", "1", "--seed", "15"});
  const Outcome outcome = Check({File("empty"), "--grid", "5x13"});
  EXPECT_EQ(outcome.status, 1) << outcome.output << outcome.errors;
  EXPECT_TRUE(Has(outcome.errors, "found in none of the images")) << outcome.errors;
  EXPECT_TRUE(Has(outcome.errors, "leave --grid out")) << outcome.errors;
}

TEST_F(CheckProgram, NamesWhatItCannotUse) {
  Render("larger", {"--views", "1", "--size", "800x600"});
  const Outcome size = Check({File("larger")});
  EXPECT_EQ(size.status, 2);
  EXPECT_TRUE(Has(size.output, "of 800 x 600 pixels, the result of 640 x 480")) << size.output;
  EXPECT_TRUE(Has(size.errors, "ERROR: no image has the size")) << size.errors;
  EXPECT_EQ(Check({File("none")}).status, 2);
  const auto check = [](const std::string& result) {
    return Ended({VELMORA_BATCH, "--check", result, File("views")});
  };
  const Outcome absent = check(File("none.json"));
  EXPECT_EQ(absent.status, 2);
  EXPECT_TRUE(Has(absent.errors, "ERROR: cannot read '" + File("none.json") + "'.")) << absent.errors;
  EXPECT_EQ(check(File("views")).status, 2) << "a folder";
  const Outcome verdict = check(File("camera_verdict.json"));
  EXPECT_EQ(verdict.status, 2);
  EXPECT_TRUE(Has(verdict.errors, "is not a result file.")) << verdict.errors;
  std::ofstream(File("pair.json")) << R"({"sensor": 1})";
  const Outcome pair = check(File("pair.json"));
  EXPECT_EQ(pair.status, 2);
  EXPECT_TRUE(Has(pair.errors, "is the result of a pair; that of one of its cameras is needed."))
      << pair.errors;
}

TEST_F(CheckProgram, ChecksFisheyes) {
  Render("wide", {"--views", "16", "--spread", "--fisheye", "150", "--size", "800x600"});
  ASSERT_EQ(Ended({VELMORA_BATCH, File("wide"), "--model", "fisheye", "--output", File("wide")}).status, 0);
  Render("wide_same", {"--views", "5", "--seed", "16", "--fisheye", "150", "--size", "800x600"});
  Render("wide_moved", {"--views", "5", "--seed", "16", "--fisheye", "149", "--size", "800x600"});
  const auto check = [](const std::string& images) {
    return Ended({VELMORA_BATCH, "--check", File("wide_fisheye.json"), File(images)});
  };
  const Outcome same = check("wide_same");
  EXPECT_EQ(same.status, 0) << same.output << same.errors;
  const Outcome moved = check("wide_moved");
  EXPECT_EQ(moved.status, 1) << moved.output << moved.errors;
  EXPECT_TRUE(Has(moved.output, "focal length +0.6")) << moved.output;
}

}  // namespace
