/// The hash of files' contents, by values that are published with it.
#include "session/ContentHash.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "TemporaryFolder.h"
#include "session/SessionScenes.h"
#include "velmora/Session.h"

using namespace velmora;

namespace {

TEST(ContentHash, IsFnv1aOf64Bits) {
  EXPECT_EQ(ContentHash(""), 0xCBF29CE484222325U);
  EXPECT_EQ(ContentHash("a"), 0xAF63DC4C8601EC8CU);
  EXPECT_EQ(ContentHash("foobar"), 0x85944171F73967E8U);
  EXPECT_NE(ContentHash(std::string_view("\0", 1)), ContentHash(""));
  EXPECT_NE(ContentHash("\xFF"), ContentHash("\x7F"));
  EXPECT_EQ(ContentHash("bar", ContentHash("foo")), ContentHash("foobar"));
}

TEST(ContentHash, IsWrittenWith16DigitsAndReadFromNoOtherText) {
  EXPECT_EQ(HexOf(0xCBF29CE484222325U), "cbf29ce484222325");
  EXPECT_EQ(HexOf(0x1FU), "000000000000001f");
  for (const std::uint64_t hash : {std::uint64_t{0}, std::uint64_t{1} << 63U, ContentHash("a")}) {
    EXPECT_EQ(FromHex(HexOf(hash)), hash);
  }
  for (const char* text : {"", "1f", "CBF29CE484222325", "cbf29ce48422232g", "0cbf29ce484222325"}) {
    EXPECT_FALSE(FromHex(text)) << text;
  }
}

TEST(ContentHash, IsTheKeyOfAFileOfAnySize) {
  const support::TemporaryFolder folder;
  for (const size_t size : {size_t{0}, size_t{1}, size_t{1} << 20U, (size_t{1} << 20U) + 7}) {
    const std::string text(size, 'v');
    support::WriteText(folder.File("file"), text);
    EXPECT_EQ(Session::ContentKey(folder.File("file")), HexOf(ContentHash(text))) << size;
  }
  EXPECT_EQ(unit::Raised<std::runtime_error>([&] { Session::ContentKey(folder.File("none")); }),
            "Cannot read \"" + folder.File("none") + "\": there is no such file or folder.");
  EXPECT_THROW(Session::ContentKey(folder.Path()), std::runtime_error);
}

}  // namespace
