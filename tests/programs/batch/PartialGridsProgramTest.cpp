/// The headless tool on views of which some show a part of the grid.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>

#include "JSON.h"
#include "LensError.h"
#include "Process.h"
#include "Renderer.h"
#include "TemporaryFolder.h"
#include "Views.h"

namespace {

namespace fs = std::filesystem;
using support::Process;
constexpr std::chrono::minutes LONG_ENOUGH{4};
constexpr int VIEWS = 12;

/// Moves the sheet in the direction, in the image, until that number of circles are beyond the
/// border.
world::Pose MovedOut(const world::Camera& camera, const world::Sheet& sheet, world::Pose pose,
                     const cv::Point2d& direction, int circles) {
  const cv::Rect2d image(0.0, 0.0, camera.size.width - 1.0, camera.size.height - 1.0);
  for (int k = 0; k < 1000; ++k) {
    const auto centres = world::TrueCentres(camera.lens, sheet, pose);
    const auto beyond = std::count_if(centres.begin(), centres.end(),
                                      [&](const cv::Point2d& centre) { return !image.contains(centre); });
    if (beyond >= circles) break;
    pose.tvec += 0.1 * sheet.Unit() * cv::Vec3d(direction.x, direction.y, 0.0);
  }
  return pose;
}

/// Twelve views, and the same of which every other one is moved into a corner, so that the border cuts it.
class PartialGridsProgram : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new support::TemporaryFolder;
    scene_.camera = world::CameraFromFieldOfView({640, 480}, 62.0, {-0.21, 0.06, 0.0008, -0.0006, -0.008});
    scene_.noise = 2.0;
    scene_.blur = 0.6;
    world::Renderer renderer(scene_);
    fs::create_directory(folder_->File("whole"));
    fs::create_directory(folder_->File("cut"));
    std::uint64_t number = 0;
    for (const world::Pose& pose : world::SampleViews(scene_.camera, VIEWS, 3)) {
      const std::string name = "/" + std::to_string(100 + number) + ".png";
      const bool moves = number % 2 == 1;
      const cv::Point2d corner(number % 4 == 1 ? 1.0 : -1.0, number % 8 < 4 ? 0.75 : -0.75);
      const world::Pose moved = moves ? MovedOut(scene_.camera, scene_.sheet, pose, corner, 4) : pose;
      cv::imwrite(folder_->File("whole") + name, renderer.Render(pose, number));
      cv::imwrite(folder_->File("cut") + name, renderer.Render(moved, number));
      ++number;
    }
  }
  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }

  /// What the tool prints.
  static std::string Calibrate(const std::string& views, const std::string& name,
                               const std::vector<std::string>& more = {}) {
    std::vector<std::string> words = {
        VELMORA_BATCH, folder_->File(views), "--hdist",          "0.2", "--model",
        "classic",     "--output",           folder_->File(name)};
    words.insert(words.end(), more.begin(), more.end());
    Process tool(words);
    EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), 0) << tool.Errors();
    return tool.Output();
  }

  static nlohmann::json VerdictOf(const std::string& name) {
    std::ifstream file(folder_->File(name + "_verdict.json"));
    return nlohmann::json::parse(file, nullptr, false);
  }

  /// Mean distance of projections over the whole image, pixels.
  static double ErrorOf(const std::string& name) {
    JSON result;
    EXPECT_TRUE(result.load(folder_->File(name + ".json")));
    return world::MeanProjectionDistance(
               scene_.camera.lens,
               world::LensFrom(result.readMat("cameraMatrix"), result.readMat("distCoefs")),
               scene_.camera.size)
        .mean;
  }

  static support::TemporaryFolder* folder_;
  static world::Scene scene_;
};

support::TemporaryFolder* PartialGridsProgram::folder_ = nullptr;
world::Scene PartialGridsProgram::scene_;

TEST_F(PartialGridsProgram, PartsReachFurtherIntoTheCornersThanWholeGrids) {
  Calibrate("whole", "whole");
  const std::string printed = Calibrate("cut", "cut");
  EXPECT_NE(printed.find(" views are parts of the grid ("), std::string::npos) << printed;
  const nlohmann::json whole = VerdictOf("whole");
  const nlohmann::json cut = VerdictOf("cut");
  RecordProperty("DeviationOfWhole", std::to_string(whole["deviationInImage"].get<double>()));
  RecordProperty("DeviationOfCut", std::to_string(cut["deviationInImage"].get<double>()));
  EXPECT_GT(cut["coverage"].get<double>(), whole["coverage"].get<double>());
  EXPECT_LT(cut["deviationInImage"].get<double>(), whole["deviationInImage"].get<double>());
  EXPECT_LT(ErrorOf("cut"), 0.3) << printed;
}

TEST_F(PartialGridsProgram, OnlyWholeOnesAreUsedWhenThatIsAskedFor) {
  const std::string printed = Calibrate("cut", "refused", {"--whole-grids"});
  EXPECT_EQ(printed.find("of the grid ("), std::string::npos) << printed;
  EXPECT_NE(printed.find("6 of 12 images used"), std::string::npos) << printed;
}

TEST_F(PartialGridsProgram, OnlyWholeOnesAreUsedByTheOtherSearchAndTheOtherSolver) {
  for (const std::vector<std::string>& other :
       {std::vector<std::string>{"--finder", "standard"}, {"--solver", "opencv"}}) {
    const std::string printed = Calibrate("cut", "other", other);
    EXPECT_EQ(printed.find("of the grid ("), std::string::npos) << printed;
  }
}

TEST_F(PartialGridsProgram, NothingChangesWhereAllGridsAreWhole) {
  Calibrate("whole", "same");  // later runs say that they replace its files
  const std::string parts = Calibrate("whole", "same");
  const std::string whole = Calibrate("whole", "same", {"--whole-grids"});
  EXPECT_EQ(parts, whole);
}

}  // namespace
