/// The mark of work that is done by one thread at a time and left out by others meanwhile.
#pragma once

#include <atomic>

namespace velmora {

/// Sets the flag until the end of the scope, unless it is set already.
class BusyScope {
 public:
  explicit BusyScope(std::atomic<bool>& busy) : busy_(busy), entered_(!busy.exchange(true)) {}
  ~BusyScope() {
    if (entered_) busy_ = false;
  }
  BusyScope(const BusyScope&) = delete;
  BusyScope& operator=(const BusyScope&) = delete;

  bool Entered() const { return entered_; }

 private:
  std::atomic<bool>& busy_;
  const bool entered_;
};

}  // namespace velmora
