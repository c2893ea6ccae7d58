/// Reads a JSON value as a number of a given type.
#pragma once

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <type_traits>

namespace velmora {

/// The library's own conversion, type errors included, but for reals beyond an integer type: those become the
/// nearest of its numbers, where the conversion of the language is undefined.
template <typename Number>
Number NumberOf(const nlohmann::json& value) {
  if constexpr (std::is_integral_v<Number>) {
    if (value.is_number_float()) {
      static_assert(sizeof(Number) <= sizeof(int), "a double holds its limits");
      constexpr auto LEAST = static_cast<double>(std::numeric_limits<Number>::min());
      constexpr auto MOST = static_cast<double>(std::numeric_limits<Number>::max());
      return static_cast<Number>(std::clamp(value.get<double>(), LEAST, MOST));
    }
  }
  return value.get<Number>();
}

}  // namespace velmora
