/// Tests of truth files.
#include "Truth.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "Cameras.h"
#include "Rigs.h"
#include "TemporaryFolder.h"
#include "Views.h"

using support::TemporaryFolder;
using world::Truth;

namespace {

Truth TruthWith(const world::Camera& camera) {
  world::Scene scene;
  scene.camera = camera;
  scene.sheet = world::Sheet(cv::Size(4, 11), 0.015);
  scene.seed = 18000000000000000000ULL;
  Truth truth = world::TruthOf(scene);
  const std::vector<world::Pose> poses = world::SampleViews(scene.camera, 3, 9, scene.sheet);
  for (std::size_t k = 0; k < poses.size(); ++k) {
    const int index = static_cast<int>(k);
    truth.frames.push_back(
        world::TruthFrameOf(scene, poses[k], index, "view" + std::to_string(index) + ".png"));
  }
  return truth;
}

Truth SomeTruth() {
  return TruthWith(OrdinaryCamera());
}

Truth FisheyeTruth() {
  return TruthWith(ManyFisheyes().back());
}

world::Pair SomeRig() {
  return world::SideBySidePair(OrdinaryCamera(), world::CameraFromFieldOfView({320, 240}, 50.0), 0.08, 4.0);
}

Truth SomeRigTruth() {
  const world::Scene scene;
  Truth truth = world::TruthOf(SomeRig(), scene);
  int index = 0;
  for (const world::Pose& pose : world::RigViews(SomeRig(), 2)) {
    const std::string name = "view" + std::to_string(index) + ".png";
    truth.frames.push_back(
        world::TruthFrameOf(SomeRig(), scene, pose, index, "left/" + name, "right/" + name));
    ++index;
  }
  return truth;
}

void ExpectSameView(const world::TruthView& actual, const world::TruthView& expected) {
  EXPECT_EQ(actual.file, expected.file);
  EXPECT_EQ(actual.pose.rvec, expected.pose.rvec);
  EXPECT_EQ(actual.pose.tvec, expected.pose.tvec);
  EXPECT_EQ(actual.centres, expected.centres);
  EXPECT_EQ(actual.whole, expected.whole);
}

/// The message of the exception that loading this text raises.
std::string FaultOf(const std::string& text) {
  const TemporaryFolder folder;
  support::WriteText(folder.File("truth.json"), text);
  try {
    world::LoadTruth(folder.File("truth.json"));
  } catch (const std::runtime_error& fault) {
    return fault.what();
  }
  return "no exception";
}

/// A good document, to be broken.
nlohmann::json GoodDocument(const Truth& truth = SomeTruth()) {
  const TemporaryFolder folder;
  world::SaveTruth(truth, folder.File("truth.json"));
  return nlohmann::json::parse(support::ReadText(folder.File("truth.json")));
}

}  // namespace

TEST(Truth, ComesBackFromItsFileUnchanged) {
  const TemporaryFolder folder;
  const Truth saved = SomeTruth();
  world::SaveTruth(saved, folder.File("truth.json"));
  const Truth loaded = world::LoadTruth(folder.File("truth.json"));
  EXPECT_EQ(loaded.imageSize, saved.imageSize);
  EXPECT_EQ(loaded.lens.K(), saved.lens.K());
  EXPECT_EQ(loaded.lens.D(), saved.lens.D());
  EXPECT_EQ(loaded.sheet.Unit(), 0.015);
  EXPECT_EQ(loaded.sheet.Grid(), cv::Size(4, 11));
  EXPECT_EQ(loaded.seed, saved.seed);
  ASSERT_EQ(loaded.frames.size(), 3U);
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_EQ(loaded.frames[k].file, saved.frames[k].file);
    EXPECT_EQ(loaded.frames[k].index, static_cast<int>(k));
    EXPECT_EQ(loaded.frames[k].pose.rvec, saved.frames[k].pose.rvec);
    EXPECT_EQ(loaded.frames[k].pose.tvec, saved.frames[k].pose.tvec);
    EXPECT_EQ(loaded.frames[k].centres, saved.frames[k].centres);
    EXPECT_TRUE(loaded.frames[k].whole);
  }
}

TEST(Truth, OfAFisheyeComesBackFromItsFileUnchanged) {
  const TemporaryFolder folder;
  const Truth saved = FisheyeTruth();
  world::SaveTruth(saved, folder.File("truth.json"));
  const Truth loaded = world::LoadTruth(folder.File("truth.json"));
  EXPECT_EQ(loaded.lens.K(), saved.lens.K());
  ASSERT_TRUE(loaded.lens.IsFisheye());
  EXPECT_EQ(loaded.lens.Curve()->D(), saved.lens.Curve()->D());
  ASSERT_EQ(loaded.frames.size(), 3U);
  for (std::size_t k = 0; k < 3; ++k) ExpectSameView(loaded.frames[k], saved.frames[k]);
}

