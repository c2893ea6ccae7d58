/// The robust search of the asymmetric circles grid: by growing lattices of round spots.
#include "finder/RobustFinder.h"

#include <algorithm>
#include <set>
#include <utility>

#include "finder/BentLattices.h"
#include "finder/Glance.h"
#include "finder/Grey.h"
#include "finder/Labelling.h"
#include "finder/Lattice.h"
#include "finder/MissingDiscs.h"
#include "finder/NearbyGrid.h"
#include "finder/PartLabelling.h"
#include "finder/Pattern.h"
#include "finder/WholeGrid.h"

namespace velmora {

namespace {

using finder::GridProjection;
using finder::LabelledDiscs;

/// The lookups in the index that one search may take.
constexpr int BUDGET = 300000;
constexpr int FAINT_BUDGET = 60000;
/// A small lattice that is less regular than this speaks of nothing.
constexpr double ACCIDENTAL = 0.03;
/// Discs that are enough of a pattern to speak of its size.
constexpr int TELLING = 12;
/// How many lattices are tried as parts of a grid, and the lookups that each may take.
constexpr size_t PART_TRIALS = 4;
constexpr int PART_BUDGET = 120000;

/// The search in one grey image of dark discs.
class DarkSearch {
 public:
  /// `part`, unless it is null, receives the largest part of a grid that is seen, as long as none is whole.
  DarkSearch(const cv::Mat& grey, const cv::Size& grid, PartialGrid* part)
      : grey_(grey), grid_(grid), gridIndices_(finder::PatternIndices(grid)), part_(part) {}

  GridFinding Run() {
    if (FindAtAGlance()) return finding_;
    const finder::Candidates candidates = finder::FindCandidates(grey_, grid_.area());
    if (candidates.discs.size() < FewestDiscs()) {
      finding_.fault = FaultOfFew(candidates);
    }
    SearchAmong(candidates.discs, BUDGET);
    return finding_;
  }

  /// Among discs of little contrast, with less to spend.
  GridFinding RunFaint() {
    const std::vector<finder::DiscCandidate> faint = finder::FindFaintCandidates(grey_, grid_.area());
    if (faint.size() >= FewestDiscs()) SearchAmong(faint, FAINT_BUDGET);
    return finding_;
  }

 private:
  size_t FewestDiscs() const { return static_cast<size_t>(grid_.area() - finder::MissingAllowed(grid_)); }

  /// Most grids are plain to see in a smaller picture: then only their surroundings are searched.
  bool FindAtAGlance() {
    finder::ExpectedGrid expected;
    LabelledDiscs discs;
    if (!finder::GlanceAtGrid(grey_, grid_, expected) || !finder::FindNearby(grey_, {expected}, discs))
      return false;
    Take(discs);
    return true;
  }

  void SearchAmong(const std::vector<finder::DiscCandidate>& candidates, int budget) {
    const finder::CandidateIndex index(candidates, grey_.size());
    budget_.left = budget;
    // What no plane fits may be a plane that a wide lens bends: it is tried when there is nothing else.
    finder::BentLattices bent(grid_);
    const auto accept = [&](const finder::Lattice& lattice) {
      if (Accept(lattice, index)) return true;
      TryAsPart(lattice, index);
      bent.Keep(lattice);
      return false;
    };
    const bool found =
        finder::SearchLattices(index, FewestDiscs(), 3 * gridIndices_.size() + 60, budget_, accept,
                               [&](const finder::Lattice& lattice) { bent.Keep(lattice); });
    LabelledDiscs discs;
    if (!found && bent.FindGrid(index, grey_, discs)) Take(discs);
  }

  GridFault FaultOfFew(const finder::Candidates& candidates) const {
    const int needed = grid_.area() / 2;
    if (candidates.tooSmall > needed) return GridFault::CirclesTooSmall;
    if (candidates.tooLarge > 1) return GridFault::CirclesTooLarge;
    return GridFault::TooFewCandidates;
  }

