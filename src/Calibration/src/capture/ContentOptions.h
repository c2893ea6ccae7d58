/// Tells a source from the options that follow it.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// Appends the pieces of the text between separators: adjacent separators have an empty piece between them,
/// one at the end is followed by none, and an empty text has no piece.
void SplitText(const std::string& text, char separator, std::vector<std::string>& pieces);

/// A source to open and where to start in it.
struct Content {
  std::string source;
  std::optional<int> startFrame;
};

/// Reads a path or URL with options after it, separated by blanks: of several tokens the first is the source,
/// a text of one token is it unchanged. In each token that contains "startingFrame=" and exactly one '=',
/// what follows is the frame to start with; the last one counts. A start frame that is used, and one that is
/// no integer, is logged.
Content ParseContent(const std::string& content);

}  // namespace velmora
