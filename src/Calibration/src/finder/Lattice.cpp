/// Grows lattices of candidates: which of them lie where a regular pattern, seen in perspective, has its
/// points.
#include "finder/Lattice.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <opencv2/imgproc.hpp>
#include <utility>

namespace velmora::finder {

namespace {

constexpr size_t NEIGHBOURS = 8;
constexpr int SEED_PAIRS = 6;
constexpr int PASSES = 3;
/// What beginning a growth costs, in lookups.
constexpr int BEGINNING = 200;
/// The lookups that are kept for the largest of too small ones.
constexpr int LAST_LOOKUPS = 50000;
/// The largest irregularity of a pattern.
constexpr double REGULAR = 0.07;
/// That of one that is near and tilted, before a wide lens: a step differs much from the next.
constexpr double REGULAR_THOUGH_BENT = 0.1;
/// Lattice indices are -REACH to REACH in both directions.
constexpr int REACH = 60;
/// Share of a step that a neighbour may be off its predicted position.
constexpr double SLACK = 0.32;
constexpr double SEED_SLACK = 0.22;
/// Fewer candidates than this are tried in the order in which they come.
constexpr int MANY = 60;
/// The number of seeds that are tried before they are put in order.
constexpr size_t AT_ONCE = 6;
/// How far two opposite steps may differ, as a share of one.
constexpr double OPPOSITE = 0.15;
/// The farthest neighbours of a seed, in radii of a disc.
constexpr double FARTHEST = 14.0;

double Cross(const cv::Point2d& a, const cv::Point2d& b) {
  return a.x * b.y - a.y * b.x;
}

/// A lattice under growth; one after the other.
class Growth {
 public:
  Growth(const CandidateIndex& index, size_t most, SearchBudget& budget)
      : index_(index), most_(most), budget_(budget), taken_(static_cast<size_t>(index.Count()), false) {
    at_.assign(static_cast<size_t>((2 * REACH + 1) * (2 * REACH + 1)), -1);
  }

  Lattice Run(int seed, const cv::Point2d& first, const cv::Point2d& second) {
    budget_.left -= BEGINNING;
    lattice_.clockwise = Cross(first, second) > 0.0;
    steps_ = {first, second};
    Put({0, 0}, seed);
    for (int pass = 0; pass < PASSES && !Full(); ++pass) {
      const size_t before = lattice_.points.size();
      for (size_t k = 0; k < lattice_.points.size() && !Full(); ++k) Extend(lattice_.points[k].gridIndex);
      if (lattice_.points.size() == before) break;
    }
    Lattice grown;
    std::swap(grown, lattice_);
    for (const LatticePoint& point : grown.points) {
      at_[Cell(point.gridIndex)] = -1;
      taken_[static_cast<size_t>(point.candidate)] = false;
    }
    return grown;
  }

 private:
  static size_t Cell(const cv::Point& gridIndex) {
    return static_cast<size_t>((gridIndex.y + REACH) * (2 * REACH + 1) + gridIndex.x + REACH);
  }
  static bool Inside(const cv::Point& gridIndex) {
    return std::abs(gridIndex.x) <= REACH && std::abs(gridIndex.y) <= REACH;
  }
  bool Full() const { return lattice_.points.size() >= most_ || budget_.Spent(); }
  int At(const cv::Point& gridIndex) const { return Inside(gridIndex) ? at_[Cell(gridIndex)] : -1; }
  const cv::Point2d& Centre(int k) const { return index_[k].centre; }

  void Put(const cv::Point& gridIndex, int candidate) {
    at_[Cell(gridIndex)] = candidate;
    taken_[static_cast<size_t>(candidate)] = true;
    lattice_.points.push_back({gridIndex, candidate});
  }

  /// `from` is a copy: the list of points that it comes from grows meanwhile.
  void Extend(const cv::Point from) {
    static const std::array<cv::Point, 4> DIRECTIONS = {cv::Point(1, 0), cv::Point(0, 1), cv::Point(-1, 0),
                                                        cv::Point(0, -1)};
    for (const cv::Point& direction : DIRECTIONS) {
      const cv::Point to = from + direction;
      if (Full() || !Inside(to) || At(to) >= 0) continue;
      const int here = At(from);
      const cv::Point2d step = Predict(from, direction);
      const double radius = index_[here].radius;
      const int found = index_.Nearest(Centre(here) + step, SLACK * cv::norm(step), budget_, [&](int k) {
        return !taken_[static_cast<size_t>(k)] && AlikeInSize(radius, index_[k].radius);
      });
      if (found >= 0) Put(to, found);
    }
  }

