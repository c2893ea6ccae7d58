/// What arrives of a source, in words, and which size to work at.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "common/SourceSettings.h"
#include "guided/SourceState.h"

namespace guided {

/// The first frame of a source.
struct Arrival {
  std::string name;  ///< of the source
  SourceKind kind = SourceKind::Camera;
  common::Split split = common::Split::None;
  cv::Size size;   ///< of the frame, or of each half
  cv::Size asked;  ///< by the user; empty: none
};

/// Whether frames are brought to the size that was asked for: those of recordings and streams are.
bool IsBroughtToSize(const Arrival& arrival);

/// That of the frames or halves; of recordings and streams, which cannot be asked, the one that was asked
/// for.
cv::Size WorkingSize(const Arrival& arrival);

/// Of the frames that halves were cut from, but for an odd column or row.
cv::Size WholeSize(const Arrival& arrival);

/// A line that tells the size of what arrives, and where it is another one than was asked for.
std::string ArrivalText(const Arrival& arrival);

/// A line about the largest size of a camera; empty when the frames have it, or none is known.
std::string OfferText(const cv::Size& largest, const cv::Size& arriving);

/// Why there is no first frame: a sentence.
std::string NothingText(const std::string& name, SourceKind kind);

/// Why cameras of these sizes cannot be worked with: a sentence.
std::string UnequalText(const std::string& name, const cv::Size& left, const cv::Size& right);

}  // namespace guided
