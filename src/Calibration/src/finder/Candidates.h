/// What may be discs of the grid: round dark spots that several grey levels agree on.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "finder/Regions.h"
#include "finder/Spots.h"

namespace velmora::finder {

struct Candidates {
  std::vector<DiscCandidate> discs;  ///< those that most levels see first
  int tooSmall = 0;                  ///< round spots below the smallest size, as far as they can be told
  int tooLarge = 0;                  ///< round spots too large for a grid that fits into the image
};

/// At how many levels an image is looked at.
constexpr int LEVELS = 18;

/// The largest number of candidates that are kept.
constexpr size_t MAX_CANDIDATES = 2500;

/// The levels at which an image is looked at: evenly between its darkest and brightest parts. None
/// for one without contrast.
std::vector<int> ChooseLevels(const cv::Mat& grey, int count = LEVELS);

/// True for a region that an ellipse of not too different axes could be.
bool IsRound(const Region& region);

/// The dark spots of `grey` (CV_8UC1) that may belong to a grid of `discs` discs.
Candidates FindCandidates(const cv::Mat& grey, int discs);

/// Those discs within a part of the image that FindCandidates finds in the whole of it at these levels.
std::vector<DiscCandidate> FindCandidatesIn(const cv::Mat& grey, const ImagePart& part,
                                            const std::vector<int>& levels, int discs);

/// Discs of a picture at few levels: enough to see where a grid may be.
std::vector<DiscCandidate> GlanceAtCandidates(const cv::Mat& grey, int discs);

/// Those of so little contrast within an image that has much of it that FindCandidates may pass them over:
/// levels that few grey values part look for them, from a radius of 4 pixels on.
std::vector<DiscCandidate> FindFaintCandidates(const cv::Mat& grey, int discs);

}  // namespace velmora::finder
