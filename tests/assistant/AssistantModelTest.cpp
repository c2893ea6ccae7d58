/// Reading of the assistant's model file.
#include "assistant/AssistantModel.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "TemporaryFolder.h"

using namespace velmora;

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

TEST_F(AssistantModelFile, MustBeJson) {
  for (const char* text : {"", "no JSON", "{\"count\": 1"}) {
    support::WriteText(path_, text);
    try {
      ReadAssistantModel(path_, FRAME, PATTERN);
      ADD_FAILURE() << "the model was read: " << text;
    } catch (const UnreadableModel&) {
      ADD_FAILURE() << "it was read, but is none";
    } catch (const std::runtime_error& fault) {
      EXPECT_STREQ(fault.what(), "it is no JSON text");
    }
  }
}

TEST_F(AssistantModelFile, MustHoldEachMember) {
  for (const char* key : {"imgWidth", "imgHeight", "count"}) {
    nlohmann::json model = OnePose();
    model.erase(key);
    ExpectFault(model, std::string("it has no number '") + key + "'");
    model[key] = "text";
    ExpectFault(model, std::string("it has no number '") + key + "'");
  }
  nlohmann::json model = OnePose();
  model.erase("points0");
  ExpectFault(model, "it has no list of points 'points0'");
  model["points0"] = 7;
  ExpectFault(model, "it has no list of points 'points0'");
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
  ExpectFault(model, "it has no list of points 'points1'");
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

TEST_F(AssistantModelFile, MustHoldFiniteNumbers) {
  nlohmann::json model = OnePose();
  model["points0"]["data"][3] = 1e300;  // infinite as a float
  ExpectFault(model, "'points0' holds numbers that are not finite");
}

/// A sheet of six circles within its outline, and what the drawing needs of a pose.
class SheetFit : public ::testing::Test {
 protected:
  /// The words of the fault; empty when the sheet fits.
  std::string FaultOf(const std::vector<cv::Point2f>& pose) {
    AssistantModel model;
    model.poses.push_back(cv::Mat(circles_, true));
    model.poses.push_back(cv::Mat(pose, true));
    try {
      FitSheet(circles_, outline_, model);
      EXPECT_EQ(model.homographies.size(), 2U);
      return "";
    } catch (const std::runtime_error& fault) {
      return fault.what();
    }
  }

  const std::vector<cv::Point2f> circles_ = {{100, 100}, {200, 100}, {100, 200},
                                             {200, 200}, {100, 300}, {200, 300}};
  const std::vector<cv::Point2f> outline_ = {{0, 0}, {300, 0}, {300, 400}, {0, 400}, {40, 400}, {0, 360}};
};

TEST_F(SheetFit, IsTheMapFromTheSheetToThePose) {
  std::vector<cv::Point2f> pose;
  for (const cv::Point2f& circle : circles_)
    pose.emplace_back(0.5F * circle.x + 7.0F, 0.25F * circle.y - 3.0F);
  EXPECT_EQ(FaultOf(pose), "");
  AssistantModel model;
  model.poses.push_back(cv::Mat(pose, true));
  FitSheet(circles_, outline_, model);
  const cv::Mat expected = (cv::Mat_<double>(3, 3) << 0.5, 0, 7, 0, 0.25, -3, 0, 0, 1);
  EXPECT_LT(cv::norm(model.homographies[0], expected, cv::NORM_INF), 1e-4);
}

TEST_F(SheetFit, RefusesPosesWithoutAnArea) {
  const std::string fault = "the points of 'points1' are no picture of the sheet";
  EXPECT_EQ(FaultOf(std::vector<cv::Point2f>(6, {50, 50})), fault);
}

TEST_F(SheetFit, RefusesPosesThatReachBehindTheViewer) {
  // So much perspective that the sheet's edge lies beyond the horizon.
  std::vector<cv::Point2f> pose;
  for (const cv::Point2f& circle : circles_) {
    const float w = 1.0F - 0.0028F * circle.y;
    pose.emplace_back(circle.x / w, circle.y / w);
  }
  EXPECT_EQ(FaultOf(pose), "the points of 'points1' are no picture of the sheet");
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
