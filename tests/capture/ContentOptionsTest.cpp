/// Sources and the options that follow them.
#include "capture/ContentOptions.h"

#include <gtest/gtest.h>

#include "Calibrator.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

using Pieces = std::vector<std::string>;

const char* const INVALID = "WARN  : Invalid startingFrame value.\n";

struct Parsed {
  Content content;
  std::string printed;
};

Parsed Parse(const std::string& text) {
  Parsed parsed;
  parsed.printed = unit::PrintedBy([&] { parsed.content = ParseContent(text); });
  return parsed;
}

TEST(ContentOptions, TheFirstOfSeveralTokensIsTheSource) {
  EXPECT_EQ(Parse("video.mp4 startingFrame=120").content.source, "video.mp4");
  EXPECT_EQ(Parse("my video.mp4").content.source, "my");
  EXPECT_EQ(Parse(" video.mp4").content.source, "");
}

TEST(ContentOptions, ASingleTokenIsTheSourceUnchanged) {
  EXPECT_EQ(Parse("video.mp4").content.source, "video.mp4");
  EXPECT_EQ(Parse("video.mp4 ").content.source, "video.mp4 ");
  EXPECT_EQ(Parse("").content.source, "");
}

TEST(ContentOptions, TheStartFrameIsReadAndLogged) {
  const Parsed parsed = Parse("video.mp4 startingFrame=120");
  EXPECT_EQ(parsed.content.startFrame, 120);
  EXPECT_EQ(parsed.printed, "INFO  : Start frame position set to 120\n");
}

TEST(ContentOptions, ALaterStartFrameOverridesAnEarlierOne) {
  const Parsed parsed = Parse("v startingFrame=1 startingFrame=2 startingFrame=x");
  EXPECT_EQ(parsed.content.startFrame, 2);
  EXPECT_EQ(parsed.printed, std::string("INFO  : Start frame position set to 1\n"
                                        "INFO  : Start frame position set to 2\n") +
                                INVALID);
}

TEST(ContentOptions, AStartFrameThatIsNoNumberIsWarnedOf) {
  const Parsed parsed = Parse("video.mp4 startingFrame=abc");
  EXPECT_EQ(parsed.content.source, "video.mp4");
  EXPECT_FALSE(parsed.content.startFrame);
  EXPECT_EQ(parsed.printed, INVALID);
}

TEST(ContentOptions, AStartFrameOutOfTheIntegersIsWarnedOf) {
  const Parsed parsed = Parse("video.mp4 startingFrame=2147483648");
  EXPECT_FALSE(parsed.content.startFrame);
  EXPECT_EQ(parsed.printed, INVALID);
  EXPECT_EQ(Parse("v startingFrame=2147483647").content.startFrame, 2147483647);
}

TEST(ContentOptions, AStartFrameIsReadAsFarAsItIsANumber) {
  EXPECT_EQ(Parse("v startingFrame=12abc").content.startFrame, 12);
  EXPECT_EQ(Parse("v startingFrame=-5").content.startFrame, -5);
}

TEST(ContentOptions, AnOptionOfOneOrThreePartsIsIgnoredSilently) {
  for (const char* text : {"v startingFrame=1=2", "v startingFrame="}) {
    const Parsed parsed = Parse(text);
    EXPECT_FALSE(parsed.content.startFrame) << text;
    EXPECT_EQ(parsed.printed, "") << text;
  }
}

TEST(ContentOptions, TheOptionIsFoundAnywhereInAnyToken) {
  EXPECT_EQ(Parse("http://host/v?startingFrame=7").content.startFrame, 7);
  EXPECT_EQ(Parse("http://host/v?startingFrame=7").content.source, "http://host/v?startingFrame=7");
  EXPECT_EQ(Parse("v my-startingFrame=8").content.startFrame, 8);
  EXPECT_EQ(Parse("v =startingFrame=").printed, INVALID);
}

TEST(Split, KeepsEmptyPiecesBetweenSeparatorsOnly) {
  EXPECT_EQ(Calibrator::split("a,b", ','), (Pieces{"a", "b"}));
  EXPECT_EQ(Calibrator::split("a,,b", ','), (Pieces{"a", "", "b"}));
  EXPECT_EQ(Calibrator::split("a,", ','), (Pieces{"a"}));
  EXPECT_EQ(Calibrator::split(",", ','), (Pieces{""}));
  EXPECT_EQ(Calibrator::split("", ','), Pieces{});
}

TEST(Split, AppendsToTheListItIsGiven) {
  Pieces pieces = {"before"};
  Calibrator::split("a b", ' ', pieces);
  EXPECT_EQ(pieces, (Pieces{"before", "a", "b"}));
}

}  // namespace
