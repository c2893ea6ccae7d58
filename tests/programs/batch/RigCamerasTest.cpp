/// The cameras of a rig as the command line names them.
#include "batch/RigCameras.h"

#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>

#include "JSON.h"
#include "TemporaryFolder.h"

namespace {

using Texts = std::vector<std::string>;

TEST(RigCameras, AreCalledAsTheirFoldersAndFiles) {
  EXPECT_EQ(batch::RigCameraNames({"rig/left/", "rig/middle", "right.avi"}),
            (Texts{"left", "middle", "right.avi"}));
  EXPECT_EQ(batch::RigCameraNames({"a/left", "b/left//", "c/right"}), (Texts{"a/left", "b/left", "right"}));
  EXPECT_EQ(batch::RigCameraNames({"a/*.png", "rtsp://host/live"}), (Texts{"a/*.png", "rtsp://host/live"}));
}

TEST(RigCameras, AnInputThatIsGivenTwiceIsRefused) {
  try {
    batch::RigCameraNames({"left", "right", "left/"});
    FAIL() << "no error";
  } catch (const common::InputError& error) {
    EXPECT_STREQ(error.what(), "'left/' is given for two cameras");
  }
}

TEST(RigCameras, ResultFilesThatAreNoneOfACameraAreNamed) {
  const support::TemporaryFolder folder;
  JSON camera;
  camera.addInt("sensor", 0);
  camera.addInt("imgWidth", 640);
  camera.addInt("imgHeight", 480);
  camera.addMat("cameraMatrix", cv::Mat::eye(3, 3, CV_64F));
  camera.addMat("distCoefs", cv::Mat::zeros(1, 5, CV_64F));
  ASSERT_TRUE(camera.save(folder.File("good.json")));
  const batch::CameraFile good = batch::ReadCameraFile(folder.File("good.json"));
  EXPECT_EQ(good.frame, cv::Size(640, 480));
  EXPECT_EQ(good.K.size(), cv::Size(3, 3));
  EXPECT_EQ(good.D.size(), cv::Size(5, 1));

  camera.addInt("sensor", 1);
  ASSERT_TRUE(camera.save(folder.File("pair.json")));
  camera.addInt("sensor", 0);
  camera.addMat("cameraMatrix", cv::Mat::eye(2, 3, CV_64F));
  ASSERT_TRUE(camera.save(folder.File("small.json")));
  camera.addMat("cameraMatrix", cv::Mat::eye(3, 3, CV_64F));
  camera.addMat("distCoefs", cv::Mat());
  ASSERT_TRUE(camera.save(folder.File("without.json")));
  support::WriteText(folder.File("broken.json"), "{ not JSON");
  for (const auto& [name, fault] : std::vector<std::pair<std::string, std::string>>{
           {"none", "cannot be read"},
           {"broken", "is no result of a camera"},
           {"pair", "is the result of a pair, not of one camera"},
           {"without", "is no result of a camera: its distCoefs is 0 x 0, not 1 x 14"},
           {"small", "is no result of a camera: its cameraMatrix is 2 x 3, not 3 x 3"}}) {
    const std::string path = folder.File(name + ".json");
    try {
      batch::ReadCameraFile(path);
      ADD_FAILURE() << name;
    } catch (const common::InputError& error) {
      EXPECT_EQ(error.what(), "'" + path + "' " + fault);
    }
  }
}

TEST(RigCameras, AResultFileOfAnotherImageSizeIsNamed) {
  const std::vector<batch::CameraFile> files = {{"a.json", {640, 480}, {}, {}},
                                                {"b.json", {320, 240}, {}, {}}};
  EXPECT_NO_THROW(batch::CheckSizes(files, {"left", "right"}, {{640, 480}, {320, 240}}));
  try {
    batch::CheckSizes(files, {"left", "right"}, {{640, 480}, {640, 480}});
    FAIL() << "no error";
  } catch (const common::InputError& error) {
    EXPECT_STREQ(error.what(), "'b.json' is of 320 x 240 pixels, but camera 'right' has 640 x 480");
  }
}

}  // namespace
