/// Which cameras are calibrated, and what is refused.
#include "velmora/Selection.h"

#include <gtest/gtest.h>

#include <sstream>

using app::SelectCameras;
using app::Settings;
using common::Camera;

namespace {

class Selection : public testing::Test {
 protected:
  app::Selection Select(bool stereoInput) { return SelectCameras(settings_, stereoInput, err_); }

  Settings settings_;
  std::ostringstream err_;
};

TEST_F(Selection, APlainInputIsCalibratedAlone) {
  const auto selection = Select(false);
  EXPECT_FALSE(selection.exitStatus.has_value());
  EXPECT_EQ(selection.kind, Calibrator::MONOCULAR);
  EXPECT_EQ(selection.camera, Camera::None);
  EXPECT_EQ(err_.str(), "");
}

TEST_F(Selection, APlainInputHasNothingToSelect) {
  settings_.select = "left";
  EXPECT_EQ(Select(false).exitStatus, -1);
  EXPECT_EQ(err_.str(), "ERROR: Select option cannot be applied for non-stereo input.\n");
}

TEST_F(Selection, OneCameraOfAPairNeedsNoResultFiles) {
  for (const auto& [word, camera] : {std::pair("left", Camera::Left), std::pair("right", Camera::Right)}) {
    settings_.select = word;
    const auto selection = Select(true);
    EXPECT_FALSE(selection.exitStatus.has_value());
    EXPECT_EQ(selection.kind, Calibrator::MONOCULAR);
    EXPECT_EQ(selection.camera, camera);
  }
  EXPECT_EQ(err_.str(), "");
}

TEST_F(Selection, AnUnknownWordSelectsTheLeftCamera) {
  settings_.select = "both";
  const auto selection = Select(true);
  EXPECT_FALSE(selection.exitStatus.has_value());
  EXPECT_EQ(selection.kind, Calibrator::MONOCULAR);
  EXPECT_EQ(selection.camera, Camera::Left);
  EXPECT_EQ(err_.str(), "'both' is an unknown value for the '--select' option. Set to 'left' by default.\n");
}

TEST_F(Selection, APairNeedsTheLeftResultFileFirst) {
  EXPECT_EQ(Select(true).exitStatus, -1);
  EXPECT_EQ(err_.str(), "ERROR: In the stereo case, left camera calibration file has to be provided.\n");
}

TEST_F(Selection, APairNeedsTheRightResultFileToo) {
  settings_.calibLeft = "left.json";
  EXPECT_EQ(Select(true).exitStatus, -1);
  EXPECT_EQ(err_.str(), "ERROR: In the stereo case, right camera calibration file has to be provided.\n");
}

TEST_F(Selection, APairWithBothResultFilesIsCalibratedAsAPair) {
  settings_.calibLeft = "left.json";
  settings_.calibRight = "right.json";
  const auto selection = Select(true);
  EXPECT_FALSE(selection.exitStatus.has_value());
  EXPECT_EQ(selection.kind, Calibrator::STEREO);
  EXPECT_EQ(selection.camera, Camera::None);
  EXPECT_EQ(err_.str(), "");
}

}  // namespace
