/// Tells a source from the options that follow it.
#include "capture/ContentOptions.h"

#include <sstream>
#include <stdexcept>

#include "Log.h"

namespace velmora {

namespace {

void ReadStartFrame(const std::string& token, std::optional<int>& startFrame) {
  std::vector<std::string> parts;
  SplitText(token, '=', parts);
  if (parts.size() != 2) return;
  try {
    startFrame = std::stoi(parts[1]);
    Log::info("Start frame position set to %d", *startFrame);
  } catch (const std::logic_error&) {  // no number, or one out of range
    Log::warn("Invalid startingFrame value.");
  }
}

}  // namespace

void SplitText(const std::string& text, char separator, std::vector<std::string>& pieces) {
  std::istringstream stream(text);
  for (std::string piece; std::getline(stream, piece, separator);) pieces.push_back(piece);
}

Content ParseContent(const std::string& content) {
  std::vector<std::string> tokens;
  SplitText(content, ' ', tokens);
  Content parsed;
  for (const std::string& token : tokens) {
    if (token.find("startingFrame=") != std::string::npos) ReadStartFrame(token, parsed.startFrame);
  }
  parsed.source = tokens.size() >= 2 ? tokens.front() : content;
  return parsed;
}

}  // namespace velmora
