/// Moments as ISO 8601 texts in UTC.
#include "session/UtcTime.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <regex>

namespace velmora {

std::string UtcText(std::chrono::system_clock::time_point moment) {
  using std::chrono::milliseconds;
  const auto sinceEpoch = std::chrono::duration_cast<milliseconds>(moment.time_since_epoch()).count();
  const std::time_t seconds = sinceEpoch / 1000;
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  std::array<char, 32> date{};
  std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &utc);
  std::array<char, 8> fraction{};
  std::snprintf(fraction.data(), fraction.size(), ".%03dZ", static_cast<int>(sinceEpoch % 1000));
  return std::string(date.data()) + fraction.data();
}

bool IsUtcText(const std::string& text) {
  static const std::regex FORM(
      "[0-9]{4}-(0[1-9]|1[0-2])-(0[1-9]|[12][0-9]|3[01])"
      "T([01][0-9]|2[0-3]):[0-5][0-9]:([0-5][0-9]|60)([.][0-9]{1,9})?Z");
  return std::regex_match(text, FORM);
}

}  // namespace velmora
