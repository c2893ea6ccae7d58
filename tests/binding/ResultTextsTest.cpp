/// What programs on texts exchange with the comparison and the check of results.
#include "binding/ResultTexts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

using namespace velmora;

namespace {

using nlohmann::json;

const char* const REQUEST = R"({"images": [{"centres": [[1.5, 2.5], [3, 4]], "weights": [1, 0],
  "deviations": [0.1, 0.2], "radii": []}], "grid": {"columns": 4, "rows": 11}, "unit": 0.02,
  "discRadius": 0.008, "tolerance": 0.5, "sheetPoints": [[0, 0, 0.001], [0.04, 0, -0.001]]})";

std::string FaultOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const std::invalid_argument& fault) {
    return fault.what();
  }
  return "";
}

TEST(ResultTexts, ARequestGivesImagesAndOptions) {
  const CheckRequest request = CheckRequestFrom(REQUEST);
  ASSERT_EQ(request.images.size(), 1U);
  ASSERT_EQ(request.images[0].points.size(), 2U);
  EXPECT_EQ(request.images[0].points[0], cv::Point2d(1.5, 2.5));
  EXPECT_EQ(request.images[0].weights, (std::vector<double>{1.0, 0.0}));
  EXPECT_EQ(request.images[0].deviations, (std::vector<double>{0.1, 0.2}));
  EXPECT_EQ(request.options.grid, cv::Size(4, 11));
  EXPECT_EQ(request.options.unit, 0.02);
  EXPECT_EQ(request.options.discRadius, 0.008);
  EXPECT_EQ(request.options.tolerance, 0.5);
  ASSERT_EQ(request.options.sheetPoints.size(), 2U);
  EXPECT_EQ(request.options.sheetPoints[1], cv::Point3d(0.04, 0.0, -0.001));
}

TEST(ResultTexts, OfARequestEveryFieldIsNeeded) {
  const json whole = json::parse(REQUEST);
  for (const auto& field : whole.items()) {
    const std::string& key = field.key();
    json request = whole;
    request.erase(key);
    EXPECT_EQ(FaultOf([&] { CheckRequestFrom(request.dump()); }),
              "The text of the request lacks \"" + key + "\".");
    request[key] = "text";
    EXPECT_NE(FaultOf([&] { CheckRequestFrom(request.dump()); }), "") << key;
  }
  EXPECT_EQ(FaultOf([] { CheckRequestFrom("{"); }), "The text of the request is cut off or no JSON text.");
}

TEST(ResultTexts, OptionsOfAComparisonAreStepAndArea) {
  const ComparisonOptions options = ComparisonOptionsFrom(R"({"step": 4.5, "area": [[1, 2], [3, 4.5]]})");
  EXPECT_EQ(options.step, 4.5);
  ASSERT_EQ(options.area.size(), 2U);
  EXPECT_EQ(options.area[1], cv::Point2f(3.0F, 4.5F));
  EXPECT_EQ(FaultOf([] { ComparisonOptionsFrom(R"({"step": 1, "area": [[1]]})"); }),
            "The text of the options has another type of \"area\".");
}

TEST(ResultTexts, AComparisonIsToldWithItsMap) {
  ResultComparison comparison;
  comparison.mean = 0.25;
  comparison.rms = 0.5;
  comparison.largest = 0.75;
  comparison.where = {10.5, 20.5};
  comparison.rotation = {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0};
  comparison.angle = 1.5;
  comparison.compared = 1;
  comparison.incomparable = 0.5;
  comparison.stepX = 16.0;
  comparison.stepY = 15.0;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  comparison.map = (cv::Mat_<cv::Vec2d>(1, 2) << cv::Vec2d(nan, nan), cv::Vec2d(0.5, -0.25));
  EXPECT_EQ(json::parse(AnswerOf(comparison)), json::parse(R"({"mean": 0.25, "rms": 0.5, "largest": 0.75,
    "where": [10.5, 20.5], "rotation": [1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0], "angle": 1.5,
    "compared": 1, "incomparable": 0.5, "stepX": 16.0, "stepY": 15.0, "rows": 1, "columns": 2,
    "differences": [null, [0.5, -0.25]]})"));
}

TEST(ResultTexts, ACheckIsToldWithItsImagesAndNullForInfiniteNumbers) {
  ResultCheck check;
  check.answer = ResultCheck::Answer::NotCalibrated;
  check.sentence = "No longer calibrated: it moved.";
  check.advice = "Calibrate anew.";
  check.images.resize(1);
  check.images[0].used = true;
  check.images[0].rms = 0.125;
  check.images[0].largestPoint = 7;
  check.images[0].outliers = 2;
  check.images[0].rvec = {0.1, 0.2, 0.3};
  check.shift = 1.5;
  check.shiftDeviation = std::numeric_limits<double>::infinity();
  check.principalPointDeviation = {0.5, std::numeric_limits<double>::infinity()};
  const json told = json::parse(AnswerOf(check));
  EXPECT_EQ(told.at("answer"), "not calibrated");
  EXPECT_EQ(told.at("sentence"), check.sentence);
  EXPECT_EQ(told.at("advice"), check.advice);
  const json& image = told.at("images").at(0);
  EXPECT_EQ(image.at("used"), true);
  EXPECT_EQ(image.at("rms"), 0.125);
  EXPECT_EQ(image.at("largestPoint"), 7);
  EXPECT_EQ(image.at("outliers"), 2);
  EXPECT_EQ(image.at("rvec"), json::parse("[0.1, 0.2, 0.3]"));
  EXPECT_EQ(told.at("shift"), 1.5);
  EXPECT_TRUE(told.at("shiftDeviation").is_null());
  EXPECT_EQ(told.at("principalPointDeviation"), json::parse("[0.5, null]"));
  check.answer = ResultCheck::Answer::Calibrated;
  EXPECT_EQ(json::parse(AnswerOf(check)).at("answer"), "calibrated");
  check.answer = ResultCheck::Answer::CannotTell;
  EXPECT_EQ(json::parse(AnswerOf(check)).at("answer"), "cannot tell");
}

TEST(ResultTexts, WhatIsNoResultIsToldByTheNameOfItsText) {
  EXPECT_EQ(FaultOf([] { ResultFrom("{", "first text"); }), "The first text is not a result file.");
  EXPECT_EQ(FaultOf([] { ResultFrom(R"({"cameras": []})", "second text"); }),
            "The second text is the result of a rig, not of one camera.");
}

}  // namespace
