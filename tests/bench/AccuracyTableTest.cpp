/// How tables of the accuracy report are written.
#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "Table.h"
#include "TemporaryFolder.h"

using accuracy::Number;
using accuracy::Shown;

namespace {

accuracy::Table TwoRows() {
  accuracy::Table table{"small", "Small", "Two rows.", {}};
  table.rows = {{{{"views", "5"}, {"noise", "0.1"}},
                 {{"fx", 1.5}, {"share", 0.684, true}, {"detail", 7.0, false, true}}},
                {{{"views", "9"}, {"noise", "0.1"}},
                 {{"fx", 0.25}, {"share", 0.7, true}, {"detail", 8.0, false, true}}}};
  return table;
}

TEST(AccuracyTable, TellsCommonConditionsOnce) {
  std::ostringstream out;
  accuracy::PrintMarkdown(TwoRows(), out);
  EXPECT_EQ(out.str(),
            "## Small\n\nTwo rows.\n\nIn all rows: noise 0.1.\n\n"
            "| views | fx | share |\n|---|---:|---:|\n| 5 | 1.50 | 68 % |\n| 9 | 0.250 | 70 % |\n\n");
}

TEST(AccuracyTable, HasEverythingAsCsv) {
  const support::TemporaryFolder folder;
  accuracy::WriteCsv(TwoRows(), folder.Path());
  EXPECT_EQ(support::ReadText(folder.File("small.csv")),
            "views,noise,fx,share,detail\n5,0.1,1.5,0.684,7\n9,0.1,0.25,0.7,8\n");
  EXPECT_THROW(accuracy::WriteCsv(TwoRows(), folder.File("none")), std::runtime_error);
}

TEST(AccuracyTable, QuotesCommasInCsv) {
  const support::TemporaryFolder folder;
  accuracy::WriteCsv({"comma", "", "", {{{{"parameters", "fx, fy"}}, {{"error", 1.0}}}}}, folder.Path());
  EXPECT_EQ(support::ReadText(folder.File("comma.csv")), "parameters,error\n\"fx, fy\",1\n");
}

TEST(AccuracyTable, ShowsThreeDigits) {
  EXPECT_EQ(Shown({"", 0.0}), "0");
  EXPECT_EQ(Shown({"", 12.345}), "12.3");
  EXPECT_EQ(Shown({"", 1234.5}), "1234");
  EXPECT_EQ(Shown({"", 0.012345}), "0.0123");
  EXPECT_EQ(Shown({"", 0.000123}), "1.2e-04");
  EXPECT_EQ(Shown({"", 3.9e8}), "3.9e+08");
  EXPECT_EQ(Shown({"", std::numeric_limits<double>::quiet_NaN()}), "-");
  EXPECT_EQ(Shown({"", std::numeric_limits<double>::infinity()}), "inf");
}

}  // namespace
