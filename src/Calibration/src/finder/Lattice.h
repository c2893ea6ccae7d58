/// Grows lattices of candidates: which of them lie where a regular pattern, seen in perspective, has its
/// points.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <vector>

#include "finder/CandidateIndex.h"

namespace velmora::finder {

/// A candidate with its index in a lattice; the lattice's base is any two of the pattern's steps.
struct LatticePoint {
  cv::Point gridIndex;
  int candidate = 0;
};

struct Lattice {
  std::vector<LatticePoint> points;
  /// True when the second base vector is clockwise from the first, as the image's axes are.
  bool clockwise = true;
};

/// Grows a lattice from a candidate and two steps to neighbours of it, to at most `most` points.
Lattice GrowLattice(const CandidateIndex& index, int seed, const cv::Point2d& first,
                    const cv::Point2d& second, size_t most, SearchBudget& budget);

/// How far points lie from the middle between their neighbours, as a mean share of the step: points strewn at
/// random can be grown along just as well as a pattern, but not as evenly. 1 for too few to tell.
double Irregularity(const Lattice& lattice, const CandidateIndex& index);

/// All candidates in the order in which they are worth growing from: those first whose neighbours lie
/// opposite to each other in pairs, as inside a pattern. Where there are few, in their own order.
std::vector<int> SeedsInOrder(const CandidateIndex& index, SearchBudget& budget);

/// Grows lattices from all candidates, until `accept` returns true for a regular one, or the budget is spent.
/// Of smaller ones than `least` only the largest is offered, last of all. True when one was accepted.
/// `bent` is shown others that have `least` points and are as regular as wide lenses leave a pattern.
bool SearchLattices(const CandidateIndex& index, size_t least, size_t most, SearchBudget& budget,
                    const std::function<bool(const Lattice&)>& accept,
                    const std::function<void(const Lattice&)>& bent = {});

/// True for discs that may be neighbours in one pattern.
bool AlikeInSize(double radius, double other);

}  // namespace velmora::finder
