/// What may be discs of the grid: round dark spots that several grey levels agree on.
#include "finder/Candidates.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "finder/RowEdges.h"
#include "finder/Spots.h"

namespace velmora::finder {

namespace {

/// At how many levels a glance looks.
constexpr int FEW_LEVELS = 6;
constexpr int LEAST_CONTRAST = 8;
constexpr double SMALLEST_AREA = 4.0;
constexpr double SPECK_AREA = 2.0;
/// The rows that tell whether a level lies in the noise are this far apart.
constexpr int SAMPLED = 16;
/// The share of the most runs from which on it may.
constexpr double LIKELY = 0.7;

/// Faint discs are looked for at levels that are so near to each other, in a picture that is smaller by so
/// much: fewer pixels pay for more levels, and have less noise.
constexpr int FAINT_STEP = 3;
constexpr int SHRUNK = 2;
/// Pixels of the smaller picture: below, noise makes spots of its own.
constexpr double SMALLEST_FAINT_AREA = 12.0;
/// What more of the near levels see, the ordinary ones see well.
constexpr int MOST_FAINT_LEVELS = 15;

/// From the darkest to the brightest grey of an image, but for a few pixels.
cv::Range RangeOf(const cv::Mat& grey) {
  // Neighbouring pixels are mostly of one value: counted in turn, neither has to wait for the other.
  std::array<int, 256> histogram = {};
  std::array<int, 256> others = {};
  int total = 0;
  for (int row = 1; row < grey.rows; row += 3) {
    const unsigned char* pixels = grey.ptr(row);
    int x = 1;
    for (; x + 3 < grey.cols; x += 6, total += 2) {
      ++histogram[pixels[x]];
      ++others[pixels[x + 3]];
    }
    if (x >= grey.cols) continue;
    ++histogram[pixels[x]];
    ++total;
  }
  for (size_t value = 0; value < histogram.size(); ++value) histogram[value] += others[value];
  // Few enough not to miss a small grid on a plain ground.
  const int tail = total / 4000;
  int low = 0;
  int high = 255;
  for (int sum = 0; low < 255 && (sum += histogram[static_cast<size_t>(low)]) <= tail;) ++low;
  for (int sum = 0; high > 0 && (sum += histogram[static_cast<size_t>(high)]) <= tail;) --high;
  return {low, high};
}

RegionLimits LimitsOf(const cv::Size& size) {
  RegionLimits limits;
  limits.minArea = SMALLEST_AREA;
  limits.maxArea = 0.25 * size.area();
  limits.wanted = IsRound;
  return limits;
}

/// More runs of dark pixels at a level are noise.
int MostRuns(const cv::Size& size) {
  return 1000 + size.area() / 25;
}

/// Of each level the row before which a search of the whole image gives it up; beyond the last one when it
/// does not.
std::vector<int> EndsInNoise(const cv::Mat& grey, const std::vector<int>& levels) {
  const int most = MostRuns(grey.size());
  std::vector<int> ends;
  for (const int level : levels) {
    int sampled = 0;
    for (int row = SAMPLED / 2; row < grey.rows; row += SAMPLED) {
      sampled += CountRuns(grey.ptr(row), grey.cols, level);
    }
    // Only those that may be in the noise are worth counting row by row.
    const bool noisy = SAMPLED * sampled > LIKELY * most;
    int row = noisy ? 0 : grey.rows;
    for (int runs = 0; row < grey.rows && runs <= most; ++row) {
      runs += CountRuns(grey.ptr(row), grey.cols, level);
    }
    ends.push_back(row);
  }
  return ends;
}

/// The candidates among round regions; `blots` becomes the number of regions that are too large.
std::vector<DiscCandidate> DiscsAmong(std::vector<Region> round, const cv::Size& size, int discs,
                                      int& blots) {
  const double largest = 1.5 * size.area() / discs;
  const auto tooLarge =
      std::remove_if(round.begin(), round.end(), [&](const Region& region) { return region.area > largest; });
  blots = static_cast<int>(round.end() - tooLarge);
  round.erase(tooLarge, round.end());
  std::vector<DiscCandidate> candidates = MergeSpots(round, size);
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const DiscCandidate& a, const DiscCandidate& b) { return a.levels > b.levels; });
  if (candidates.size() > MAX_CANDIDATES) candidates.resize(MAX_CANDIDATES);
  return candidates;
}

}  // namespace

