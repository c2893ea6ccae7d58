/// The calibration engine: from frames that show the grid to camera matrix and lens distortion.
#pragma once

#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Export.h"
#include "FisheyeResult.h"
#include "JavaTypes.h"
#include "ModelChoice.h"
#include "PairVerdict.h"
#include "PoseProposal.h"
#include "Verdict.h"
#include "velmora/GridSnapshot.h"

/// A calibrator collects snapshots of a printed asymmetric circles grid and computes a camera's intrinsics or
/// how the two cameras of a pair stand to each other.
///
/// Its status says where it stands:
///  1. STATUS_NOT_READY: fewer than five snapshots;
///  2. STATUS_READY: five or more snapshots, a computation may start;
///  3. STATUS_PROGRESS: a computation runs; adding, results and Reset are refused meanwhile;
///  4. STATUS_COMPLETED: results are available; the next snapshot leads back to STATUS_READY.
/// Compare statuses by equality: their numbers are not in the order of the lifecycle.
///
/// Frames are 8-bit images of 1, 3 (BGR) or 4 channels. Detection brings each to the processing size given at
/// construction; centres are in pixels of that size (the centre of the top-left pixel is (0, 0)), and so are
/// the results. Object points are in metres; point j of row i is (unit * (2j + i mod 2), unit * i, 0), row by
/// row.
///
/// Words on threads: "thread-safe" functions may be called from any thread at any time; "frame thread" ones
/// may too, but one after the other for the same frame, which they change in place; the "window thread" is
/// the one thread of the process that makes window calls.
///
/// A calibrator's destructor first closes its source of frames and ends its frame grabbers, then waits for
/// the computations that run on threads of its own. So a listener must not destroy the calibrator that calls
/// it.
class VELMORA_API Calibrator {
 public:
  /// Gets a processed frame as JPEG (empty when there is no picture) and GetStatus_QVX.
  using FrameListener =
      std::function<void(const std::vector<unsigned char>& jpeg, const std::string& status)>;

  /// Is told that a source has ended.
  using SourceEndListener = std::function<void()>;

  /// Gets the number of iterations so far and the RMS reprojection error in pixels.
  using ProgressListener = std::function<void(int iterations, double rms)>;

  static constexpr int MONOCULAR = 0;
  static constexpr int STEREO = 1;

  static constexpr int MODEL_CLASSIC = 10;
  static constexpr int MODEL_RATIONAL = 20;
  static constexpr int MODEL_FULL = 30;

  static constexpr int SOLVER_OPENCV = 0;
  static constexpr int SOLVER_SPARSE = 1;

  static constexpr int SHEET_FLAT = 0;
  static constexpr int SHEET_BENT = 1;
  static constexpr int SHEET_FREE = 2;
  static constexpr int SHEET_AUTO = 3;

  static constexpr int STATUS_NOT_READY = 100;
  static constexpr int STATUS_READY = 200;
  static constexpr int STATUS_COMPLETED = 300;
  static constexpr int STATUS_PROGRESS = 400;

  static constexpr int FINDER_STANDARD = 0;
  static constexpr int FINDER_ROBUST = 1;

  /// "5.1.0".
  static const std::string VERSION;

  /// The grid's circles per row and rows; its unit in metres (the distance between adjacent rows; neighbours
  /// in a row are two units apart); MONOCULAR or STEREO; the processing size in pixels.
  Calibrator(const cv::Size& patternSize, const float& unit, const int& kind, const int& frameWidth,
             const int& frameHeight);
  ~Calibrator();
  Calibrator(const Calibrator&) = delete;
  Calibrator& operator=(const Calibrator&) = delete;

  // ---- Status. Thread-safe.

  void SetStatus(const int& value);
  int GetStatus();
  /// Returns the status, as GetStatus does.
  int ReadStatus();
  bool isCalibrating();
  /// True from the call of a computation on a thread of its own until it has ended, well or not: from before
  /// STATUS_PROGRESS until the result can be asked for.
  bool IsComputing();
  /// True when the computation that ended last brought no result: it failed, was cancelled, or (on a thread
  /// of its own, where no return value tells so) had too little to work with. One that was refused because
  /// another was under way does not count. Settled before IsComputing turns false, so ask that first; Reset
  /// and EnableAssistant make it false.
  bool HasFailed();
  /// True when the last monocular detection found the grid and was not yet made a snapshot. Waits for a
  /// detection under way. Always false in a stereo calibrator.
  bool IsDetected();
  /// The number of snapshots.
  int GetNumberOfRecords();
  /// Drops snapshots and results and goes back to STATUS_NOT_READY; does nothing during STATUS_PROGRESS.
  void Reset();
  static std::string GetVersion();

