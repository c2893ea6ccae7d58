/// How good a calibration is, in numbers and in words.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Export.h"

/// What is known of a camera computed from views. "Deviations" are standard deviations; those of projections
/// are of a pixel's coordinate, in pixels of the processing size, after the best common rotation of the
/// camera's frame, which no view of a grid can tell from a rotation of all poses. Formal ones follow from the
/// noise of the points; those of the jackknife from leaving out each pose in turn, which also shows errors of
/// the model.
struct VELMORA_API CalibrationVerdict {
  enum class Grade { None, Good, WithCare, Worthless };
  struct Remark {
    std::string reason;
    std::string advice;
  };

  /// What the computation did not use.
  struct LeftOut {
    size_t view = 0;
    int point = -1;         ///< -1: the whole view
    double residual = 0.0;  ///< pixels
    std::string reason;
  };

  /// The shape of the sheet, where it was estimated with the camera or known.
  struct Sheet {
    /// "flat", "bent", "free" (with points beside their places), or "known": given, not estimated.
    std::string model = "flat";
    /// Where its points are, metres, in the order of the grid and in the target's frame, whose plane z = 0
    /// fits them best; empty of a flat one.
    std::vector<cv::Point3d> points;
    double bend = 0.0;  ///< metres from the lowest point to the highest, about that plane
    double bendDeviation = 0.0;
    double stretch = 0.0;  ///< share by which it is too long along its columns
    double skew = 0.0;     ///< share of their length by which the columns lean
    /// Metres by which points lie beside their places, root of the mean square, but for stretch and skew.
    double misprint = 0.0;
    /// Metres by which the bend differs from view to view, root of the mean square over points and views.
    double bendChanges = 0.0;
    /// Where it does, of each view that was used: heights for x^2, x y and y^2 at half the longer side.
    std::vector<cv::Vec3d> bends;
    double parameters = 0.0;  ///< for how many the shape counts, less what was known of it beforehand
    double flatRms = 0.0;     ///< the RMS that a flat sheet would have had, pixels
    double shift = 0.0;       ///< by how much projections would then be off, where there are data, pixels

    /// As in a verdict's JSON.
    std::string ToJson() const;
    /// That of a verdict's JSON, of one camera or several. Raises std::invalid_argument for other texts, and
    /// where the sheet was taken for flat.
    static Sheet FromVerdict(const std::string& text);
  };

  Grade grade = Grade::None;  ///< None: there is no result to assess
  std::vector<Remark> remarks;
  std::vector<LeftOut> leftOut;
  int views = 0;
  /// How many of these are different: views in which the target was within a few pixels of where it was in
  /// another one tell no more than that one.
  int poses = 0;
  double focalDeviation = 0.0;   ///< formal, relative to the focal length
  double focalJackknife = 0.0;   ///< the same by the jackknife
  double deviationInData = 0.0;  ///< formal, of projections, root of the mean square where there are data
  double jackknifeInData = 0.0;
  /// By how much projections are moved, where there are data, by what the residuals show to be no noise: a
  /// sheet that is bent, out of proportion or moved, a lens that the model does not hold, or a camera that
  /// did not stay the same: then from the nearer one of the two. 0 when they show none of these.
  double systematicInData = 0.0;
  double sheetBend = 0.0;  ///< metres from the sheet's lowest dot to its highest, where that is the cause
  /// The share by which the sheet is longer than it should be, where proportions are the cause.
  double sheetStretch = 0.0;
  /// Metres by which discs are printed beside their places, root of the mean square of a coordinate, where
  /// that is the cause.
  double printError = 0.0;
  /// Metres by which the sheet moved while an image was read row by row, where that is the cause.
  double movedWhileRead = 0.0;
  /// Where focus, zoom or the principal point did not stay as they were: the share by which the focal length
  /// grew and the pixels by which the principal point moved, from the first views to the last (or, where they
  /// go with the distance, from the farthest to the nearest).
  double focalChange = 0.0;
  cv::Point2d principalPointChange;
  int changedAfter = -1;                 ///< the last view before the change, where it came at once; else -1
  double principalPointDeviation = 0.0;  ///< pixels, the larger of the formal one and the jackknife's
  /// Share of the image for whose pixels the lens has no ray: nothing is known there.
  double imageWithoutRay = 0.0;
  /// Formal, over the whole image; infinite where the lens has no ray for a part of it.
  double deviationInImage = 0.0;
  double coverage = 0.0;              ///< share of the image within the data's convex hull
  std::vector<cv::Point2f> dataArea;  ///< that hull
  /// Of the intrinsics that were estimated, in the order of Calibrator::GetStdDeviations: CV_64F, formal and
  /// by the jackknife; empty when the views do not determine them.
  cv::Mat covariance;
  cv::Mat jackknifeCovariance;
  Sheet sheet;
  cv::Mat deviationMap;  ///< CV_64F, 30 x 40 cells over the image; NaN where the lens has no ray for a pixel

  /// What projections may be off by where there are data, all in all: the larger of both deviations, and what
  /// is no noise.
  double ExpectedInData() const;
  /// The grade: "good", "usable with care", "worthless" or "no result".
  std::string ToString() const;
  /// All but the map and the hull, with the remarks, as a JSON text; null stands for infinite numbers.
  std::string ToJson() const;
  /// What ToJson wrote. Raises std::invalid_argument for other texts.
  static CalibrationVerdict FromJson(const std::string& text);
};
