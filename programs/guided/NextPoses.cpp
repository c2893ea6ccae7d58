/// Asks for poses until the target accuracy is reached.
#include "guided/NextPoses.h"

#include <iomanip>
#include <sstream>

#include "common/LensModels.h"

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

PoseProposal NextPoses::Propose() const {
  if (model_ == common::MODEL_FISHEYE) return calibrator_.ProposeFisheyePose();
  return calibrator_.ProposePose(model_ == common::MODEL_AUTO ? Calibrator::MODEL_RATIONAL : model_);
}

NextPoses::State NextPoses::Ask() {
  proposal_ = Propose();
  const int taken = calibrator_.GetNumberOfRecords();
  if (taken >= LEAST_POSES && !proposal_.nominal && proposal_.deviation <= target_) return State::Known;
  if (taken >= most_ || !calibrator_.AskForPose(proposal_.centres)) return State::GivenUp;
  return State::Asked;
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
