/// The headless tool on several threads, as a user runs it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/videoio.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "Process.h"
#include "Rig.h"
#include "RigRenderer.h"
#include "TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using support::Process;
using Words = std::vector<std::string>;
constexpr std::chrono::minutes LONG_ENOUGH{4};

/// All that a run says and leaves behind.
struct Outcome {
  int status = 0;
  std::string output;
  std::string errors;
  std::map<std::string, std::string> files;  ///< by name
};

/// Pairs of images, rendered once for all tests: of each camera, side by side, and as videos.
class ThreadsProgram : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new support::TemporaryFolder;
    for (const char* name : {"left", "right", "both"}) fs::create_directory(folder_->File(name));
    const world::Pair rig =
        world::SideBySidePair({640, 480}, 60.0, 0.08, 2.0, {-0.1, 0.02, 0, 0, 0}, {-0.08, 0.01, 0, 0, 0});
    world::Scene scene;
    scene.noise = 2.0;
    world::RigRenderer renderer(rig, scene);
    std::uint64_t number = 0;
    for (const world::Pose& pose : world::RigViews(rig, 8)) {
      const std::vector<cv::Mat> pair = renderer.Render(pose, number);
      const std::string name = "/" + std::to_string(100 + number++) + ".png";
      cv::imwrite(folder_->File("left") + name, pair[0]);
      cv::imwrite(folder_->File("right") + name, pair[1]);
      cv::imwrite(folder_->File("both") + name, world::SideBySide(pair));
    }
    for (const char* name : {"left", "right", "both"}) WriteVideo(name);
  }
  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }

  static void WriteVideo(const std::string& name) {
    cv::VideoWriter video;
    for (int i = 0; i < 8; ++i) {
      const cv::Mat image = cv::imread(folder_->File(name) + "/" + std::to_string(100 + i) + ".png");
      if (i == 0) {
        video.open(folder_->File(name + ".avi"), cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 5.0,
                   image.size());
      }
      video.write(image);
    }
  }

  static Outcome Run(Words words, int threads) {
    const support::TemporaryFolder place;
    words.insert(words.begin(), VELMORA_BATCH);
    words.insert(words.end(), {"--threads", std::to_string(threads)});
    Process::Options options;
    options.folder = place.Path();
    Process tool(words, options);
    Outcome outcome;
    outcome.status = tool.WaitForExit(LONG_ENOUGH);
    outcome.output = tool.Output();
    outcome.errors = tool.Errors();
    for (const auto& entry : fs::directory_iterator(place.Path())) {
      outcome.files[entry.path().filename().string()] = support::ReadText(entry.path().string());
    }
    return outcome;
  }

  /// The outcome, which is the same on 1, 2 and 8 threads.
  static Outcome RunOnSeveral(const Words& words) {
    const Outcome one = Run(words, 1);
    for (const int threads : {2, 8}) {
      const Outcome several = Run(words, threads);
      EXPECT_EQ(several.status, one.status) << threads;
      EXPECT_EQ(several.output, one.output) << threads;
      EXPECT_EQ(several.errors, one.errors) << threads;
      EXPECT_TRUE(several.files == one.files) << threads << " threads write other files";
    }
    return one;
  }

  static support::TemporaryFolder* folder_;
};

support::TemporaryFolder* ThreadsProgram::folder_ = nullptr;

TEST_F(ThreadsProgram, GivesTheSameOfOneCameraOnAnyNumber) {
  const Outcome images = RunOnSeveral({folder_->File("left")});
  EXPECT_EQ(images.status, 0) << images.errors;
  EXPECT_EQ(images.files.size(), 3U);
  const Outcome video = RunOnSeveral({folder_->File("left.avi")});
  EXPECT_EQ(video.status, 0) << video.errors;
  EXPECT_NE(video.output, images.output);
}

TEST_F(ThreadsProgram, GivesTheSameWithTheStandardSearchOnAnyNumber) {
  const Outcome outcome = RunOnSeveral({folder_->File("left"), "--finder", "standard", "--model", "classic"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
}

TEST_F(ThreadsProgram, GivesTheSameOfAPairOnAnyNumber) {
  for (const Words& words : {Words{folder_->File("left"), "--right", folder_->File("right")},
                             Words{folder_->File("left.avi"), "--right", folder_->File("right.avi")},
                             Words{folder_->File("both"), "--split", "vertical"},
                             Words{folder_->File("both.avi"), "--split", "vertical"}}) {
    const Outcome outcome = RunOnSeveral(words);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.files.count("calibration.json"), 1U);
  }
}

TEST_F(ThreadsProgram, GivesTheSameOfARigOnAnyNumber) {
  for (const Words& words : {Words{"--rig", folder_->File("left"), folder_->File("right")},
                             Words{"--rig", folder_->File("left.avi"), folder_->File("right.avi")}}) {
    const Outcome outcome = RunOnSeveral(words);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.files.count("calibration_rig.json"), 1U);
  }
}

