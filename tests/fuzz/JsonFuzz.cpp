/// Any text is a document, or is refused by an exception of the JSON or the matrix library.
#include <cstdint>
#include <string>

#include "JSON.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  JSON document;
  try {
    document.fromJson(std::string(reinterpret_cast<const char*>(data), size));
    document.toJson();
    document.readMat("m");
  } catch (const nlohmann::json::exception&) {
  } catch (const cv::Exception&) {
  }
  return 0;
}