  /// The step from a lattice point in a direction, as its surroundings have it.
  cv::Point2d Predict(const cv::Point& from, const cv::Point& direction) const {
    const cv::Point2d here = Centre(At(from));
    cv::Point2d sum;
    int count = 0;
    const int behind = At(from - direction);
    if (behind >= 0) {
      cv::Point2d step = here - Centre(behind);
      const int before = At(from - 2 * direction);
      if (before >= 0) {
        const double ratio = cv::norm(step) / std::max(1e-9, cv::norm(Centre(behind) - Centre(before)));
        step *= std::min(1.18, std::max(0.85, ratio));
      }
      sum += step;
      ++count;
    }
    const cv::Point across(direction.y, direction.x);
    for (const cv::Point& side : {across, cv::Point(-across)}) {
      const int beside = At(from + side);
      const int ahead = At(from + side + direction);
      if (beside < 0 || ahead < 0) continue;
      sum += Centre(ahead) - Centre(beside);
      ++count;
    }
    if (count > 0) return sum / count;
    const double sign = direction.x + direction.y;
    return sign * (direction.x != 0 ? steps_[0] : steps_[1]);
  }

  const CandidateIndex& index_;
  const size_t most_;
  SearchBudget& budget_;
  std::vector<char> taken_;
  std::vector<int> at_;
  std::array<cv::Point2d, 2> steps_;
  Lattice lattice_;
};

/// The steps from a candidate to its nearest neighbours of like size.
std::vector<cv::Point2d> NeighbourSteps(const CandidateIndex& index, int seed, SearchBudget& budget) {
  const DiscCandidate& from = index[seed];
  std::vector<cv::Point2d> steps;
  const auto nearer = [](const cv::Point2d& a, const cv::Point2d& b) { return a.dot(a) < b.dot(b); };
  for (double reach = 3.5; steps.size() < NEIGHBOURS && reach <= FARTHEST; reach *= 2.0) {
    steps.clear();
    const double farthest = reach * (from.radius + 0.5);
    index.Visit(from.centre, farthest, budget, [&](int k) {
      const cv::Point2d step = index[k].centre - from.centre;
      if (k == seed || step.dot(step) > farthest * farthest) return;
      if (AlikeInSize(from.radius, index[k].radius)) steps.push_back(step);
    });
  }
  const size_t kept = std::min(NEIGHBOURS, steps.size());
  std::partial_sort(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(kept), steps.end(), nearer);
  steps.resize(kept);
  return steps;
}

/// How many of the steps have one of the same length the other way, as all have inside a pattern.
int OppositePairs(const std::vector<cv::Point2d>& steps) {
  int pairs = 0;
  for (size_t i = 0; i < steps.size(); ++i) {
    const double reach = OPPOSITE * cv::norm(steps[i]) + 0.5;
    for (size_t j = i + 1; j < steps.size(); ++j) {
      if (cv::norm(steps[i] + steps[j]) < reach) ++pairs;
    }
  }
  return pairs;
}

/// True when more candidates support that two steps are a base.
bool IsSupported(const CandidateIndex& index, int seed, const cv::Point2d& a, const cv::Point2d& b,
                 SearchBudget& budget) {
  const DiscCandidate& from = index[seed];
  const auto exists = [&](const cv::Point2d& step) {
    const double reach = SEED_SLACK * std::min(cv::norm(a), cv::norm(b)) + 0.5;
    return index.Nearest(from.centre + step, reach, budget,
                         [&](int k) { return k != seed && AlikeInSize(from.radius, index[k].radius); }) >= 0;
  };
  return exists(a + b) && (exists(-a) || exists(-b) || exists(2.0 * a) || exists(2.0 * b));
}

}  // namespace

bool AlikeInSize(double radius, double other) {
  // In the smallest ones a pixel more or less makes much of a difference.
  constexpr double BLURRED = 0.6;
  return radius + BLURRED < 1.8 * (other + BLURRED) && other + BLURRED < 1.8 * (radius + BLURRED);
}

Lattice GrowLattice(const CandidateIndex& index, int seed, const cv::Point2d& first,
                    const cv::Point2d& second, size_t most, SearchBudget& budget) {
  return Growth(index, most, budget).Run(seed, first, second);
}

double Irregularity(const Lattice& lattice, const CandidateIndex& index) {
  std::vector<cv::Point> gridIndices;
  for (const LatticePoint& point : lattice.points) gridIndices.push_back(point.gridIndex);
  // An empty margin all round spares asking whether there are neighbours.
  const cv::Rect box = cv::boundingRect(gridIndices);
  const int width = box.width + 2;
  const auto cellOf = [&](const cv::Point& gridIndex) {
    return static_cast<size_t>((gridIndex.y - box.y + 1) * width + gridIndex.x - box.x + 1);
  };
  std::vector<int> candidates(static_cast<size_t>(width * (box.height + 2)), -1);
  for (const LatticePoint& point : lattice.points) candidates[cellOf(point.gridIndex)] = point.candidate;
  double sum = 0.0;
  int count = 0;
  for (const LatticePoint& point : lattice.points) {
    const size_t cell = cellOf(point.gridIndex);
    for (const size_t step : {size_t{1}, static_cast<size_t>(width)}) {
      const int before = candidates[cell - step];
      const int after = candidates[cell + step];
      if (before < 0 || after < 0) continue;
      const cv::Point2d apart = index[after].centre - index[before].centre;
      const cv::Point2d off =
          0.5 * (index[before].centre + index[after].centre) - index[point.candidate].centre;
      sum += std::max(0.0, 2.0 * cv::norm(off) - 0.7) / std::max(1.0, cv::norm(apart));
      ++count;
    }
  }
  return count >= 4 ? sum / count : 1.0;
}

std::vector<int> SeedsInOrder(const CandidateIndex& index, SearchBudget& budget) {
  std::vector<int> seeds(static_cast<size_t>(index.Count()));
  std::iota(seeds.begin(), seeds.end(), 0);
  if (index.Count() < MANY) return seeds;
  std::vector<int> pairs(seeds.size(), 0);
  for (const int seed : seeds) {
    if (budget.Spent()) break;
    pairs[static_cast<size_t>(seed)] = OppositePairs(NeighbourSteps(index, seed, budget));
  }
  std::stable_sort(seeds.begin(), seeds.end(), [&](int a, int b) {
    return pairs[static_cast<size_t>(a)] > pairs[static_cast<size_t>(b)];
  });
  return seeds;
}

bool SearchLattices(const CandidateIndex& index, size_t least, size_t most, SearchBudget& budget,
                    const std::function<bool(const Lattice&)>& accept,
                    const std::function<void(const Lattice&)>& bent) {
  std::vector<bool> used(static_cast<size_t>(index.Count()), false);
  Growth growth(index, most, budget);
  Lattice largest;
  std::vector<int> seeds(static_cast<size_t>(index.Count()));
  std::iota(seeds.begin(), seeds.end(), 0);
  for (size_t next = 0; next < seeds.size() + AT_ONCE && !budget.Spent(); ++next) {
    // Mostly one of the first is right, and the order would cost more than it spares.
    if (next < AT_ONCE && next >= seeds.size()) continue;
    if (next == AT_ONCE) seeds = SeedsInOrder(index, budget);
    const int seed = seeds[next < AT_ONCE ? next : next - AT_ONCE];
    if (used[static_cast<size_t>(seed)]) continue;
    const std::vector<cv::Point2d> steps = NeighbourSteps(index, seed, budget);
    int pairs = 0;
    for (size_t i = 0; i < steps.size() && pairs < SEED_PAIRS; ++i) {
      for (size_t j = i + 1; j < steps.size() && pairs < SEED_PAIRS && !budget.Spent(); ++j) {
        const double a = cv::norm(steps[i]);
        const double b = cv::norm(steps[j]);
        if (std::abs(Cross(steps[i], steps[j])) <= 0.3 * a * b || b > 4.0 * a) continue;
        if (!IsSupported(index, seed, steps[i], steps[j], budget)) continue;
        ++pairs;
        Lattice lattice = growth.Run(seed, steps[i], steps[j]);
        const bool large = lattice.points.size() >= least;
        if (!large && lattice.points.size() <= largest.points.size()) continue;
        const double irregularity = Irregularity(lattice, index);
        if (irregularity >= REGULAR) {
          if (large && bent && irregularity < REGULAR_THOUGH_BENT) bent(lattice);
          continue;
        }
        if (large && accept(lattice)) return true;
        // Members of a pattern that is none of ours would only grow the same again.
        if (large && pairs >= 2) {
          for (const LatticePoint& point : lattice.points) used[static_cast<size_t>(point.candidate)] = true;
        }
        if (lattice.points.size() > largest.points.size()) largest = std::move(lattice);
      }
    }
  }
  budget.left = std::max(budget.left, LAST_LOOKUPS);
  return largest.points.size() < least && !largest.points.empty() && accept(largest);
}

}  // namespace velmora::finder
