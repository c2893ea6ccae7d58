/// Tests of truth files.
#include "Truth.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "Cameras.h"
#include "TemporaryFolder.h"
#include "Views.h"

using support::TemporaryFolder;
using world::Truth;

namespace {

Truth SomeTruth() {
  world::Scene scene;
  scene.camera = OrdinaryCamera();
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
nlohmann::json GoodDocument() {
  const TemporaryFolder folder;
  world::SaveTruth(SomeTruth(), folder.File("truth.json"));
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