  /// Mirrors what is shown, after all drawing; points and stored frames are never mirrored. Thread-safe.
  void SetFlipImage(const bool& flip);
  bool GetFlipImage();

  // ---- Choice of the search. Thread-safe.

  /// Chooses how grids are searched from the next frame on, pushed and captured ones and pairs alike:
  /// FINDER_STANDARD, which is the default, or FINDER_ROBUST, which finds the grid in more frames, in less
  /// time (see docs/finder.md). The robust one takes grids with an odd number of rows and of 12 to 600
  /// circles; others are searched by the standard one all the same. An error line for other numbers.
  void SetFinder(const int& finder);
  int GetFinder();
  /// Why the last search, of both frames of a pair the first that failed, found no grid, in words; empty when
  /// it was found, and after standard searches.
  std::string WhyNotFound();

  /// Whether DetectPartial may find, and AddPoints with weights may take, parts of grids: those of which
  /// three quarters of the circles can be seen (see docs/finder.md). False at first. Nothing else depends on
  /// it: no other function ever answers with a part. Detection draws what is seen of the grid, and AddSeen
  /// takes it. Snapshots that are there stay.
  void SetPartialGrids(const bool& partial);
  bool GetPartialGrids();

  /// Whether the centres of what is kept are measured anew, from the next frame on: those that FINDER_ROBUST
  /// found and that become a snapshot without the caller supplying them, and those of DetectPartial with
  /// deviations. To each disc is fitted what a camera sees of one: uneven light, which moves centroids, does
  /// not move them, and the sparse solver goes by how well each is known (see docs/finder.md). False at
  /// first. Takes some milliseconds for each snapshot. Frames that are not kept are searched as ever, and
  /// FINDER_STANDARD answers as ever.
  void SetFineCentres(const bool& fine);
  bool GetFineCentres();

  // ---- Assistant. Thread-safe.

  /// Replaces the assistant by a new one that is started with the model file (see CalibAssistant::Start).
  void EnableAssistant(const std::string& modelPath);
  void DisableAssistant();
  /// The number of poses of the assistant, -1 without one.
  int GetAssistantGoal();
  /// Replaces the assistant by one that asks for this pose alone: the circles' centres in pixels of the
  /// processing size. When the grid is there a snapshot is taken and the assistant ends (its goal is -1
  /// then); no computation follows. False, with an error line, for centres that are no picture of the 4 x 11
  /// sheet, and in a stereo calibrator; the assistant is then as before.
  bool AskForPose(const std::vector<cv::Point2d>& centres);

  // ---- Detection. Frame thread.

  /// Brings the frame to the processing size and searches the grid in it. `frame` is decorated in place: the
  /// assistant's target always; with `draw`, or with an assistant, the found corners and the overlay;
  /// mirrored last. `points` receives the centres in unmirrored pixels. True when the grid was found.
  ///
  /// False without touching anything in a stereo calibrator, and for a frame without data; false with an
  /// error line for one that is not of 8 bits and 1, 3 or 4 channels.
  bool DetectPoints(cv::Mat& frame, std::vector<cv::Point2d>& points, const bool& draw);

  /// Searches the grid as DetectPoints does, without the assistant's part in it, and if it is not found
  /// whole, a part of it: with the robust finder, where SetPartialGrids allows it. True when either was
  /// found; `points` then receives a point of each circle, row by row, and `weights` 1 for those that are
  /// seen, 0 for those that are not, whose points are where they would be; both are empty otherwise. With
  /// `draw` the centres that are seen are drawn, and the overlay. A whole grid is the last detection
  /// afterwards; a part is not (IsDetected is false), and becomes a snapshot by AddPoints with its weights or
  /// by AddSeen.
  bool DetectPartial(cv::Mat& frame, std::vector<cv::Point2d>& points, std::vector<double>& weights,
                     const bool& draw);
  /// The same for a frame that is kept: where SetFineCentres asks for it, the centres that are seen are
  /// measured anew, and `deviations` receives the standard deviation of each along an axis in pixels, 0 for
  /// those that are not seen. It is empty where centres are those of the search. The last detection is as
  /// ever.
  bool DetectPartial(cv::Mat& frame, std::vector<cv::Point2d>& points, std::vector<double>& weights,
                     std::vector<double>& deviations, const bool& draw);

