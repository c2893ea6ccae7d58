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

/// The points about their middle.
std::vector<cv::Point3d> Centred(const std::vector<cv::Point3d>& points, cv::Vec3d& middle) {
  std::vector<cv::Point3d> centred;
  cv::Point3d sum;
  for (const cv::Point3d& point : points) {
    CV_Assert(point.z == 0.0);
    centred.emplace_back(Narrow(point.x), Narrow(point.y), 0.0);
    sum += centred.back();
  }
  const cv::Point3d mean = sum * (1.0 / static_cast<double>(points.size()));
  for (cv::Point3d& point : centred) point -= mean;
  middle = {mean.x, mean.y, mean.z};
  return centred;
}

void RequireEach(const ImagePoints& imagePoints) {
  for (const auto& points : imagePoints) CV_Assert(!points.empty());
}

/// Each list at most as long as that of the object points.
ImagePoints Matching(ImagePoints points, const ObjectPoints& objectPoints) {
  for (size_t i = 0; i < std::min(points.size(), objectPoints.size()); ++i) {
    points[i].resize(std::min(points[i].size(), objectPoints[i].size()));
  }
  return points;
}

}  // namespace

Target TargetOf(const ObjectPoints& objectPoints, const std::vector<ImagePoints>& cameras) {
  CV_Assert(!objectPoints.empty() && !cameras.empty());
  for (const ImagePoints& camera : cameras) CV_Assert(camera.size() == objectPoints.size());
  Target target;
  for (size_t i = 0; i < objectPoints.size(); ++i) {
    CV_Assert(objectPoints[i].size() >= FEWEST_POINTS);
    cv::Vec3d middle;
    const std::vector<cv::Point3d> object = Centred(objectPoints[i], middle);
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
    target.middles.push_back(middle);
  }
  return target;
}

Target TargetOf(const ObjectPoints& objectPoints, const ImagePoints& imagePoints) {
  RequireEach(imagePoints);
  return TargetOf(objectPoints, std::vector<ImagePoints>{imagePoints});
}

Target PairTargetOf(const ObjectPoints& objectPoints, const ImagePoints& leftPoints,
                    const ImagePoints& rightPoints) {
  const std::vector<ImagePoints> cameras = {Matching(leftPoints, objectPoints),
                                            Matching(rightPoints, objectPoints)};
  for (const ImagePoints& camera : cameras) RequireEach(camera);
  return TargetOf(objectPoints, cameras);
}

}  // namespace velmora::solver
