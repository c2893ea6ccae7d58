/// A calibrator's snapshots, its status and its result, which change together.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "calibrator/Result.h"
#include "model/Codes.h"

namespace velmora {

/// The picture of a grid that was found.
struct GridImage {
  cv::Mat grey;               ///< 8 bits, one channel; not drawn on
  std::vector<double> radii;  ///< of the discs, pixels; 0 for those that are not seen
};

/// What one camera saw in one snapshot.
struct CameraSnapshot {
  std::vector<cv::Point2d> points;  ///< pixels, in the order of the grid search
  cv::Mat frame;                    ///< empty when there was none
  /// Of each point 1, or 0 where it was not seen and is only where it would be; empty: all were seen.
  std::vector<double> weights{};
  /// Of each point the standard deviation along an axis, pixels, 0 where it was not seen; empty: not known.
  std::vector<double> deviations{};
  /// Where the points can be measured anew; empty when they are not to be.
  GridImage image{};
};

/// All snapshots, in the shape that solvers take. The lists have an entry for each snapshot.
struct SnapshotList {
  struct Camera {
    std::vector<std::vector<cv::Point2d>> points;
    std::vector<cv::Mat> frames;
    std::vector<std::vector<double>> weights;
    std::vector<std::vector<double>> deviations;
  };

  std::vector<std::vector<cv::Point3d>> target;  ///< the same object points (metres) for each
  std::vector<Camera> cameras;
  /// How often one was taken out, since when those after it have other numbers.
  size_t removals = 0;

  size_t Count() const { return target.size(); }
};

/// The place in the list of the snapshot of that number (from 0). Raises std::out_of_range when there is
/// none.
size_t PlaceOf(int number, const SnapshotList& snapshots);

/// Collects what one camera, or several at the same moments, observed of the target, and knows where the
/// collection stands: the status (STATUS_ codes), the result of the computation that was published last, and
/// how the last computation ended. All of that changes under one lock, and lists and results are replaced
/// whole: who holds one may read it as long as he likes. All functions are thread-safe and copy at most.
class Snapshots {
 public:
  /// The number that makes a computation possible.
  static constexpr size_t ENOUGH = 5;

  class Computation;

  /// Which snapshot it is, as long as none goes and no computation begins.
  struct Place {
    size_t number = 0;  ///< from 1
    size_t era = 0;
  };

  /// All of one moment.
  struct Moment {
    int status = STATUS_NOT_READY;
    std::shared_ptr<const SnapshotList> snapshots;
    std::shared_ptr<const Result> result;  ///< null before the first one
    /// Intrinsics that were read for a pair whose computation was then refused, or failed as the first one.
    std::optional<StereoIntrinsics> refused;
    float rms = -1.0F;  ///< of the result; -1 when snapshots were added after it
  };

  /// `target` are the object points of one snapshot.
  Snapshots(std::vector<cv::Point3d> target, size_t cameras);

  size_t CameraCount() const { return cameraCount_; }
  Moment Current() const;
  size_t Count() const;
  int Status() const;
  void SetStatus(int status);

  /// What adding a snapshot means to the RMS of an earlier result.
  enum class EarlierRms { Drop, Keep };
  /// One view for each camera; the new count, or 0 when a computation is under way.
  size_t Add(std::vector<CameraSnapshot> views, EarlierRms earlier);
  size_t Add(std::vector<CameraSnapshot> views, EarlierRms earlier, Place& place);
  /// Takes that one (from 0) out; those after it move up. False, with nothing changed, while a computation is
  /// under way. Raises std::out_of_range.
  bool Remove(int number);
  /// Gives the snapshot the points and deviations of these views, and leaves everything else as it is. False,
  /// with nothing changed, once a computation began, which is of the earlier points, and after a Reset or a
  /// Remove.
  bool Improve(const Place& place, const std::vector<CameraSnapshot>& views);
  /// Back to the beginning, unless a computation is under way.
  void Reset();

  /// False, with an error line, when there are too few for a computation.
  bool RequireEnough() const;
  /// Marks a computation as under way and hands it the snapshots so far. Null when one is under way already
  /// and, with an error line, when there are too few snapshots.
  std::unique_ptr<Computation> Begin();
  /// Asks the computation under way, if there is one, to end.
  void Cancel();

  /// True when the computation that ended last brought no result.
  bool HasFailed() const;
  void ForgetFailure();
  /// How many computations brought a result.
  int Completed() const;
  /// For a computation that may have ended before it was marked as under way. When another is under way, or
  /// brought a result meanwhile, that one ended last, or kept this one from beginning.
  void NoteEndWithoutResult(int completedBefore);

  /// Keeps what was read for a pair that is not computed; nothing while a computation is under way.
  void KeepRefused(const StereoIntrinsics& intrinsics);

 private:
  const std::vector<cv::Point3d> target_;
  const size_t cameraCount_;

  mutable std::mutex lock_;  ///< guards all that follows
  Moment now_;
  bool failed_ = false;
  int completed_ = 0;
  size_t era_ = 0;                      ///< how often computations began and snapshots went
  std::atomic<bool> cancelled_{false};  ///< falls when a computation begins, is raised only during one
};

/// A computation under way. Its end gives the status back as it was, and notes a failure, unless a result was
/// published. Used by one thread; what it belongs to outlives it.
class Snapshots::Computation {
 public:
  ~Computation();
  Computation(const Computation&) = delete;
  Computation& operator=(const Computation&) = delete;

  const SnapshotList& Views() const { return *views_; }
  /// True when it was told to end.
  bool Cancelled() const { return owner_.cancelled_; }
  /// Makes it the result of the snapshots, which are then completed.
  void Publish(std::shared_ptr<const Result> result);

 private:
  friend class Snapshots;
  Computation(Snapshots& owner, std::shared_ptr<const SnapshotList> views, int statusBefore)
      : owner_(owner), views_(std::move(views)), statusBefore_(statusBefore) {}

  Snapshots& owner_;
  const std::shared_ptr<const SnapshotList> views_;
  const int statusBefore_;
  bool published_ = false;
};

}  // namespace velmora
