/// The hash by which a session knows the content of a file again.
#include "session/ContentHash.h"

namespace velmora {

namespace {

constexpr size_t DIGITS = 16;
constexpr std::string_view HEX = "0123456789abcdef";

}  // namespace

std::uint64_t ContentHash(std::string_view bytes, std::uint64_t before) {
  constexpr std::uint64_t PRIME = 0x100000001B3U;
  std::uint64_t hash = before;
  for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * PRIME;
  return hash;
}

std::string HexOf(std::uint64_t hash) {
  std::string text(DIGITS, '0');
  for (size_t i = DIGITS; i-- > 0; hash >>= 4U) text[i] = HEX[hash & 0xFU];
  return text;
}

std::optional<std::uint64_t> FromHex(const std::string& text) {
  if (text.size() != DIGITS) return std::nullopt;
  std::uint64_t hash = 0;
  for (const char letter : text) {
    const size_t digit = HEX.find(letter);
    if (digit == std::string_view::npos) return std::nullopt;
    hash = hash << 4U | digit;
  }
  return hash;
}

}  // namespace velmora
