/// A calibrator's snapshots, its status and its result, which change together.
#include "calibrator/Snapshots.h"

#include <stdexcept>
#include <string>

#include "Log.h"

namespace velmora {

namespace {

std::shared_ptr<const SnapshotList> NoSnapshots(size_t cameras) {
  auto list = std::make_shared<SnapshotList>();
  list->cameras.resize(cameras);
  return list;
}

}  // namespace

size_t PlaceOf(int number, const SnapshotList& snapshots) {
  const auto place = static_cast<size_t>(number);
  if (number >= 0 && place < snapshots.Count()) return place;
  throw std::out_of_range("There is no snapshot " + std::to_string(number) + ": there are " +
                          std::to_string(snapshots.Count()) + ", counted from 0.");
}

Snapshots::Snapshots(std::vector<cv::Point3d> target, size_t cameras)
    : target_(std::move(target)), cameraCount_(cameras) {
  now_.snapshots = NoSnapshots(cameraCount_);
}

Snapshots::Moment Snapshots::Current() const {
  const std::lock_guard<std::mutex> lock(lock_);
  return now_;
}

size_t Snapshots::Count() const {
  const std::lock_guard<std::mutex> lock(lock_);
  return now_.snapshots->Count();
}

int Snapshots::Status() const {
  const std::lock_guard<std::mutex> lock(lock_);
  return now_.status;
}

void Snapshots::SetStatus(int status) {
  const std::lock_guard<std::mutex> lock(lock_);
  now_.status = status;
}

size_t Snapshots::Add(std::vector<CameraSnapshot> views, EarlierRms earlier) {
  Place place;
  return Add(std::move(views), earlier, place);
}

size_t Snapshots::Add(std::vector<CameraSnapshot> views, EarlierRms earlier, Place& place) {
  CV_Assert(views.size() == cameraCount_);
  const std::lock_guard<std::mutex> lock(lock_);
  if (now_.status == STATUS_PROGRESS) return 0;
  auto list = std::make_shared<SnapshotList>(*now_.snapshots);
  list->target.push_back(target_);
  for (size_t i = 0; i < views.size(); ++i) {
    list->cameras[i].points.push_back(std::move(views[i].points));
    list->cameras[i].frames.push_back(std::move(views[i].frame));
    list->cameras[i].weights.push_back(std::move(views[i].weights));
    list->cameras[i].deviations.push_back(std::move(views[i].deviations));
  }
  now_.snapshots = std::move(list);
  if (now_.snapshots->Count() >= ENOUGH) now_.status = STATUS_READY;
  if (earlier == EarlierRms::Drop) now_.rms = -1.0F;  // the result stays, but describes other snapshots
  place = {now_.snapshots->Count(), era_};
  return place.number;
}

bool Snapshots::Remove(int number) {
  const std::lock_guard<std::mutex> lock(lock_);
  if (now_.status == STATUS_PROGRESS) return false;
  const auto place = static_cast<std::ptrdiff_t>(PlaceOf(number, *now_.snapshots));
  auto list = std::make_shared<SnapshotList>(*now_.snapshots);
  list->target.erase(list->target.begin() + place);
  for (SnapshotList::Camera& camera : list->cameras) {
    camera.points.erase(camera.points.begin() + place);
    camera.frames.erase(camera.frames.begin() + place);
    camera.weights.erase(camera.weights.begin() + place);
    camera.deviations.erase(camera.deviations.begin() + place);
  }
  ++list->removals;
  ++era_;
  now_.snapshots = std::move(list);
  now_.status = now_.snapshots->Count() >= ENOUGH ? STATUS_READY : STATUS_NOT_READY;
  now_.rms = -1.0F;  // the result stays, but is of other snapshots
  return true;
}

bool Snapshots::Improve(const Place& place, const std::vector<CameraSnapshot>& views) {
  CV_Assert(views.size() == cameraCount_);
  const std::lock_guard<std::mutex> lock(lock_);
  if (place.era != era_ || place.number == 0) return false;
  auto list = std::make_shared<SnapshotList>(*now_.snapshots);
  for (size_t i = 0; i < views.size(); ++i) {
    list->cameras[i].points[place.number - 1] = views[i].points;
    list->cameras[i].deviations[place.number - 1] = views[i].deviations;
  }
  now_.snapshots = std::move(list);
  return true;
}

void Snapshots::Reset() {
  const std::lock_guard<std::mutex> lock(lock_);
  if (now_.status == STATUS_PROGRESS) return;
  ++era_;
  now_ = Moment{};
  now_.snapshots = NoSnapshots(cameraCount_);
  failed_ = false;
}

bool Snapshots::RequireEnough() const {
  const size_t count = Count();
  if (count >= ENOUGH) return true;
  Log::error("Can't compute %scalibration. At least 5 pictures are needed. Current: %d",
             cameraCount_ > 1 ? "stereo " : "", static_cast<int>(count));
  return false;
}

std::unique_ptr<Snapshots::Computation> Snapshots::Begin() {
  if (!RequireEnough()) return nullptr;
  const std::lock_guard<std::mutex> lock(lock_);
  // A Reset may have come between.
  if (now_.status == STATUS_PROGRESS || now_.snapshots->Count() < ENOUGH) return nullptr;
  std::unique_ptr<Computation> computation(new Computation(*this, now_.snapshots, now_.status));
  now_.status = STATUS_PROGRESS;
  ++era_;
  cancelled_ = false;
  return computation;
}

void Snapshots::Cancel() {
  const std::lock_guard<std::mutex> lock(lock_);
  if (now_.status == STATUS_PROGRESS) cancelled_ = true;
}

bool Snapshots::HasFailed() const {
  const std::lock_guard<std::mutex> lock(lock_);
  return failed_;
}

void Snapshots::ForgetFailure() {
  const std::lock_guard<std::mutex> lock(lock_);
  failed_ = false;
}

int Snapshots::Completed() const {
  const std::lock_guard<std::mutex> lock(lock_);
  return completed_;
}

void Snapshots::NoteEndWithoutResult(int completedBefore) {
  const std::lock_guard<std::mutex> lock(lock_);
  if (completed_ == completedBefore && now_.status != STATUS_PROGRESS) failed_ = true;
}

void Snapshots::KeepRefused(const StereoIntrinsics& intrinsics) {
  const std::lock_guard<std::mutex> lock(lock_);
  if (now_.status != STATUS_PROGRESS) now_.refused = intrinsics;
}

void Snapshots::Computation::Publish(std::shared_ptr<const Result> result) {
  const std::lock_guard<std::mutex> lock(owner_.lock_);
  owner_.now_.rms = result->rms;
  owner_.now_.result = std::move(result);
  owner_.now_.refused.reset();
  owner_.now_.status = STATUS_COMPLETED;
  owner_.failed_ = false;
  ++owner_.completed_;
  published_ = true;
}

Snapshots::Computation::~Computation() {
  if (published_) return;
  const std::lock_guard<std::mutex> lock(owner_.lock_);
  owner_.now_.status = statusBefore_;
  owner_.failed_ = true;
}

}  // namespace velmora
