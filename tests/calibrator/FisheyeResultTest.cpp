/// The text of a fisheye's result file.
#include "FisheyeResult.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace {

FisheyeResult Lens() {
  FisheyeResult lens;
  lens.K = (cv::Mat_<double>(3, 3) << 401.5, 0.0, 640.25, 0.0, 402.0, 480.5, 0.0, 0.0, 1.0);
  lens.coefficients = (cv::Mat_<double>(1, 4) << -0.01, 0.002, 0.0003, -0.00004);
  lens.imageSize = {1280, 960};
  lens.rms = 0.14;
  lens.widestAngle = 91.5;
  return lens;
}

std::string Without(const std::string& key) {
  nlohmann::json document = nlohmann::json::parse(Lens().ToJson());
  document.erase(key);
  return document.dump();
}

std::string With(const std::string& key, const nlohmann::json& value) {
  nlohmann::json document = nlohmann::json::parse(Lens().ToJson());
  document[key] = value;
  return document.dump();
}

TEST(FisheyeResult, IsReadAsItWasWritten) {
  const FisheyeResult read = FisheyeResult::FromJson(Lens().ToJson());
  EXPECT_EQ(cv::norm(read.K, Lens().K, cv::NORM_INF), 0.0);
  EXPECT_EQ(cv::norm(read.coefficients, Lens().coefficients, cv::NORM_INF), 0.0);
  EXPECT_EQ(read.imageSize, Lens().imageSize);
  EXPECT_EQ(read.rms, Lens().rms);
  EXPECT_EQ(read.widestAngle, Lens().widestAngle);
  EXPECT_EQ(read.ToJson(), Lens().ToJson());
}

TEST(FisheyeResult, SaysItsModelAndHasNoOtherCoefficients) {
  const nlohmann::json document = nlohmann::json::parse(Lens().ToJson());
  EXPECT_EQ(document.at("lensModel"), "kannala-brandt");
  EXPECT_FALSE(document.contains("distCoefs"));
}

TEST(FisheyeResult, RefusesOtherTexts) {
  const nlohmann::json small = {
      {"rows", 1}, {"cols", 3}, {"type", 6}, {"depth", 6}, {"data", {1.0, 2.0, 3.0}}};
  for (const std::string& text :
       {std::string(), std::string("{"), std::string("[]"), std::string("7"), Without("lensModel"),
        Without("fisheyeCoefs"), Without("cameraMatrix"), Without("error"), With("lensModel", "rational"),
        With("fisheyeCoefs", small), With("cameraMatrix", small), With("imgWidth", "wide")}) {
    EXPECT_THROW(FisheyeResult::FromJson(text), std::invalid_argument) << text;
  }
}

}  // namespace
