/// What the headless tool makes of images as people really have them: turned, cut off, of another pattern.
#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>

#include "ExifFiles.h"
#include "JSON.h"
#include "Process.h"
#include "Renderer.h"
#include "TemporaryFolder.h"
#include "Views.h"

namespace {

namespace fs = std::filesystem;
using support::Process;
constexpr std::chrono::minutes LONG_ENOUGH{3};

/// Eight images, rendered once for all tests.
class BatchInput : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    world::Scene scene;
    scene.camera = world::CameraFromFieldOfView({640, 480}, 60.0, {-0.2, 0.05, 0.0, 0.0, 0.0});
    scene.noise = 2.0;
    world::Renderer renderer(scene);
    for (const world::Pose& pose : world::SpreadViews(scene.camera, 8)) {
      images_->push_back(renderer.Render(pose, images_->size()));
    }
  }

  std::string Folder(const std::string& name) const {
    fs::create_directory(folder_.File(name));
    return folder_.File(name);
  }

  /// Writes the images as JPEG files, every second one with the orientation.
  std::string Photographs(const std::string& name, int orientation) const {
    const std::string folder = Folder(name);
    for (size_t i = 0; i < images_->size(); ++i) {
      const std::string jpeg = support::Encoded((*images_)[i], ".jpg");
      support::WriteText(folder + "/" + std::to_string(i) + ".jpg",
                         i % 2 == 0 ? jpeg : support::TurnedJpeg(jpeg, orientation));
    }
    return folder;
  }

  std::unique_ptr<Process> Run(std::vector<std::string> words, int status) const {
    words.insert(words.begin(), VELMORA_BATCH);
    Process::Options options;
    options.folder = folder_.Path();
    auto tool = std::make_unique<Process>(words, options);
    EXPECT_EQ(tool->WaitForExit(LONG_ENOUGH), status) << tool->Errors() << tool->Output();
    return tool;
  }

  static bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
  }

  static inline const auto images_ = std::make_unique<std::vector<cv::Mat>>();
  support::TemporaryFolder folder_;
};

TEST_F(BatchInput, OfACameraThatWasTurnedOverGivesTheResultOfItsSensor) {
  Run({Photographs("plain", 1), "--model", "classic", "--output", "plain"}, 0);
  for (const int orientation : {3, 6}) {
    const std::string name = "turned" + std::to_string(orientation);
    const auto tool = Run({Photographs(name, orientation), "--model", "classic", "--output", name}, 0);
    EXPECT_TRUE(Has(tool->Errors(), "EXIF orientation ignored in 4 images: ")) << tool->Errors();
    EXPECT_EQ(support::ReadText(folder_.File(name + ".json")), support::ReadText(folder_.File("plain.json")));
  }
}

TEST_F(BatchInput, WithoutAnOrientationNeedsNoWordAboutIt) {
  const auto tool = Run({Photographs("plain", 1), "--model", "classic"}, 0);
  EXPECT_FALSE(Has(tool->Errors(), "EXIF")) << tool->Errors();
}

TEST_F(BatchInput, ThatIsCutOffIsToldInOurWords) {
  const std::string folder = Folder("cut");
  const std::string jpeg = support::Encoded(images_->front(), ".jpg");
  support::WriteText(folder + "/half.jpg", jpeg.substr(0, jpeg.size() / 4));
  const auto tool = Run({folder}, 1);
  EXPECT_EQ(tool->Errors(),
            "1/1 half.jpg: no grid found: the file ends too early\n"
            "ERROR: too few views: the grid was found in 0 images, at least 5 are needed.\n");
}

TEST_F(BatchInput, OfTheSuppliedGridIsRecognisedWhenAnotherIsAskedFor) {
  const std::string images = Photographs("images", 1);
  for (const std::string grid : {"5x13", "11x4", "3x9"}) {
    const auto tool = Run({images, "--grid", grid}, 1);
    EXPECT_TRUE(
        Has(tool->Errors(), "\nThese images show a 4x11 grid, not one of " + grid + ": leave --grid out.\n"))
        << tool->Errors();
  }
  const auto recording = Run({images, "--grid", "5x13", "--record-model", "poses.json"}, 1);
  EXPECT_TRUE(Has(recording->Errors(), "\nThese images show a 4x11 grid")) << recording->Errors();
}

