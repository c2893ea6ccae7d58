/// Asks for poses until the target accuracy is reached.
#include "guided/NextPoses.h"

#include <iomanip>
#include <sstream>

namespace guided {

namespace {

/// Fewer leave no room for an error of the sheet or of the model to show.
constexpr int LEAST_POSES = 6;

std::string InPixels(double value) {
  constexpr double SMALL = 0.1;
  std::ostringstream text;
  text << std::fixed << std::setprecision(value < SMALL ? 4 : 2) << value << " px";
  return text.str();
}

}  // namespace

NextPoses::State NextPoses::Ask(int taken) {
  proposal_ = propose_();
  if (taken >= LEAST_POSES && !proposal_.nominal && proposal_.deviation <= target_) return State::Known;
  return taken >= most_ || proposal_.centres.empty() ? State::GivenUp : State::Asked;
}

std::string NextPoses::Precision() const {
  std::ostringstream text;
  if (proposal_.nominal) {
    text << "camera not known yet";
  } else {
    text << "known to " << InPixels(proposal_.deviation);
  }
  text << " (goal " << InPixels(target_) << ")";
  return text.str();
}

}  // namespace guided
