/// The parts of a calibrator, and the steps that lead from one to the other.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <vector>

#include "Calibrator.h"
#include "calibrator/Computations.h"
#include "calibrator/Detector.h"
#include "calibrator/FrameFlow.h"
#include "calibrator/Guidance.h"
#include "calibrator/PoseRecording.h"
#include "calibrator/ResultDocument.h"
#include "calibrator/Snapshots.h"

/// Each part guards itself; the steps here hold no lock, but for those that the detector calls back during a
/// detection. Locks are taken in the order detector, then any one other.
struct Calibrator::Impl {
  /// `owner` marks the threads of the frames' flow.
  Impl(const void* owner, const cv::Size& grid, float unit, int kind, const cv::Size& processingSize);
  ~Impl();
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  bool IsMonocular() const { return kind == MONOCULAR; }
  /// True when nothing may be done to a pair's snapshots.
  bool RefusesPair() const;
  velmora::DocumentFacts Facts() const { return {kind == STEREO, size}; }
  velmora::OverlayState Overlay() const;
  std::string StatusText() const;

  bool Detect(cv::Mat& frame, std::vector<cv::Point2d>& points, bool draw);
  bool DetectPair(cv::Mat& left, cv::Mat& right, std::vector<cv::Point2d>& leftPoints,
                  std::vector<cv::Point2d>& rightPoints, bool draw);
  void DetectIn(velmora::CapturedViews& views);

  /// See Calibrator::ProposePose and ProposeFisheyePose.
  PoseProposal ProposePose(int model, bool fisheye);

  /// A snapshot that was made of a detection, whose centres are still those of the search.
  struct Kept {
    std::vector<velmora::CameraSnapshot> views;  ///< none when it was refused
    velmora::Snapshots::Place place;
  };

  /// Makes it a snapshot of one camera, and a recorded pose where one is wanted; the new count, 0 when it is
  /// refused.
  size_t AddSnapshot(const velmora::CameraSnapshot& detection, Kept& kept);

  /// Makes them a snapshot of two cameras; the new count, 0 when it is refused.
  size_t AddPairSnapshot(const std::vector<velmora::CameraSnapshot>& detections, Kept& kept);

  /// Makes a snapshot of views with weights; false, with an error line where they are at fault, when it is
  /// refused.
  bool AddWeighted(std::vector<velmora::CameraSnapshot> views, velmora::Snapshots::EarlierRms earlier,
                   Kept& kept);

  /// Measures the centres of a snapshot anew, where that is wanted: this takes its time, and so comes after
  /// the locks under which the snapshot was made. A computation that another thread begins meanwhile has the
  /// centres of the search.
  void Measure(Kept& kept);

  /// An element of the last result; empty during a computation, before one, and for the other kind.
  using Part = std::function<cv::Mat(const velmora::Result&)>;
  cv::Mat ResultOf(int ofKind, const Part& part) const;
  /// An element of a pair's intrinsics: those that were read last where their computation was refused.
  cv::Mat IntrinsicsOf(cv::Mat velmora::StereoIntrinsics::*member) const;
  /// Callers rely on some getters answering "not available" in every status: the guard wants a status above
  /// 399 that is not STATUS_PROGRESS (400), which none of the four is. An error line when it does not answer.
  bool AnswersUnreachableResults() const;

  const int kind;
  const cv::Size grid;
  const cv::Size size;  ///< the processing size
  const std::vector<cv::Point3d> target;

  velmora::Snapshots snapshots;
  velmora::Detector detector;
  velmora::Guidance guidance;
  velmora::PoseRecording recording;
  velmora::Computations computations;
  velmora::FrameFlow flow;  // last: its threads end before what they use
};
