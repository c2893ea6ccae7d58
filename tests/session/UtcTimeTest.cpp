/// Moments as texts.
#include "session/UtcTime.h"

#include <gtest/gtest.h>

using namespace velmora;

namespace {

TEST(UtcTime, IsWrittenToTheMillisecond) {
  using std::chrono::milliseconds;
  const std::chrono::system_clock::time_point epoch{};
  EXPECT_EQ(UtcText(epoch), "1970-01-01T00:00:00.000Z");
  EXPECT_EQ(UtcText(epoch + milliseconds(1777897800025)), "2026-05-04T12:30:00.025Z");
}

TEST(UtcTime, IsToldFromOtherTexts) {
  EXPECT_TRUE(IsUtcText(UtcText(std::chrono::system_clock::now())));
  EXPECT_TRUE(IsUtcText("2026-05-04T12:30:00Z"));
  EXPECT_TRUE(IsUtcText("2016-12-31T23:59:60.5Z"));
  for (const char* text : {"", "today", "2026-05-04", "2026-05-04T12:30:00", "2026-05-04 12:30:00Z",
                           "2026-13-04T12:30:00Z", "2026-05-04T24:00:00Z", "2026-05-04T12:30:00+02:00"}) {
    EXPECT_FALSE(IsUtcText(text)) << text;
  }
}

}  // namespace
