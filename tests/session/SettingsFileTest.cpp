/// Settings that make no sense, and texts that are no UTF-8. What session.json says is tested with the
/// folder.
#include "session/SettingsFile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <nlohmann/json.hpp>

#include "session/SessionScenes.h"

using namespace velmora;

namespace {

std::string FaultAfter(const std::function<void(SessionSettings&)>& change) {
  SessionSettings settings = unit::SettingsOfCameras(2);
  change(settings);
  return FaultOf(settings);
}

TEST(SettingsFile, RefusesSettingsThatMakeNoSense) {
  EXPECT_EQ(FaultAfter([](auto&) {}), "");
  EXPECT_EQ(FaultAfter([](auto& settings) { settings.grid = {0, 11}; }), "A grid of 0 x 11 circles is none.");
  EXPECT_EQ(FaultAfter([](auto& settings) { settings.unit = 0.0; }), "The unit must be positive, not 0 m.");
  EXPECT_EQ(FaultAfter([](auto& settings) { settings.unit = NAN; }), "The unit must be positive, not nan m.");
  EXPECT_EQ(FaultAfter([](auto& settings) { settings.discRadius = -1.0; }),
            "The radius of a disc cannot be -1 m.");
  EXPECT_EQ(FaultAfter([](auto& settings) { settings.imageSizes.clear(); }),
            "A session needs at least one camera.");
  EXPECT_EQ(FaultAfter([](auto& settings) { settings.imageSizes[1].width = 0; }),
            "There is no image of 0 x 30 pixels.");
}

TEST(SettingsFile, SaysWhenItWasCreatedAndByWhichVersion) {
  const auto document = nlohmann::json::parse(TextOf(unit::SettingsOfCameras(1), "2026-05-04T12:30:00.250Z"));
  EXPECT_EQ(document["created"], "2026-05-04T12:30:00.250Z");
  EXPECT_EQ(document["velmora"], "5.1.0");
  EXPECT_EQ(document["format"], SESSION_FORMAT);
}

TEST(SettingsFile, ReplacesWhatIsNoUtf8InTexts) {
  SessionSettings settings = unit::SettingsOfCameras(1);
  settings.source = "views/\xFF.png";
  EXPECT_EQ(SettingsOf(TextOf(settings, ""), "It").source, "views/\xEF\xBF\xBD.png");
}

}  // namespace
