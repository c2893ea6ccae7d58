/// How good the calibration of a pair of cameras is, in numbers and in words.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Export.h"
#include "Verdict.h"

/// What is known of how the right camera stands to the left one. Deviations are standard deviations: of the
/// rotation's angle and of the translation's direction in degrees, of the baseline as a share of it. Formal
/// ones follow from the noise of the points; those of the jackknife from leaving out each view in turn. Where
/// lenses were held, their own deviations are part of these when they are known (`lensesKnown`); else these
/// are the deviations beside those lenses.
struct VELMORA_API PairVerdict {
  using Grade = CalibrationVerdict::Grade;
  using Remark = CalibrationVerdict::Remark;

  struct Deviations {
    double rotation = 0.0;   ///< degrees
    double baseline = 0.0;   ///< share of the baseline
    double direction = 0.0;  ///< degrees
  };

  /// A view whose two pictures do not show the sheet at the same place.
  struct Disagreement {
    size_t view = 0;
    double factor = 0.0;  ///< how far apart they put it, in units of the noise; 1 is usual
  };

  /// What the computation did not use.
  struct LeftOut {
    size_t view = 0;
    bool right = false;     ///< of the right camera, else of the left one
    int point = -1;         ///< -1: the whole image
    double residual = 0.0;  ///< pixels
    std::string reason;
  };

  /// An image that was put right: its points were counted from another end of the grid than those of the
  /// other camera's.
  struct Recounted {
    size_t view = 0;
    bool right = false;  ///< of the right camera, else of the left one
  };

  /// What the result says of one of the cameras; numbers are infinite where they are not known.
  struct Camera {
    double rms = 0.0;  ///< of its points that were used, pixels
    /// The same of each snapshot, in their order; -1 where the computation left out the camera's image.
    std::vector<double> viewRms;
    /// Formal deviations of projections, as of a CalibrationVerdict, by a lens of which these views tell all
    /// that is known. A refined lens is one; of a held one more may be known than that.
    double deviationInData = 0.0;
    double deviationInImage = 0.0;
    double coverage = 0.0;              ///< share of the image within the data's convex hull
    std::vector<cv::Point2f> dataArea;  ///< that hull
    cv::Mat deviationMap;  ///< as of a CalibrationVerdict; empty when the views do not determine the lens
  };

  Grade grade = Grade::None;  ///< None: there is no result to assess
  std::vector<Remark> remarks;
  std::vector<LeftOut> leftOut;
  std::vector<Recounted> recounted;
  int views = 0;               ///< of which both images were used
  int poses = 0;               ///< how many of these are different, as of a CalibrationVerdict
  bool lensesRefined = false;  ///< with the pair
  bool lensesKnown = false;    ///< how well the held ones are, by the verdicts on them
  Deviations formal;
  Deviations jackknife;
  /// Formal, with lenses that are no better known than these views tell; the same as formal of refined ones.
  Deviations withLenses;
  double disagreement = 0.0;  ///< the median of that of all views
  std::vector<Disagreement> disagreements;
  Camera left;
  Camera right;
  /// Metres from the sheet's lowest dot to its highest, where its bend moves the result; else 0.
  double sheetBend = 0.0;
  /// The shape of the sheet, where it was estimated with the pair; its shift is that of projections of
  /// refined lenses.
  CalibrationVerdict::Sheet sheet;

  /// Takes a camera's own verdict into account, where the lenses of the pair are those of that result and
  /// held. `side` is "left" or "right".
  void Consider(const CalibrationVerdict& camera, const std::string& side);

  /// The words of the grade, as of a CalibrationVerdict.
  std::string ToString() const;
  /// All of it but the maps and hulls as a JSON text.
  std::string ToJson() const;
};
