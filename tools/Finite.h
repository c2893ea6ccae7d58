/// A check of options that CLI11 does not have.
#pragma once

#include <cmath>
#include <cstdlib>
#include <string>

/// What is wrong with the number, for CLI::Option::check; "nan" passes checks of ranges, for it is in none
/// and out of none. Whether it is a number at all is asked elsewhere.
inline std::string FaultUnlessFinite(const std::string& text) {
  return std::isfinite(std::strtof(text.c_str(), nullptr)) ? ""
                                                           : "'" + text + "' is no number to reckon with";
}
