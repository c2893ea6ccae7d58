/// The console log: what each level prints, and that lines stay whole.
#include "Log.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <sstream>
#include <thread>
#include <vector>

#include "CapturedStdout.h"
#include "TemporaryFolder.h"
#include "unit/Scopes.h"

namespace {

const int LEVEL_AT_START = Log::LOG_LEVEL;

void LogOneLinePerSeverity() {
  Log::error("message %d", 1);
  Log::warn("message %d", 2);
  Log::info("message %d", 3);
  Log::debug("message %d", 4);
  Log::trace("message %d", 5);
}

const std::vector<std::string> LINES = {"ERROR : message 1\n", "WARN  : message 2\n", "INFO  : message 3\n",
                                        "DEBUG : message 4\n", "TRACE : message 5\n"};

class LogAtLevel : public ::testing::TestWithParam<int> {};

TEST_P(LogAtLevel, PrintsTheLinesOfThatSeverityAndOfGraverOnes) {
  const unit::ScopedLogLevel level(GetParam());
  std::string expected;
  for (int i = 0; i < GetParam(); ++i) expected += LINES[static_cast<size_t>(i)];
  EXPECT_EQ(unit::PrintedBy(LogOneLinePerSeverity), expected);
}

INSTANTIATE_TEST_SUITE_P(AllLevels, LogAtLevel, ::testing::Range(0, 6));

TEST(Log, StartsWithDebugLinesAndWithoutTraceLines) {
  EXPECT_EQ(LEVEL_AT_START, Log::DEBUG_LEVEL);
}

TEST(Log, InsertsTheArgumentsAsPrintfDoes) {
  EXPECT_EQ(unit::PrintedBy([] { Log::error("%s has %d of %.2f, 100%%", "it", -3, 0.5); }),
            "ERROR : it has -3 of 0.50, 100%\n");
}

TEST(Log, LeavesPercentSignsOfArgumentsAlone) {
  EXPECT_EQ(unit::PrintedBy([] { Log::error("Cannot save file: %s", "50%d off.json"); }),
            "ERROR : Cannot save file: 50%d off.json\n");
}

TEST(Log, EndsAnEmptyMessageWithOneNewline) {
  EXPECT_EQ(unit::PrintedBy([] { Log::error("%s", ""); }), "ERROR : \n");
}

TEST(Log, FlushesEachLineAtOnce) {
  const support::CapturedStdout captured;
  // The child ends without flushing: what it leaves behind was flushed by the log.
  const int result = unit::InChild([] {
    Log::error("seen at once");
    return 0;
  });
  const std::string printed = captured.Text();
  EXPECT_EQ(result, 0);
  EXPECT_EQ(printed, "ERROR : seen at once\n");
}

TEST(Log, PrintsNothingOnStandardError) {
  const support::TemporaryFolder folder;
  const std::string path = folder.File("stderr");
  support::WriteText(path, "");
  const unit::ScopedLogLevel level(Log::TRACE_LEVEL);
  const std::string printed = unit::PrintedBy([&] {
    ASSERT_EQ(unit::InChild([&] {
                if (std::freopen(path.c_str(), "w", stderr) == nullptr) return 1;
                LogOneLinePerSeverity();
                return 0;
              }),
              0);
  });
  EXPECT_EQ(support::ReadText(path), "");
  EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 5);
}

TEST(Log, KeepsLinesOfDifferentThreadsWhole) {
  constexpr int THREADS = 4;
  constexpr int LINES_EACH = 2000;
  const std::string printed = unit::PrintedBy([] {
    std::atomic<int> missing{THREADS};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < THREADS; ++thread) {
      threads.emplace_back([thread, &missing] {
        --missing;
        while (missing > 0) std::this_thread::yield();
        for (int line = 0; line < LINES_EACH; ++line) Log::error("thread %d says %d", thread, line);
      });
    }
    for (std::thread& thread : threads) thread.join();
  });

  std::map<int, int> next;
  std::istringstream lines(printed);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    int thread = -1;
    ASSERT_EQ(std::sscanf(line.c_str(), "ERROR : thread %d", &thread), 1) << line;
    EXPECT_EQ(line, "ERROR : thread " + std::to_string(thread) + " says " + std::to_string(next[thread]++));
  }
  EXPECT_EQ(count, THREADS * LINES_EACH);
}

}  // namespace