TEST_F(ThreadsProgram, RecordsTheSamePosesOnAnyNumber) {
  const Outcome outcome = RunOnSeveral({folder_->File("left"), "--record-model", "poses.json"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(outcome.files.count("poses.json"), 1U);
}

TEST_F(ThreadsProgram, TellsOfImagesThatCannotBeUsedInTheirOrder) {
  const support::TemporaryFolder mixed;
  for (int i = 0; i < 8; ++i) {
    const std::string name = std::to_string(100 + i) + ".png";
    fs::copy(folder_->File("left") + "/" + name, mixed.File(name));
  }
  support::WriteText(mixed.File("099.png"), "no image");
  // Large and without a grid, so that it is the slowest, and not the first that can be decoded.
  cv::imwrite(mixed.File("1005.png"), cv::Mat(2400, 3200, CV_8UC3, cv::Scalar::all(90)));
  cv::imwrite(mixed.File("1015.png"), cv::Mat(480, 640, CV_8UC3, cv::Scalar::all(90)));
  const Outcome outcome = RunOnSeveral({mixed.Path(), "--model", "classic"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(outcome.errors,
            "1/11 099.png: cannot be decoded\n2/11 100.png: grid found\n"
            "3/11 1005.png: of another size than the first (640 x 480)\n4/11 101.png: grid found\n"
            "5/11 1015.png: no grid found: too few circles in sight\n6/11 102.png: grid found\n7/11 103.png: "
            "grid found\n"
            "8/11 104.png: grid found\n9/11 105.png: grid found\n10/11 106.png: grid found\n"
            "11/11 107.png: grid found\nComputing the classic model ...\n");
}

TEST_F(ThreadsProgram, EndsWithAFileThatIsNeitherImageNorVideoAfterAllBeforeIt) {
  const support::TemporaryFolder other;
  support::WriteText(other.File("data.bin"), "neither");
  const Outcome outcome =
      RunOnSeveral({folder_->File("left"), other.File("data.bin"), folder_->File("right")});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_NE(outcome.errors.find("\n8 107.png: grid found\nERROR: '" + other.File("data.bin") +
                                "' is neither an image nor a video that can be read.\n"),
            std::string::npos)
      << outcome.errors;
}

/// The most memory that a process has had so far, kilobytes.
long PeakMemoryOf(pid_t id) {
  std::ifstream status("/proc/" + std::to_string(id) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6));
  }
  return 0;
}

/// The memory that a run over that many images has used when it has told of the one with that number, before
/// it ends: the last image is a pipe, which it waits for.
long PeakMemory(const std::string& image, int images, int told, const std::string& threads) {
  const support::TemporaryFolder folder;
  for (int i = 0; i < images; ++i) fs::create_symlink(image, folder.File(std::to_string(1000 + i) + ".png"));
  const std::string last = folder.File("last.pgm");
  EXPECT_EQ(mkfifo(last.c_str(), 0600), 0);
  Process tool(
      {VELMORA_BATCH, folder.File("*.png"), last, "--threads", threads, "--output", folder.File("camera")});
  EXPECT_TRUE(tool.WaitForOutput(std::to_string(told) + "/" + std::to_string(images + 1) + " ", LONG_ENOUGH))
      << tool.Errors();
  return PeakMemoryOf(tool.Id());
}

TEST_F(ThreadsProgram, NeedsNoMoreMemoryForMoreImages) {
  const std::string image = folder_->File("left") + "/100.png";
  for (const char* threads : {"1", "4"}) {
    const long few = PeakMemory(image, 60, 60, threads);
    const long many =
        PeakMemory(image, 300, 286, threads);  // the last one that is worth a line but for the end
    ASSERT_GT(few, 0);
    // They would be 200 megabytes more, were they kept.
    EXPECT_LT(many, few + 20 * 1024) << threads;
    RecordProperty("kilobytes_of_60_images_on_" + std::string(threads), std::to_string(few));
    RecordProperty("kilobytes_of_300_images_on_" + std::string(threads), std::to_string(many));
  }
}

}  // namespace
