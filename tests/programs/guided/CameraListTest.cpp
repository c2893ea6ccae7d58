/// What is said of the machine's cameras.
#include "guided/CameraList.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "TemporaryFolder.h"
#include "guided/VideoDevice.h"

using guided::CameraDevice;

namespace {

const std::string HEADING = "Cameras (--webcam NUMBER; sizes with the most frames per second):\n";

TEST(CameraList, HasSizesLargestFirstWithTheirFastestRate) {
  CameraDevice camera{0, "/dev/video0", "HD Camera", 0, {}};
  camera.sizes.listed = {{{640, 480}, 30.0}, {{1280, 720}, 10.0},  {{1920, 1080}, 0.0},
                         {{320, 240}, 7.5},  {{1280, 720}, 59.94}, {{160, 120}, 30.0}};
  EXPECT_EQ(guided::CameraListText({camera}, "/dev"),
            HEADING +
                "  0  HD Camera\n"
                "     1920x1080, 1280x720 (59.9/s), 640x480 (30/s), 320x240 (7.5/s),\n"
                "     160x120 (30/s)\n");
}

TEST(CameraList, HasRangesOfSizes) {
  CameraDevice camera{12, "/dev/video12", "Sensor", 0, {}};
  camera.sizes.smallest = {32, 16};
  camera.sizes.largest = {4096, 3040};
  EXPECT_EQ(guided::CameraListText({camera}, "/dev"),
            HEADING + " 12  Sensor\n     any size from 32x16 to 4096x3040\n");
  EXPECT_EQ(LargestSize(camera.sizes), cv::Size(4096, 3040));
}

TEST(CameraList, SaysWhyACameraCannotBeUsed) {
  CameraDevice busy{0, "/dev/video0", "HD Camera", EBUSY, {}};
  busy.sizes.listed = {{{640, 480}, 0.0}};
  const CameraDevice forbidden{1, "/dev/video1", "", EACCES, {}};
  const CameraDevice broken{2, "/dev/video2", "", EIO, {}};
  EXPECT_EQ(guided::CameraListText({busy, forbidden, broken}, "/dev"),
            HEADING +
                "  0  HD Camera: in use by another program\n     640x480\n"
                "  1  /dev/video1: you have no permission to use it\n"
                "  2  /dev/video2: Input/output error\n");
}

TEST(CameraList, SaysThatThereIsNone) {
  EXPECT_EQ(guided::CameraListText({}, "/dev"), "There is no camera: no /dev/video* delivers pictures.\n");
}

TEST(CameraList, KnowsTheLargestSizeInPixels) {
  guided::CameraSizes sizes;
  EXPECT_TRUE(LargestSize(sizes).empty());
  sizes.listed = {{{640, 480}, 30.0}, {{1000, 1000}, 30.0}, {{1280, 720}, 30.0}};
  EXPECT_EQ(LargestSize(sizes), cv::Size(1000, 1000));
}

TEST(CameraList, FilesThatAreNoDevicesAreNoCameras) {
  const support::TemporaryFolder dev;
  support::WriteText(dev.File("video0"), "");
  EXPECT_TRUE(guided::FindCameras(dev.Path()).empty());
  EXPECT_TRUE(guided::DeviceExists(dev.Path(), 0));
  EXPECT_FALSE(guided::DeviceExists(dev.Path(), 1));
  EXPECT_TRUE(guided::FindCameras("/nowhere").empty());
}

}  // namespace