TEST_F(BatchInput, WithoutAnyGridGetsNoSuchAdvice) {
  const std::string folder = Folder("nothing");
  cv::imwrite(folder + "/grey.png", cv::Mat(480, 640, CV_8UC3, cv::Scalar::all(90)));
  EXPECT_FALSE(Has(Run({folder, "--grid", "5x13"}, 1)->Errors(), "4x11"));
}

TEST_F(BatchInput, OfAChessboardIsCalledOne) {
  cv::Mat board(480, 640, CV_8UC3, cv::Scalar::all(230));
  for (int field = 0; field < 54; field += 2) {
    const int row = field / 9;
    board(cv::Rect(95 + 50 * (field % 9), 90 + 50 * row, 50, 50)).setTo(cv::Scalar::all(20));
  }
  cv::imwrite(folder_.File("board.png"), board);
  const auto tool = Run({folder_.File("board.png")}, 1);
  EXPECT_TRUE(Has(tool->Errors(), "board.png: no grid found: a chessboard; a grid of circles is needed\n"))
      << tool->Errors();
}

TEST_F(BatchInput, BesideImagesIsCounted) {
  const std::string folder = Photographs("mixed", 1);
  support::WriteText(folder + "/a.heic", "");
  support::WriteText(folder + "/._0.jpg", "");
  fs::create_directory(folder + "/more");
  const auto tool = Run({folder, "--model", "classic"}, 0);
  EXPECT_TRUE(Has(tool->Errors(), "3 files skipped: 1 .heic, 1 folder, 1 hidden\n")) << tool->Errors();
  EXPECT_TRUE(Has(tool->Output(), "8 of 8 images used\n")) << tool->Output();
}

TEST_F(BatchInput, WritesFilesThatItNamesAndSaysWhichItReplaced) {
  const std::string images = Photographs("images", 1);
  const auto first = Run({images, "--model", "classic", "--output", "camera.json"}, 0);
  EXPECT_TRUE(
      Has(first->Output(), "\nWritten:\n  camera.json\n  camera_verdict.json\n  camera_uncertainty.png\n"))
      << first->Output();
  EXPECT_FALSE(fs::exists(folder_.File("camera.json.json")));
  const auto second = Run({images, "--model", "classic", "--output", "camera"}, 0);
  EXPECT_TRUE(Has(second->Output(), "\n  camera.json (replaced an earlier one)\n")) << second->Output();
}

TEST_F(BatchInput, ThatIsWorthlessEndsWithAStatusOfItsOwnOnDemand) {
  const std::string folder = Folder("frontal");
  world::Scene scene;
  scene.camera = world::CameraFromFieldOfView({640, 480}, 60.0);
  scene.noise = 2.0;
  world::Renderer renderer(scene);
  for (int i = 0; i < 6; ++i) {
    world::Appearance facing;
    facing.span = 0.5 + 0.06 * i;
    world::Pose pose;
    ASSERT_TRUE(world::PlaceGrid(scene.camera, scene.sheet, facing, 10.0, pose));
    cv::imwrite(folder + "/" + std::to_string(i) + ".png",
                renderer.Render(pose, static_cast<std::uint64_t>(i)));
  }
  const auto strict = Run({folder, "--model", "classic", "--strict", "--output", "strict"}, 3);
  EXPECT_TRUE(Has(strict->Output(), "Verdict: worthless")) << strict->Output();
  EXPECT_TRUE(fs::exists(folder_.File("strict.json")));
  Run({folder, "--model", "classic"}, 0);
  Run({Photographs("good", 1), "--model", "classic", "--strict"}, 0);
}

TEST_F(BatchInput, OfAnUnusualDistanceIsWarnedOf) {
  const auto tool = Run({"nowhere.png", "--hdist", "200"}, 2);
  EXPECT_TRUE(Has(tool->Errors(), "Warning: --hdist is in metres, and 200 m is unusual")) << tool->Errors();
  EXPECT_FALSE(Has(Run({"nowhere.png"}, 2)->Errors(), "Warning"));
}

}  // namespace
