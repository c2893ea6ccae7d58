/// What is told of the size of frames, and at which size they are worked with.
#include "guided/ArrivalText.h"

#include <gtest/gtest.h>

using common::Split;
using guided::Arrival;
using guided::SourceKind;

namespace {

const cv::Size VGA(640, 480);
const cv::Size HD(1280, 720);

Arrival Arriving(SourceKind kind, const cv::Size& size, const cv::Size& asked = {},
                 Split split = Split::None) {
  Arrival arrival;
  arrival.name = kind == SourceKind::Camera ? "webcam 0" : "video 'a.avi'";
  arrival.kind = kind;
  arrival.split = split;
  arrival.size = size;
  arrival.asked = asked;
  return arrival;
}

TEST(ArrivalText, TellsTheSizeOfWhatArrives) {
  const Arrival arrival = Arriving(SourceKind::Camera, HD);
  EXPECT_EQ(ArrivalText(arrival), "Frames of webcam 0: 1280x720.\n");
  EXPECT_EQ(WorkingSize(arrival), HD);
}

TEST(ArrivalText, ACameraIsWorkedWithAsItDelivers) {
  EXPECT_EQ(ArrivalText(Arriving(SourceKind::Camera, HD, HD)), "Frames of webcam 0: 1280x720.\n");
  const Arrival other = Arriving(SourceKind::Camera, VGA, HD);
  EXPECT_EQ(ArrivalText(other), "Frames of webcam 0: 640x480, although 1280x720 was asked for.\n");
  EXPECT_EQ(WorkingSize(other), VGA);
}

TEST(ArrivalText, ARecordingIsBroughtToTheSizeThatWasAskedFor) {
  EXPECT_EQ(ArrivalText(Arriving(SourceKind::Recording, HD, HD)), "Frames of video 'a.avi': 1280x720.\n");
  const Arrival other = Arriving(SourceKind::Recording, HD, VGA);
  EXPECT_EQ(ArrivalText(other), "Frames of video 'a.avi': 1280x720, brought to 640x480.\n");
  EXPECT_EQ(WorkingSize(other), VGA);
  EXPECT_EQ(WorkingSize(Arriving(SourceKind::Stream, HD, VGA)), VGA);
}

TEST(ArrivalText, HalvesAreToldBesideTheWhole) {
  const Arrival halves = Arriving(SourceKind::Camera, VGA, {1280, 480}, Split::Vertical);
  EXPECT_EQ(ArrivalText(halves), "Frames of webcam 0: 1280x480, two halves of 640x480.\n");
  EXPECT_EQ(WorkingSize(halves), VGA);
  EXPECT_EQ(ArrivalText(Arriving(SourceKind::Camera, VGA, HD, Split::Horizontal)),
            "Frames of webcam 0: 640x960, two halves of 640x480, although 1280x720 was asked for.\n");
}

TEST(ArrivalText, ALargerSizeOfTheCameraIsOffered) {
  EXPECT_EQ(guided::OfferText({1920, 1080}, VGA),
            "The camera offers up to 1920x1080: --width 1920 --height 1080.\n");
  EXPECT_EQ(guided::OfferText(VGA, VGA), "");
  EXPECT_EQ(guided::OfferText({}, VGA), "");
}

TEST(ArrivalText, SaysWhyThereIsNothingToWorkWith) {
  EXPECT_EQ(guided::NothingText("video 'a.avi'", SourceKind::Recording), "cannot read video 'a.avi'.");
  EXPECT_EQ(
      guided::NothingText("webcam 0", SourceKind::Camera),
      "webcam 0 has delivered no picture for 10 s: another program may be using it, or it needs another "
      "size.");
  EXPECT_EQ(guided::NothingText("RTMP stream 'x'", SourceKind::Stream),
            "RTMP stream 'x' has delivered no picture for 10 s.");
  EXPECT_EQ(guided::UnequalText("webcam 0 and webcam 1", VGA, HD),
            "webcam 0 and webcam 1 deliver frames of different sizes, 640x480 and 1280x720: ask for one that "
            "both have, with --width and --height.");
}

}  // namespace
