/// Which displays can be used, by what the probe says and without its word.
#include "foundation/DisplayRules.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "TemporaryFolder.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

constexpr Servers NONE{};
constexpr Servers X{true, false};
constexpr Servers WAYLAND{false, true};
constexpr Servers BOTH{true, true};

TEST(DisplayRules, PlatformsThatDrawByThemselvesNeedNoServer) {
  for (const char* const platform : {"", "xcb", "wayland", "wayland-egl", "wayland;xcb", "xcb:option"}) {
    EXPECT_TRUE(NeedsServer(platform)) << platform;
  }
  for (const char* const platform : {"offscreen", "vnc:size=640x480", "eglfs", "linuxfb:fb=/dev/fb1"}) {
    EXPECT_FALSE(NeedsServer(platform)) << platform;
  }
}

TEST(DisplayRules, TheProbeHasTheLastWord) {
  for (const char* const platform : {"", "xcb", "wayland", "offscreen", "another"}) {
    EXPECT_TRUE(Usable(platform, NONE, ProbeAnswer::Works)) << platform;
    EXPECT_FALSE(Usable(platform, BOTH, ProbeAnswer::Fails)) << platform;
  }
}

TEST(DisplayRules, WhenTheProbeHangsOnlyAnXServerThatAnswersIsUsable) {
  EXPECT_TRUE(Usable("", X, ProbeAnswer::Silent));
  EXPECT_TRUE(Usable("wayland;xcb", X, ProbeAnswer::Silent));
  EXPECT_FALSE(Usable("", WAYLAND, ProbeAnswer::Silent));
  EXPECT_FALSE(Usable("wayland", BOTH, ProbeAnswer::Silent));
  EXPECT_FALSE(Usable("offscreen", NONE, ProbeAnswer::Silent));
}

TEST(DisplayRules, WithoutTheProbeOnlyWhatIsCertainIsUsable) {
  for (const char* const platform : {"offscreen", "minimal", "minimalegl", "vnc:size=640x480"}) {
    EXPECT_TRUE(Usable(platform, NONE, ProbeAnswer::Unknown)) << platform;
  }
  EXPECT_TRUE(Usable("", X, ProbeAnswer::Unknown));
  EXPECT_TRUE(Usable("xcb", X, ProbeAnswer::Unknown));
  EXPECT_TRUE(Usable("another;xcb", X, ProbeAnswer::Unknown));
  EXPECT_FALSE(Usable("another", BOTH, ProbeAnswer::Unknown));
  EXPECT_FALSE(Usable("xcb", WAYLAND, ProbeAnswer::Unknown));
}

TEST(DisplayRules, WithoutTheProbeWaylandNeedsItsServerAndItsPlugin) {
  const support::TemporaryFolder folder;
  const unit::ScopedVariable plugins("QT_QPA_PLATFORM_PLUGIN_PATH", folder.Path());
  support::WriteText(folder.File("libqwayland-generic.so"), "");
  EXPECT_TRUE(Usable("wayland", WAYLAND, ProbeAnswer::Unknown));
  EXPECT_TRUE(Usable("", WAYLAND, ProbeAnswer::Unknown));
  EXPECT_FALSE(Usable("wayland", X, ProbeAnswer::Unknown));
}

TEST(DisplayRules, WithoutTheProbePlatformsOfADeviceNeedIt) {
  EXPECT_EQ(Usable("eglfs", NONE, ProbeAnswer::Unknown), access("/dev/dri/card0", R_OK | W_OK) == 0);
  EXPECT_EQ(Usable("linuxfb", NONE, ProbeAnswer::Unknown), access("/dev/fb0", R_OK | W_OK) == 0);
}

}  // namespace
