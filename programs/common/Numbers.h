/// Checks of options that the command line parser does not have, or reports with numbers of three hundred
/// digits. Each says what is wrong with the text, or nothing.
#pragma once

#include <cmath>
#include <cstdlib>
#include <string>

namespace common {

/// The number that the whole text is, else one that is not finite: "nan" passes checks of ranges, for it is
/// in none and out of none.
inline float WholeTextAsNumber(const std::string& text) {
  char* end = nullptr;
  const float number = std::strtof(text.c_str(), &end);
  return end == text.c_str() || *end != '\0' ? NAN : number;
}

inline std::string FaultUnlessFinite(const std::string& text) {
  return std::isfinite(WholeTextAsNumber(text)) ? "" : "'" + text + "' is not a usable number";
}

inline std::string FaultUnlessPositive(const std::string& text) {
  const float number = WholeTextAsNumber(text);
  return std::isfinite(number) && number > 0.0F ? "" : "'" + text + "' is not a positive number";
}

inline std::string FaultIfNegative(const std::string& text) {
  const float number = WholeTextAsNumber(text);
  return std::isfinite(number) && number >= 0.0F ? ""
                                                 : "'" + text + "' is neither zero nor a positive number";
}

/// What is wrong with the text of a length, with an example for those who write a unit.
inline std::string FaultUnlessMetres(const std::string& text) {
  return std::isfinite(WholeTextAsNumber(text)) ? FaultUnlessPositive(text)
                                                : "'" + text + "' is not a number of metres, such as 0.2";
}

}  // namespace common