  bool Accept(const finder::Lattice& lattice, const finder::CandidateIndex& index) {
    const bool complete =
        static_cast<int>(lattice.points.size()) >= grid_.area() - finder::MissingAllowed(grid_);
    // What is too small for the grid is labelled all the same: it tells what is missing.
    const int lacking = complete ? 2 : grid_.width + grid_.height;
    const finder::Labelling labelling = finder::LabelPattern(lattice, grid_, lacking, budget_);
    if (labelling.covered < TELLING) return false;
    // A few spots line up by accident here and there.
    if (!complete && finder::Irregularity(lattice, index) > ACCIDENTAL) return false;
    LabelledDiscs discs = finder::DiscsOf(labelling, grid_, index);
    GridProjection projection;
    if (!projection.Fit(discs)) return false;
    const bool clear = labelling.covered >= labelling.secondBest + 2;
    const GridFault fault = clear ? finder::CompleteGrid(projection, discs, index, grey_, budget_)
                                  : FaultOfDoubt(projection, discs, lattice);
    // The fault of the largest lattice is the one that is reported.
    if (fault == GridFault::None || lattice.points.size() > said_) {
      finding_.fault = fault;
      said_ = lattice.points.size();
    }
    if (fault != GridFault::None) return false;
    Take(discs);
    return true;
  }

  void Take(const LabelledDiscs& discs) {
    finding_.fault = GridFault::None;
    finding_.centres = discs.centres;
    finding_.radii = discs.radii;
  }

  /// The search for whole grids goes on as if there were no parts.
  void TryAsPart(const finder::Lattice& lattice, const finder::CandidateIndex& index) {
    const size_t least = static_cast<size_t>(finder::FewestOfPart(grid_));
    if (part_ == nullptr || lattice.points.size() < least || tried_.size() == PART_TRIALS) return;
    if (part_->Seen() >= static_cast<int>(lattice.points.size())) return;
    std::set<int> candidates;
    for (const finder::LatticePoint& point : lattice.points) candidates.insert(point.candidate);
    // One lattice grows from many seeds.
    if (!tried_.insert(std::move(candidates)).second) return;
    finder::SearchBudget budget{PART_BUDGET};
    PartialGrid part = finder::CompletePart(lattice, index, grey_, grid_, budget);
    if (part.Seen() > part_->Seen()) *part_ = std::move(part);
  }

  /// For a pattern that can be laid in several ways: it is too large, or cut, or too small.
  GridFault FaultOfDoubt(const GridProjection& projection, const LabelledDiscs& discs,
                         const finder::Lattice& lattice) const {
    if (lattice.points.size() > gridIndices_.size()) return GridFault::BiggerLattice;
    return finder::ReachesEdge(projection, discs, grey_.size()) ? GridFault::PartOutside
                                                                : GridFault::WrongSize;
  }

