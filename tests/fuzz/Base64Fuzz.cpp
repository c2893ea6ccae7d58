/// Any text decodes like with the plain decoder, and its bytes come back from their own text.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "base64.h"
#include "documents/PlainBase64.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::string bytes = base64_decode(text);
  if (bytes != unit::PlainBase64Decode(text)) std::abort();
  const std::string again = base64_encode(data, static_cast<unsigned>(size));
  if (base64_decode(again) != text) std::abort();
  return 0;
}
