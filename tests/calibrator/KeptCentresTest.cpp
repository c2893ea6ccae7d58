/// What becomes of what a camera saw when its centres are measured anew.
#include "calibrator/KeptCentres.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "finder/CentreFit.h"
#include "finder/RobustFinder.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

/// The grid in a rendered picture, as a search finds it.
CameraSnapshot FoundIn(const cv::Mat& image) {
  GridFinding finding = SearchGridRobust(image, unit::GRID);
  EXPECT_TRUE(finding.Found());
  CameraSnapshot view;
  view.points = finding.centres;
  view.frame = image;
  cv::cvtColor(image, view.image.grey, cv::COLOR_BGR2GRAY);
  view.image.radii = finding.radii;
  return view;
}

TEST(KeptCentres, AreMeasuredInTheirImage) {
  const CameraSnapshot found = FoundIn(unit::ImageWithGrid());
  const MeasuredCentres expected =
      MeasureCentres(found.image.grey, unit::GRID, found.points, found.image.radii);
  const CameraSnapshot measured = WithMeasuredCentres(unit::GRID, found);
  EXPECT_EQ(measured.points, expected.centres);
  EXPECT_EQ(measured.deviations, expected.deviations);
  EXPECT_NE(measured.points, found.points);
  EXPECT_TRUE(measured.weights.empty());
  EXPECT_EQ(measured.frame.data, found.frame.data);
}

TEST(KeptCentres, StayAsTheyAreWithoutAnImage) {
  CameraSnapshot found = FoundIn(unit::ImageWithGrid());
  found.image = {};
  const CameraSnapshot same = WithMeasuredCentres(unit::GRID, found);
  EXPECT_EQ(same.points, found.points);
  EXPECT_TRUE(same.deviations.empty());
}

TEST(KeptCentres, HaveNoDeviationsWhereTheyAreNotSeen) {
  CameraSnapshot found = FoundIn(unit::ImageWithGrid());
  found.weights.assign(44, 1.0);
  for (const size_t unseen : {0U, 1U, 2U, 3U}) {
    found.weights[unseen] = 0.0;
    found.image.radii[unseen] = 0.0;
  }
  const CameraSnapshot measured = WithMeasuredCentres(unit::GRID, found);
  EXPECT_EQ(measured.weights, found.weights);
  for (size_t k = 0; k < 4; ++k) {
    EXPECT_EQ(measured.points[k], found.points[k]);
    EXPECT_EQ(measured.deviations[k], 0.0);
  }
  EXPECT_TRUE(std::all_of(measured.deviations.begin() + 4, measured.deviations.end(),
                          [](double deviation) { return deviation > 0.0; }));
}

}  // namespace
