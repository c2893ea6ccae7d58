/// Captures what is printed on standard output.
#pragma once

#include <string>

#include "TemporaryFolder.h"

namespace support {

/// While it lives, everything written to file descriptor 1 goes to a file: printf, std::cout and write alike.
/// The destructor brings back what was there before; captures end in the reverse order of their start.
class CapturedStdout {
 public:
  CapturedStdout();
  ~CapturedStdout();
  CapturedStdout(const CapturedStdout&) = delete;
  CapturedStdout& operator=(const CapturedStdout&) = delete;

  /// Everything printed so far, with buffered output flushed.
  std::string Text() const;

 private:
  TemporaryFolder folder_;
  std::string path_;
  int kept_;
};

}  // namespace support
