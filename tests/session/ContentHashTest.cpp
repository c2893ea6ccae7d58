/// The hash of files' contents, by values that are published with it.
#include "session/ContentHash.h"

#include <gtest/gtest.h>

using namespace velmora;

namespace {

TEST(ContentHash, IsFnv1aOf64Bits) {
  EXPECT_EQ(ContentHash(""), 0xCBF29CE484222325U);
  EXPECT_EQ(ContentHash("a"), 0xAF63DC4C8601EC8CU);
  EXPECT_EQ(ContentHash("foobar"), 0x85944171F73967E8U);
  EXPECT_NE(ContentHash(std::string_view("\0", 1)), ContentHash(""));
  EXPECT_NE(ContentHash("\xFF"), ContentHash("\x7F"));
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

}  // namespace
