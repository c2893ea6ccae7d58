/// Rigs of several cameras against the synthetic world's truth.
#include "velmora/RigCalibration.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "Arrangement.h"
#include "Calibrator.h"
#include "Shots.h"
#include "model/TargetGeometry.h"
#include "solver/ShapedViews.h"
#include "unit/Collection.h"

namespace {

using velmora::RigOptions;
using velmora::RigRecords;
using velmora::RigResult;

constexpr double NOISE = 0.1;  // pixels

world::Camera Single() {
  return world::CameraFromFieldOfView(unit::FRAME, 62.0, {-0.21, 0.06, 0.0008, -0.0006, -0.008});
}

world::Rig Row() {
  return world::RowRig(Single(), 3, 0.12);
}
world::Rig Ring() {
  return world::RingRig(Single(), 5, world::RingRadius(Single()), world::RingAngle(5));
}

RigRecords RecordsOf(const world::Rig& rig, int shots, double noise = NOISE, std::uint64_t seed = 1) {
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  RigRecords records;
  records.imagePoints.resize(rig.cameras.size());
  for (const world::RigCamera& camera : rig.cameras) records.imageSizes.push_back(camera.size);
  for (const world::ShotPoints& shot :
       world::PointsOf(rig, world::SampleRigShots(rig, shots, seed, sheet), sheet, noise, seed)) {
    records.objectPoints.push_back(velmora::MakeObjectTemplate(unit::GRID, unit::UNIT));
    for (size_t i = 0; i < shot.size(); ++i) records.imagePoints[i].push_back(shot[i]);
  }
  return records;
}

double DegreesBetween(const cv::Matx33d& a, const cv::Matx33d& b) {
  cv::Vec3d rotation;
  cv::Rodrigues(a * b.t(), rotation);
  return cv::norm(rotation) * 180.0 / CV_PI;
}

void ExpectTruth(const RigResult& result, const world::Rig& truth, double degrees, double metres) {
  ASSERT_EQ(result.cameras.size(), truth.cameras.size());
  for (size_t i = 0; i < truth.cameras.size(); ++i) {
    EXPECT_LT(DegreesBetween(result.cameras[i].R, truth.cameras[i].R), degrees)
        << "camera " << i << ", deviations " << result.cameras[i].rotationDeviation;
    EXPECT_LT(cv::norm(result.cameras[i].T - truth.cameras[i].T), metres) << "camera " << i;
  }
}

RigOptions Given(const world::Rig& rig) {
  RigOptions options;
  for (const world::RigCamera& camera : rig.cameras) {
    options.intrinsics.push_back(
        {cv::Mat(camera.lens.K()).clone(), cv::Mat(camera.lens.D()).reshape(1, 1).clone()});
  }
  return options;
}

std::string FaultOf(const RigRecords& records, const RigOptions& options = {}) {
  try {
    velmora::CalibrateRig(records, options);
  } catch (const cv::Exception& fault) {
    return fault.err;
  }
  return "";
}

TEST(RigCalibration, FindsThreeCamerasInARow) {
  RigOptions options;
  options.model = Calibrator::MODEL_CLASSIC;
  const RigResult result = velmora::CalibrateRig(RecordsOf(Row(), 240), options);
  ExpectTruth(result, Row(), 0.05, 0.0005);
  EXPECT_NEAR(result.rms, NOISE * std::sqrt(2.0), 0.01);
  EXPECT_TRUE(result.leftOut.size() < 20U);
  EXPECT_EQ(result.verdict.ToString(), "good");
}

TEST(RigCalibration, FindsFiveCamerasInARingOfWhichNoViewIsSeenByAll) {
  const RigRecords records = RecordsOf(Ring(), 240);
  for (size_t view = 0; view < records.objectPoints.size(); ++view) {
    size_t images = 0;
    for (const auto& camera : records.imagePoints) images += camera[view].empty() ? 0U : 1U;
    ASSERT_LT(images, records.imagePoints.size());
  }
  RigOptions options;
  options.model = Calibrator::MODEL_CLASSIC;
  ExpectTruth(velmora::CalibrateRig(records, options), Ring(), 0.05, 0.0005);
}

TEST(RigCalibration, LeavesGivenIntrinsicsAsTheyAre) {
  const world::Rig rig = Row();
  const RigOptions options = Given(rig);
  const RigResult result = velmora::CalibrateRig(RecordsOf(rig, 15), options);
  ExpectTruth(result, rig, 0.05, 0.0005);
  for (size_t i = 0; i < rig.cameras.size(); ++i) {
    EXPECT_EQ(cv::norm(result.cameras[i].K, options.intrinsics[i].K, cv::NORM_INF), 0.0);
    EXPECT_EQ(cv::countNonZero(result.cameras[i].stdDevIntrinsics), 0);
    EXPECT_GT(result.cameras[i].views, 0);
  }
  EXPECT_TRUE(result.verdict.cameras.empty());
}

TEST(RigCalibration, LeavesOutWhatWasSpoilt) {
  const world::Rig rig = Row();
  RigRecords records = RecordsOf(rig, 30);
  ASSERT_FALSE(records.imagePoints[0][4].empty());
  ASSERT_FALSE(records.imagePoints[1][5].empty());
  records.imagePoints[0][4][7] += cv::Point2d(9.0, -4.0);
  std::reverse(records.imagePoints[1][5].begin(), records.imagePoints[1][5].end());
  RigOptions options;
  options.model = Calibrator::MODEL_CLASSIC;
  const RigResult result = velmora::CalibrateRig(records, options);
  ExpectTruth(result, rig, 0.2, 0.002);  // as sure as so few views make it
  const auto timesRejected = [&](size_t view, size_t camera, int point) {
    return std::count_if(result.leftOut.begin(), result.leftOut.end(), [&](const velmora::RigLeftOut& item) {
      return item.view == view && item.camera == camera && item.point == point;
    });
  };
  EXPECT_EQ(timesRejected(4, 0, 7), 1);
  EXPECT_EQ(timesRejected(5, 1, -1), 1);
  EXPECT_EQ(result.views[5].rms[1], -1.0);
}

/// The rows from the last to the first, as if counted from the other end.
void CountRowsFromTheOtherEnd(std::vector<cv::Point2d>& image) {
  std::reverse(image.begin(), image.end());
  for (auto row = image.begin(); row != image.end(); row += unit::GRID.width) {
    std::reverse(row, row + unit::GRID.width);
  }
}

TEST(RigCalibration, PutsImagesRightThatWereCountedFromTheOtherEnd) {
  const world::Rig rig = Row();
  RigRecords records = RecordsOf(rig, 30);
  RigOptions options;
  options.model = Calibrator::MODEL_CLASSIC;
  const RigResult expected = velmora::CalibrateRig(records, options);
  ASSERT_FALSE(records.imagePoints[1][5].empty());
  CountRowsFromTheOtherEnd(records.imagePoints[1][5]);
  const RigResult result = velmora::CalibrateRig(records, options);
  ASSERT_EQ(result.recounted.size(), 1U);
  EXPECT_EQ(result.recounted[0].view, 5U);
  EXPECT_EQ(result.recounted[0].camera, 1U);
  EXPECT_EQ(result.leftOut.size(), expected.leftOut.size());
  EXPECT_NEAR(result.rms, expected.rms, 1e-9);
  for (size_t i = 1; i < rig.cameras.size(); ++i) {
    EXPECT_LT(cv::norm(result.cameras[i].T - expected.cameras[i].T), 1e-7);
  }
}

TEST(RigCalibration, TakesWhatEachCameraSawOfTheTarget) {
  const world::Rig rig = Row();
  RigRecords records = RecordsOf(rig, 30);
  RigOptions options;
  options.model = Calibrator::MODEL_CLASSIC;
  records.weights.resize(records.imagePoints.size());
  records.weights[1].resize(records.objectPoints.size());
  // The bottom row beyond the border, where the points are anywhere.
  for (size_t view = 0; view < records.objectPoints.size(); ++view) {
    auto& points = records.imagePoints[1][view];
    if (points.empty() || view % 2 == 0) continue;
    records.weights[1][view].assign(points.size(), 1.0);
    for (size_t k = points.size() - 4; k < points.size(); ++k) {
      records.weights[1][view][k] = 0.0;
      points[k] = {-500.0, 3.0};
    }
  }
  auto& spoilt = records.imagePoints[1][5];
  ASSERT_FALSE(records.weights[1][5].empty());
  // Without the first row: numbers of what is left out are still those of the whole target.
  for (size_t k = 0; k < 4; ++k) records.weights[1][5][k] = 0.0;
  spoilt[7] += cv::Point2d(9.0, -4.0);
  const RigResult result = velmora::CalibrateRig(records, options);
  ExpectTruth(result, rig, 0.2, 0.002);
  ASSERT_EQ(result.leftOut.size(), 1U);
  EXPECT_EQ(result.leftOut[0].view, 5U);
  EXPECT_EQ(result.leftOut[0].camera, 1U);
  EXPECT_EQ(result.leftOut[0].point, 7);
}

TEST(RigCalibration, RaisesForWeightsThatDoNotMatch) {
  const RigRecords right = RecordsOf(Row(), 15);
  const auto raises = [&](auto change, const std::string& words) {
    RigRecords records = right;
    records.weights.resize(records.imagePoints.size());
    records.weights[0].resize(records.objectPoints.size());
    ASSERT_FALSE(records.imagePoints[0][4].empty());
    records.weights[0][4].assign(records.imagePoints[0][4].size(), 1.0);
    change(records.weights);
    try {
      velmora::CalibrateRig(records, {});
      ADD_FAILURE() << words;
    } catch (const cv::Exception& fault) {
      EXPECT_NE(fault.err.find(words), std::string::npos) << fault.err;
    }
  };
  using Weights = std::vector<std::vector<std::vector<double>>>;
  raises([](Weights& w) { w.pop_back(); }, "give all or none");
  raises([](Weights& w) { w[0].pop_back(); }, "The weights of camera 0 are of");
  raises([](Weights& w) { w[0][4].pop_back(); }, "There are 43 weights of camera 0 in view 4, and 44 points");
  raises([](Weights& w) { w[0][4][3] = 0.5; }, "A weight of camera 0 in view 4 is neither 0 nor 1");
  raises([](Weights& w) { std::fill(w[0][4].begin() + 3, w[0][4].end(), 0.0); },
         "Fewer than four points of camera 0");
}

/// Noise that is twelve times as large on every third point, with its deviations.
void AddUnevenNoise(RigRecords& records, std::uint64_t seed) {
  cv::RNG random(seed);
  records.deviations.clear();
  for (auto& camera : records.imagePoints) {
    records.deviations.emplace_back();
    for (auto& view : camera) {
      records.deviations.back().emplace_back();
      for (size_t k = 0; k < view.size(); ++k) {
        const double deviation = k % 3 == 0 ? 0.6 : 0.05;
        view[k] += cv::Point2d(random.gaussian(deviation), random.gaussian(deviation));
        records.deviations.back().back().push_back(deviation);
      }
    }
  }
}

TEST(RigCalibration, LetsPointsCountAsMuchAsTheyAreKnown) {
  const world::Rig rig = Row();
  RigOptions options = Given(rig);
  options.model = Calibrator::MODEL_CLASSIC;
  options.robust = false;
  double known = 0.0;
  double alike = 0.0;
  for (const std::uint64_t seed : {1U, 2U, 3U, 4U}) {
    RigRecords records = RecordsOf(rig, 20, 0.0, seed);
    AddUnevenNoise(records, seed);
    const auto errorOf = [&](const RigResult& result) {
      double squares = 0.0;
      for (size_t i = 1; i < 3; ++i) squares += std::pow(cv::norm(result.cameras[i].T - rig.cameras[i].T), 2);
      return squares;
    };
    const RigResult result = velmora::CalibrateRig(records, options);
    EXPECT_GT(result.rms, 0.4) << "of pixels";
    known += errorOf(result);
    // Points that a camera did not see have no deviations either.
    records.weights.resize(3);
    records.weights[2].resize(records.objectPoints.size());
    for (size_t view = 0; view < records.objectPoints.size(); ++view) {
      records.weights[2][view].assign(records.imagePoints[2][view].size(), 1.0);
      if (!records.imagePoints[2][view].empty()) records.weights[2][view][5] = 0.0;
    }
    EXPECT_LT(errorOf(velmora::CalibrateRig(records, options)), 9.0 * errorOf(result) + 1e-8);
    records.deviations.clear();
    alike += errorOf(velmora::CalibrateRig(records, options));
  }
  EXPECT_LT(std::sqrt(known), 0.5 * std::sqrt(alike));
}

TEST(RigCalibration, RaisesForDeviationsThatDoNotMatch) {
  const RigRecords right = RecordsOf(Row(), 15);
  using Deviations = std::vector<std::vector<std::vector<double>>>;
  const auto faultWith = [&](auto change) {
    RigRecords records = right;
    records.deviations.resize(records.imagePoints.size());
    records.deviations[0].resize(records.objectPoints.size());
    records.deviations[0][4].assign(records.imagePoints[0][4].size(), 0.02);
    change(records.deviations);
    return FaultOf(records);
  };
  ASSERT_FALSE(right.imagePoints[0][4].empty());
  EXPECT_NE(faultWith([](Deviations& d) { d.pop_back(); }).find("There are deviations for 2 of 3 cameras"),
            std::string::npos);
  EXPECT_NE(faultWith([](Deviations& d) { d[0].pop_back(); }).find("The deviations of camera 0 are of"),
            std::string::npos);
  EXPECT_NE(faultWith([](Deviations& d) {
              d[0][4].pop_back();
            }).find("There are 43 deviations of camera 0 in view 4, and 44 points"),
            std::string::npos);
  EXPECT_NE(faultWith([](Deviations& d) {
              d[0][4][3] = -1.0;
            }).find("A deviation of camera 0 in view 4 is negative or not finite"),
            std::string::npos);
}

TEST(RigCalibration, NamesACameraThatIsLinkedToNone) {
  RigRecords records = RecordsOf(Ring(), 40);
  for (size_t view = 0; view < records.objectPoints.size(); ++view) {
    if (records.imagePoints[2][view].empty()) continue;
    for (const size_t other : {0U, 1U, 3U, 4U}) records.imagePoints[other][view].clear();
  }
  const std::string fault = FaultOf(records);
  EXPECT_NE(fault.find("Camera 2 never saw the target together with"), std::string::npos) << fault;
}

TEST(RigCalibration, SaysWhatItCannotWorkWith) {
  RigRecords records = RecordsOf(Row(), 12);
  for (size_t view = 2; view < records.objectPoints.size(); ++view) records.imagePoints[1][view].clear();
  EXPECT_NE(FaultOf(records).find("Camera 1 saw the target in"), std::string::npos) << FaultOf(records);
  RigOptions given = Given(Row());
  given.intrinsics.pop_back();
  EXPECT_NE(FaultOf(RecordsOf(Row(), 5), given).find("give all or none"), std::string::npos);
  EXPECT_EQ(FaultOf({}), "A rig has two cameras or more.");
  RigOptions impatient;
  impatient.progress = [](int, double) { return false; };
  EXPECT_EQ(FaultOf(RecordsOf(Row(), 12), impatient), "The computation was given up.");
}

TEST(RigCalibration, PutsTheTargetWhereItWas) {
  const world::Rig rig = Row();
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  const std::vector<world::Pose> shots = world::SampleRigShots(rig, 20, 1, sheet);
  const RigResult result = velmora::CalibrateRig(RecordsOf(rig, 20, 0.0), Given(rig));
  for (size_t i = 0; i < shots.size(); ++i) {
    ASSERT_TRUE(result.views[i].used);
    std::vector<cv::Point2d> pixels;
    const auto object = velmora::MakeObjectTemplate(unit::GRID, unit::UNIT);
    const auto observed = RecordsOf(rig, 20, 0.0).imagePoints[0][i];
    if (observed.empty()) continue;
    cv::projectPoints(object, result.views[i].rvec, result.views[i].tvec, result.cameras[0].K,
                      result.cameras[0].D, pixels);
    for (size_t k = 0; k < pixels.size(); ++k) EXPECT_LT(cv::norm(pixels[k] - observed[k]), 0.01);
  }
}

RigRecords RecordsOfBentSheet(const world::Rig& rig) {
  unit::ShapedSheet sheet;
  sheet.bend = {0.0, 0.0005, 0.001};
  const auto views = unit::RigViewsOf(sheet, rig, 14, NOISE, 2);
  RigRecords records;
  records.imagePoints.assign(views.begin(), views.end());
  records.objectPoints = unit::Targets(views[0]);
  for (const world::RigCamera& camera : rig.cameras) records.imageSizes.push_back(camera.size);
  return records;
}

TEST(RigCalibration, TakesTheShapeOfTheSheetThatIsAllowed) {
  const world::Rig rig = world::RowRig(Single(), 3, 0.06);
  const RigRecords records = RecordsOfBentSheet(rig);
  RigOptions options;
  options.model = Calibrator::MODEL_CLASSIC;
  const RigResult flat = velmora::CalibrateRig(records, options);
  EXPECT_TRUE(flat.verdict.sheet.points.empty());
  options.sheetShape = Calibrator::SHEET_AUTO;
  const RigResult bent = velmora::CalibrateRig(records, options);
  EXPECT_EQ(bent.verdict.sheet.model, "bent");
  EXPECT_NEAR(bent.verdict.sheet.bend, 0.00125, 0.0005);
  EXPECT_LT(bent.rms, 0.16);
  EXPECT_GT(flat.rms, 1.5 * bent.rms);
  ExpectTruth(bent, rig, 0.15, 0.001);
  EXPECT_NEAR(bent.verdict.sheet.points.back().y, 0.2, 0.001) << "in the frame of the grid";
  RigOptions again;
  again.model = options.model;
  again.sheetPoints = bent.verdict.sheet.points;
  const RigResult given = velmora::CalibrateRig(records, again);
  EXPECT_EQ(given.verdict.sheet.model, "known");
  EXPECT_NEAR(given.verdict.sheet.bend, bent.verdict.sheet.bend, 1e-9);
  EXPECT_NEAR(given.rms, bent.rms, 0.01);
  EXPECT_NEAR(given.verdict.sheet.points.back().y, bent.verdict.sheet.points.back().y, 1e-9);
  const auto tells = [](const RigResult& result) {
    return std::any_of(result.verdict.remarks.begin(), result.verdict.remarks.end(), [](const auto& remark) {
      return remark.reason.find("This is taken into account; rotations would be off by") != std::string::npos;
    });
  };
  EXPECT_TRUE(tells(bent));
  EXPECT_FALSE(tells(flat));
}

}  // namespace
