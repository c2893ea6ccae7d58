/// Tells whether a thread is one that a calibrator runs for itself.
#pragma once

class Calibrator;

namespace velmora {

/// Marks the current thread as the calibrator's own until the end of the scope. A calibrator cannot wait for
/// a thread on that thread: whoever destroys calibrators asks here first.
class OwnThread {
 public:
  explicit OwnThread(const Calibrator& calibrator) : earlier_(owner_) { owner_ = &calibrator; }
  ~OwnThread() { owner_ = earlier_; }
  OwnThread(const OwnThread&) = delete;
  OwnThread& operator=(const OwnThread&) = delete;

  static bool Of(const Calibrator& calibrator) { return owner_ == &calibrator; }

 private:
  static inline thread_local const Calibrator* owner_ = nullptr;

  const Calibrator* const earlier_;
};

}  // namespace velmora
