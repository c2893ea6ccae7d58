/// What verdicts say in words and as JSON.
#include "Verdict.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "PairVerdict.h"
#include "velmora/RigVerdict.h"

namespace {

using Grade = CalibrationVerdict::Grade;

constexpr double UNKNOWN = std::numeric_limits<double>::infinity();

TEST(VerdictsWords, AreThoseOfTheGrade) {
  const std::pair<Grade, const char*> grades[] = {{Grade::None, "no result"},
                                                  {Grade::Good, "good"},
                                                  {Grade::WithCare, "usable with care"},
                                                  {Grade::Worthless, "worthless"}};
  for (const auto& [grade, words] : grades) {
    CalibrationVerdict verdict;
    verdict.grade = grade;
    EXPECT_EQ(verdict.ToString(), words);
    PairVerdict pair;
    pair.grade = grade;
    EXPECT_EQ(pair.ToString(), words);
    EXPECT_EQ(nlohmann::json::parse(verdict.ToJson())["grade"], words);
    EXPECT_EQ(nlohmann::json::parse(pair.ToJson())["grade"], words);
  }
}

TEST(Verdict, ExpectsTheLargerDeviationAndWhatIsNoNoise) {
  CalibrationVerdict verdict;
  verdict.deviationInData = 0.3;
  verdict.jackknifeInData = 0.1;
  verdict.systematicInData = 0.4;
  EXPECT_DOUBLE_EQ(verdict.ExpectedInData(), 0.5);
  verdict.jackknifeInData = 0.9;
  verdict.systematicInData = 1.2;
  EXPECT_DOUBLE_EQ(verdict.ExpectedInData(), 1.5);
}

CalibrationVerdict::Sheet MeasuredSheet() {
  CalibrationVerdict::Sheet sheet;
  sheet.model = "free";
  sheet.points = {{0.0, 0.0, 0.001}, {0.02, 0.01, -0.001}};
  sheet.bend = 0.002;
  sheet.bendDeviation = 0.0001;
  sheet.stretch = -0.01;
  sheet.skew = 0.003;
  sheet.misprint = 0.00008;
  sheet.bendChanges = 0.0003;
  sheet.bends = {{0.0001, 0.0002, -0.0003}};
  sheet.parameters = 12.5;
  sheet.flatRms = 0.4;
  sheet.shift = 3.25;
  return sheet;
}

TEST(Verdict, HasTheSheetInItsJsonWhereItWasMeasured) {
  CalibrationVerdict verdict;
  EXPECT_FALSE(nlohmann::json::parse(verdict.ToJson()).contains("sheet"));
  EXPECT_TRUE(CalibrationVerdict::FromJson(verdict.ToJson()).sheet.points.empty());
  verdict.sheet = MeasuredSheet();
  const auto text = nlohmann::json::parse(verdict.ToJson());
  EXPECT_EQ(text.at("sheet"), nlohmann::json::parse(R"({
    "model": "free", "points": [[0.0, 0.0, 0.001], [0.02, 0.01, -0.001]], "bend": 0.002, "bendDeviation": 0.0001,
    "stretch": -0.01, "skew": 0.003, "misprint": 0.00008, "bendChanges": 0.0003,
    "bends": [[0.0001, 0.0002, -0.0003]], "parameters": 12.5, "flatRms": 0.4, "shift": 3.25})"));
  const CalibrationVerdict again = CalibrationVerdict::FromJson(verdict.ToJson());
  EXPECT_EQ(again.ToJson(), verdict.ToJson());
  EXPECT_EQ(again.sheet.points, verdict.sheet.points);
}

TEST(Verdict, GivesItsSheetAlone) {
  CalibrationVerdict verdict;
  EXPECT_THROW(CalibrationVerdict::Sheet::FromVerdict(verdict.ToJson()), std::invalid_argument);
  EXPECT_THROW(CalibrationVerdict::Sheet::FromVerdict("{"), std::invalid_argument);
  verdict.sheet = MeasuredSheet();
  EXPECT_EQ(CalibrationVerdict::Sheet::FromVerdict(verdict.ToJson()).ToJson(), verdict.sheet.ToJson());
}

TEST(Verdict, HasAllItsNumbersInItsJson) {
  CalibrationVerdict verdict;
  verdict.views = 7;
  verdict.focalDeviation = 0.01;
  verdict.focalJackknife = 0.02;
  verdict.deviationInData = 0.03;
  verdict.jackknifeInData = 0.04;
  verdict.systematicInData = 0.05;
  verdict.sheetBend = 0.06;
  verdict.sheetStretch = -0.07;
  verdict.poses = 6;
  verdict.printError = 0.0001;
  verdict.movedWhileRead = 0.0004;
  verdict.focalChange = 0.011;
  verdict.principalPointChange = {1.5, -2.5};
  verdict.changedAfter = 3;
  verdict.principalPointDeviation = 0.6;
  verdict.imageWithoutRay = 0.02;
  verdict.deviationInImage = 0.08;
  verdict.coverage = 0.09;
  verdict.covariance = (cv::Mat_<double>(2, 2) << 4.0, 1.0, 1.0, 9.0);
  verdict.jackknifeCovariance = (cv::Mat_<double>(1, 1) << 16.0);
  verdict.remarks = {{"a reason", "an advice"}, {"another", "one more"}};
  verdict.leftOut = {{3, 5, 1.5, "far off"}, {4, -1, UNKNOWN, "no grid"}};
  const auto text = nlohmann::json::parse(verdict.ToJson());
  EXPECT_EQ(text, nlohmann::json::parse(R"({
    "grade": "no result", "views": 7, "poses": 6, "focalDeviation": 0.01, "focalJackknife": 0.02,
    "deviationInData": 0.03, "jackknifeInData": 0.04, "systematicInData": 0.05, "sheetBend": 0.06,
    "sheetStretch": -0.07, "deviationInImage": 0.08, "coverage": 0.09, "printError": 0.0001,
    "movedWhileRead": 0.0004, "focalChange": 0.011, "principalPointChange": [1.5, -2.5], "changedAfter": 3,
    "principalPointDeviation": 0.6, "imageWithoutRay": 0.02,
    "covariance": [[4.0, 1.0], [1.0, 9.0]], "jackknifeCovariance": [[16.0]],
    "remarks": [{"reason": "a reason", "advice": "an advice"}, {"reason": "another", "advice": "one more"}],
    "leftOut": [{"view": 3, "point": 5, "residual": 1.5, "reason": "far off"},
                {"view": 4, "point": -1, "residual": null, "reason": "no grid"}]})"));
}

TEST(Verdict, IsReadBackFromItsJson) {
  CalibrationVerdict verdict;
  verdict.grade = Grade::WithCare;
  verdict.views = 7;
  verdict.changedAfter = 3;
  verdict.focalJackknife = UNKNOWN;
  verdict.coverage = 0.5;
  verdict.principalPointChange = {1.5, -2.5};
  verdict.covariance = (cv::Mat_<double>(2, 2) << 4.0, 1.0, 1.0, 9.0);
  verdict.remarks = {{"a reason", "an advice"}};
  verdict.leftOut = {{4, -1, UNKNOWN, "no grid"}};
  const CalibrationVerdict read = CalibrationVerdict::FromJson(verdict.ToJson());
  EXPECT_EQ(read.ToJson(), verdict.ToJson());
  EXPECT_EQ(read.focalJackknife, UNKNOWN);
  EXPECT_EQ(cv::norm(read.covariance, verdict.covariance), 0.0);
  EXPECT_TRUE(read.jackknifeCovariance.empty());
}

TEST(Verdict, IsNotReadFromOtherTexts) {
  const std::string text = CalibrationVerdict().ToJson();
  const auto other = [&](const std::string& from, const std::string& to) {
    const size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return std::string(text).replace(place, from.size(), to);
  };
  for (const std::string& wrong :
       {std::string(), std::string("{}"), std::string("[1]"), text.substr(0, text.size() / 2),
        other("\"no result\"", "\"splendid\""), other("\"views\":0", "\"views\":\"none\""),
        other("\"covariance\":[]", "\"covariance\":[[1.0, 2.0]]")}) {
    EXPECT_THROW(CalibrationVerdict::FromJson(wrong), std::invalid_argument) << wrong;
  }
}

TEST(Verdict, HasNullInItsJsonForWhatIsUnknown) {
  CalibrationVerdict verdict;
  verdict.focalDeviation = verdict.jackknifeInData = UNKNOWN;
  verdict.deviationInImage = std::numeric_limits<double>::quiet_NaN();
  const auto text = nlohmann::json::parse(verdict.ToJson());
  EXPECT_TRUE(text["focalDeviation"].is_null());
  EXPECT_TRUE(text["jackknifeInData"].is_null());
  EXPECT_TRUE(text["deviationInImage"].is_null());
  EXPECT_EQ(text["focalJackknife"], 0.0);
}

TEST(PairVerdict, HasAllItsNumbersInItsJson) {
  PairVerdict verdict;
  verdict.grade = Grade::WithCare;
  verdict.views = 9;
  verdict.poses = 8;
  verdict.lensesRefined = true;
  verdict.lensesKnown = true;
  verdict.recounted = {{5, false}, {6, true}};
  verdict.formal = {0.1, 0.2, 0.3};
  verdict.jackknife = {0.4, 0.5, UNKNOWN};
  verdict.withLenses = {0.7, 0.8, 0.9};
  verdict.disagreement = 1.1;
  verdict.disagreements = {{2, 4.5}, {6, UNKNOWN}};
  verdict.sheetBend = 0.0015;
  verdict.leftOut = {{3, false, 7, 2.5, "far"}, {4, true, -1, UNKNOWN, "wrong"}};
  verdict.left = {0.125, {0.25, -1.0, 0.5}, 1.2, 1.3, 0.75, {}, {}};
  verdict.right = {0.375, {-1.0, UNKNOWN, 2.0}, 1.4, UNKNOWN, 0.5, {}, {}};
  verdict.remarks = {{"a reason", "an advice"}};
  EXPECT_EQ(nlohmann::json::parse(verdict.ToJson()), nlohmann::json::parse(R"({
    "grade": "usable with care", "views": 9, "poses": 8, "lensesRefined": true, "lensesKnown": true,
    "recounted": [{"view": 5, "camera": "left"}, {"view": 6, "camera": "right"}], "sheetBend": 0.0015,
    "leftOut": [{"view": 3, "camera": "left", "point": 7, "residual": 2.5, "reason": "far"},
                {"view": 4, "camera": "right", "point": -1, "residual": null, "reason": "wrong"}],
    "formal": {"rotation": 0.1, "baseline": 0.2, "direction": 0.3},
    "jackknife": {"rotation": 0.4, "baseline": 0.5, "direction": null},
    "left": {"rms": 0.125, "viewRms": [0.25, null, 0.5],
             "deviationInData": 1.2, "deviationInImage": 1.3, "coverage": 0.75},
    "right": {"rms": 0.375, "viewRms": [null, null, 2.0],
              "deviationInData": 1.4, "deviationInImage": null, "coverage": 0.5},
    "withLenses": {"rotation": 0.7, "baseline": 0.8, "direction": 0.9},
    "disagreement": 1.1, "disagreements": [{"view": 2, "factor": 4.5}, {"view": 6, "factor": null}],
    "remarks": [{"reason": "a reason", "advice": "an advice"}]})"));
}

PairVerdict Considered(Grade pair, Grade camera, bool lensesRefined = false) {
  PairVerdict verdict;
  verdict.grade = pair;
  verdict.lensesRefined = lensesRefined;
  CalibrationVerdict own;
  own.grade = camera;
  verdict.Consider(own, "right");
  return verdict;
}

TEST(PairVerdict, IsNoBetterThanTheIntrinsicsItRestsOn) {
  EXPECT_EQ(Considered(Grade::Good, Grade::WithCare).grade, Grade::WithCare);
  EXPECT_EQ(Considered(Grade::WithCare, Grade::Worthless).grade, Grade::Worthless);
  EXPECT_EQ(Considered(Grade::Worthless, Grade::WithCare).grade, Grade::Worthless);
  const PairVerdict verdict = Considered(Grade::Good, Grade::WithCare);
  ASSERT_EQ(verdict.remarks.size(), 1U);
  EXPECT_EQ(verdict.remarks.front().reason, "The right camera by itself is usable with care.");
  EXPECT_EQ(verdict.remarks.front().advice, "See its own verdict, and calibrate it again.");
}

TEST(PairVerdict, HasNothingToConsiderOfGoodIntrinsicsOrItsOwn) {
  for (const PairVerdict& verdict :
       {Considered(Grade::Good, Grade::Good), Considered(Grade::Good, Grade::None),
        Considered(Grade::Good, Grade::Worthless, true)}) {
    EXPECT_EQ(verdict.grade, Grade::Good);
    EXPECT_TRUE(verdict.remarks.empty());
  }
  EXPECT_EQ(Considered(Grade::None, Grade::Worthless).grade, Grade::None);
}

TEST(RigVerdict, HasTheWordsOfItsGrade) {
  velmora::RigVerdict verdict;
  EXPECT_EQ(verdict.ToString(), "no result");
  verdict.grade = Grade::WithCare;
  EXPECT_EQ(verdict.ToString(), "usable with care");
}

}  // namespace