TEST(Truth, NamesTheModelOfAFisheyeInsteadOfADistortion) {
  const nlohmann::json document = GoodDocument(FisheyeTruth());
  EXPECT_EQ(document["lensModel"].get<std::string>(), "kannala-brandt");
  EXPECT_EQ(document["fisheyeCoefs"].get<std::vector<double>>(),
            std::vector<double>({0.02, 0.003, 0.0, 0.0}));
  EXPECT_EQ(document.count("D"), 0U);
  EXPECT_EQ(GoodDocument().count("lensModel"), 0U);
  EXPECT_EQ(GoodDocument().count("fisheyeCoefs"), 0U);
}

TEST(Truth, NamesTheFaultOfABrokenFileOfAFisheye) {
  const auto faultWith = [](const char* key, const nlohmann::json& value) {
    nlohmann::json document = GoodDocument(FisheyeTruth());
    document[key] = value;
    return FaultOf(document.dump());
  };
  EXPECT_NE(faultWith("lensModel", "spheres").find("\"lensModel\" is not \"kannala-brandt\""),
            std::string::npos);
  EXPECT_NE(faultWith("lensModel", 7).find("\"lensModel\" is not"), std::string::npos);
  EXPECT_NE(faultWith("fisheyeCoefs", {0.1, 0.2, 0.3}).find("4 elements"), std::string::npos);
  EXPECT_NE(faultWith("fisheyeCoefs", {0.1, 0.2, 0.3, "?"}).find("not a number"), std::string::npos);
  nlohmann::json document = GoodDocument(FisheyeTruth());
  document.erase("fisheyeCoefs");
  EXPECT_NE(FaultOf(document.dump()).find("\"fisheyeCoefs\" is missing"), std::string::npos);
}

TEST(Truth, OfOneCameraHasNoTraceOfASecond) {
  const nlohmann::json document = GoodDocument();
  EXPECT_EQ(document.count("right"), 0U);
  EXPECT_EQ(document["frames"][0].count("right"), 0U);
  const TemporaryFolder folder;
  world::SaveTruth(SomeTruth(), folder.File("truth.json"));
  const Truth loaded = world::LoadTruth(folder.File("truth.json"));
  EXPECT_FALSE(loaded.right.has_value());
  EXPECT_FALSE(loaded.frames[0].right.has_value());
  EXPECT_THROW(world::PairOf(loaded), std::invalid_argument);
  EXPECT_THROW(world::LeftOf(loaded), std::invalid_argument);
  EXPECT_THROW(world::RightOf(loaded), std::invalid_argument);
}

TEST(Truth, OfAPairComesBackFromItsFileUnchanged) {
  const TemporaryFolder folder;
  const Truth saved = SomeRigTruth();
  world::SaveTruth(saved, folder.File("truth.json"));
  const Truth loaded = world::LoadTruth(folder.File("truth.json"));
  const world::Pair rig = world::PairOf(loaded);
  EXPECT_EQ(rig.left.size, cv::Size(640, 480));
  EXPECT_EQ(rig.left.lens.K(), SomeRig().left.lens.K());
  EXPECT_EQ(rig.left.lens.D(), SomeRig().left.lens.D());
  EXPECT_EQ(rig.right.size, cv::Size(320, 240));
  EXPECT_EQ(rig.right.lens.K(), SomeRig().right.lens.K());
  EXPECT_EQ(rig.right.lens.D(), SomeRig().right.lens.D());
  EXPECT_EQ(rig.R, SomeRig().R);
  EXPECT_EQ(rig.T, SomeRig().T);
  ASSERT_EQ(loaded.frames.size(), 2U);
  for (std::size_t k = 0; k < 2; ++k) {
    EXPECT_EQ(loaded.frames[k].index, static_cast<int>(k));
    ExpectSameView(loaded.frames[k], saved.frames[k]);
    ASSERT_TRUE(loaded.frames[k].right.has_value());
    ExpectSameView(*loaded.frames[k].right, *saved.frames[k].right);
  }
}

TEST(Truth, OfAPairHoldsWhatEachCameraSees) {
  const Truth truth = SomeRigTruth();
  const world::Pose pose = world::RigViews(SomeRig(), 2).back();
  const world::TruthFrame& frame = truth.frames[1];
  EXPECT_EQ(frame.file, "left/view1.png");
  EXPECT_EQ(frame.centres, world::TrueCentres(SomeRig().left.lens, world::Sheet(), pose));
  EXPECT_TRUE(frame.whole);
  ASSERT_TRUE(frame.right.has_value());
  const world::Pose rightPose = world::RightPose(SomeRig(), pose);
  EXPECT_EQ(frame.right->file, "right/view1.png");
  EXPECT_EQ(frame.right->pose.tvec, rightPose.tvec);
  EXPECT_EQ(frame.right->centres, world::TrueCentres(SomeRig().right.lens, world::Sheet(), rightPose));
  EXPECT_TRUE(frame.right->whole);
}

