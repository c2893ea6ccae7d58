/// Proposes the pose of the next snapshot.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "PoseProposal.h"
#include "calibrator/Snapshots.h"
#include "solver/SparseIntrinsics.h"

namespace velmora {

/// What a proposal goes by apart from the snapshots.
struct ProposalSettings {
  std::vector<cv::Point3d> target;  ///< one snapshot's object points
  cv::Size imageSize;
  int model = 0;         ///< one of the MODEL_ codes
  bool fisheye = false;  ///< then no model counts
  int finder = 0;        ///< one of the FINDER_ codes: one of them passes over large discs
  SparseOptions solver;
};

/// See Calibrator::ProposePose. Reads its arguments only.
PoseProposal ProposePose(const SnapshotList& snapshots, const ProposalSettings& settings);

}  // namespace velmora
