/// Brings the text of an exception to one line of the console.
#include "common/OneLine.h"

#include <sstream>

namespace common {

std::string OneLine(const std::string& text) {
  std::istringstream words(text);
  std::string line;
  for (std::string word; words >> word;) line += (line.empty() ? "" : " ") + word;
  return line;
}

}  // namespace common
