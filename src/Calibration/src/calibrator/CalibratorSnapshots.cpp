/// The calibrator's public face, its snapshots: which are taken, and how.
#include "Calibrator.h"
#include "Log.h"
#include "calibrator/CalibratorImpl.h"
#include "calibrator/ObservedPoints.h"
#include "calibrator/SnapshotFits.h"

using namespace velmora;

// ---- Snapshots of one camera.

bool Calibrator::AddPoints() {
  Impl::Kept kept;
  const bool added = impl_->detector.WithLast([&](const std::vector<CameraSnapshot>& last) {
    if (!impl_->IsMonocular() || isCalibrating()) return false;
    if (!last.front().points.empty()) return impl_->AddSnapshot(last.front(), kept) > 0;
    Log::debug("Pattern not detected. No points added.");
    return false;
  });
  impl_->Measure(kept);
  return added;
}

void Calibrator::AddPoints(const std::vector<cv::Point2d>& points) {
  impl_->detector.WithLast([&](const std::vector<CameraSnapshot>& last) {
    if (!impl_->IsMonocular() || points.empty()) return false;
    return impl_->snapshots.Add({{points, last.front().frame, {}}}, Snapshots::EarlierRms::Drop) > 0;
  });
}

bool Calibrator::AddPoints(const std::vector<cv::Point2d>& points, const std::vector<double>& weights) {
  return AddPoints(points, weights, {});
}

bool Calibrator::AddPoints(const std::vector<cv::Point2d>& points, const std::vector<double>& weights,
                           const std::vector<double>& deviations) {
  Impl::Kept kept;
  return impl_->detector.WithLast([&](const std::vector<CameraSnapshot>& last) {
    return impl_->IsMonocular() && impl_->AddWeighted({{points, last.front().frame, weights, deviations}},
                                                      Snapshots::EarlierRms::Drop, kept);
  });
}

bool Calibrator::AddSeen(std::vector<cv::Point2d>& seen) {
  seen.clear();
  Impl::Kept kept;
  const bool added = impl_->detector.WithSeen([&](const std::vector<CameraSnapshot>& last) {
    const CameraSnapshot& view = last.front();
    if (!impl_->IsMonocular() || isCalibrating() || view.points.empty()) return false;
    return view.weights.empty() ? impl_->AddSnapshot(view, kept) > 0
                                : impl_->AddWeighted({view}, Snapshots::EarlierRms::Drop, kept);
  });
  impl_->Measure(kept);
  if (added) seen = SeenPointsOf(kept.views.front());
  return added;
}

bool Calibrator::HasSeen() {
  bool seen = false;
  impl_->detector.WithSeen([&](const std::vector<CameraSnapshot>& last) {
    const bool refused = impl_->IsMonocular() ? isCalibrating() : impl_->RefusesPair();
    seen = !refused && !last.front().points.empty();
    return false;  // it is only looked at
  });
  return seen;
}

bool Calibrator::AddPoints(cv::Mat& frame, const bool& draw) {
  std::vector<cv::Point2d> points;
  DetectPoints(frame, points, draw);
  if (impl_->guidance.Current() == nullptr) AddPoints();
  return true;
}

// ---- Snapshots of a pair.

bool Calibrator::AddStereoPoints() {
  Impl::Kept kept;
  const bool added = impl_->detector.WithLast([&](const std::vector<CameraSnapshot>& last) {
    if (impl_->RefusesPair()) return false;
    if (last.front().points.empty() || last.back().points.empty()) {
      Log::debug("Pattern not detected in both pictures. No points added.");
      return false;
    }
    return impl_->AddPairSnapshot(last, kept) > 0;
  });
  impl_->Measure(kept);
  return added;
}

bool Calibrator::AddSeen(std::vector<cv::Point2d>& left, std::vector<cv::Point2d>& right) {
  left.clear();
  right.clear();
  Impl::Kept kept;
  const bool added = impl_->detector.WithSeen([&](const std::vector<CameraSnapshot>& last) {
    if (impl_->RefusesPair() || last.front().points.empty()) return false;
    return last.front().weights.empty() ? impl_->AddPairSnapshot(last, kept) > 0
                                        : impl_->AddWeighted(last, Snapshots::EarlierRms::Drop, kept);
  });
  impl_->Measure(kept);
  if (!added) return false;
  left = SeenPointsOf(kept.views.front());
  right = SeenPointsOf(kept.views.back());
  return true;
}