  /// Brings `src` to the processing size into `dst` (which may be the same matrix). With `fill` the image is
  /// scaled by the larger factor and the overflow cut away evenly; otherwise the aspect ratio is ignored.
  /// `dst` owns continuous data of its own afterwards. A `src` without data leaves `dst` untouched, as does
  /// one so long and narrow that filling would need more than 256 million pixels.
  void Resize(const cv::Mat& src, cv::Mat& dst, const bool& fill, const int& interpolation);

  /// Searches the grid in a pair of frames of equal size as DetectPoints does; true when it was found in
  /// both. The overlay is drawn on the left frame only. False without touching anything in a monocular
  /// calibrator and during STATUS_PROGRESS. Frames of different sizes raise OpenCV's assertion error (-215).
  bool DetectStereoPoints(cv::Mat& left, cv::Mat& right, std::vector<cv::Point2d>& leftPoints,
                          std::vector<cv::Point2d>& rightPoints, const bool& draw);

  // ---- Snapshots of a monocular calibrator. Thread-safe.

  /// Makes the last detection a snapshot, once. False when there is none, during STATUS_PROGRESS and in a
  /// stereo calibrator.
  bool AddPoints();
  /// Adds a snapshot from centres supplied by the caller, who is trusted to pass all of them in the order of
  /// the grid search, paired with the frame of the last detection.
  void AddPoints(const std::vector<cv::Point2d>& points);
  /// Adds a snapshot of the grid or a part of it, as DetectPartial gives them: a finite point and a weight, 1
  /// or 0, of each circle, at least three quarters of them 1; paired with the frame of the last detection.
  /// Computations, verdicts and errors are of the points of weight 1 alone. False with an error line for
  /// anything else, and for a part unless SetPartialGrids allows it; false during STATUS_PROGRESS and in a
  /// stereo calibrator. Parts are not recorded as poses, nor are they seen by an assistant.
  bool AddPoints(const std::vector<cv::Point2d>& points, const std::vector<double>& weights);
  /// The same with the standard deviation of each point along an axis in pixels, 0 where that is not known,
  /// or with none: the sparse solver lets points that are known better count more (see docs/solver.md).
  bool AddPoints(const std::vector<cv::Point2d>& points, const std::vector<double>& weights,
                 const std::vector<double>& deviations);
  /// Makes what the last searched frame showed a snapshot, once, whatever an assistant asks for: the whole
  /// grid as AddPoints() does or, where SetPartialGrids allows it, a part of it. `seen` then receives the
  /// centres that were seen. False, with `seen` empty, when it showed neither, during STATUS_PROGRESS and in
  /// a stereo calibrator.
  bool AddSeen(std::vector<cv::Point2d>& seen);
  /// True when AddSeen would make a snapshot of what the last searched frame, or pair, showed: the whole grid
  /// or a part of it that may be taken. False during STATUS_PROGRESS. Waits for a detection under way.
  bool HasSeen();
  /// Detects and, without an assistant (which decides by itself), adds. Always true.
  bool AddPoints(cv::Mat& frame, const bool& draw);

  // ---- Snapshots of a stereo calibrator. Thread-safe.

