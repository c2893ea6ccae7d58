/// The records of a calibrator as the solver takes them.
#include "solver/Target.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velmora::solver {

namespace {

constexpr size_t FEWEST_POINTS = 4;

double Narrow(double value) {
  CV_Assert(std::isfinite(value));
  return static_cast<double>(static_cast<float>(value));
}

using Points = std::vector<cv::Point3d>;

cv::Point3d MiddleOf(const Points& points) {
  cv::Point3d sum;
  for (const cv::Point3d& point : points) {
    CV_Assert(std::isfinite(point.x) && std::isfinite(point.y) && point.z == 0.0);
    sum += point;
  }
  return sum * (1.0 / static_cast<double>(points.size()));
}

bool IsPartOf(const Points& whole, const Points& points) {
  if (points == whole) return true;
  return std::all_of(points.begin(), points.end(), [&](const cv::Point3d& point) {
    return std::find(whole.begin(), whole.end(), point) != whole.end();
  });
}

/// The points about a middle, as exact as they are: single precision would lose what is far from the origin.
Points Centred(Points points, const cv::Point3d& middle) {
  for (cv::Point3d& point : points) point -= middle;
  return points;
}

void RequireEach(const ImagePoints& imagePoints) {
  for (const auto& points : imagePoints) CV_Assert(!points.empty());
}

/// Each list at most as long as that of the object points.
template <typename Lists>
Lists Matching(Lists lists, const ObjectPoints& objectPoints) {
  for (size_t i = 0; i < std::min(lists.size(), objectPoints.size()); ++i) {
    lists[i].resize(std::min(lists[i].size(), objectPoints[i].size()));
  }
  return lists;
}

/// Gives the points of the target their deviations beside each other.
void TakeDeviations(const std::vector<PointDeviations>& deviations, Target& target) {
  const std::vector<PointDeviations> relative = RelativeDeviations(deviations);
  for (size_t camera = 0; camera < relative.size(); ++camera) {
    const PointDeviations& views = relative[camera];
    CV_Assert(views.empty() || views.size() == target.views.size());
    for (size_t i = 0; i < views.size(); ++i) {
      CV_Assert(camera < target.views[i].observations.size());
      Observation& observation = target.views[i].observations[camera];
      CV_Assert(views[i].empty() || views[i].size() == observation.image.size());
      observation.deviations = views[i];
    }
  }
  target.deviations = deviations;
}

}  // namespace

Target TargetOf(const ObjectPoints& objectPoints, const std::vector<ImagePoints>& cameras,
                const std::vector<PointDeviations>& deviations) {
  CV_Assert(!objectPoints.empty() && !cameras.empty());
  for (const ImagePoints& camera : cameras) CV_Assert(camera.size() == objectPoints.size());
  Target target;
  const Points& most = *std::max_element(objectPoints.begin(), objectPoints.end(),
                                         [](const auto& a, const auto& b) { return a.size() < b.size(); });
  for (size_t i = 0; i < objectPoints.size(); ++i) {
    CV_Assert(objectPoints[i].size() >= FEWEST_POINTS);
    const cv::Point3d own = MiddleOf(objectPoints[i]);
    // Parts of a target lie where they do on the whole.
    const cv::Point3d middle = IsPartOf(most, objectPoints[i]) ? MiddleOf(most) : own;
    const Points object = Centred(objectPoints[i], middle);
    TargetView view;
    bool isObserved = false;
    for (const ImagePoints& camera : cameras) {
      Observation observation;
      for (const cv::Point2d& point : camera[i])
        observation.image.emplace_back(Narrow(point.x), Narrow(point.y));
      if (!observation.image.empty()) {
        CV_Assert(observation.image.size() == object.size());
        observation.object = object;
        isObserved = true;
      }
      view.observations.push_back(std::move(observation));
    }
    CV_Assert(isObserved);
    target.views.push_back(std::move(view));
    target.middles.emplace_back(middle.x, middle.y, middle.z);
  }
  TakeDeviations(deviations, target);
  return target;
}

Target TargetOf(const ObjectPoints& objectPoints, const ImagePoints& imagePoints,
                const PointDeviations& deviations) {
  RequireEach(imagePoints);
  return TargetOf(objectPoints, std::vector<ImagePoints>{imagePoints},
                  std::vector<PointDeviations>{deviations});
}

Target PairTargetOf(const ObjectPoints& objectPoints, const ImagePoints& leftPoints,
                    const ImagePoints& rightPoints, const std::vector<PointDeviations>& deviations) {
  const std::vector<ImagePoints> cameras = {Matching(leftPoints, objectPoints),
                                            Matching(rightPoints, objectPoints)};
  for (const ImagePoints& camera : cameras) RequireEach(camera);
  std::vector<PointDeviations> matching;
  for (const PointDeviations& camera : deviations) matching.push_back(Matching(camera, objectPoints));
  return TargetOf(objectPoints, cameras, matching);
}

}  // namespace velmora::solver
