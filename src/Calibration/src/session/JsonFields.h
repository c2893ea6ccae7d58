/// Reads fields of JSON objects that must be there.
#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "documents/JsonNumber.h"

namespace velmora {

/// Raises std::runtime_error, with the words that go behind "its FILE ", when there is none.
inline const nlohmann::json& FieldOf(const nlohmann::json& object, const std::string& key) {
  if (!object.is_object() || !object.contains(key)) throw std::runtime_error("lacks \"" + key + "\"");
  return object.at(key);
}

/// Also when it is of another type.
template <typename Value>
Value FieldOf(const nlohmann::json& object, const std::string& key) {
  const nlohmann::json& value = FieldOf(object, key);
  try {
    if constexpr (std::is_arithmetic_v<Value> && !std::is_same_v<Value, bool> &&
                  sizeof(Value) <= sizeof(int)) {
      return NumberOf<Value>(value);
    } else {
      return value.get<Value>();
    }
  } catch (const nlohmann::json::exception&) {
    throw std::runtime_error("has another type of \"" + key + "\"");
  }
}

/// The text as JSON; raises std::runtime_error in the same way.
inline nlohmann::json ParsedJson(const std::string& text) {
  nlohmann::json document = nlohmann::json::parse(text, nullptr, false);
  if (document.is_discarded()) throw std::runtime_error("is cut off or no JSON text");
  return document;
}

/// Indented as all files are; what is no UTF-8 in texts is replaced.
inline std::string JsonText(const nlohmann::json& document) {
  return document.dump(4, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace velmora
