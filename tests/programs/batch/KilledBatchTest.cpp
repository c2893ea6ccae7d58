/// Runs of the headless tool that end by kill -9 at any moment, and are gone on with.
#include <gtest/gtest.h>
#include <signal.h>

#include <cstdlib>
#include <filesystem>
#include <random>

#include "SessionRuns.h"
#include "velmora/Session.h"

using namespace batch_runs;
using support::Process;
using velmora::Session;

namespace {

namespace fs = std::filesystem;

/// How often a run is killed: VELMORA_KILLS, or a few times.
int Kills() {
  constexpr int FEW = 5;
  const char* const wanted = std::getenv("VELMORA_KILLS");
  return wanted == nullptr ? FEW : std::atoi(wanted);
}

class KilledBatch : public SessionRuns {
 protected:
  /// Kills a run a moment after it told of some image, or of none; the views that it told of.
  int ViewsToldBeforeKill(const Words& words, std::mt19937& random) const {
    Process tool(Command(words), InPlace());
    const int told = std::uniform_int_distribution<int>(0, IMAGES)(random);
    if (told > 0) tool.WaitForOutput(std::to_string(told) + "/" + std::to_string(IMAGES) + " ", LONG_ENOUGH);
    const auto end = std::chrono::steady_clock::now() +
                     std::chrono::microseconds(std::uniform_int_distribution<int>(0, 60000)(random));
    while (std::chrono::steady_clock::now() < end) {
    }
    tool.Kill();
    return CountOf(tool.Errors(), "grid found");
  }

  /// Kills and goes on until all is done, over and over; the result is always that of an unbroken run.
  void KillOften(const Words& inputs, unsigned seed) {
    const auto with = [&](const std::string& session) {
      Words words = inputs;
      words.insert(words.end(), {"--session", session, "--threads", "2"});
      return words;
    };
    RunWell(with("unbroken"));
    std::mt19937 random(seed);
    int kills = 0;
    while (kills < Kills()) {
      fs::remove_all(File("desk"));
      size_t before = 0;
      for (int chain = 0; chain < 3 && kills < Kills(); ++chain, ++kills) {
        const int told = ViewsToldBeforeKill(with("desk"), random);
        if (!fs::exists(File("desk"))) {
          EXPECT_EQ(told, 0);
          continue;
        }
        const auto session = Session::Open(File("desk"));
        const size_t now = session->Snapshots().size();
        EXPECT_GE(now, static_cast<size_t>(told)) << "what was told is there";
        EXPECT_GE(now, before);
        EXPECT_LE(now, static_cast<size_t>(IMAGES)) << "nothing is there twice";
        for (const auto& snapshot : session->Snapshots()) EXPECT_EQ(snapshot.fault, "");
        before = now;
      }
      const Outcome outcome = RunWell(with("desk"));
      EXPECT_EQ(Session::Open(File("desk"))->Snapshots().size(), static_cast<size_t>(IMAGES));
      for (const auto& entry : fs::directory_iterator(File("unbroken"))) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("calibration", 0) != 0) continue;
        EXPECT_EQ(Text("desk/" + name), Text("unbroken/" + name)) << name << " after " << kills << " kills";
      }
      ASSERT_FALSE(HasFailure()) << outcome.errors;
    }
    RecordProperty("kills", kills);
  }
};

TEST_F(KilledBatch, OfOneCameraComesToTheResultOfAnUnbrokenRun) {
  KillOften({Rendered("left")}, 1);
}

TEST_F(KilledBatch, OfAPairComesToTheResultOfAnUnbrokenRun) {
  KillOften({Rendered("left"), "--right", Rendered("right")}, 2);
}

}  // namespace