  /// Makes the last detection in both frames a snapshot, once. False when there is none, during
  /// STATUS_PROGRESS and in a monocular calibrator.
  bool AddStereoPoints();
  /// Makes what the last searched frames of a pair showed a snapshot, once: the whole grid as
  /// AddStereoPoints() does or, where SetPartialGrids allows it, parts of it, if both cameras see three
  /// quarters of the circles. `left` and `right` then receive the centres that each camera saw. False, with
  /// both empty, when they showed too little, during STATUS_PROGRESS and in a monocular calibrator.
  bool AddSeen(std::vector<cv::Point2d>& left, std::vector<cv::Point2d>& right);
  /// Adds a snapshot from centres supplied by the caller, who is trusted to pass all of them in the order of
  /// the grid search, paired with the frames of the last detection. Earlier results keep their RMS.
  void AddStereoPoints(const std::vector<cv::Point2d>& leftPoints,
                       const std::vector<cv::Point2d>& rightPoints);
  /// Adds a snapshot of which one camera or both see a part of the grid, as AddPoints with weights does. The
  /// circles that both see are used, which must be three quarters of them. Earlier results keep their RMS.
  bool AddStereoPoints(const std::vector<cv::Point2d>& leftPoints, const std::vector<double>& leftWeights,
                       const std::vector<cv::Point2d>& rightPoints, const std::vector<double>& rightWeights);
  /// The same with standard deviations, as AddPoints has them.
  bool AddStereoPoints(const std::vector<cv::Point2d>& leftPoints, const std::vector<double>& leftWeights,
                       const std::vector<double>& leftDeviations, const std::vector<cv::Point2d>& rightPoints,
                       const std::vector<double>& rightWeights, const std::vector<double>& rightDeviations);
  /// Detects and adds; true when a snapshot was added. With `draw` the corners are drawn, without overlay and
  /// mirroring. Frames of different sizes raise OpenCV's assertion error (-215).
  bool AddStereoPoints(cv::Mat& left, cv::Mat& right, const bool& draw);

  // ---- Snapshots that are there, by their numbers from 0 in the order of adding. Thread-safe. A number that
  // there is not raises std::out_of_range.

  /// What was observed: after an Add function returned, exactly what computations take.
  velmora::GridSnapshot GetSnapshot(const int& number);
  /// Adds one as GetSnapshot gave it, such as one that was stored: a computation from the same snapshots in
  /// the same order is the same. Goes by the rules of AddPoints with weights; earlier results lose their RMS.
  /// Poses are not recorded, an assistant does not see it.
  bool AddSnapshot(const velmora::GridSnapshot& snapshot);
  /// Takes a snapshot out; those after it move up. The status is STATUS_READY then, or with fewer than five
  /// STATUS_NOT_READY; an earlier result stays, without its RMS. False during STATUS_PROGRESS.
  bool RemoveSnapshot(const int& number);
  /// How the last result agrees with a snapshot that it is of. Of a pair: what the sparse solver computed.
  velmora::SnapshotFit GetSnapshotFit(const int& number);

  // ---- Solvers. Thread-safe.

