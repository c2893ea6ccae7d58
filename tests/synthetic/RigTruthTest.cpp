/// Tests of the truth of rigs and its file.
#include "RigTruth.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "Arrangement.h"
#include "Cameras.h"
#include "Shots.h"
#include "TemporaryFolder.h"

using support::TemporaryFolder;
using world::RigTruth;

namespace {

RigTruth SomeRigTruth() {
  const world::Scene scene;
  const world::Rig rig = world::RingRig(OrdinaryCamera(), 3, 0.4, 60.0);
  RigTruth truth = world::RigTruthOf(rig, scene);
  int index = 0;
  for (const world::Pose& pose : world::RigShots(rig, 2)) {
    truth.frames.push_back(
        world::RigTruthFrameOf(rig, scene.sheet, pose, index++, {"camera-0/a.png", "", "camera-2/c.png"}));
  }
  return truth;
}

nlohmann::json SavedDocument() {
  const TemporaryFolder folder;
  world::SaveRigTruth(SomeRigTruth(), folder.File("truth.json"));
  return nlohmann::json::parse(support::ReadText(folder.File("truth.json")));
}

std::string FaultOf(const nlohmann::json& document) {
  const TemporaryFolder folder;
  support::WriteText(folder.File("truth.json"), document.dump());
  try {
    world::LoadRigTruth(folder.File("truth.json"));
  } catch (const std::runtime_error& fault) {
    return fault.what();
  }
  return "no exception";
}

}  // namespace

TEST(RigTruth, ComesBackFromItsFileUnchanged) {
  const TemporaryFolder folder;
  const RigTruth saved = SomeRigTruth();
  world::SaveRigTruth(saved, folder.File("truth.json"));
  const RigTruth loaded = world::LoadRigTruth(folder.File("truth.json"));
  EXPECT_EQ(loaded.seed, saved.seed);
  EXPECT_EQ(loaded.sheet.Grid(), saved.sheet.Grid());
  EXPECT_EQ(loaded.sheet.Unit(), saved.sheet.Unit());
  ASSERT_EQ(loaded.rig.cameras.size(), 3U);
  ASSERT_EQ(loaded.frames.size(), 2U);
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_EQ(loaded.rig.cameras[k].size, saved.rig.cameras[k].size);
    EXPECT_EQ(loaded.rig.cameras[k].lens.K(), saved.rig.cameras[k].lens.K());
    EXPECT_EQ(loaded.rig.cameras[k].lens.D(), saved.rig.cameras[k].lens.D());
    EXPECT_EQ(loaded.rig.cameras[k].R, saved.rig.cameras[k].R);
    EXPECT_EQ(loaded.rig.cameras[k].T, saved.rig.cameras[k].T);
  }
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(loaded.frames[i].index, static_cast<int>(i));
    EXPECT_EQ(loaded.frames[i].pose.rvec, saved.frames[i].pose.rvec);
    EXPECT_EQ(loaded.frames[i].pose.tvec, saved.frames[i].pose.tvec);
    ASSERT_EQ(loaded.frames[i].views.size(), 3U);
    EXPECT_EQ(loaded.frames[i].views[2].file, "camera-2/c.png");
    EXPECT_EQ(loaded.frames[i].views[2].pose.tvec, saved.frames[i].views[2].pose.tvec);
    EXPECT_EQ(loaded.frames[i].views[0].whole, saved.frames[i].views[0].whole);
  }
}

TEST(RigTruth, OfACameraHasItsPicturesOnly) {
  const RigTruth truth = SomeRigTruth();
  const world::Truth last = world::TruthOfCamera(truth, 2);
  EXPECT_EQ(last.lens.K(), truth.rig.cameras[2].lens.K());
  EXPECT_EQ(last.imageSize, truth.rig.cameras[2].size);
  ASSERT_EQ(last.frames.size(), 2U);
  EXPECT_EQ(last.frames[1].index, 1);
  EXPECT_EQ(last.frames[1].pose.tvec, world::PoseFor(truth.rig, 2, truth.frames[1].pose).tvec);
  EXPECT_EQ(last.frames[1].file, "camera-2/c.png");
  EXPECT_TRUE(world::TruthOfCamera(truth, 1).frames.empty());
}

TEST(RigTruth, IsNotWholeForACameraBehindTheSheet) {
  world::Rig rig = world::RowRig(OrdinaryCamera(), 2, 0.1);
  const world::Pose pose = world::RigShots(rig, 1).front();
  // Turned around the sheet's middle, which is about 0.4 m away.
  const double depth = world::ToCamera({world::Sheet().GridMiddle()}, pose).front().z;
  rig.cameras[1].R = cv::Matx33d(-1, 0, 0, 0, 1, 0, 0, 0, -1);
  rig.cameras[1].T = cv::Vec3d(0.0, 0.0, 2.0 * depth);
  const auto frame = world::RigTruthFrameOf(rig, world::Sheet(), pose, 0, {"a", "b"});
  EXPECT_TRUE(frame.views[0].whole);
  EXPECT_TRUE(world::DiscsInside(rig.cameras[1], world::Sheet(), frame.views[1].pose));
  EXPECT_FALSE(frame.views[1].whole);
}

TEST(RigTruth, NamesTheFaultOfABrokenFile) {
  for (const char* key : {"cameras", "frames", "grid", "seed", "unit"}) {
    nlohmann::json document = SavedDocument();
    document.erase(key);
    EXPECT_NE(FaultOf(document).find(std::string("\"") + key + "\" is missing"), std::string::npos);
  }
  for (const char* key : {"imageSize", "K", "D", "R", "T"}) {
    nlohmann::json document = SavedDocument();
    document["cameras"][1].erase(key);
    EXPECT_NE(FaultOf(document).find(std::string("\"") + key + "\" is missing"), std::string::npos);
  }
  nlohmann::json document = SavedDocument();
  document["frames"][1]["views"].erase(1);
  EXPECT_NE(FaultOf(document).find("\"views\" is not a list of 3 elements"), std::string::npos);
}

TEST(RigTruth, IsNotTakenForThatOfOneCamera) {
  const TemporaryFolder folder;
  world::SaveRigTruth(SomeRigTruth(), folder.File("truth.json"));
  try {
    world::LoadTruth(folder.File("truth.json"));
    ADD_FAILURE() << "took a rig for a camera";
  } catch (const std::runtime_error& fault) {
    EXPECT_NE(std::string(fault.what()).find("of a rig"), std::string::npos) << fault.what();
  }
}
