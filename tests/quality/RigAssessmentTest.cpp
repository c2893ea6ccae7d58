/// Verdicts on rigs: good data, few views, moved sheets, bent sheets.
#include "quality/RigAssessment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <opencv2/calib3d.hpp>

#include "Arrangement.h"
#include "Calibrator.h"
#include "Shots.h"
#include "model/RigidTransform.h"
#include "model/TargetGeometry.h"
#include "unit/Collection.h"
#include "velmora/RigCalibration.h"

namespace {

using namespace velmora;
using Grade = RigVerdict::Grade;

world::Rig Row() {
  return world::RowRig(
      world::CameraFromFieldOfView(unit::FRAME, 62.0, {-0.21, 0.06, 0.0008, -0.0006, -0.008}), 3, 0.12);
}

/// What the row sees of a sheet with these points, which need not be plane.
RigRecords RecordsOf(int shots, const std::function<double(const cv::Point3d&)>& depth) {
  const world::Rig rig = Row();
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  cv::RNG random(7);
  RigRecords records;
  records.imagePoints.resize(rig.cameras.size());
  for (const world::RigCamera& camera : rig.cameras) records.imageSizes.push_back(camera.size);
  const auto object = MakeObjectTemplate(unit::GRID, unit::UNIT);
  for (const world::Pose& pose : world::SampleRigShots(rig, shots, 1, sheet)) {
    records.objectPoints.push_back(object);
    for (size_t i = 0; i < rig.cameras.size(); ++i) {
      const world::Pose own = world::PoseFor(rig, i, pose);
      std::vector<cv::Point2d> points;
      for (const cv::Point3d& point : object) {
        if (!world::SeesSheet(rig.cameras[i], sheet, own)) break;
        const cv::Vec3d at =
            cv::Matx33d(RotationOf(own.rvec)) * cv::Vec3d(point.x, point.y, depth(point)) + own.tvec;
        points.push_back(rig.cameras[i].lens.Project({at[0] / at[2], at[1] / at[2]}) +
                         cv::Point2d(random.gaussian(0.1), random.gaussian(0.1)));
      }
      records.imagePoints[i].push_back(points);
    }
  }
  return records;
}

double Flat(const cv::Point3d& /*point*/) {
  return 0.0;
}

RigVerdict VerdictOn(const RigRecords& records, bool robust = true) {
  RigOptions options;
  options.model = Calibrator::MODEL_CLASSIC;
  options.robust = robust;
  return CalibrateRig(records, options).verdict;
}

bool Says(const RigVerdict& verdict, const std::string& words) {
  return std::any_of(verdict.remarks.begin(), verdict.remarks.end(),
                     [&](const CalibrationVerdict::Remark& remark) {
                       return remark.reason.find(words) != std::string::npos;
                     });
}

TEST(RigAssessment, CallsAWellSeenRigGood) {
  const RigVerdict verdict = VerdictOn(RecordsOf(60, Flat));
  EXPECT_EQ(verdict.grade, Grade::Good) << (verdict.remarks.empty() ? "" : verdict.remarks.front().reason);
  ASSERT_EQ(verdict.formal.size(), 2U);
  ASSERT_EQ(verdict.cameras.size(), 3U);
  EXPECT_NEAR(verdict.disagreement, 1.0, 0.3);
  EXPECT_EQ(verdict.sheetBend, 0.0);
}

TEST(RigAssessment, SaysWhichCameraIsLinkedByFewViews) {
  const RigVerdict verdict = VerdictOn(RecordsOf(10, Flat));
  EXPECT_TRUE(Says(verdict, "There are few views that camera 2 shares with others."));
  EXPECT_FALSE(Says(verdict, "camera 1 shares"));
}

TEST(RigAssessment, TellsASheetThatIsBent) {
  const double across = 0.5 * unit::UNIT * 10.0;
  const auto bent = [across](const cv::Point3d& point) {
    const double from = (point.y - across) / across;
    return 0.003 * from * from;
  };
  const RigVerdict verdict = VerdictOn(RecordsOf(60, bent), false);
  EXPECT_GE(verdict.grade, Grade::WithCare);
  const bool ofCamera = std::any_of(verdict.cameras.begin(), verdict.cameras.end(), [](const auto& camera) {
    return camera.sheetBend > 0.0015 && camera.sheetBend < 0.005;
  });
  EXPECT_TRUE(ofCamera || Says(verdict, "The sheet is bent by about"));
}

TEST(RigAssessment, NamesTheViewInWhichTheSheetMovedBetweenTheImages) {
  RigRecords records = RecordsOf(40, Flat);
  for (cv::Point2d& point : records.imagePoints[1][6]) point += cv::Point2d(1.5, -1.0);
  const RigVerdict verdict = VerdictOn(records, false);
  ASSERT_EQ(verdict.disagreements.size(), 1U);
  EXPECT_EQ(verdict.disagreements.front().view, 6U);
  EXPECT_TRUE(Says(verdict, "The images of a view do not show the sheet at the same place."));
}

}  // namespace
