/// The JSON document: scalars, text and the exceptions of the library that pass through.
#include "JSON.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace {

/// Expects the action to raise the library's type error of that number, with that text in its message.
void ExpectTypeError(const std::function<void()>& action, int id, const std::string& text) {
  try {
    action();
    ADD_FAILURE() << "nothing was raised";
  } catch (const nlohmann::json::type_error& error) {
    EXPECT_EQ(error.id, id);
    EXPECT_NE(std::string(error.what()).find(text), std::string::npos) << error.what();
  }
}

JSON Parsed(const std::string& text) {
  JSON document;
  document.fromJson(text);
  return document;
}

TEST(JSON, HasADocumentVersion) {
  EXPECT_EQ(JSON::VERSION, "1.0.2");
}

TEST(JSON, IsNullBeforeTheFirstMember) {
  EXPECT_EQ(JSON().toJson(), "null");
}

TEST(JSON, WritesOneMemberOverThreeLinesIndentedByFour) {
  JSON document;
  document.addInt("a", 1);
  EXPECT_EQ(document.toJson(), "{\n    \"a\": 1\n}");
}

TEST(JSON, WritesEachKindOfValueAsItsOwn) {
  JSON document;
  document.addBool("bool", true);
  document.addDouble("double", 1.0);
  document.addInt("int", -7);
  document.addString("string", "text");
  EXPECT_EQ(document.toJson(),
            "{\n    \"bool\": true,\n    \"double\": 1.0,\n    \"int\": -7,\n    \"string\": \"text\"\n}");
}

TEST(JSON, WritesKeysInAscendingByteOrder) {
  JSON document;
  for (const char* key : {"b", "a", "T", "_", "R"}) document.addInt(key, 0);
  EXPECT_EQ(document.toJson(),
            "{\n    \"R\": 0,\n    \"T\": 0,\n    \"_\": 0,\n    \"a\": 0,\n    \"b\": 0\n}");
}

TEST(JSON, WritesCharactersOutsideAsciiAsTheyAre) {
  JSON document;
  document.addString("k", "caf\xc3\xa9");
  EXPECT_EQ(document.toJson(), "{\n    \"k\": \"caf\xc3\xa9\"\n}");
}

TEST(JSON, KeepsOnlyTheSecondValueOfAKeyWrittenTwice) {
  JSON document;
  document.addString("k", "first");
  document.addInt("k", 2);
  EXPECT_EQ(document.toJson(), "{\n    \"k\": 2\n}");
  document.addMat("k", cv::Mat::eye(1, 1, CV_64F));
  EXPECT_EQ(document.readMat("k").at<double>(0, 0), 1.0);
  document.addBool("k", false);
  EXPECT_EQ(document.toJson(), "{\n    \"k\": false\n}");
}

TEST(JSON, CopiesTheStringsThatItStores) {
  JSON document;
  std::string value = "before";
  document.addString("k", value);
  value = "after";
  EXPECT_EQ(document.readString("k"), "before");
}

TEST(JSON, ReadsBackWhatWasAdded) {
  JSON document;
  document.addBool("bool", true);
  document.addDouble("double", 0.1);
  document.addInt("low", std::numeric_limits<int>::min());
  document.addInt("high", std::numeric_limits<int>::max());
  document.addString("string", "a \"quoted\"\nword");
  const std::string text = document.toJson();
  JSON read = Parsed(text);
  EXPECT_TRUE(read.readBool("bool"));
  EXPECT_EQ(read.readDouble("double"), 0.1);
  EXPECT_EQ(read.readInt("low"), std::numeric_limits<int>::min());
  EXPECT_EQ(read.readInt("high"), std::numeric_limits<int>::max());
  EXPECT_EQ(read.readString("string"), "a \"quoted\"\nword");
  EXPECT_EQ(read.toJson(), text);
}

TEST(JSON, TruncatesNumbersReadAsIntegersTowardZero) {
  JSON document = Parsed(R"({"up": 3.9, "down": -3.9})");
  EXPECT_EQ(document.readInt("up"), 3);
  EXPECT_EQ(document.readInt("down"), -3);
}

TEST(JSON, ReadsRealsBeyondAnIntegerAsTheNearestOne) {
  JSON document = Parsed(R"({"up": 1e300, "down": -1e10})");
  EXPECT_EQ(document.readInt("up"), std::numeric_limits<int>::max());
  EXPECT_EQ(document.readInt("down"), std::numeric_limits<int>::min());
}

TEST(JSON, CutsLongIntegersTo32Bits) {
  JSON document = Parsed(R"({"long": 4294967301})");
  EXPECT_EQ(document.readInt("long"), 5);
}