void Calibrator::AddStereoPoints(const std::vector<cv::Point2d>& leftPoints,
                                 const std::vector<cv::Point2d>& rightPoints) {
  impl_->detector.WithLast([&](const std::vector<CameraSnapshot>& last) {
    if (impl_->RefusesPair()) return false;
    impl_->snapshots.Add({{leftPoints, last.front().frame, {}}, {rightPoints, last.back().frame, {}}},
                         Snapshots::EarlierRms::Keep);
    return false;  // the last detection is another, and stays
  });
}

bool Calibrator::AddStereoPoints(const std::vector<cv::Point2d>& leftPoints,
                                 const std::vector<double>& leftWeights,
                                 const std::vector<cv::Point2d>& rightPoints,
                                 const std::vector<double>& rightWeights) {
  return AddStereoPoints(leftPoints, leftWeights, {}, rightPoints, rightWeights, {});
}

bool Calibrator::AddStereoPoints(const std::vector<cv::Point2d>& leftPoints,
                                 const std::vector<double>& leftWeights,
                                 const std::vector<double>& leftDeviations,
                                 const std::vector<cv::Point2d>& rightPoints,
                                 const std::vector<double>& rightWeights,
                                 const std::vector<double>& rightDeviations) {
  bool added = false;
  Impl::Kept kept;
  impl_->detector.WithLast([&](const std::vector<CameraSnapshot>& last) {
    if (impl_->RefusesPair()) return false;
    added = impl_->AddWeighted({{leftPoints, last.front().frame, leftWeights, leftDeviations},
                                {rightPoints, last.back().frame, rightWeights, rightDeviations}},
                               Snapshots::EarlierRms::Keep, kept);
    return false;  // the last detection is another, and stays
  });
  return added;
}

bool Calibrator::AddStereoPoints(cv::Mat& left, cv::Mat& right, const bool& draw) {
  Impl::Kept kept;
  const bool added = impl_->detector.CollectPair(
      left, right, draw, [this] { return impl_->RefusesPair(); },
      [&](const std::vector<CameraSnapshot>& found) {
        if (impl_->snapshots.Add(found, Snapshots::EarlierRms::Keep, kept.place) == 0) return false;
        kept.views = found;
        return true;
      });
  impl_->Measure(kept);
  return added;
}

// ---- Snapshots that are there.

GridSnapshot Calibrator::GetSnapshot(const int& number) {
  const auto snapshots = impl_->snapshots.Current().snapshots;
  const size_t place = PlaceOf(number, *snapshots);
  GridSnapshot snapshot;
  for (const SnapshotList::Camera& camera : snapshots->cameras) {
    snapshot.cameras.push_back(
        {camera.points[place], camera.weights[place], camera.deviations[place], camera.frames[place]});
  }
  return snapshot;
}

bool Calibrator::AddSnapshot(const GridSnapshot& snapshot) {
  if (snapshot.cameras.empty() || snapshot.cameras.size() != impl_->snapshots.CameraCount()) {
    Log::error("No points added. A snapshot of %d camera(s) is needed.",
               static_cast<int>(impl_->snapshots.CameraCount()));
    return false;
  }
  std::vector<CameraSnapshot> views;
  for (const GridSnapshot::Camera& camera : snapshot.cameras) {
    views.push_back({camera.centres, camera.frame, camera.weights, camera.deviations});
    if (camera.weights.empty()) views.back().weights.assign(camera.centres.size(), 1.0);
  }
  Impl::Kept kept;
  return impl_->AddWeighted(std::move(views), Snapshots::EarlierRms::Drop, kept);
}

bool Calibrator::RemoveSnapshot(const int& number) {
  return impl_->snapshots.Remove(number);
}

SnapshotFit Calibrator::GetSnapshotFit(const int& number) {
  const Snapshots::Moment now = impl_->snapshots.Current();
  const size_t place = PlaceOf(number, *now.snapshots);
  return now.status == STATUS_PROGRESS ? SnapshotFit{} : FitOf(now, place);
}
