/// The Base64 codec, by tables: frames arrive as Base64 text, many times in a second.
#include "base64.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace {

constexpr char ALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Set in a decoding table for characters outside the alphabet.
constexpr std::uint32_t STOP = 0x80000000U;

using DecodingTable = std::array<std::uint32_t, 256>;

/// Each character's share of a group's three bytes, at its place in the group (0 to 3).
constexpr DecodingTable MakeDecodingTable(int place) {
  DecodingTable table{};
  for (auto& share : table) share = STOP;
  for (std::uint32_t value = 0; value < 64; ++value) {
    table[static_cast<unsigned char>(ALPHABET[value])] = value << (18 - 6 * place);
  }
  return table;
}

constexpr std::array<DecodingTable, 4> DECODING = {MakeDecodingTable(0), MakeDecodingTable(1),
                                                   MakeDecodingTable(2), MakeDecodingTable(3)};

/// The two characters of each 12-bit value.
constexpr std::array<char, 8192> MakePairs() {
  std::array<char, 8192> pairs{};
  for (size_t value = 0; value < 4096; ++value) {
    pairs[2 * value] = ALPHABET[value >> 6];
    pairs[2 * value + 1] = ALPHABET[value & 0x3F];
  }
  return pairs;
}

constexpr std::array<char, 8192> PAIRS = MakePairs();

void EncodeGroup(std::uint32_t group, char* out) {
  const char* first = &PAIRS[size_t{2} * (group >> 12)];
  const char* second = &PAIRS[size_t{2} * (group & 0xFFF)];
  out[0] = first[0];
  out[1] = first[1];
  out[2] = second[0];
  out[3] = second[1];
}

std::uint32_t Group(const unsigned char* in, size_t count) {
  std::uint32_t group = 0;
  for (size_t i = 0; i < 3; ++i) group = group << 8 | (i < count ? in[i] : 0U);
  return group;
}

/// The first `count` of a group's three bytes.
void WriteBytes(std::uint32_t group, size_t count, char* out) {
  for (size_t i = 0; i < count; ++i) {
    out[i] = static_cast<char>(static_cast<unsigned char>(group >> (16 - 8 * i)));
  }
}

/// The last, incomplete group: up to the first character that stops it. Returns the number of bytes.
size_t DecodeRest(const unsigned char* in, const unsigned char* end, char* out) {
  std::uint32_t group = 0;
  size_t accepted = 0;
  for (; in != end && accepted < 4; ++in, ++accepted) {
    const std::uint32_t share = DECODING[accepted][*in];
    if ((share & STOP) != 0) break;
    group |= share;
  }
  const size_t count = accepted == 0 ? 0 : accepted - 1;
  WriteBytes(group, count, out);
  return count;
}

}  // namespace

const std::string base64_chars = ALPHABET;

std::string base64_encode(const unsigned char* bytes, unsigned int length) {
  const size_t whole = length / 3;
  const size_t rest = length % 3;
  std::string text((whole + (rest == 0 ? 0 : 1)) * 4, '=');
  char* out = text.data();
  for (size_t i = 0; i < whole; ++i, bytes += 3, out += 4) EncodeGroup(Group(bytes, 3), out);
  if (rest != 0) {
    EncodeGroup(Group(bytes, rest), out);
    for (size_t i = rest + 1; i < 4; ++i) out[i] = '=';
  }
  return text;
}

std::string base64_decode(const std::string& text) {
  std::string bytes((text.size() / 4 + 1) * 3, '\0');
  const auto* in = reinterpret_cast<const unsigned char*>(text.data());
  const unsigned char* const end = in + text.size();
  char* out = bytes.data();
  for (; end - in >= 4; in += 4, out += 3) {
    const std::uint32_t group =
        DECODING[0][in[0]] | DECODING[1][in[1]] | DECODING[2][in[2]] | DECODING[3][in[3]];
    if ((group & STOP) != 0) break;
    WriteBytes(group, 3, out);
  }
  out += DecodeRest(in, end, out);
  bytes.resize(static_cast<size_t>(out - bytes.data()));
  return bytes;
}
