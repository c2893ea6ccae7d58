/// Brings the text of an exception to one line of the log.
#include "foundation/OneLine.h"

namespace velmora {

std::string OneLine(const std::string& text) {
  constexpr char WHITE[] = " \t\r\n";
  std::string line;
  size_t begin = text.find_first_not_of(WHITE);
  while (begin != std::string::npos) {
    size_t end = text.find_first_of("\r\n", begin);
    const size_t next = text.find_first_not_of(WHITE, end == std::string::npos ? text.size() : end);
    end = text.find_last_not_of(WHITE, end == std::string::npos ? end : end - 1) + 1;
    if (!line.empty()) line += ' ';
    line.append(text, begin, end - begin);
    begin = next;
  }
  return line;
}

}  // namespace velmora
