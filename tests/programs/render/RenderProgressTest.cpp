/// The line that tells how far the rendering has come.
#include "render/Progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using render::Progress;

struct Shown {
  std::ostringstream out;
  Progress::Clock::time_point now;

  Progress Begin(bool terminal) {
    return Progress(out, terminal, [this] { return now; });
  }
  /// What was drawn since the last call.
  std::string Latest() {
    const std::string text = out.str();
    out.str("");
    return text;
  }
};

TEST(RenderProgress, IsDrawnAnewInItsPlaceWithTheTimeThatIsLeft) {
  Shown shown;
  Progress progress = shown.Begin(true);
  progress.Step(1, 200);
  EXPECT_EQ(shown.Latest(), "\r1/200 rendered, 0 %");
  shown.now += std::chrono::seconds(10);
  progress.Step(10, 200);
  EXPECT_EQ(shown.Latest(), "\r10/200 rendered, 5 %, 3 min 10 s left");
  shown.now += std::chrono::seconds(90);
  progress.Step(199, 200);
  EXPECT_EQ(shown.Latest(), "\r199/200 rendered, 99 %, 1 s left     ");
}

TEST(RenderProgress, WipesItsLineAtTheEnd) {
  Shown shown;
  { Progress progress = shown.Begin(true); }
  EXPECT_EQ(shown.Latest(), "");
  {
    Progress progress = shown.Begin(true);
    progress.Step(2, 2);
    shown.Latest();
  }
  EXPECT_EQ(shown.Latest(), "\r" + std::string(19, ' ') + "\r");
}

TEST(RenderProgress, IsSilentWithoutATerminal) {
  Shown shown;
  {
    Progress progress = shown.Begin(false);
    progress.Step(1, 2);
    progress.Step(2, 2);
  }
  EXPECT_EQ(shown.Latest(), "");
}

}  // namespace
