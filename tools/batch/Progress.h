/// Tells how far a long run has come.
#pragma once

#include <string>

namespace batch {

/// A bar that is redrawn in place on a terminal; plain lines, one per picture, elsewhere. On standard error,
/// so that the table on standard output can be redirected.
class Progress {
 public:
  /// `total` may be 0 (unknown) and may become known later.
  Progress();
  void Step(int done, int total, const std::string& what);
  /// Ends the bar's line.
  void Finish();

 private:
  bool terminal_;
  bool drawn_ = false;
};

}  // namespace batch