  /// What later computations are done with. SOLVER_OPENCV, the default: OpenCV's own calibration, whose time
  /// grows with the cube of the number of views. SOLVER_SPARSE: the engine's own, milliseconds for any usual
  /// number of views; the classic model's results are the same, those of the larger models have coefficients
  /// that are kept small. The form of the results does not depend on it. Any other number is refused with an
  /// error line.
  void SetSolver(const int& solver);
  int GetSolver();
  /// Lets the sparse solver leave out views and points that do not belong to the camera that the others show;
  /// a warning line names each, counted from 0. The RMS and the errors of views are then those of the points
  /// that are kept. Off at first.
  void SetRobust(const bool& robust);
  /// The radius of the printed discs in metres. With it the sparse solver corrects the difference between the
  /// centroid of a disc's picture, which a detector finds, and the picture of its centre. 0, the default,
  /// takes centres as they are; what is no radius is refused with an error line.
  void SetDiscRadius(const double& radius);
  /// What the sparse solver may take the sheet for. SHEET_FLAT, the default: as flat as it was
  /// meant to be. SHEET_BENT: bent, perhaps out of proportion. SHEET_FREE: its points beside their places,
  /// too. Both perhaps with a bend of its own in each view, as of sheets that are held by hand. SHEET_AUTO:
  /// whatever the views ask for (see docs/solver.md). The shape is estimated with the camera, and is in the
  /// verdict. Any other number is refused with an error line.
  void SetSheetShape(const int& shape);
  /// The shape of the sheet where it was measured before, until the other SetSheetShape is called: where the
  /// centres of the grid are, metres, in its order and frame, as a verdict's sheet.points has them. The
  /// sparse solver goes by it and estimates nothing of it, but for a bend of its own for each view where the
  /// views ask for one. Points that are not near the places of this grid are refused with an error line.
  void SetSheetShape(const std::vector<cv::Point3d>& points);
  /// Lets the sparse solver, with a pair of cameras, move both lenses too, from those that the monocular
  /// results have, together with how the cameras stand to each other and all poses of the grid: the results
  /// then have refined camera matrices (3 x 3) and coefficients (1 x 14, of which the model's are refined).
  /// For monocular results that were computed from the same views, or fewer; such of many more views are
  /// better left alone. Holds for computations that begin later; off at first; nothing to the other solver.
  void SetRefineLenses(const bool& refine);
  /// Is told of each iteration of the sparse solver, on the computing thread, by computations that start
  /// later. It may call CancelComputation. An exception of it ends the computation as one of the solver does.
  /// An empty one takes the listener away.
  void SetProgressListener(ProgressListener listener);
  /// Ends a computation of the sparse solver that is under way after its present iteration. It then returns
  /// -1.0, with a warning line; the status and earlier results are as before it. Does nothing when none is
  /// under way; one of the other solver is not ended, nor is one that is already past its last iteration.
  void CancelComputation();
  /// How good the result of the last computation of one camera is, whichever solver it is of. Grade None
  /// during STATUS_PROGRESS, in a stereo calibrator, before a computation, and after snapshots were added to
  /// those that the result is of or taken out of them.
  CalibrationVerdict GetVerdict();
  /// How good the result of the last computation of a pair is, whichever solver it is of, with the lenses
  /// that it was found with. Grade None during STATUS_PROGRESS, in a monocular calibrator, before a
  /// computation, and after snapshots were added to those that the result is of or taken out of them. Takes
  /// milliseconds, changes
  /// nothing. Raises cv::Exception for snapshots of which no pose can be found.
  PairVerdict GetPairVerdict();
  /// The same with what is known of the lenses that were held: `left` and `right` are the verdicts on the
  /// results that they come from. Their covariances become part of the deviations, and what speaks against
  /// them speaks against the pair. Refined lenses are known by the pair alone.
  PairVerdict GetPairVerdict(const CalibrationVerdict& left, const CalibrationVerdict& right);
  /// Which lens model the snapshots ask for, found with the sparse solver in a tenth of a second for usual
  /// numbers of views; robustness and disc radius count when that solver is chosen. Changes neither status
  /// nor results. Nothing is chosen during STATUS_PROGRESS, in a stereo calibrator, and (with an error line)
  /// with fewer than five snapshots. An exception of the solver reaches the caller.
  ModelChoice ChooseModel();
  /// The pose of the grid, all of it in the image and tilted by 40 degrees at most, from which a snapshot
  /// would tell most about the camera for a lens model (as in ComputeCalibration). It follows from the
  /// snapshots so far, by the sparse solver with the settings above, whichever solver is chosen; the same
  /// snapshots give the same pose. Takes milliseconds, changes nothing. Without a proposal during
  /// STATUS_PROGRESS and in a stereo calibrator.
  PoseProposal ProposePose(const int& model);
  /// The same for a fisheye: tilted by 40 degrees at most against the line of sight, as far from the axis as
  /// the image reaches.
  PoseProposal ProposeFisheyePose();

  // ---- Computation of a monocular calibrator. Thread-safe.

  /// Computes the intrinsics with the lens model (MODEL_RATIONAL, MODEL_FULL, anything else classic). Returns
  /// the RMS reprojection error in pixels, or -1.0 when nothing was computed: during STATUS_PROGRESS, in a
  /// stereo calibrator, or (with an error line) with fewer than five snapshots. Ends the assistant. An
  /// exception of the solver reaches the caller, and cv::Exception is raised for a result that is not finite;
  /// the status and earlier results are then as before.
  float ComputeCalibration(const int& model);
  /// Computes as ComputeCalibration does, on a thread of its own. Follow it through the status. A failure is
  /// logged.
  void ComputeCalibrationMultithread(const int& model);
  /// Computes a fisheye, with the sparse solver whichever is chosen (robustness, disc radius and the sheet's
  /// shape count when that one is): lenses of 90 degrees and more, of whose images half a sphere and more can
  /// be one. Returns, refuses and raises as ComputeCalibration does. GetFisheye and SaveFisheye have what
  /// comes out of it; poses, errors and verdict are where they are of any camera. GetDistCoefs is empty then,
  /// and SaveResult refuses: nobody is to take a fisheye's coefficients for others.
  float ComputeFisheye();
  /// Computes as ComputeFisheye does, on a thread of its own. Follow it through the status. A failure is
  /// logged.
  void ComputeFisheyeMultithread();

