/// Base64 text of bytes and back (RFC 4648, with padding, without line breaks).
#pragma once

#include <string>

#include "Export.h"

/// The alphabet; the position of a character is its 6-bit value.
VELMORA_API extern const std::string base64_chars;

/// The text of `length` bytes. Thread-safe.
VELMORA_API std::string base64_encode(const unsigned char* bytes, unsigned int length);

/// The bytes that the text stands for. Decoding stops at the first character outside the alphabet, be it
/// padding, white space or a line break, without an error: what came before it is the result. Padding may be
/// missing; a single character left over adds nothing. Thread-safe.
VELMORA_API std::string base64_decode(const std::string& text);
