/// Checks of options that CLI11 does not have, or tells of with numbers of three hundred digits.
#pragma once

#include <cmath>
#include <cstdlib>
#include <string>

/// What is wrong with the number, for CLI::Option::check; "nan" passes checks of ranges, for it is in none
/// and out of none. What follows a number is found when the option is read.
inline std::string FaultUnlessFinite(const std::string& text) {
  return std::isfinite(std::strtof(text.c_str(), nullptr)) ? ""
                                                           : "'" + text + "' is no number to reckon with";
}

inline std::string FaultUnlessPositive(const std::string& text) {
  const float number = std::strtof(text.c_str(), nullptr);
  return std::isfinite(number) && number > 0.0F ? "" : "'" + text + "' is no positive number";
}

inline std::string FaultIfNegative(const std::string& text) {
  const float number = std::strtof(text.c_str(), nullptr);
  return std::isfinite(number) && number >= 0.0F ? ""
                                                 : "'" + text + "' is neither zero nor a positive number";
}
