/// JSON documents in files: the reading rule, and saves that never lose an earlier file.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "JSON.h"
#include "TemporaryFolder.h"
#include "unit/Scopes.h"

namespace {

namespace fs = std::filesystem;

class JSONFile : public ::testing::Test {
 protected:
  JSONFile() { document_.addInt("kept", 1); }

  /// Loads what must fail quietly and leave the document as it was.
  void ExpectLoadRefused(const std::string& path) {
    bool loaded = true;
    EXPECT_EQ(unit::PrintedBy([&] { loaded = document_.load(path); }), "");
    EXPECT_FALSE(loaded);
    EXPECT_EQ(document_.toJson(), "{\n    \"kept\": 1\n}");
  }

  void ExpectSaveRefused(const std::string& path) {
    bool saved = true;
    EXPECT_EQ(unit::PrintedBy([&] { saved = document_.save(path); }), "");
    EXPECT_FALSE(saved);
  }

  size_t FilesInFolder() const {
    return static_cast<size_t>(
        std::distance(fs::directory_iterator(folder_.Path()), fs::directory_iterator()));
  }

  support::TemporaryFolder folder_;
  JSON document_;
};

TEST_F(JSONFile, HoldsTheTextWithoutANewlineAtItsEnd) {
  EXPECT_TRUE(document_.save(folder_.File("a.json")));
  EXPECT_EQ(support::ReadText(folder_.File("a.json")), "{\n    \"kept\": 1\n}");
}

TEST_F(JSONFile, IsWrittenForADocumentThatHoldsNothing) {
  EXPECT_TRUE(JSON().save(folder_.File("a.json")));
  EXPECT_EQ(support::ReadText(folder_.File("a.json")), "null");
}

TEST_F(JSONFile, ReplacesALongerOne) {
  support::WriteText(folder_.File("a.json"), std::string(10000, 'x'));
  EXPECT_TRUE(document_.save(folder_.File("a.json")));
  EXPECT_EQ(support::ReadText(folder_.File("a.json")), document_.toJson());
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(JSONFile, ComesBackAsItWasSaved) {
  document_.addMat("m", (cv::Mat_<double>(1, 2) << 0.1, -1e-300));
  ASSERT_TRUE(document_.save(folder_.File("a.json")));
  JSON read;
  EXPECT_TRUE(read.load(folder_.File("a.json")));
  EXPECT_EQ(read.toJson(), document_.toJson());
}

TEST_F(JSONFile, LosesTheBlanksInsideOfStringsWhenLoaded) {
  support::WriteText(folder_.File("a.json"), "{\"word\": \"a b\"}");
  ASSERT_TRUE(document_.load(folder_.File("a.json")));
  EXPECT_EQ(document_.readString("word"), "ab");
}

TEST_F(JSONFile, LosesAllWhiteSpaceWhenLoaded) {
  support::WriteText(folder_.File("a.json"), " \n{ \"left \tcamera\"\r\n: \"x\n y\v z\f\" ,\"n\":1 2 }\n\n");
  ASSERT_TRUE(document_.load(folder_.File("a.json")));
  EXPECT_EQ(document_.readString("leftcamera"), "xyz");
  EXPECT_EQ(document_.readInt("n"), 12);
}

TEST_F(JSONFile, IsReadWithAByteOrderMark) {
  support::WriteText(folder_.File("a.json"), "\xef\xbb\xbf{\"a\": 1}");
  ASSERT_TRUE(document_.load(folder_.File("a.json")));
  EXPECT_EQ(document_.readInt("a"), 1);
}

TEST_F(JSONFile, IsNotLoadedWhenMissing) {
  ExpectLoadRefused(folder_.File("missing.json"));
}

TEST_F(JSONFile, IsNotLoadedFromAFolder) {
  ExpectLoadRefused(folder_.Path());
}

TEST_F(JSONFile, IsNotLoadedFromAnEmptyPath) {
  ExpectLoadRefused("");
}

TEST_F(JSONFile, IsNotLoadedWhenReadingFails) {
  // Opens, but its first page cannot be read.
  ExpectLoadRefused("/proc/self/mem");
}

TEST_F(JSONFile, RaisesAParseErrorWhenEmptyAndLeavesTheDocument) {
  for (const char* text : {"", " \n\t ", "{\"a\": 1", "{\"a\" 1}"}) {
    support::WriteText(folder_.File("a.json"), text);
    EXPECT_THROW(document_.load(folder_.File("a.json")), nlohmann::json::parse_error) << text;
    EXPECT_EQ(document_.toJson(), "{\n    \"kept\": 1\n}");
  }
}

TEST_F(JSONFile, IsNotSavedIntoAMissingFolder) {
  ExpectSaveRefused(folder_.File("missing/a.json"));
  EXPECT_FALSE(fs::exists(folder_.File("missing")));
}

TEST_F(JSONFile, IsNotSavedOverAFolder) {
  fs::create_directory(folder_.File("a.json"));
  ExpectSaveRefused(folder_.File("a.json"));
  EXPECT_TRUE(fs::is_directory(folder_.File("a.json")));
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(JSONFile, IsNotSavedWithoutAName) {
  const unit::ScopedCurrentFolder current(folder_.Path());
  ExpectSaveRefused("");
  EXPECT_EQ(FilesInFolder(), 0U);
}

TEST_F(JSONFile, IsNotSavedWhereNobodyMayCreateFiles) {
  ExpectSaveRefused("/proc/a.json");
}

TEST_F(JSONFile, ReportsAFailureWhileWritingAndStillAnswersTrue) {
  bool saved = false;
  EXPECT_EQ(unit::PrintedBy([&] { saved = document_.save("/dev/full"); }),
            "ERROR : Cannot write file: /dev/full\n");
  EXPECT_TRUE(saved);
}

TEST_F(JSONFile, StaysWholeWhenTheNewOneCannotBeFinished) {
  const std::string path = folder_.File("a.json");
  ASSERT_TRUE(document_.save(path));
  document_.addString("long", std::string(100000, 'x'));
  bool saved = false;
  const std::string printed = unit::PrintedBy([&] {
    saved = unit::InChild([&] {
              signal(SIGXFSZ, SIG_IGN);
              const rlimit limit = {4096, 4096};
              setrlimit(RLIMIT_FSIZE, &limit);
              return document_.save(path) ? 0 : 1;
            }) == 0;
  });
  EXPECT_EQ(printed, "ERROR : Cannot write file: " + path + "\n");
  EXPECT_TRUE(saved);
  EXPECT_EQ(support::ReadText(path), "{\n    \"kept\": 1\n}");
  EXPECT_EQ(FilesInFolder(), 1U) << "something half-written was left behind";
}

TEST_F(JSONFile, IsWholeForReadersAtAnyTime) {
  const std::string path = folder_.File("a.json");
  document_.addString("long", std::string(200000, 'x'));
  ASSERT_TRUE(document_.save(path));
  std::atomic<bool> done{false};
  std::thread writer([&] {
    for (int i = 0; i < 50; ++i) document_.save(path);
    done = true;
  });
  int whole = 0;
  int broken = 0;
  do {
    JSON read;
    try {
      (read.load(path) && read.readString("long").size() == 200000 ? whole : broken) += 1;
    } catch (const nlohmann::json::exception&) {
      ++broken;
    }
  } while (!done);
  writer.join();
  EXPECT_EQ(broken, 0);
  EXPECT_GT(whole, 0);
}

TEST_F(JSONFile, OfSeveralWritersIsThatOfOneOfThem) {
  const std::string path = folder_.File("a.json");
  std::vector<std::thread> writers;
  std::atomic<int> saved{0};
  for (int writer = 0; writer < 4; ++writer) {
    writers.emplace_back([&, writer] {
      JSON document;
      document.addString(
          "name", std::string(5000 + 5000 * static_cast<size_t>(writer), static_cast<char>('a' + writer)));
      for (int i = 0; i < 25; ++i) saved += document.save(path) ? 1 : 0;
    });
  }
  for (std::thread& writer : writers) writer.join();
  EXPECT_EQ(saved, 100);
  JSON read;
  ASSERT_TRUE(read.load(path));
  const std::string name = read.readString("name");
  ASSERT_FALSE(name.empty());
  EXPECT_EQ(name, std::string(5000 + 5000 * static_cast<size_t>(name.front() - 'a'), name.front()));
  EXPECT_EQ(FilesInFolder(), 1U);
}

}  // namespace
