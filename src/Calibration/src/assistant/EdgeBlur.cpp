/// How blurred the discs of a grid are in an image.
#include "assistant/EdgeBlur.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "finder/Homography.h"
#include "foundation/Median.h"
#include "model/TargetGeometry.h"

namespace velmora {

namespace {

constexpr int DIRECTIONS = 8;   ///< of edges, over half a turn; each disc has one on either side
constexpr double STRIDE = 0.5;  ///< between samples, pixels
/// Nearly half the way from a disc to the next one, in steps between rows.
constexpr double HALF_WAY = 0.7;
/// The shares of a profile at its ends whose means are the levels of disc and paper.
constexpr double ENDS = 0.2;
/// Grey levels between disc and paper, below which noise decides where an edge is.
constexpr double LEAST_CONTRAST = 20.0;
/// A blur of one standard deviation takes an edge from this share of its height to the rest of it, on either
/// side of its middle.
constexpr double LOW = 0.1587;
/// Fewer edges of a direction do not tell its width.
constexpr size_t FEWEST = 8;

/// Pixels along a line from a centre outward.
class Profile {
 public:
  /// False when it leaves the image.
  bool Read(const cv::Mat& grey, const cv::Point2d& centre, const cv::Point2d& direction, double length) {
    const int count = static_cast<int>(length / STRIDE) + 1;
    if (count < 8) return false;
    values_.clear();
    for (int i = 0; i < count; ++i) {
      const cv::Point2d at = centre + STRIDE * i * direction;
      const int x = cvFloor(at.x);
      const int y = cvFloor(at.y);
      if (x < 0 || y < 0 || x + 1 >= grey.cols || y + 1 >= grey.rows) return false;
      const double u = at.x - x;
      const double v = at.y - y;
      const auto* const upper = grey.ptr<unsigned char>(y) + x;
      const auto* const lower = grey.ptr<unsigned char>(y + 1) + x;
      values_.push_back((1.0 - v) * ((1.0 - u) * upper[0] + u * upper[1]) +
                        v * ((1.0 - u) * lower[0] + u * lower[1]));
    }
    return true;
  }

  /// The standard deviation of the edge's blur and where its middle is; false without a plain edge.
  bool Edge(double& sigma, double& middle) {
    const auto share =
        std::max<std::ptrdiff_t>(2, static_cast<std::ptrdiff_t>(ENDS * static_cast<double>(values_.size())));
    const double inside = MeanOf(values_.begin(), values_.begin() + share);
    const double outside = MeanOf(values_.end() - share, values_.end());
    if (std::abs(outside - inside) < LEAST_CONTRAST) return false;
    for (double& value : values_) value = (value - inside) / (outside - inside);
    size_t crossing = 1;
    while (crossing < values_.size() && values_[crossing] < 0.5) ++crossing;
    if (crossing >= values_.size()) return false;
    middle = Where(crossing, 0.5);
    size_t low = crossing;
    while (low > 1 && values_[low - 1] > LOW) --low;
    size_t high = crossing;
    while (high + 1 < values_.size() && values_[high] < 1.0 - LOW) ++high;
    if (values_[low - 1] > LOW || values_[high] < 1.0 - LOW) return false;
    sigma = 0.5 * (Where(high, 1.0 - LOW) - Where(low, LOW));
    return true;
  }

 private:
  using Iterator = std::vector<double>::const_iterator;

  static double MeanOf(Iterator from, Iterator to) {
    double sum = 0.0;
    for (Iterator it = from; it != to; ++it) sum += *it;
    return sum / static_cast<double>(to - from);
  }

  /// Pixels from the centre to where the level is crossed just before this sample.
  double Where(size_t sample, double level) const {
    const double before = values_[sample - 1];
    const double rise = values_[sample] - before;
    const double part = rise > 0.0 ? (level - before) / rise : 0.0;
    return STRIDE * (static_cast<double>(sample) - 1.0 + std::min(1.0, std::max(0.0, part)));
  }

  std::vector<double> values_;
};

/// Pixels that a step on the sheet is long, in the frame's direction, at a point of the sheet.
double StepAlong(const cv::Matx33d& H, const cv::Point3d& at, const cv::Point2d& direction) {
  const double w = H(2, 0) * at.x + H(2, 1) * at.y + H(2, 2);
  const double x = (H(0, 0) * at.x + H(0, 1) * at.y + H(0, 2)) / w;
  const double y = (H(1, 0) * at.x + H(1, 1) * at.y + H(1, 2)) / w;
  const cv::Matx22d J((H(0, 0) - x * H(2, 0)) / w, (H(0, 1) - x * H(2, 1)) / w, (H(1, 0) - y * H(2, 0)) / w,
                      (H(1, 1) - y * H(2, 1)) / w);
  return 1.0 / cv::norm(J.inv() * cv::Vec2d(direction.x, direction.y));
}

}  // namespace

double EdgeBlur::OneSided() const {
  return std::sqrt(std::max(0.0, most * most - least * least));
}

bool MeasureEdgeBlur(const cv::Mat& image, const cv::Size& grid, const std::vector<cv::Point2d>& centres,
                     const std::vector<double>& weights, EdgeBlur& blur) {
  cv::Mat grey = image;
  if (image.channels() == 3) cv::cvtColor(image, grey, cv::COLOR_BGR2GRAY);
  const std::vector<cv::Point3d> points = MakeObjectTemplate(grid, 1.0F);
  std::vector<cv::Point2d> plane;
  plane.reserve(points.size());
  for (const cv::Point3d& point : points) plane.emplace_back(point.x, point.y);
  cv::Matx33d H;
  if (!finder::FitHomography(plane, centres, H)) return false;

  std::array<std::vector<double>, DIRECTIONS> widths;
  std::vector<double> radii;
  Profile profile;
  for (size_t i = 0; i < centres.size(); ++i) {
    if (!weights.empty() && weights[i] <= 0.0) continue;
    for (int k = 0; k < 2 * DIRECTIONS; ++k) {
      const double angle = CV_PI * k / DIRECTIONS;
      const cv::Point2d direction(std::cos(angle), std::sin(angle));
      double sigma = 0.0;
      double radius = 0.0;
      if (!profile.Read(grey, centres[i], direction, HALF_WAY * StepAlong(H, points[i], direction))) continue;
      if (!profile.Edge(sigma, radius)) continue;
      widths[static_cast<size_t>(k % DIRECTIONS)].push_back(sigma);
      radii.push_back(radius);
    }
  }
  std::vector<double> medians;
  for (std::vector<double>& width : widths) {
    if (width.size() >= FEWEST) medians.push_back(MedianOf(width));
  }
  if (medians.size() < DIRECTIONS / 2) return false;
  blur.least = *std::min_element(medians.begin(), medians.end());
  blur.most = *std::max_element(medians.begin(), medians.end());
  blur.radius = MedianOf(radii);
  return true;
}

}  // namespace velmora
