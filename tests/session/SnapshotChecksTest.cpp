/// What is no snapshot of a session, and in which words that is said.
#include "session/SnapshotChecks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "session/SessionScenes.h"

using namespace velmora;

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

class SnapshotChecks : public ::testing::Test {
 protected:
  std::string FaultAfter(const std::function<void(SessionSnapshot&)>& change) const {
    SessionSnapshot snapshot = unit::SnapshotOfSeed(1, settings_);
    change(snapshot);
    return FaultOf(snapshot, settings_);
  }

  const SessionSettings settings_ = unit::SettingsOfCameras(2);
};

TEST_F(SnapshotChecks, PassWhatWasSeenByOneCameraOrBothWithOrWithoutImages) {
  EXPECT_EQ(FaultAfter([](auto&) {}), "");
  EXPECT_EQ(FaultAfter([](auto& snapshot) { snapshot.observations[0] = {}; }), "");
  EXPECT_EQ(FaultAfter([](auto& snapshot) { snapshot.images.clear(); }), "");
  EXPECT_EQ(FaultAfter([](auto& snapshot) { snapshot.images[1] = {}; }), "");
  EXPECT_EQ(FaultAfter([](auto& snapshot) {
              snapshot.observations[0].weights.clear();
              snapshot.observations[0].deviations.clear();
              snapshot.observations[0].radii.clear();
              snapshot.takenAt.clear();
              snapshot.score.reset();
            }),
            "");
}

TEST_F(SnapshotChecks, NameNumbersOfListsThatDoNotFit) {
  EXPECT_EQ(FaultAfter([](auto& snapshot) { snapshot.observations.pop_back(); }),
            "There are observations of 1 cameras, not of 2.");
  EXPECT_EQ(FaultAfter([](auto& snapshot) { snapshot.images.pop_back(); }),
            "There are images of 1 cameras, not of 2.");
  EXPECT_EQ(FaultAfter([](auto& snapshot) { snapshot.origins.pop_back(); }),
            "There are origins of 1 cameras, not of 2.");
  EXPECT_EQ(FaultAfter([](auto& snapshot) { snapshot.observations[1].centres.pop_back(); }),
            "There are 11 centres of camera 1, where the grid has 12.");
  for (const auto list :
       {&SessionObservation::weights, &SessionObservation::deviations, &SessionObservation::radii}) {
    EXPECT_EQ(FaultAfter([list](auto& snapshot) { (snapshot.observations[1].*list).pop_back(); }),
              "There are not as many weights, deviations or radii of camera 1 as centres.");
  }
  EXPECT_EQ(FaultAfter([](auto& snapshot) { snapshot.observations = {{}, {}}; }), "No camera saw the grid.");
}

TEST_F(SnapshotChecks, RefuseNumbersThatNothingCanHave) {
  EXPECT_EQ(FaultAfter([](auto& snapshot) { snapshot.observations[0].centres[3].y = NOT_A_NUMBER; }),
            "A centre of camera 0 is no finite number.");
  for (const double weight : {-0.1, 1.1, NOT_A_NUMBER}) {
    EXPECT_EQ(FaultAfter([=](auto& snapshot) { snapshot.observations[0].weights[3] = weight; }),
              "A weight of camera 0 is not from 0 to 1.");
  }
  for (const double number : {-0.1, static_cast<double>(INFINITY), NOT_A_NUMBER}) {
    const std::string fault = "A deviation or radius of camera 0 is negative or no finite number.";
    EXPECT_EQ(FaultAfter([=](auto& snapshot) { snapshot.observations[0].deviations[3] = number; }), fault);
    EXPECT_EQ(FaultAfter([=](auto& snapshot) { snapshot.observations[0].radii[3] = number; }), fault);
  }
  EXPECT_EQ(FaultAfter([](auto& snapshot) { snapshot.score = NOT_A_NUMBER; }),
            "The score is no finite number.");
  EXPECT_EQ(FaultAfter([](auto& snapshot) { snapshot.takenAt = "now"; }),
            "\"now\" is no moment such as 2026-05-04T12:30:00Z.");
}

TEST_F(SnapshotChecks, RefuseImagesOfOtherSizesAndKinds) {
  EXPECT_EQ(FaultAfter([](auto& snapshot) { snapshot.images[1].pixels = cv::Mat(30, 40, CV_8U); }),
            "The image of camera 1 has 40 x 30 pixels, not 50 x 30.");
  for (const int type : {CV_32FC1, CV_8UC2, CV_8SC1}) {
    EXPECT_EQ(FaultAfter([type](auto& snapshot) { snapshot.images[0].pixels = cv::Mat(30, 40, type); }),
              "The image of camera 0 is not one of 8 or 16 bits and 1, 3 or 4 channels.");
  }
  EXPECT_EQ(FaultAfter([](auto& snapshot) { snapshot.images[0].path = "view.png"; }),
            "The image of camera 0 is given as pixels and as a file.");
}

}  // namespace
