/// The help text, byte for byte.
#include "velmora/HelpText.h"

#include <gtest/gtest.h>

#include "TemporaryFolder.h"

TEST(HelpText, IsTheRecordedText) {
  EXPECT_EQ(app::HelpText(), support::ReadText(VELMORA_HELP_TEXT));
}

TEST(HelpText, SeparatesTheSelectOptionFromItsMeaningByATab) {
  EXPECT_NE(app::HelpText().find(
                "\n        --select      \t    In the stereo case, select one camera for monocular "
                "calibration. Posible values are 'left' or 'right'.\n\n"),
            std::string::npos);
}
