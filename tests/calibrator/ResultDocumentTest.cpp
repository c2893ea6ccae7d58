/// Names and sentences of the result file and the status answer.
#include "calibrator/ResultDocument.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <ctime>

#include "Calibrator.h"
#include "TemporaryFolder.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

std::string LocalTime(std::time_t time) {
  char text[80] = "";
  std::strftime(text, sizeof(text), "%Y%m%d%X", std::localtime(&time));
  return text;
}

/// Expects the text to be the date and time of a second between the two.
void ExpectTimeBetween(const std::string& text, std::time_t first, std::time_t last) {
  bool found = false;
  for (std::time_t second = first; second <= last; ++second) found = found || text == LocalTime(second);
  EXPECT_TRUE(found) << text << " is not " << LocalTime(first);
}

TEST(ResultDocument, TellsLocalDateAndTime) {
  for (const char* zone : {"UTC0", "AAA-5:30", "BBB+9"}) {
    const unit::ScopedVariable there("TZ", zone);
    tzset();
    const std::time_t first = std::time(nullptr);
    const std::string text = CurrentDateTime();
    ExpectTimeBetween(text, first, std::time(nullptr));
    EXPECT_EQ(unit::WithDigitsHidden(text), "9999999999:99:99");
  }
  tzset();
}

TEST(ResultDocument, TellsTheTimeOfACalibratorToo) {
  Calibrator calibrator({4, 11}, 0.02F, Calibrator::MONOCULAR, 640, 480);
  const std::time_t first = std::time(nullptr);
  const std::string text = calibrator.currentDateTime();
  ExpectTimeBetween(text, first, std::time(nullptr));
}

TEST(ResultDocument, TellsTheTimeWithoutRegardToTheUsersLocale) {
  // Window libraries make it the process' own. The locale is made here: which ones there are is the
  // machine's.
  const support::TemporaryFolder folder;
  const std::string make = "localedef -i en_US -f UTF-8 '" + folder.File("en_US.UTF-8") + "' >/dev/null 2>&1";
  if (std::system(make.c_str()) != 0)
    GTEST_SKIP() << "no locale can be made here";  // NOLINT: a fixed command
  const unit::ScopedVariable place("LOCPATH", folder.Path());
  constexpr int NO_LOCALE = 2;
  EXPECT_EQ(unit::InChild([&] {
              if (std::setlocale(LC_ALL, "en_US.UTF-8") == nullptr) return NO_LOCALE;
              return unit::WithDigitsHidden(CurrentDateTime()) == "9999999999:99:99" ? 0 : 1;
            }),
            0);
}

TEST(ResultDocument, AlwaysAppendsTheExtension) {
  EXPECT_EQ(ResultFileName("calib", Calibrator::MONOCULAR), "calib.json");
  EXPECT_EQ(ResultFileName("calib.json", Calibrator::MONOCULAR), "calib.json.json");
  EXPECT_EQ(ResultFileName("/a b/c.d", Calibrator::STEREO), "/a b/c.d.json");
}

TEST(ResultDocument, IsNamedByKindDateAndTimeWithoutAPath) {
  for (const int kind : {Calibrator::MONOCULAR, Calibrator::STEREO}) {
    const std::string start = kind == Calibrator::STEREO ? "stereo" : "mono";
    const std::time_t first = std::time(nullptr);
    const std::string name = ResultFileName("", kind);
    const std::time_t last = std::time(nullptr);
    ASSERT_EQ(unit::WithDigitsHidden(name), start + "9999999999:99:99.json");
    ExpectTimeBetween(name.substr(start.size(), 16), first, last);
  }
}

TEST(ResultDocument, HasASentenceForEachStatus) {
  const std::string notReady =
      "Calibration not ready to be performed yet. Not enough snapshots have been collected.";
  EXPECT_EQ(StatusSentence(Calibrator::STATUS_READY),
            std::string("Calibration ready to be performed. Enough snapshots have been collected."));
  EXPECT_EQ(StatusSentence(Calibrator::STATUS_PROGRESS), std::string("Calibration in progress."));
  EXPECT_EQ(StatusSentence(Calibrator::STATUS_COMPLETED),
            std::string("Calibration completed. Results are available."));
  for (const int status : {Calibrator::STATUS_NOT_READY, 500, 0, -1})
    EXPECT_EQ(StatusSentence(status), notReady);
}

}  // namespace
