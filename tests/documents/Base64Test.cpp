/// Base64 text of bytes and back.
#include "base64.h"

#include <gtest/gtest.h>

#include <random>

#include "documents/PlainBase64.h"

namespace {

std::string Encode(const std::string& bytes) {
  return base64_encode(reinterpret_cast<const unsigned char*>(bytes.data()),
                       static_cast<unsigned>(bytes.size()));
}

std::string RandomBytes(size_t count) {
  std::mt19937 random(static_cast<unsigned>(count) + 1);
  std::string bytes(count, '\0');
  for (char& byte : bytes) byte = static_cast<char>(static_cast<unsigned char>(random()));
  return bytes;
}

struct Vector {
  std::string bytes;
  std::string text;
};

const std::vector<Vector> RFC_4648 = {{"", ""},
                                      {"f", "Zg=="},
                                      {"fo", "Zm8="},
                                      {"foo", "Zm9v"},
                                      {"foob", "Zm9vYg=="},
                                      {"fooba", "Zm9vYmE="},
                                      {"foobar", "Zm9vYmFy"}};

TEST(Base64, HasTheStandardAlphabet) {
  EXPECT_EQ(base64_chars, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
}

TEST(Base64, AgreesWithTheVectorsOfTheStandardBothWays) {
  for (const Vector& vector : RFC_4648) {
    EXPECT_EQ(Encode(vector.bytes), vector.text);
    EXPECT_EQ(base64_decode(vector.text), vector.bytes);
  }
}

TEST(Base64, PadsWhatRemainsOfAGroup) {
  EXPECT_EQ(Encode("Man"), "TWFu");
  EXPECT_EQ(Encode("Ma"), "TWE=");
  EXPECT_EQ(Encode("M"), "TQ==");
}

TEST(Base64, NeedsNoPaddingToDecode) {
  EXPECT_EQ(base64_decode("TWE="), "Ma");
  EXPECT_EQ(base64_decode("TWE"), "Ma");
}

TEST(Base64, StopsAtABlank) {
  EXPECT_EQ(base64_decode("TW Fu"), "M");
}

TEST(Base64, DecodesOnlyTheFirstLineOfABrokenText) {
  const std::string bytes = RandomBytes(200);
  std::string text = Encode(bytes);
  for (size_t at = 76; at < text.size(); at += 77) text.insert(at, "\n");
  EXPECT_EQ(base64_decode(text), bytes.substr(0, 57));
}

TEST(Base64, DecodesNothingFromNothing) {
  EXPECT_EQ(base64_decode(""), "");
  EXPECT_EQ(base64_decode("="), "");
  EXPECT_EQ(base64_decode("=TWFu"), "");
}

TEST(Base64, DropsASingleStrayCharacter) {
  EXPECT_EQ(base64_decode("T"), "");
  EXPECT_EQ(base64_decode("TWFuT"), "Man");
  EXPECT_EQ(base64_decode("TWFuT==="), "Man");
}

TEST(Base64, GivesEveryLengthBack) {
  for (size_t length = 0; length <= 300; ++length) {
    const std::string bytes = RandomBytes(length);
    const std::string text = Encode(bytes);
    EXPECT_EQ(text.size(), (length + 2) / 3 * 4);
    EXPECT_EQ(text.find_first_not_of(base64_chars + "="), std::string::npos);
    EXPECT_EQ(unit::PlainBase64Decode(text), bytes) << length;
    EXPECT_EQ(base64_decode(text), bytes) << length;
  }
}

TEST(Base64, DecodesTextsOfEveryLengthLikeThePlainDecoder) {
  for (size_t length = 0; length <= 300; ++length) {
    std::string text = RandomBytes(length);
    for (char& letter : text) letter = base64_chars[static_cast<unsigned char>(letter) % 64];
    EXPECT_EQ(base64_decode(text), unit::PlainBase64Decode(text)) << length;
  }
}

TEST(Base64, StopsAtEveryForeignCharacterWhereverItIs) {
  const std::string whole = Encode(RandomBytes(12));
  int stopping = 0;
  for (int code = 0; code < 256; ++code) {
    const char letter = static_cast<char>(static_cast<unsigned char>(code));
    const bool foreign = base64_chars.find(letter) == std::string::npos;
    if (foreign) ++stopping;
    for (size_t at = 0; at < whole.size(); ++at) {
      std::string text = whole;
      text[at] = letter;
      const std::string bytes = base64_decode(text);
      EXPECT_EQ(bytes, unit::PlainBase64Decode(text)) << code << " at " << at;
      EXPECT_EQ(bytes.size(), foreign ? at * 6 / 8 : 12U) << code << " at " << at;
    }
  }
  EXPECT_EQ(stopping, 192);
}

TEST(Base64, DecodesAUrlSafeTextUpToItsFirstOwnCharacter) {
  EXPECT_EQ(base64_decode("TWFu-_8A"), "Man");
  EXPECT_EQ(base64_decode("TWFuTW_F"), "ManM");
}

TEST(Base64, KeepsZeroBytes) {
  const std::string bytes("\0a\0\0", 4);
  EXPECT_EQ(base64_decode(Encode(bytes)), bytes);
}

TEST(Base64, CountsHundredsOfMegabytes) {
  // More bits than an int counts.
  constexpr size_t COUNT = 300'000'001;
  std::string bytes(COUNT, '\xA5');
  bytes.front() = 'f';
  bytes.back() = 'b';
  const std::string text = Encode(bytes);
  EXPECT_EQ(text.size(), 400'000'004U);
  EXPECT_TRUE(base64_decode(text) == bytes);
}

}  // namespace
