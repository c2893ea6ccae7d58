/// What is seen of the grid in one image, whatever others show.
#include "batch/SingleSearch.h"

#include <gtest/gtest.h>

#include <future>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>

#include "Renderer.h"
#include "TemporaryFolder.h"
#include "Views.h"

namespace {

using batch::NamedImage;
using batch::SearchOutcome;
using batch::Wanted;

class SingleSearch : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    world::Scene scene;
    scene.camera = world::CameraFromFieldOfView({640, 480}, 60.0, {-0.2, 0.05, 0.0, 0.0, 0.0});
    scene.noise = 2.0;
    world::Renderer renderer(scene);
    for (const world::Pose& pose : world::SpreadViews(scene.camera, 4)) {
      images_->push_back(renderer.Render(pose, images_->size()));
    }
    images_->push_back(renderer.RenderEmpty());
  }
  static void TearDownTestSuite() { images_->clear(); }

  SearchOutcome SearchImage(size_t index, Wanted wanted = Wanted::Views) const {
    NamedImage input{"an image", images_->at(index).clone()};
    return batch::SearchImage(input, arguments_, wanted);
  }

  static void ExpectSame(const SearchOutcome& outcome, const SearchOutcome& other) {
    EXPECT_EQ(outcome.fault, other.fault);
    EXPECT_EQ(outcome.view.points, other.view.points);
    EXPECT_EQ(outcome.view.weights, other.view.weights);
    EXPECT_EQ(outcome.view.deviations, other.view.deviations);
  }

  static inline const auto images_ = std::make_unique<std::vector<cv::Mat>>();
  batch::Arguments arguments_;
};

TEST_F(SingleSearch, IsTheSameWhateverWasLookedAtBeforeAndOnWhicheverThread) {
  for (const int finder : {Calibrator::FINDER_ROBUST, Calibrator::FINDER_STANDARD}) {
    arguments_.finder = finder;
    std::vector<SearchOutcome> forwards;
    for (size_t i = 0; i < images_->size(); ++i) forwards.push_back(SearchImage(i));
    for (size_t i = images_->size(); i-- > 0;) ExpectSame(SearchImage(i), forwards[i]);
    for (size_t i = 0; i < images_->size(); ++i) {
      ExpectSame(std::async(std::launch::async, [&] { return SearchImage(i); }).get(), forwards[i]);
    }
    EXPECT_EQ(forwards[0].fault, "");
    EXPECT_EQ(forwards[0].view.points.size(), 44U);
    EXPECT_EQ(forwards[4].fault.substr(0, 13), "no grid found");
    EXPECT_TRUE(forwards[4].view.points.empty());
  }
}

TEST_F(SingleSearch, OfWholeGridsHasThePointsOfTheSearch) {
  const SearchOutcome view = SearchImage(1);
  const SearchOutcome whole = SearchImage(1, Wanted::WholeGrids);
  EXPECT_EQ(view.view.deviations.size(), 44U) << "centres that are measured anew";
  EXPECT_EQ(whole.view.points.size(), 44U);
  EXPECT_TRUE(whole.view.deviations.empty());
}

TEST_F(SingleSearch, IsOfAFileThatIsStillToBeRead) {
  const support::TemporaryFolder folder;
  const std::string file = folder.File("image.png");
  ASSERT_TRUE(cv::imwrite(file, images_->front()));
  NamedImage input{"image.png"};
  input.unread = file;
  const SearchOutcome outcome = batch::SearchImage(input, arguments_, Wanted::Views);
  EXPECT_EQ(outcome.size, cv::Size(640, 480));
  ExpectSame(outcome, SearchImage(0));
  NamedImage broken{"broken.png"};
  broken.unread = folder.File("nothing.png");
  EXPECT_EQ(batch::SearchImage(broken, arguments_, Wanted::Views).fault, "cannot be decoded");
}

TEST_F(SingleSearch, OfAnImageThatMakesTheSearchRaiseSaysSoInOneLine) {
  const SearchOutcome outcome = batch::OutcomeOf([](SearchOutcome& seen) {
    seen.size = {640, 480};
    seen.view.points.resize(44);
    throw std::runtime_error("out of\n  memory");
  });
  EXPECT_EQ(outcome.fault, "cannot be searched: out of memory");
  EXPECT_EQ(outcome.size, cv::Size(640, 480));
  EXPECT_TRUE(outcome.view.points.empty());
}

}  // namespace