  // ---- Computation of a stereo calibrator. Thread-safe.

  /// Computes how the right camera stands to the left one, from the snapshots and the monocular results of
  /// both cameras (paths, or with `fromFiles` false the texts themselves), which are held fixed unless
  /// SetRefineLenses lets them move. `model` says which coefficients count. Returns the RMS reprojection
  /// error in pixels; 0.0, with an error line, when a result cannot be read; -1.0 when nothing was computed:
  /// during STATUS_PROGRESS, in a monocular calibrator, and (with an error line) with fewer than five
  /// snapshots or a result with fewer than 14 coefficients. Ends the assistant. An exception of the solver
  /// reaches the caller, and cv::Exception is raised for a result that is not finite; the status is then as
  /// before.
  ///
  /// GetKLeft, GetDistCoefsLeft, GetKRight and GetDistCoefsRight give what was read last, even where it was
  /// refused; SaveResult and GetPairVerdict go by the lenses that the result was found with.
  float ComputeCalibrationStereo(const std::string& left, const std::string& right, const int& model,
                                 const bool& fromFiles);
  /// Computes as ComputeCalibrationStereo does, from texts and on a thread of its own. Follow it through the
  /// status. A failure is logged.
  void ComputeCalibrationStereoMultithread(const std::string& left, const std::string& right,
                                           const int& model);

  // ---- Results. Thread-safe. Empty during STATUS_PROGRESS, in a calibrator of the other kind, and before a
  // computation. Returned matrices are never written to by later computations.

  /// Camera matrix, 3 x 3 double, pixels of the processing size.
  cv::Mat GetK();
  /// Distortion coefficients as OpenCV orders them, one row of double: 5 columns (classic) or 14. Empty of a
  /// fisheye.
  cv::Mat GetDistCoefs();
  cv::Mat GetKLeft();
  cv::Mat GetDistCoefsLeft();
  cv::Mat GetKRight();
  cv::Mat GetDistCoefsRight();
  cv::Mat GetR();
  /// Always empty (GetBaseline: 0.0 or, during STATUS_PROGRESS, -1.0): see the guard in the source. Outside
  /// STATUS_PROGRESS an error line is printed.
  cv::Mat GetT();
  cv::Mat GetE();
  cv::Mat GetF();
  double GetBaseline();
  /// RMS reprojection error in pixels, -1.0 when there is none.
  float GetRMS();
  /// Stereo: translation (3 x 1, metres) with x_right = R x_left + T, essential and fundamental matrix (3 x
  /// 3).
  cv::Mat GetStereoTranslation();
  cv::Mat GetEssentialMatrix();
  cv::Mat GetFundamentalMatrix();
  /// Standard deviations of fx, fy, cx, cy, k1, k2, p1, p2, k3, k4, k5, k6, s1, s2, s3, s4, tau x, tau y: 18
  /// x 1 double, zero for those that the model does not estimate. Monocular. Empty of a fisheye, whose are in
  /// GetFisheye.
  cv::Mat GetStdDevIntrinsics();
  /// RMS reprojection error of each snapshot in pixels, N x 1 double. Monocular.
  cv::Mat GetPerViewErrors();
  /// Pose of the grid in each snapshot, camera from grid: rotation vectors and translations (metres), N x 1
  /// of three doubles. Monocular.
  cv::Mat GetRotationVectors();
  cv::Mat GetTranslationVectors();

  /// The result file's text; with `save` it is also written to path + ".json" (an empty path gives a name of
  /// kind, date and time in the current folder). An empty text during STATUS_PROGRESS, and with an error line
  /// before a computation and for a fisheye (SaveFisheye has its own). A failed save is reported by an error
  /// line; the text is returned all the same.
  std::string SaveResult(const bool& save, const std::string& path);
  /// The fisheye that the last computation found; empty when it was another lens's.
  FisheyeResult GetFisheye();
  /// The text of the fisheye's result file; with `save` it is also written to path + "_fisheye.json" (an
  /// empty path gives a name of kind, date and time in the current folder). An empty text during
  /// STATUS_PROGRESS and, with an error line, before a computation and of another lens. A failed save is
  /// reported by an error line; the text is returned all the same.
  std::string SaveFisheye(const bool& save, const std::string& path);
  /// Local date and time as strftime's "%Y%m%d%X" gives it in the C locale, such as 2026111423:50:56.
  std::string currentDateTime();
  /// Status, snapshot count, a sentence and, when completed, the result file's text, all of one moment, as
  /// one JSON text.
  std::string GetStatus_QVX();

