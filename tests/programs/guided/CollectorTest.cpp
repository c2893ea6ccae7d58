/// The search of the grid, and what is kept of it.
#include "guided/Collector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "GuidedScenes.h"
#include "Matchers.h"
#include "common/LensModels.h"

namespace {

using guided::Collector;
using guided::Finding;
using guided_test::SettingsOfImages;

double FarthestOf(const std::vector<cv::Point2d>& found, const std::vector<cv::Point2d>& truth) {
  if (found.size() != truth.size()) return std::numeric_limits<double>::infinity();
  double farthest = 0.0;
  for (size_t i = 0; i < found.size(); ++i) farthest = std::max(farthest, cv::norm(found[i] - truth[i]));
  return farthest;
}

/// Circles that are painted over: at the grid's border, so that nobody takes it for a smaller one.
bool IsHidden(size_t circle) {
  return circle == 0 || circle == 1;
}

cv::Mat WithHiddenCircles(size_t view) {
  cv::Mat image = unit::Rendered().images.at(view).clone();
  const auto& centres = unit::Rendered().centres.at(view);
  const double radius = 0.33 * cv::norm(centres[1] - centres[0]);
  for (size_t k = 0; k < centres.size(); ++k) {
    if (!IsHidden(k)) continue;
    const cv::Vec3b paper = image.at<cv::Vec3b>(centres[k] + cv::Point2d(0.0, 1.1 * radius));
    cv::circle(image, centres[k], cvRound(radius), cv::Scalar(paper), cv::FILLED);
  }
  return image;
}

TEST(Collector, FindsTheGridAndLeavesTheImageAsItIs) {
  Collector collector(SettingsOfImages(), 1);
  EXPECT_EQ(collector.Cameras(), 1U);
  const cv::Mat image = unit::ImageWithGrid();
  const std::vector<Finding> found = collector.Search({image});
  EXPECT_SAME_MAT(image, unit::ImageWithGrid());
  ASSERT_EQ(found.size(), 1U);
  EXPECT_LT(FarthestOf(found[0].centres, unit::Rendered().centres[0]), 0.5);
  EXPECT_EQ(std::count(found[0].weights.begin(), found[0].weights.end(), 0.0), 0) << "all were seen";
  EXPECT_EQ(collector.WhyNotFound(), "");
  EXPECT_EQ(collector.Count(), 0);
}

TEST(Collector, GivesCentresOfTheProcessingSize) {
  auto settings = SettingsOfImages();
  settings.frame = unit::FRAME / 2;
  Collector collector(settings, 1);
  const cv::Mat image = unit::ImageWithGrid();
  const std::vector<Finding> found = collector.Search({image});
  EXPECT_SAME_MAT(image, unit::ImageWithGrid());
  auto expected = unit::Rendered().centres[0];
  for (cv::Point2d& centre : expected) centre = 0.5 * (centre - cv::Point2d(0.5, 0.5));
  EXPECT_LT(FarthestOf(found.at(0).centres, expected), 0.5);
}

TEST(Collector, SaysWhyThereIsNothing) {
  Collector collector(SettingsOfImages(), 1);
  const std::vector<Finding> found = collector.Search({unit::ImageWithoutGrid()});
  EXPECT_TRUE(found.at(0).centres.empty());
  EXPECT_NE(collector.WhyNotFound(), "");
  EXPECT_FALSE(collector.Keep());
  EXPECT_EQ(collector.Count(), 0);
}

TEST(Collector, KeepsWhatItFoundOnce) {
  Collector collector(SettingsOfImages(), 1);
  EXPECT_FALSE(collector.Keep()) << "nothing was searched";
  const cv::Mat image = unit::ImageWithGrid();
  collector.Search({image});
  ASSERT_TRUE(collector.Keep());
  EXPECT_FALSE(collector.Keep());
  EXPECT_EQ(collector.Count(), 1);
  const velmora::GridSnapshot kept = collector.Last();
  ASSERT_EQ(kept.cameras.size(), 1U);
  EXPECT_LT(FarthestOf(kept.cameras[0].centres, unit::Rendered().centres[0]), 0.3);
  EXPECT_SAME_MAT(kept.cameras[0].frame, image);
  EXPECT_EQ(kept.cameras[0].deviations.size(), 44U) << "centres are measured anew";
  collector.Search({image});
  EXPECT_TRUE(collector.Keep()) << "searched again";
  EXPECT_EQ(collector.Count(), 2);
}

TEST(Collector, KeepsAPartOfTheGridToo) {
  Collector collector(SettingsOfImages(), 1);
  const std::vector<Finding> found = collector.Search({WithHiddenCircles(0)});
  ASSERT_EQ(found.at(0).centres.size(), 44U) << collector.WhyNotFound();
  ASSERT_EQ(found[0].weights.size(), 44U);
  for (size_t k = 0; k < 44; ++k) EXPECT_EQ(found[0].weights[k], IsHidden(k) ? 0.0 : 1.0) << k;
  ASSERT_TRUE(collector.Keep());
  EXPECT_EQ(collector.Last().cameras.at(0).weights, found[0].weights);
  // Whatever was set before is still so after all is cleared.
  collector.Clear();
  EXPECT_EQ(collector.Count(), 0);
  collector.Search({WithHiddenCircles(0)});
  EXPECT_TRUE(collector.Keep());
}

TEST(Collector, TakesOutWhatWasKeptLast) {
  Collector collector(SettingsOfImages(), 1);
  for (size_t view = 0; view < 3; ++view) {
    collector.Search({unit::Rendered().images[view]});
    ASSERT_TRUE(collector.Keep());
  }
  collector.RemoveLast();
  EXPECT_EQ(collector.Count(), 2);
  EXPECT_LT(FarthestOf(collector.Last().cameras[0].centres, unit::Rendered().centres[1]), 0.3);
}

TEST(Collector, AddsWhatAnotherOneKept) {
  Collector first(SettingsOfImages(), 1);
  first.Search({WithHiddenCircles(2)});
  ASSERT_TRUE(first.Keep());
  Collector second(SettingsOfImages(), 1);
  second.Add(first.Last());
  ASSERT_EQ(second.Count(), 1);
  EXPECT_EQ(second.Last().cameras[0].centres, first.Last().cameras[0].centres);
  EXPECT_EQ(second.Last().cameras[0].weights, first.Last().cameras[0].weights);
  EXPECT_EQ(second.Last().cameras[0].deviations, first.Last().cameras[0].deviations);
}

TEST(Collector, FindsAndKeepsAPair) {
  Collector collector(SettingsOfImages(), 2);
  EXPECT_EQ(collector.Cameras(), 2U);
  const unit::ImagePair pair = unit::PairWithGrid();
  const std::vector<cv::Mat> images = {pair.left.clone(), pair.right.clone()};
  const std::vector<Finding> found = collector.Search(images);
  EXPECT_SAME_MAT(images[0], pair.left);
  EXPECT_SAME_MAT(images[1], pair.right);
  ASSERT_EQ(found.size(), 2U);
  EXPECT_LT(FarthestOf(found[0].centres, pair.leftCentres), 0.5);
  EXPECT_LT(FarthestOf(found[1].centres, pair.rightCentres), 0.5);
  EXPECT_EQ(collector.WhyNotFound(), "");
  ASSERT_TRUE(collector.Keep());
  EXPECT_FALSE(collector.Keep());
  const velmora::GridSnapshot kept = collector.Last();
  ASSERT_EQ(kept.cameras.size(), 2U);
  EXPECT_LT(FarthestOf(kept.cameras[0].centres, pair.leftCentres), 0.3);
  EXPECT_LT(FarthestOf(kept.cameras[1].centres, pair.rightCentres), 0.3);
  EXPECT_SAME_MAT(kept.cameras[1].frame, pair.right);
  collector.RemoveLast();
  EXPECT_EQ(collector.Count(), 0);
}

TEST(Collector, KeepsNoPairOfWhichOneCameraSeesNothing) {
  Collector collector(SettingsOfImages(), 2);
  const unit::ImagePair pair = unit::PairWithGrid();
  collector.Search({pair.left, unit::PairWithoutGrid().right});
  EXPECT_NE(collector.WhyNotFound(), "");
  EXPECT_FALSE(collector.Keep());
  collector.Search({unit::PairWithoutGrid().left, pair.right});
  EXPECT_NE(collector.WhyNotFound(), "");
  EXPECT_FALSE(collector.Keep());
  EXPECT_EQ(collector.Count(), 0);
}

TEST(Collector, ProposesPosesThatFollowFromWhatIsKept) {
  const auto views = unit::NoisyViews(6);
  for (const int model : {common::MODEL_AUTO, Calibrator::MODEL_CLASSIC, common::MODEL_FISHEYE}) {
    Collector collector(guided_test::SettingsOfPoints(model), 1);
    EXPECT_TRUE(collector.Propose(model).nominal) << model;
    for (const auto& view : views) collector.Add({{{view}}});
    const PoseProposal proposal = collector.Propose(model);
    EXPECT_EQ(proposal.centres.size(), 44U) << model;
    EXPECT_FALSE(proposal.nominal) << model;
    EXPECT_LT(proposal.deviationThen, proposal.deviation) << model;
  }
}

TEST(Collector, ProposesForTheRationalModelWhenItIsToBeChosen) {
  Collector collector(guided_test::SettingsOfPoints(), 1);
  for (const auto& view : unit::NoisyViews(8)) collector.Add({{{view}}});
  EXPECT_EQ(collector.Propose(common::MODEL_AUTO).deviation,
            collector.Propose(Calibrator::MODEL_RATIONAL).deviation);
  EXPECT_NE(collector.Propose(common::MODEL_AUTO).deviation,
            collector.Propose(Calibrator::MODEL_CLASSIC).deviation);
}

}  // namespace
