/// Any text is content with options.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "Calibration.h"
#include "capture/ContentOptions.h"

using namespace velmora;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Calibration::SetLogLevel(0);
  const std::string text(reinterpret_cast<const char*>(data), size);
  const Content content = ParseContent(text);
  if (text.compare(0, content.source.size(), content.source) != 0) std::abort();
  std::vector<std::string> pieces;
  SplitText(text, ' ', pieces);
  std::string joined;
  for (const std::string& piece : pieces) joined += piece + " ";
  if (joined != text && joined != text + " ") std::abort();
  return 0;
}