TEST(Truth, OfAPairFallsApartIntoThoseOfItsCameras) {
  const Truth truth = SomeRigTruth();
  const Truth left = world::LeftOf(truth);
  EXPECT_FALSE(left.right.has_value());
  EXPECT_EQ(left.imageSize, cv::Size(640, 480));
  EXPECT_EQ(left.lens.K(), SomeRig().left.lens.K());
  const Truth right = world::RightOf(truth);
  EXPECT_FALSE(right.right.has_value());
  EXPECT_EQ(right.imageSize, cv::Size(320, 240));
  EXPECT_EQ(right.lens.K(), SomeRig().right.lens.K());
  EXPECT_EQ(right.sheet.Grid(), truth.sheet.Grid());
  ASSERT_EQ(left.frames.size(), 2U);
  ASSERT_EQ(right.frames.size(), 2U);
  for (std::size_t k = 0; k < 2; ++k) {
    EXPECT_FALSE(left.frames[k].right.has_value());
    EXPECT_FALSE(right.frames[k].right.has_value());
    EXPECT_EQ(right.frames[k].index, static_cast<int>(k));
    ExpectSameView(left.frames[k], truth.frames[k]);
    ExpectSameView(right.frames[k], *truth.frames[k].right);
  }
}

TEST(Truth, NamesTheFaultOfABrokenFileOfAPair) {
  for (const char* key : {"imageSize", "K", "D", "R", "T"}) {
    nlohmann::json document = GoodDocument(SomeRigTruth());
    document["right"].erase(key);
    const std::string fault = FaultOf(document.dump());
    EXPECT_NE(fault.find(std::string("\"") + key + "\" is missing"), std::string::npos) << fault;
  }
  nlohmann::json document = GoodDocument(SomeRigTruth());
  document["frames"][1].erase("right");
  const std::string fault = FaultOf(document.dump());
  EXPECT_NE(fault.find("\"right\" is missing"), std::string::npos) << fault;
}

TEST(Truth, KeepsCentresThatAreNotImagedAsSuch) {
  const TemporaryFolder folder;
  Truth truth = SomeTruth();
  truth.frames[0].centres[5] = {std::nan(""), std::nan("")};
  world::SaveTruth(truth, folder.File("truth.json"));
  const Truth loaded = world::LoadTruth(folder.File("truth.json"));
  EXPECT_TRUE(std::isnan(loaded.frames[0].centres[5].x));
  EXPECT_EQ(loaded.frames[0].centres[6], truth.frames[0].centres[6]);
}

TEST(Truth, MarksFramesWithDiscsOutsideTheImage) {
  world::Scene scene;
  world::Pose pose = world::FrontalViews(scene.camera, 1).front();
  EXPECT_TRUE(world::TruthFrameOf(scene, pose, 0).whole);
  pose.tvec[0] += 0.3;
  EXPECT_FALSE(world::TruthFrameOf(scene, pose, 0).whole);
}

TEST(Truth, NamesTheFileThatCannotBeReadOrWritten) {
  const TemporaryFolder folder;
  const std::string path = folder.File("absent/truth.json");
  try {
    world::LoadTruth(path);
    ADD_FAILURE() << "read an absent file";
  } catch (const std::runtime_error& fault) {
    EXPECT_NE(std::string(fault.what()).find(path), std::string::npos) << fault.what();
  }
  try {
    world::SaveTruth(SomeTruth(), path);
    ADD_FAILURE() << "wrote to an absent folder";
  } catch (const std::runtime_error& fault) {
    EXPECT_NE(std::string(fault.what()).find(path), std::string::npos) << fault.what();
  }
}

TEST(Truth, NamesTheFaultOfABrokenFile) {
  const auto expectFault = [](const std::string& text, const std::string& word) {
    const std::string fault = FaultOf(text);
    EXPECT_NE(fault.find("truth.json"), std::string::npos) << fault;
    EXPECT_NE(fault.find(word), std::string::npos) << fault;
  };
  expectFault("", "parse error");
  expectFault("{\"K\": ", "parse error");
  expectFault("[1, 2]", "imageSize");
  for (const char* key : {"imageSize", "K", "D", "unit", "grid", "seed", "frames"}) {
    nlohmann::json document = GoodDocument();
    document.erase(key);
    expectFault(document.dump(), std::string("\"") + key + "\" is missing");
    document[key] = "nonsense";
    expectFault(document.dump(), key == std::string("imageSize") ? "width"
                                 : key == std::string("grid")    ? "columns"
                                                                 : key);
  }
  for (const char* key : {"file", "frame", "rvec", "tvec", "centres", "whole"}) {
    nlohmann::json document = GoodDocument();
    document["frames"][1].erase(key);
    expectFault(document.dump(), std::string("\"") + key + "\" is missing");
  }
  nlohmann::json document = GoodDocument();
  document["frames"][2]["centres"].erase(7);
  expectFault(document.dump(), "44 elements");
}

TEST(Truth, RefusesLensesAndSheetsThatCannotBe) {
  nlohmann::json document = GoodDocument();
  document["D"] = {0.1, 0.2};
  EXPECT_NE(FaultOf(document.dump()).find("distortion coefficients"), std::string::npos);
  document = GoodDocument();
  document["grid"]["rows"] = 0;
  EXPECT_NE(FaultOf(document.dump()).find("row"), std::string::npos);
  document = GoodDocument();
  document["imageSize"]["width"] = -640;
  EXPECT_NE(FaultOf(document.dump()).find("imageSize"), std::string::npos);
}