  const cv::Mat& grey_;
  const cv::Size grid_;
  const std::vector<cv::Point> gridIndices_;
  finder::SearchBudget budget_;
  GridFinding finding_;
  PartialGrid* const part_;
  std::set<std::set<int>> tried_;  ///< as parts: the lattices' candidates
  size_t said_ = 0;                ///< size of the lattice that the fault is of
};

/// Whether it was for want of discs that nothing was found.
bool SawNoGrid(const GridFinding& finding) {
  return finding.fault == GridFault::TooFewCandidates || finding.fault == GridFault::CirclesTooSmall ||
         finding.fault == GridFault::CirclesTooLarge || finding.fault == GridFault::NothingLikeIt;
}

bool IsUsable(const cv::Mat& frame, const cv::Size& patternSize) {
  return frame.depth() == CV_8U && frame.cols > 8 && frame.rows > 8 &&
         (frame.channels() == 1 || frame.channels() == 3 || frame.channels() == 4) &&
         finder::HasOneOrder(patternSize);
}

/// Searches the whole image. `part` may be null.
GridFinding SearchGrey(const cv::Mat& grey, const cv::Size& patternSize, PartialGrid* part) {
  GridFinding finding = DarkSearch(grey, patternSize, part).Run();
  if (finding.Found()) return finding;
  const cv::Mat inverted = 255 - grey;
  GridFinding light = DarkSearch(inverted, patternSize, part).Run();
  light.tone = DiscTone::Light;
  if (light.Found()) return light;
  const bool partSeen = part != nullptr && part->Seen() > 0;
  if (partSeen || !SawNoGrid(finding) || !SawNoGrid(light)) return finding;
  for (const cv::Mat& image : {grey, inverted}) {
    GridFinding faint = DarkSearch(image, patternSize, nullptr).RunFaint();
    faint.tone = DiscTone::Faint;
    if (faint.Found()) return faint;
  }
  return finding;
}

/// Searches where the last frames had the grid. False when it is not there.
bool Follow(const cv::Mat& grey, const cv::Size& patternSize, const GridTracker& tracker,
            GridFinding& finding) {
  const std::vector<finder::ExpectedGrid> expected = tracker.Expected(grey.size(), patternSize);
  if (expected.empty()) return false;
  const bool light = tracker.ExpectsLight();
  LabelledDiscs discs;
  if (!finder::FindNearby(light ? cv::Mat(255 - grey) : grey, expected, discs)) return false;
  finding.fault = GridFault::None;
  finding.centres = std::move(discs.centres);
  finding.radii = std::move(discs.radii);
  finding.tone = light ? DiscTone::Light : DiscTone::Dark;
  return true;
}

/// `part` may be null.
GridFinding Search(const cv::Mat& frame, const cv::Size& patternSize, PartialGrid* part) {
  if (!IsUsable(frame, patternSize)) return {};
  return SearchGrey(finder::GreyOf(frame), patternSize, part);
}

}  // namespace

GridFinding SearchGridRobust(const cv::Mat& frame, const cv::Size& patternSize) {
  return Search(frame, patternSize, nullptr);
}

GridFinding SearchGridRobust(const cv::Mat& frame, const cv::Size& patternSize, PartialGrid& part) {
  part = {};
  GridFinding finding = Search(frame, patternSize, &part);
  if (finding.Found()) part = {};
  return finding;
}

GridFinding SearchGridRobust(const cv::Mat& frame, const cv::Size& patternSize, GridTracker& tracker,
                             PartialGrid* part) {
  if (part != nullptr) *part = {};
  GridFinding finding;
  if (IsUsable(frame, patternSize)) {
    const cv::Mat grey = finder::GreyOf(frame);
    if (!Follow(grey, patternSize, tracker, finding)) finding = SearchGrey(grey, patternSize, part);
    if (part != nullptr && finding.Found()) *part = {};
  }
  tracker.Remember(frame.size(), patternSize, finding);
  return finding;
}

bool FindGridRobust(const cv::Mat& frame, const cv::Size& patternSize, std::vector<cv::Point2d>& points) {
  GridFinding finding = SearchGridRobust(frame, patternSize);
  points = std::move(finding.centres);
  return finding.Found();
}

std::string DescribeFault(GridFault fault) {
  switch (fault) {
    case GridFault::None:
      return "";
    case GridFault::TooFewCandidates:
      return "too few circles in sight";
    case GridFault::CirclesTooSmall:
      return "too few circles in sight: they are too small";
    case GridFault::CirclesTooLarge:
      return "too few circles in sight: they are too large";
    case GridFault::BiggerLattice:
      return "the circles are part of a bigger grid";
    case GridFault::PartOutside:
      return "part of the grid is outside the picture";
    case GridFault::WrongSize:
      return "a grid of another size, or circles of it are hidden";
    case GridFault::PartlyHidden:
      return "a disc is partly hidden";
    case GridFault::NothingLikeIt:
      break;
  }
  return "nothing like the grid in sight";
}

}  // namespace velmora
