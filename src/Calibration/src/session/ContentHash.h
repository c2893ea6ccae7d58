/// The hash by which a session knows the content of a file again.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

constexpr std::uint64_t HASH_OF_NOTHING = 0xCBF29CE484222325U;

/// FNV-1a of 64 bits. It tells damage and other files, not files that somebody made alike on purpose.
/// `before` is the hash of what comes before these bytes.
std::uint64_t ContentHash(std::string_view bytes, std::uint64_t before = HASH_OF_NOTHING);

/// 16 hexadecimal digits in lower case, and back; nothing for a text that is not that.
std::string HexOf(std::uint64_t hash);
std::optional<std::uint64_t> FromHex(const std::string& text);

}  // namespace velmora
