/// The records of a calibrator as the solver takes them.
#include "solver/Target.h"

#include <cmath>

namespace velmora::solver {

namespace {

double Narrow(double value) {
  CV_Assert(std::isfinite(value));
  return static_cast<double>(static_cast<float>(value));
}

}  // namespace

Target TargetOf(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                const std::vector<std::vector<cv::Point2d>>& imagePoints) {
  CV_Assert(!objectPoints.empty() && objectPoints.size() == imagePoints.size());
  Target target;
  for (size_t i = 0; i < objectPoints.size(); ++i) {
    CV_Assert(objectPoints[i].size() >= 4 && objectPoints[i].size() == imagePoints[i].size());
    View view;
    cv::Point3d sum;
    for (const cv::Point3d& point : objectPoints[i]) {
      CV_Assert(point.z == 0.0);
      view.object.emplace_back(Narrow(point.x), Narrow(point.y), 0.0);
      sum += view.object.back();
    }
    const cv::Point3d middle = sum * (1.0 / static_cast<double>(view.object.size()));
    for (cv::Point3d& point : view.object) point -= middle;
    for (const cv::Point2d& point : imagePoints[i]) view.image.emplace_back(Narrow(point.x), Narrow(point.y));
    target.views.push_back(std::move(view));
    target.middles.emplace_back(middle.x, middle.y, middle.z);
  }
  return target;
}

}  // namespace velmora::solver
