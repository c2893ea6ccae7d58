/// Base64 written for being obviously right: what the engine's codec is compared with.
#pragma once

#include <string>
#include <vector>

namespace unit {

/// -1 for characters outside the alphabet.
inline int PlainBase64Value(char letter) {
  if (letter >= 'A' && letter <= 'Z') return letter - 'A';
  if (letter >= 'a' && letter <= 'z') return letter - 'a' + 26;
  if (letter >= '0' && letter <= '9') return letter - '0' + 52;
  if (letter == '+') return 62;
  return letter == '/' ? 63 : -1;
}

/// Bit by bit: a byte is eight of the bits that the characters before the first foreign one stand for.
inline std::string PlainBase64Decode(const std::string& text) {
  std::vector<bool> bits;
  for (const char letter : text) {
    const int value = PlainBase64Value(letter);
    if (value < 0) break;
    for (int bit = 5; bit >= 0; --bit) bits.push_back((value >> bit & 1) != 0);
  }
  std::string bytes;
  for (size_t start = 0; start + 8 <= bits.size(); start += 8) {
    int byte = 0;
    for (size_t i = 0; i < 8; ++i) byte = 2 * byte + (bits[start + i] ? 1 : 0);
    bytes += static_cast<char>(static_cast<unsigned char>(byte));
  }
  return bytes;
}

}  // namespace unit
