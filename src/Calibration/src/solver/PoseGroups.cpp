/// Tells which views are repetitions of others.
#include "solver/PoseGroups.h"

#include <algorithm>
#include <limits>

namespace velmora::solver {

namespace {

constexpr double LIKE = 0.005;  // root of the mean squared distance of points, in widths

/// Of a camera's image; of all its points together where the size of the image is not known.
double WidthOf(const std::vector<TargetView>& views, const Rig& rig, size_t camera) {
  if (rig.cameras[camera].imageSize.width > 0) return rig.cameras[camera].imageSize.width;
  double least = std::numeric_limits<double>::infinity();
  double most = -least;
  for (const TargetView& view : views) {
    for (const cv::Point2d& point : view.observations[camera].image) {
      least = std::min(least, point.x);
      most = std::max(most, point.x);
    }
  }
  return most > least ? most - least : 0.0;
}

enum class Likeness { Unknown, Like, Different };

/// Which of the points of `image`, from `first` on, is point k of the other one; their number when none is. A
/// sheet that bends from view to view has the same points elsewhere: they are told by their places.
size_t PlaceIn(const Observation& image, const Observation& other, size_t k, size_t first) {
  const auto from = static_cast<std::ptrdiff_t>(first);
  if (!image.places.empty() && !other.places.empty()) {
    const auto begin = image.places.begin();
    return static_cast<size_t>(std::find(begin + from, image.places.end(), other.places[k]) - begin);
  }
  const auto begin = image.object.begin();
  return static_cast<size_t>(std::find(begin + from, image.object.end(), other.object[k]) - begin);
}

/// Of two images of one camera, by the points that both have. Points that were left out of either tell
/// nothing. Both have them in the same order; images of which less than half of the points are those of the
/// other are of different targets.
Likeness Compare(const Observation& a, const Observation& b, double limit) {
  if (a.IsEmpty() || b.IsEmpty()) return Likeness::Unknown;
  const double limits = limit * limit;
  size_t common = 0;
  double count = 0.0;
  double squares = 0.0;
  size_t next = 0;
  // Most images lie far from each other, which their first points tell.
  const double most = limits * static_cast<double>(a.object.size());
  for (size_t k = 0; k < a.object.size() && squares <= most; ++k) {
    const size_t other = PlaceIn(b, a, k, next);
    if (other == b.object.size()) continue;
    next = other + 1;
    ++common;
    if (!(a.Weight(k) > 0.0 && b.Weight(other) > 0.0)) continue;
    const cv::Point2d away = a.image[k] - b.image[other];
    squares += away.dot(away);
    count += 1.0;
  }
  if (squares > most || 2 * common < std::min(a.object.size(), b.object.size())) return Likeness::Different;
  if (count == 0.0) return Likeness::Unknown;
  return squares <= limits * count ? Likeness::Like : Likeness::Different;
}

bool AreLike(const TargetView& a, const TargetView& b, const std::vector<double>& limits) {
  bool like = false;
  for (size_t camera = 0; camera < limits.size(); ++camera) {
    const Likeness likeness = Compare(a.observations[camera], b.observations[camera], limits[camera]);
    if (likeness == Likeness::Different) return false;
    like = like || likeness == Likeness::Like;
  }
  return like;
}

}  // namespace

std::vector<size_t> GroupsOf(const std::vector<TargetView>& views, const Rig& rig) {
  // Each view is compared with the first ones of the groups only: a sheet that moves on slowly is then not
  // in one place.
  std::vector<double> limits;
  for (size_t camera = 0; camera < rig.cameras.size(); ++camera) {
    limits.push_back(LIKE * WidthOf(views, rig, camera));
  }
  std::vector<size_t> groups;
  std::vector<const TargetView*> firsts;
  for (const TargetView& view : views) {
    const auto found = std::find_if(firsts.begin(), firsts.end(),
                                    [&](const TargetView* first) { return AreLike(*first, view, limits); });
    groups.push_back(static_cast<size_t>(found - firsts.begin()));
    if (found == firsts.end()) firsts.push_back(&view);
  }
  return groups;
}

size_t CountOfGroups(const std::vector<size_t>& groups) {
  return groups.empty() ? 0 : *std::max_element(groups.begin(), groups.end()) + 1;
}

}  // namespace velmora::solver
