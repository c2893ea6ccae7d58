/// Recording of poses, without a calibrator.
#include "calibrator/PoseRecording.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "TemporaryFolder.h"
#include "unit/Scopes.h"
#include "unit/ThreadGroup.h"

using namespace velmora;

namespace {

class RecordingPoses : public ::testing::Test {
 protected:
  nlohmann::json StoppedInto(const std::string& name) {
    unit::PrintedBy([&] { EXPECT_TRUE(recording_.StopInto(folder_.File(name))); });
    return nlohmann::json::parse(support::ReadText(folder_.File(name)));
  }
  void Start() {
    unit::PrintedBy([&] { recording_.Start(); });
  }
  void Add(double x) {
    unit::PrintedBy([&] { recording_.Add({{x, 1}, {x, 2}}); });
  }

  support::TemporaryFolder folder_;
  unit::ScopedCurrentFolder current_{folder_.Path()};
  PoseRecording recording_{{640, 480}};
};

TEST_F(RecordingPoses, KeepsNothingUnlessItWasStarted) {
  Add(1);
  EXPECT_FALSE(recording_.StopInto(folder_.File("model.json")));
  recording_.Stop();
  EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

TEST_F(RecordingPoses, WritesSizeCountAndPoses) {
  Start();
  Add(1);
  Add(2);
  const nlohmann::json model = StoppedInto("model.json");
  EXPECT_EQ(model.at("imgWidth"), 640);
  EXPECT_EQ(model.at("imgHeight"), 480);
  EXPECT_EQ(model.at("count"), 2);
  EXPECT_EQ(model.at("points1").at("data").get<std::vector<float>>(), (std::vector<float>{2, 1, 2, 2}));
}

TEST_F(RecordingPoses, CountsOnOverRecordings) {
  Start();
  Add(1);
  StoppedInto("first.json");
  Start();
  Add(2);
  const nlohmann::json second = StoppedInto("second.json");
  EXPECT_EQ(second.at("count"), 2);
  EXPECT_FALSE(second.contains("points0"));
  EXPECT_TRUE(second.contains("points1"));
}

TEST_F(RecordingPoses, GoesOnWhenTheFileCannotBeWritten) {
  Start();
  Add(1);
  unit::PrintedBy([&] { EXPECT_FALSE(recording_.StopInto("/nowhere/model.json")); });
  Add(2);
  EXPECT_EQ(StoppedInto("model.json").at("count"), 2);
}

TEST_F(RecordingPoses, EndsIntoAFileOfTheCurrentFolder) {
  Start();
  Add(1);
  EXPECT_EQ(unit::PrintedBy([&] { recording_.Stop(); }), "INFO  : Stop model recording\n");
  EXPECT_TRUE(std::filesystem::exists(folder_.File("model_tmp.json")));
  EXPECT_FALSE(recording_.StopInto(folder_.File("again.json")));
}

TEST_F(RecordingPoses, TakesPosesOfSeveralThreads) {
  Start();
  unit::PrintedBy([&] {
    unit::ThreadGroup threadGroup;
    for (int thread = 0; thread < 3; ++thread) {
      threadGroup.Add([&] {
        for (int i = 0; i < 50; ++i) recording_.Add({{1, 1}});
      });
    }
    threadGroup.RunToTheEnd();
  });
  const nlohmann::json model = StoppedInto("model.json");
  EXPECT_EQ(model.at("count"), 150);
  EXPECT_EQ(model.size(), 153U);
}

}  // namespace
