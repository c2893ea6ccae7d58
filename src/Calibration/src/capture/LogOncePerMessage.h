/// Keeps a fault that returns with every frame from being reported with every frame.
#pragma once

#include <set>
#include <string>

namespace velmora {

/// Remembers causes by their texts. Numbers in them do not count, so that addresses and sizes that change
/// make no new cause. One thread at a time may use it.
class LogOncePerMessage {
 public:
  /// True the first time, and false after as many different causes as nobody would read.
  bool IsNew(const std::string& cause) {
    std::string kind;
    for (const char letter : cause) {
      const bool digit = letter >= '0' && letter <= '9';
      if (!digit) {
        kind += letter;
      } else if (kind.empty() || kind.back() != '9') {
        kind += '9';
      }
    }
    return seen_.size() < ENOUGH && seen_.insert(kind).second;
  }

 private:
  static constexpr size_t ENOUGH = 100;

  std::set<std::string> seen_;
};

}  // namespace velmora
