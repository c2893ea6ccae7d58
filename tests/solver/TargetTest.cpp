/// The records of a calibrator as the solver takes them.
#include "solver/Target.h"

#include <gtest/gtest.h>

#include <cmath>

#include "model/TargetGeometry.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

std::vector<std::vector<cv::Point3d>> Targets(size_t count) {
  return std::vector<std::vector<cv::Point3d>>(count, MakeObjectTemplate(unit::GRID, unit::UNIT));
}

TEST(Target, IsCentredAndInSinglePrecision) {
  const auto views = unit::NoisyViews(2);
  const solver::Target target = solver::TargetOf(Targets(2), views);
  cv::Point3d sum;
  for (const cv::Point3d& point : target.views[1].observations[0].object) sum += point;
  EXPECT_LT(cv::norm(sum), 1e-14);
  EXPECT_NEAR(target.middles[1][0], 3.5 * static_cast<double>(unit::UNIT), 0.1);
  EXPECT_EQ(target.views[1].observations[0].image[3].x,
            static_cast<double>(static_cast<float>(views[1][3].x)));
}

TEST(Target, RaisesForRecordsThatNoCameraHas) {
  const auto views = unit::NoisyViews(5);
  auto uneven = views;
  uneven.back().pop_back();
  auto endless = views;
  endless.back().back().x = std::nan("");
  auto bent = Targets(5);
  bent.back().back().z = 0.01;
  EXPECT_THROW(solver::TargetOf({}, solver::ImagePoints()), cv::Exception);
  EXPECT_THROW(solver::TargetOf(Targets(4), views), cv::Exception);
  EXPECT_THROW(solver::TargetOf(Targets(5), uneven), cv::Exception);
  EXPECT_THROW(solver::TargetOf(Targets(5), endless), cv::Exception);
  EXPECT_THROW(solver::TargetOf(bent, views), cv::Exception);
}

}  // namespace
