/// What tables and files call the cameras of a rig and their images.
#include "common/RigNames.h"

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::string>;

TEST(RigNames, NumbersInTextsBecomeNames) {
  const Texts names = {"left", "camera 0", "right"};
  EXPECT_EQ(common::WithCameraNames("Camera 2 never saw camera 0, nor camera 1.", names),
            "Camera 'right' never saw camera 'left', nor camera 'camera 0'.");
  EXPECT_EQ(common::WithCameraNames("The cameras 1 of camera 7 and 3 views.", names),
            "The cameras 1 of camera 7 and 3 views.");
}

TEST(RigNames, ImagesAndMomentsHaveNames) {
  const common::RigNames names{{"left", "right"}, {{"1.png", "1.png"}, {"", "2.png"}, {"3.png", "c3.png"}}};
  EXPECT_EQ(names.Image(2, 1), "right/c3.png");
  EXPECT_EQ(names.Moments(), (Texts{"1.png", "2.png", "3.png+c3.png"}));
  EXPECT_EQ(names.AllImages(),
            (Texts{"left/1.png", "right/1.png", "right/2.png", "left/3.png", "right/c3.png"}));
}

}  // namespace
