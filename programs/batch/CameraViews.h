/// One camera's way from images to a result.
#pragma once

#include <map>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Calibrator.h"
#include "batch/ImageSearch.h"
#include "batch/ViewNotes.h"
#include "common/OutputFiles.h"
#include "common/Report.h"

namespace batch {

constexpr size_t ENOUGH_VIEWS = 5;

/// The views of one camera, and the calibrator that they go to.
class CameraViews {
 public:
  explicit CameraViews(const Arguments& arguments) : arguments_(arguments), search_(arguments) {}

  /// Takes what was seen in the next image. The reason when it gives no view, else an empty text.
  std::string Take(const NamedImage& input, const SearchOutcome& outcome);

  /// False as long as no image could be decoded.
  bool HasImages() const { return search_.Engine() != nullptr; }
  cv::Size FrameSize() const { return search_.FrameSize(); }
  const std::vector<Centres>& Views() const { return views_; }
  /// The last one, as the search gave it.
  const GridView& Last() const { return last_; }
  /// The circles that were seen of those that the computation was of.
  const std::vector<Centres>& Used() const { return used_; }
  const std::vector<std::string>& Names() const { return names_; }
  const std::vector<common::Rejection>& Rejected() const { return rejected_; }
  /// What became of each view of a session, once the result and its verdict are there.
  std::map<int, ViewNote> Notes(const common::Report& report) const;

  /// What else the images show when not one held the grid; see ImageSearch.
  std::string OtherGridText() { return views_.empty() ? search_.OtherGridText() : ""; }

  /// Computes from the views that spread best; the others are set aside. There must be enough.
  common::Report Calibrate();

  /// The verdict on the computation; the views that it rejected are noted in the report.
  CalibrationVerdict Verdict(common::Report& report);

  /// The result file's name without extension: that of the output, or for a fisheye, whose file is another
  /// one, with "_fisheye".
  std::string ResultName(const std::string& output) const;
  /// Writes the result file and reads it back. The text, which is empty when that failed.
  std::string Save(const std::string& output);

 private:
  const Arguments& arguments_;
  ImageSearch search_;
  std::vector<std::string> names_;
  std::vector<int> numbers_;                  ///< in the session, of the views
  std::vector<size_t> chosen_;                ///< of the views, those that the computation was of
  std::vector<Centres> views_;                ///< all circles, also those of a part that are not seen
  std::vector<std::vector<double>> weights_;  ///< of the views
  std::vector<std::vector<double>> deviations_;
  GridView last_;
  std::vector<Centres> used_;
  std::vector<common::Rejection> rejected_;
};

/// Saves a camera's result, whose text is handed out, and its verdict, and notes the files. The one that
/// could not be written, or an empty text.
std::string SaveWithVerdict(CameraViews& camera, const CalibrationVerdict& verdict, const std::string& output,
                            std::string& text, common::OutputFiles& files);

}  // namespace batch
