/// The table that ends a calibration.
#include "common/Report.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace {

using ::testing::AssertionFailure;
using ::testing::AssertionResult;
using ::testing::AssertionSuccess;

AssertionResult Holds(const std::string& text, const std::string& part) {
  if (text.find(part) != std::string::npos) return AssertionSuccess();
  return AssertionFailure() << "'" << part << "' is not in\n" << text;
}

common::Report SomeReport(int coefficients) {
  common::Report report;
  report.model = "rational";
  report.frame = {640, 480};
  report.used = {"a.png", "b.png", "c.png", "d.png", "e.png", "f.png"};
  report.rms = 0.125;
  report.K = (cv::Mat_<double>(3, 3) << 601.5, 0, 320.25, 0, 602.5, 240.75, 0, 0, 1);
  report.D = cv::Mat::zeros(1, coefficients, CV_64F);
  report.D.at<double>(0) = -0.25;
  report.D.at<double>(4) = 0.0;  // estimated, and happens to be zero
  report.stdDevs = cv::Mat::zeros(18, 1, CV_64F);
  report.stdDevs.at<double>(0) = 1.5;
  report.stdDevs.at<double>(4) = 0.003;
  report.stdDevs.at<double>(8) = 0.004;
  report.viewErrors = (cv::Mat_<double>(6, 1) << 0.1, 0.6, 0.2, 0.5, 0.3, 0.4);
  return report;
}

TEST(Report, RejectedPicturesAreGroupedByReason) {
  const std::string table = common::ViewsTable(
      {"a.png"}, {{"b.png", "no grid found"}, {"c.png", "cannot be decoded"}, {"d.png", "no grid found"}});
  EXPECT_EQ(table,
            "1 of 4 images used\n"
            "  2 not used, no grid found:\n"
            "    b.png, d.png\n"
            "  1 not used, cannot be decoded:\n"
            "    c.png\n");
}

TEST(Report, PartsOfTheGridAreCountedWithTheirCircles) {
  EXPECT_EQ(common::PartsText({{}, 44}, 12), "");
  EXPECT_EQ(common::PartsText({{38}, 44}, 12), "1 of 12 views is a part of the grid (38 of 44 circles)\n");
  EXPECT_EQ(common::PartsText({{38, 41}, 44}, 12),
            "2 of 12 views are parts of the grid (38 and 41 of 44 circles)\n");
  EXPECT_EQ(common::PartsText({{38, 41, 33}, 44}, 12),
            "3 of 12 views are parts of the grid (38, 41 and 33 of 44 circles)\n");
  EXPECT_EQ(common::PartsText({{38, 41, 33, 40, 39}, 44}, 12),
            "5 of 12 views are parts of the grid (33 to 41 of 44 circles)\n");
}

TEST(Report, NamesPartsOfTheGridAfterTheViews) {
  common::Report report = SomeReport(5);
  EXPECT_EQ(common::ResultTable(report).find("part"), std::string::npos);
  report.parts = {{38, 41}, 44};
  EXPECT_TRUE(Holds(common::ResultTable(report),
                    "6 of 6 images used\n2 of 6 views are parts of the grid (38 and 41 of 44 circles)\n\n"));
}

TEST(Report, ViewsThatDisagreeAreNotCountedAsUsed) {
  common::Report report = SomeReport(5);
  report.disagreeing = {1, 3};
  report.rejected = {common::NotNeeded("g.png", 30)};
  const std::string table = common::ResultTable(report);
  EXPECT_TRUE(Holds(table,
                    "4 of 7 images used; 2 disagree\n"
                    "  1 found but not needed (--max-views 30):\n"
                    "    g.png\n"
                    "  2 found but in disagreement with the others:\n"
                    "    b.png, d.png\n"));
  EXPECT_TRUE(Holds(table, "Worst views:\n    0.4000 px  f.png\n"));
  EXPECT_TRUE(Holds(common::ViewsTable({"a.png", "b.png"}, {}, {0}), "1 of 2 images used; 1 disagrees\n"));
  EXPECT_TRUE(Holds(common::ViewsTable({"a.png"}, {}), "1 of 1 image used\n"));
}

TEST(Report, LongListsOfNamesAreBrokenIntoLines) {
  std::vector<common::Rejection> rejected;
  for (int i = 0; i < 40; ++i) rejected.push_back({"picture_" + std::to_string(i) + ".png", "no grid found"});
  const std::string table = common::ViewsTable({}, rejected);
  EXPECT_TRUE(Holds(table, "picture_39.png\n"));
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 100u) << line;
    EXPECT_NE(line.back(), ' ') << line;
  }
}

