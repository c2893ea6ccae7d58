/// The search of the grid in the images of all cameras, which threads share.
#include "batch/SharedSearch.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "Renderer.h"
#include "Views.h"

namespace {

using batch::NamedImage;
using batch::SearchedImages;

/// Images of a grid, one of which cannot be prepared.
class SharedSearch : public ::testing::Test {
 protected:
  std::vector<std::string> Search(int threads, int images) {
    arguments_.threads = threads;
    std::vector<std::string> told;
    int next = 0;
    batch::SearchSteps steps;
    steps.next = [&](std::vector<NamedImage>& inputs) {
      if (next == images) return false;
      inputs = {{std::to_string(next++) + ".png", grid_.clone()}};
      return true;
    };
    steps.prepare = [](std::vector<NamedImage>& inputs) {
      if (inputs.front().name == "3.png") throw std::length_error("of its\nown");
    };
    steps.take = [&](SearchedImages& searched) {
      told.push_back(searched.inputs.front().name + " " + searched.outcomes.front().fault);
      return searched.outcomes.front().fault;
    };
    steps.expected = [&] { return images; };
    testing::internal::CaptureStderr();
    batch::SearchShared(arguments_, batch::Wanted::Views, steps);
    errors_ = testing::internal::GetCapturedStderr();
    return told;
  }

  void SetUp() override {
    world::Scene scene;
    scene.camera = world::CameraFromFieldOfView({320, 240}, 60.0);
    grid_ = world::Renderer(scene).Render(world::SpreadViews(scene.camera, 1).back());
  }

  cv::Mat grid_;
  batch::Arguments arguments_;
  std::string errors_;
};

TEST_F(SharedSearch, TellsOfAnExceptionInItsPlaceAndTheOthersGoOn) {
  for (const int threads : {1, 2, 8}) {
    const std::vector<std::string> told = Search(threads, 6);
    EXPECT_EQ(told, (std::vector<std::string>{"0.png ", "1.png ", "2.png ",
                                              "3.png cannot be searched: of its own", "4.png ", "5.png "}));
    EXPECT_EQ(errors_,
              "1/6 0.png: \n2/6 1.png: \n3/6 2.png: \n4/6 3.png: cannot be searched: of its own\n"
              "5/6 4.png: \n6/6 5.png: \n");
  }
}

TEST_F(SharedSearch, LeavesTheLibrarysThreadsAsTheyWere) {
  const int before = cv::getNumThreads();
  Search(2, 2);
  EXPECT_EQ(cv::getNumThreads(), before);
}

}  // namespace
