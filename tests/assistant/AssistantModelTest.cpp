/// Reading of the assistant's model file.
#include "assistant/AssistantModel.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "TemporaryFolder.h"

namespace {

const cv::Size FRAME(640, 480);
const cv::Size PATTERN(2, 3);

/// A model of one pose: six points of 1280 x 720 around (640, 360).
nlohmann::json OnePose() {
  return nlohmann::json::parse(R"({
    "imgWidth": 1280, "imgHeight": 720, "count": 1,
    "points0": {"rows": 6, "cols": 1, "type": 13, "depth": 5,
                "data": [540, 260, 740, 260, 540, 360, 740, 360, 540, 460, 740, 460]}})");
}

class AssistantModelFile : public ::testing::Test {
 protected:
  AssistantModel Read(const nlohmann::json& model) const {
    support::WriteText(path_, model.dump());
    return ReadAssistantModel(path_, FRAME, PATTERN);
  }

  /// Expects the reading to fail with those words.
  void ExpectFault(const nlohmann::json& model, const std::string& words) const {
    try {
      Read(model);
      ADD_FAILURE() << "the model was read: " << model.dump();
    } catch (const std::runtime_error& fault) {
      EXPECT_NE(std::string(fault.what()).find(words), std::string::npos) << fault.what();
    }
  }

  support::TemporaryFolder folder_;
  const std::string path_ = folder_.File("model.json");
};

TEST_F(AssistantModelFile, IsMappedToTheFrameWithItsShapeKept) {
  const AssistantModel model = Read(OnePose());
  ASSERT_EQ(model.poses.size(), 1U);
  EXPECT_EQ(model.scale, 0.5F);
  // The centre follows the proportions of the frame; the shape is scaled by the smaller factor.
  const std::vector<cv::Point2f> expected = {{270, 190}, {370, 190}, {270, 240},
                                             {370, 240}, {270, 290}, {370, 290}};
  for (int i = 0; i < 6; ++i) {
    EXPECT_LT(cv::norm(model.poses[0].at<cv::Point2f>(i) - expected[static_cast<size_t>(i)]), 1e-3) << i;
  }
}

TEST_F(AssistantModelFile, MovesItsCentreByTheFactorOfEachAxis) {
  nlohmann::json narrow = OnePose();
  narrow["imgWidth"] = 160;   // factor 4
  narrow["imgHeight"] = 240;  // factor 2, the scale
  narrow["points0"]["data"] = {60, 100, 100, 100, 60, 120, 100, 120, 60, 140, 100, 140};
  const AssistantModel model = Read(narrow);
  EXPECT_EQ(model.scale, 2.0F);
  // From (80, 120) to (320, 240).
  const std::vector<cv::Point2f> expected = {{280, 200}, {360, 200}, {280, 240},
                                             {360, 240}, {280, 280}, {360, 280}};
  for (int i = 0; i < 6; ++i) {
    EXPECT_LT(cv::norm(model.poses[0].at<cv::Point2f>(i) - expected[static_cast<size_t>(i)]), 1e-3) << i;
  }
}

TEST_F(AssistantModelFile, IsTakenAsItIsForItsOwnFrameSize) {
  nlohmann::json own = OnePose();
  own["imgWidth"] = 640;
  own["imgHeight"] = 480;
  const AssistantModel model = Read(own);
  EXPECT_EQ(model.scale, 1.0F);
  EXPECT_LT(cv::norm(model.poses[0].at<cv::Point2f>(5) - cv::Point2f(740, 460)), 1e-3);
}

TEST_F(AssistantModelFile, MustBeReadable) {
  try {
    ReadAssistantModel(folder_.File("missing.json"), FRAME, PATTERN);
    FAIL() << "nothing was raised";
  } catch (const std::runtime_error& fault) {
    EXPECT_STREQ(fault.what(), "it cannot be read");
  }
}

TEST_F(AssistantModelFile, MustHoldEachMember) {
  for (const char* key : {"imgWidth", "imgHeight", "count", "points0"}) {
    nlohmann::json model = OnePose();
    model.erase(key);
    ExpectFault(model, "type must be number, but is null");
  }
}

TEST_F(AssistantModelFile, MustHoldAPoseAndAnImageSize) {
  nlohmann::json model = OnePose();
  model["count"] = 0;
  ExpectFault(model, "it holds no pose");
  model = OnePose();
  model["imgWidth"] = 0;
  ExpectFault(model, "its image size is not positive");
  model = OnePose();
  model["imgHeight"] = -1;
  ExpectFault(model, "its image size is not positive");
}

TEST_F(AssistantModelFile, MustHoldEveryPoseOfItsCount) {
  nlohmann::json model = OnePose();
  model["count"] = 2;
  ExpectFault(model, "null");
}

TEST_F(AssistantModelFile, MustHoldAsManyPointsAsTheGrid) {
  nlohmann::json model = OnePose();
  model["points0"]["rows"] = 5;
  ExpectFault(model, "'points0' is not a list of 6 points");
  model = OnePose();
  model["points0"]["type"] = 5;
  ExpectFault(model, "'points0' is not a list of 6 points");
}

TEST_F(AssistantModelFile, MustHoldPointsThatSpanAnArea) {
  nlohmann::json model = OnePose();
  model["points0"]["data"] = {0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5};
  ExpectFault(model, "the points of 'points0' span no area");
}

TEST_F(AssistantModelFile, MayHoldNoImpossibleMatrix) {
  nlohmann::json model = OnePose();
  model["points0"]["rows"] = -6;
  ExpectFault(model, "");
  model["points0"]["rows"] = 2147483647;
  model["points0"]["cols"] = 2147483647;
  ExpectFault(model, "");
}

}  // namespace