std::vector<int> ChooseLevels(const cv::Mat& grey, int count) {
  const cv::Range range = RangeOf(grey);
  std::vector<int> levels;
  if (range.size() < LEAST_CONTRAST) return levels;
  for (int k = 0; k < count; ++k) {
    const int level = range.start + cvRound(range.size() * (k + 0.5) / count);
    if (levels.empty() || level > levels.back()) levels.push_back(level);
  }
  return levels;
}

bool IsRound(const Region& region) {
  // The area of the ellipse with these moments; the pixels' own extent adds 1/12 to each, which counts in the
  // smallest ones.
  const double xx = region.xx + 1.0 / 12.0;
  const double yy = region.yy + 1.0 / 12.0;
  const double determinant = xx * yy - region.xy * region.xy;
  if (!(determinant > 0.0)) return false;
  const double fill = region.area / (4.0 * CV_PI * std::sqrt(determinant));
  const bool small = region.area < 60.0;
  if (fill < (small ? 0.8 : 0.87) || fill > (small ? 1.2 : 1.1)) return false;
  const double half = 0.5 * (xx + yy);
  const double spread = std::sqrt(std::max(0.0, half * half - determinant));
  return half - spread > 0.025 * (half + spread);
}

Candidates FindCandidates(const cv::Mat& grey, int discs) {
  RegionLimits limits = LimitsOf(grey.size());
  limits.maxRunsPerLevel = MostRuns(grey.size());
  SmallRegions specks;
  specks.leastArea = SPECK_AREA;
  const ImagePart whole = ImagePart::Whole(grey.size());
  Candidates candidates;
  int blots = 0;
  candidates.discs = DiscsAmong(FindDarkRegions(grey, whole, ChooseLevels(grey), limits, &specks),
                                grey.size(), discs, blots);
  // Each is seen at several levels.
  candidates.tooSmall = specks.count / 3;
  candidates.tooLarge = (blots + 2) / 3;
  return candidates;
}

std::vector<DiscCandidate> FindCandidatesIn(const cv::Mat& grey, const ImagePart& part,
                                            const std::vector<int>& levels, int discs) {
  RegionLimits limits = LimitsOf(grey.size());
  limits.endOfLevel = EndsInNoise(grey, levels);
  int blots = 0;
  return DiscsAmong(FindDarkRegions(grey, part, levels, limits), grey.size(), discs, blots);
}

std::vector<DiscCandidate> GlanceAtCandidates(const cv::Mat& grey, int discs) {
  RegionLimits limits = LimitsOf(grey.size());
  limits.maxRunsPerLevel = MostRuns(grey.size());
  int blots = 0;
  return DiscsAmong(FindDarkRegions(grey, ChooseLevels(grey, FEW_LEVELS), limits), grey.size(), discs, blots);
}

std::vector<DiscCandidate> FindFaintCandidates(const cv::Mat& grey, int discs) {
  const cv::Range range = RangeOf(grey);
  // Else the ordinary levels are as near to each other.
  if (range.size() <= FAINT_STEP * LEVELS) return {};
  const cv::Size size(grey.cols / SHRUNK, grey.rows / SHRUNK);
  cv::Mat smaller;
  cv::resize(grey(cv::Rect(0, 0, SHRUNK * size.width, SHRUNK * size.height)), smaller, size, 0.0, 0.0,
             cv::INTER_AREA);
  std::vector<int> levels;
  for (int level = range.start + 1; level < range.end; level += FAINT_STEP) levels.push_back(level);
  RegionLimits limits;
  limits.minArea = SMALLEST_FAINT_AREA;
  limits.maxArea = 1.5 * size.area() / discs;
  limits.maxRunsPerLevel = MostRuns(size);
  limits.wanted = IsRound;
  std::vector<DiscCandidate> faint;
  for (DiscCandidate disc : MergeSpots(FindDarkRegions(smaller, levels, limits), size)) {
    if (disc.levels < 2 || disc.levels > MOST_FAINT_LEVELS || faint.size() == MAX_CANDIDATES) continue;
    // Pixels have their middles at whole numbers.
    disc.centre = SHRUNK * (disc.centre + cv::Point2d(0.5, 0.5)) - cv::Point2d(0.5, 0.5);
    disc.radius *= SHRUNK;
    faint.push_back(disc);
  }
  return faint;
}

}  // namespace velmora::finder