TEST(JSON, ReadsABooleanAsAnInteger) {
  JSON document = Parsed(R"({"yes": true, "no": false})");
  EXPECT_EQ(document.readInt("yes"), 1);
  EXPECT_EQ(document.readInt("no"), 0);
}

TEST(JSON, ReadsAnIntegerAsADouble) {
  JSON document = Parsed(R"({"negative": -4, "positive": 4})");
  EXPECT_EQ(document.readDouble("negative"), -4.0);
  EXPECT_EQ(document.readDouble("positive"), 4.0);
}

TEST(JSON, RefusesABooleanAsADouble) {
  JSON document = Parsed(R"({"k": true})");
  ExpectTypeError([&] { document.readDouble("k"); }, 302, "type must be number, but is boolean");
}

TEST(JSON, RefusesANumberAsABoolean) {
  JSON document = Parsed(R"({"k": 1})");
  ExpectTypeError([&] { document.readBool("k"); }, 302, "type must be boolean, but is number");
}

TEST(JSON, RefusesANumberAsAString) {
  JSON document = Parsed(R"({"k": 1})");
  ExpectTypeError([&] { document.readString("k"); }, 302, "type must be string, but is number");
}

TEST(JSON, RefusesAStringAsANumber) {
  JSON document = Parsed(R"({"k": "1"})");
  ExpectTypeError([&] { document.readInt("k"); }, 302, "type must be number, but is string");
  ExpectTypeError([&] { document.readDouble("k"); }, 302, "type must be number, but is string");
}

TEST(JSON, RaisesATypeErrorForAnAbsentKey) {
  JSON document = Parsed("{}");
  ExpectTypeError([&] { document.readBool("b"); }, 302, "type must be boolean, but is null");
  ExpectTypeError([&] { document.readInt("i"); }, 302, "type must be number, but is null");
  ExpectTypeError([&] { document.readDouble("d"); }, 302, "type must be number, but is null");
  ExpectTypeError([&] { document.readString("s"); }, 302, "type must be string, but is null");
  ExpectTypeError([&] { document.readMat("m"); }, 302, "type must be number, but is null");
}

TEST(JSON, CreatesAnAbsentKeyAsNullWhenItIsRead) {
  JSON document;
  EXPECT_THROW(document.readInt("k"), nlohmann::json::type_error);
  EXPECT_EQ(document.toJson(), "{\n    \"k\": null\n}");
}

TEST(JSON, RaisesATypeErrorForKeysOfADocumentThatIsNoObject) {
  JSON document = Parsed("[1, 2]");
  ExpectTypeError([&] { document.addInt("k", 1); }, 305, "cannot use operator[] with ");
  ExpectTypeError([&] { document.addMat("k", cv::Mat::eye(1, 1, CV_64F)); }, 305, "array");
  ExpectTypeError([&] { document.readInt("k"); }, 305, "array");
  ExpectTypeError([&] { document.readMat("k"); }, 305, "array");
  EXPECT_EQ(document.toJson(), "[\n    1,\n    2\n]");
}

TEST(JSON, RaisesAParseErrorForMalformedTextAndStaysAsItWas) {
  for (const std::string text : {"", "   ", "{", "{\"a\": }", "nonsense", "{\"a\": 1} x"}) {
    JSON document;
    document.addInt("kept", 1);
    try {
      document.fromJson(text);
      ADD_FAILURE() << "nothing was raised for: " << text;
    } catch (const nlohmann::json::parse_error& error) {
      const std::string message = error.what();
      EXPECT_EQ(message.rfind("[json.exception.", 0), 0U) << message;
      EXPECT_NE(message.find("syntax error"), std::string::npos) << message;
    }
    EXPECT_EQ(document.toJson(), "{\n    \"kept\": 1\n}");
  }
}

TEST(JSON, ReplacesTheWholeDocumentByParsedText) {
  JSON document;
  document.addInt("old", 1);
  document.fromJson(R"({"new": 2})");
  EXPECT_EQ(document.toJson(), "{\n    \"new\": 2\n}");
}

TEST(JSON, SkipsAByteOrderMark) {
  JSON document = Parsed("\xef\xbb\xbf{\"a\": 1}");
  EXPECT_EQ(document.readInt("a"), 1);
}

TEST(JSON, KeepsBlanksInStringsOfParsedText) {
  JSON document = Parsed(R"({"k": "left camera"})");
  EXPECT_EQ(document.readString("k"), "left camera");
}

}  // namespace