  // ---- Sources of frames, one at a time. A source that is open is read on a thread of the calibrator's own:
  // each frame is detected in (with drawing), shown in the preview and handed on. Nothing that a source
  // delivers ends the process; what goes wrong is logged, once per cause. Thread-safe.
  //
  // An Open returns true when the source is open and its reader started, and prints an error line otherwise.
  // A Close stops the reader, waits for it and releases the source; it prints an error line when there is
  // nothing to close. Every Close but the stereo one closes what any Open but the stereo one opened, and says
  // nothing before the first Open. The reader ends within a frame's time. One whose source has not answered
  // for two seconds is left behind, with a warning line: the source is released when it answers, if ever.
  //
  // On the reader's own thread a Close does not wait, and an Open is refused; the calibrator must not be
  // destroyed there.

  /// A camera by its number (a negative one means 0), asked for motion JPEG of that size and rate. One that
  /// delivers frames at least twice as wide as that shape is taken for two cameras side by side: it is opened
  /// again at twice the width and its frames are split. `splitMode` 0 detects in both halves as a pair, -1
  /// keeps the left half alone, 1 the right half alone; any other value detects in the left one and shows
  /// both.
  bool OpenNativeCamera(int index, int width, int height, int fps, int splitMode);
  void CloseNativeCamera();
  /// Two cameras as a pair; both are asked for that size and rate.
  bool OpenNativeStereoCamera(int leftIndex, int rightIndex, int width, int height, int fps);
  /// Closes what is open of both, with an error line for one that is not.
  void CloseStereoNativeCamera();
  /// A path or URL; a blank ends it when there are options after it. The option "startingFrame=N" skips the
  /// frames before N. Frames are split when the last camera was a side-by-side one.
  bool OpenFFmpegContent(const std::string& content);
  void CloseFFmpegContent();
  /// A GStreamer pipeline that ends in an appsink. Split as content is.
  bool OpenGstreamerPipe(std::string pipe);
  void CloseGstreamerPipe();

  /// Closes whatever is open, both cameras of a pair too: as CloseStereoNativeCamera where a right camera is
  /// open, and as CloseNativeCamera otherwise.
  void CloseSource();

  /// True when the source that was opened last brings no frame any more: content or a pipeline that came to
  /// its end, a source that is no longer open by itself, or one that an Open failed to open. False before any
  /// Open, after a Close, and as soon as another source is opened or a frame is pushed. Settled after the
  /// last frame was processed, so a computation that it started is under way by then.
  bool HasSourceEnded();
  /// Calls the function when a source ends by itself, on the thread that read it, after its last frame was
  /// processed; again if frames come after that and end. Not for an Open that failed, which says so itself.
  /// An empty one ends that. What it throws is logged. A Close does not wait in it.
  void SetSourceEndListener(SourceEndListener listener);

  /// Shows frames as they are processed in the window "Preview", which all calibrators of the process share
  /// and which has a thread of its own: pictures that come faster than it can show are skipped. Without a
  /// display one error line is printed and nothing is shown. The window goes away when a source is closed and
  /// comes back with the next source; pushed frames are not shown in between. A process that uses the preview
  /// must make its own window calls (WatchReprojection among them) in none of its threads. Thread-safe.
  void OpenPreview();
  void ClosePreview();

  /// The pieces of the text between separators: adjacent separators have an empty piece between them, one at
  /// the end is followed by none, and an empty text has no piece. The second form appends.
  static std::vector<std::string> split(const std::string& s, char separator);
  static void split(const std::string& s, char separator, std::vector<std::string>& out);

  /// The reader's thread runs this; on any other it returns at once.
  void cameraReader();
  /// The grabbers' threads run these; on any other they return at once.
  void jpegB64grabber();
  void RGBgrabber();