TEST(Report, OfVeryLongListsOnlyTheFirstNamesAreShown) {
  std::vector<common::Rejection> rejected(41, {"name", "no grid found"});
  EXPECT_TRUE(Holds(common::ViewsTable({}, rejected), "    and 1 more\n"));
  rejected.pop_back();
  EXPECT_FALSE(Holds(common::ViewsTable({}, rejected), "more"));
}

TEST(Report, ParametersComeWithTheirStandardDeviations) {
  const std::string table = common::ResultTable(SomeReport(5));
  EXPECT_TRUE(Holds(table, "RMS reprojection error: 0.125000 px\n"));
  EXPECT_TRUE(Holds(table, "  fx               601.500          1.500\n"));
  EXPECT_TRUE(Holds(table, "  cy               240.750          0.000\n"));
  EXPECT_TRUE(Holds(table, "  k1             -0.250000       0.003000\n"));
  EXPECT_TRUE(Holds(table, "  k3              0.000000       0.004000\n"));
}

TEST(Report, CoefficientsOutsideTheModelAreLeftOut) {
  const std::string table = common::ResultTable(SomeReport(14));
  EXPECT_FALSE(Holds(table, "s1 "));
  EXPECT_FALSE(Holds(table, "tau x"));
}

TEST(Report, TheWorstViewsComeFirst) {
  const std::string table = common::ResultTable(SomeReport(5));
  EXPECT_TRUE(Holds(table,
                    "Worst views:\n"
                    "    0.6000 px  b.png\n"
                    "    0.5000 px  d.png\n"
                    "    0.4000 px  f.png\n"
                    "    0.3000 px  e.png\n"
                    "    0.2000 px  c.png\n"));
}

TEST(Report, APairIsToldByBaselineRotationAndEpipolarDistance) {
  common::PairReport report;
  report.model = "rational";
  report.used = {"a.png"};
  report.rms = 0.25;
  report.left = {0.2, {0.2}};
  report.right = {0.3, {0.3}};
  report.epipolarDistance = 0.125;
  report.T = (cv::Mat_<double>(3, 1) << -0.06, 0.0, 0.08);
  const double angle = CV_PI / 6.0;
  report.R = (cv::Mat_<double>(3, 3) << std::cos(angle), 0, std::sin(angle), 0, 1, 0, -std::sin(angle), 0,
              std::cos(angle));
  EXPECT_EQ(common::PairTable(report),
            "1 of 1 pair used\n"
            "\n"
            "Pair: rational model\n"
            "RMS reprojection error:  0.250000 px\n"
            "RMS of left and right:   0.200000 px, 0.300000 px\n"
            "Mean epipolar distance:  0.125000 px\n"
            "Baseline:                0.100000 m\n"
            "Translation:             -0.060000 0.000000 0.080000 m\n"
            "Rotation:                30.0000 degrees\n"
            "\n"
            "Worst views, left and right:\n"
            "    0.2000 px   0.3000 px  a.png\n");
}

TEST(BatchReport, TheWorstPairsByEitherCameraComeFirst) {
  common::PairReport report;
  report.R = cv::Mat::eye(3, 3, CV_64F);
  report.T = (cv::Mat_<double>(3, 1) << -0.1, 0.0, 0.0);
  report.used = {"a.png", "b.png", "c.png", "d.png", "e.png", "f.png", "g.png"};
  report.disagreeing = {3};
  report.left.views = {0.1, 0.2, 0.3, -1.0, 0.5, 0.15, 0.05};
  report.right.views = {0.6, 0.1, 0.1, 0.2, 0.1, 0.1, 0.04};
  EXPECT_TRUE(Holds(common::PairTable(report),
                    "\nWorst views, left and right:\n"
                    "    0.1000 px   0.6000 px  a.png\n"
                    "    0.5000 px   0.1000 px  e.png\n"
                    "    0.3000 px   0.1000 px  c.png\n"
                    "    0.2000 px   0.1000 px  b.png\n"
                    "    0.1500 px   0.1000 px  f.png\n"));
  EXPECT_FALSE(Holds(common::PairTable(report), "px  g.png"));
  EXPECT_FALSE(Holds(common::PairTable(report), "px  d.png"));
}

TEST(Report, CamerasThatChangedPlacesAreRemarkedOn) {
  const std::string remark = "  The right camera stands to the left of the left one: are the two swapped?\n";
  common::PairReport report;
  report.R = cv::Mat::eye(3, 3, CV_64F);
  report.T = (cv::Mat_<double>(3, 1) << 0.1, 0.02, 0.03);
  EXPECT_TRUE(Holds(common::PairTable(report), remark));
  report.T = (cv::Mat_<double>(3, 1) << -0.1, 0.02, 0.03);
  EXPECT_FALSE(Holds(common::PairTable(report), remark));
  report.T = (cv::Mat_<double>(3, 1) << 0.02, -0.1, 0.0);  // one above the other
  EXPECT_FALSE(Holds(common::PairTable(report), remark));
}

}  // namespace
