/// A file system that refuses what other ones do.
#pragma once

namespace unit {

/// Until the end of the scope the system's `rename` or `fchmod` fails in this process with that error.
class RefusedCall {
 public:
  enum Call { RENAME, FCHMOD, FCHOWN };

  RefusedCall(Call call, int error);
  ~RefusedCall();
  RefusedCall(const RefusedCall&) = delete;
  RefusedCall& operator=(const RefusedCall&) = delete;

 private:
  const Call call_;
};

}  // namespace unit