  // ---- Frames pushed in. Thread-safe. Each is decoded, searched with DetectPoints, which draws on it, and
  // handed to the listeners. That happens on the caller's thread or, while the grabber of its kind is open,
  // on the grabber's: which works on the newest frame only. Frames are never queued: one that comes while
  // another of its kind is processed is dropped. One that holds no picture is reported by an error line, and
  // the listeners get the status without a picture.

  void OpenJpegB64FrameGrabber();
  /// Asks the grabber to end after the frame that it works on; does not wait. It can be opened again at once.
  void CloseJpegB64FrameGrabber();
  /// The Base64 text of a JPEG picture. `tag` is carried along. `env` is the caller's Java environment, null
  /// without one; the Java listener is called with it when the frame is processed at once. `fromGrabber` is
  /// what the grabber itself sets.
  void NextFrameJpegB64(std::string& base64Jpeg, const int& tag, JNIEnv* env, bool fromGrabber);

  void OpenRGBFrameGrabber();
  void CloseRGBFrameGrabber();
  /// An 8-bit BGR image. Processed at once, `image` is the annotated frame afterwards. With the grabber open
  /// its pixels are shared, not copied: leave them alone from then on, and push an image of its own (a clone,
  /// or a new capture) each time. An empty image or text that an open grabber gets is passed over silently.
  void NextFrameRGB(cv::Mat& image, const int& tag, JNIEnv* env, bool fromGrabber);

  /// Hands pushed frames to the listeners as they are, without detection.
  void setBypassProcessing(const bool& bypass);

  /// Closes the source of frames, ends the grabbers, which cannot be opened again, and waits for their
  /// threads: no frame is processed any more but those that somebody pushes himself. Not on a thread of the
  /// calibrator's own, that is from within a listener. Thread-safe.
  void EndSources();

  // ---- Annotated frames handed out. Thread-safe, from within a listener too. No lock is held while one is
  // called. What it throws is logged. A listener that is replaced or cleared while it is called on another
  // thread may still be at it when the function returns.

  /// Calls the function for every processed frame, on the thread that processes it; an empty one ends that.
  void SetFrameListener(FrameListener listener);

  /// Keeps the virtual machine, to which the threads of grabbers attach themselves when they are opened.
  void RegisterJavaVM(JNIEnv* env);
  /// Registers the one com.velotrix.quiverleaf.sdk.JNICalibrationListener in place of an earlier one, or with
  /// null none; true when one is registered now. False, with an error line, when class or method cannot be
  /// found. With `sendImage` not 0 it gets frames as JPEG, in the size given when both sides are positive;
  /// otherwise one zero byte. Frames that threads without a Java environment process do not reach it.
  bool RegisterCalibrationListener(JNIEnv* env, jobject listener, unsigned char sendImage, int width,
                                   int height);
  /// Hands a processed frame to the listeners; to the Java one only with an environment.
  void callbackListener(cv::Mat& frame, JNIEnv* env);
  /// Calls the Java listener, if there is one.
  void onCalibrationCallback(JNIEnv* env, std::vector<unsigned char> jpeg, const std::string& json);

  // ---- Overlay, review and recording.

  /// Writes the snapshot count, the frame's size, version, status and speed into the frame's top left corner;
  /// `elapsed` is the duration of a detection in seconds. What detection draws. Frame thread.
  void drawInfo(cv::Mat& frame, const double& elapsed);

  /// Shows every snapshot with the grid reprojected through the computed model in the window "Reprojected
  /// frame", a key press each, until it is closed. Returns at once during STATUS_PROGRESS and in a stereo
  /// calibrator, with an error line without a display. One without a result is plain. Window thread.
  void WatchReprojection();

  /// From here on the centres of each snapshot that AddPoints() takes are recorded as a pose. Thread-safe.
  void StartModelRecording();
  /// Ends the recording and writes its poses to "model_tmp.json" in the current folder. Thread-safe.
  void StopModelRecording();
  /// The same to another file. False when nothing is recorded, and when the file could not be opened: the
  /// recording then goes on, and can be written elsewhere.
  bool StopModelRecording(const std::string& path);

 private:
  struct Impl;
  const std::unique_ptr<Impl> impl_;
};
