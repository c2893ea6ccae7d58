/// What the cameras of a rig saw.
#include "batch/RigViews.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "batch/ViewSelection.h"
#include "common/SheetFile.h"

namespace batch {

RigViews::RigViews(const Arguments& arguments, std::vector<std::string> cameras)
    : arguments_(arguments), names_{std::move(cameras), {}}, grids_(names_.cameras.size()) {
  for (size_t i = 0; i < grids_.size(); ++i) searches_.emplace_back(arguments_);
}

void RigViews::Look(const RunContext& context) {
  TogetherStream stream = RigImages(arguments_, names_.cameras);
  SearchSteps steps;
  steps.next = [&](std::vector<NamedImage>& inputs) { return stream.Next(inputs); };
  steps.take = [&](SearchedImages& images) { return Take(images); };
  steps.expected = [&] { return stream.ExpectedCount(); };
  steps.firstSize = [&](size_t camera) {
    return FirstSize(ExpandInputs({arguments_.rig[camera]}), arguments_.sampling);
  };
  SearchShared(arguments_, Wanted::Views, steps, context);
  for (size_t i = 0; i < names_.cameras.size(); ++i) {
    if (searches_[i].Engine() == nullptr) {
      throw InputError("no image of camera '" + names_.cameras[i] + "' could be read");
    }
  }
}

std::string RigViews::Take(SearchedImages& searched) {
  std::vector<std::string> images(names_.cameras.size());
  std::string finders;
  std::string fault;
  for (size_t i = 0; i < names_.cameras.size(); ++i) {
    const NamedImage& input = searched.inputs[i];
    if (input.name.empty()) continue;
    SearchOutcome& outcome = searched.outcomes[i];
    const std::string why = searches_[i].FaultOf(input, outcome);
    if (!why.empty()) {
      rejected_.push_back({input.name, "camera '" + names_.cameras[i] + "': " + why});
      if (fault.empty()) fault = why;
      outcome.view = {};
    } else {
      images[i] = input.name;
      finders += (finders.empty() ? "" : ", ") + names_.cameras[i];
    }
  }
  if (finders.empty()) return fault;
  names_.images.push_back(std::move(images));
  numbers_.push_back(searched.inputs.front().snapshot);
  for (size_t i = 0; i < names_.cameras.size(); ++i) {
    grids_[i].push_back(std::move(searched.outcomes[i].view));
  }
  return "grid found by " + finders;
}

size_t RigViews::CountOf(size_t camera) const {
  const auto& views = grids_[camera];
  return static_cast<size_t>(
      std::count_if(views.begin(), views.end(), [](const GridView& view) { return !view.points.empty(); }));
}

void RigViews::Select() {
  const auto chosen = SelectSpreadViews(Records().imagePoints, arguments_.grid, Frames(),
                                        static_cast<size_t>(arguments_.maxViews));
  const std::set<size_t> isChosen(chosen.begin(), chosen.end());
  for (size_t moment = 0; moment < names_.images.size(); ++moment) {
    if (isChosen.count(moment) > 0) continue;
    notes_[numbers_[moment]].reason = common::NotNeeded("", arguments_.maxViews).reason;
    for (size_t i = 0; i < names_.cameras.size(); ++i) {
      if (!names_.images[moment][i].empty()) {
        rejected_.push_back(common::NotNeeded(names_.Image(moment, i), arguments_.maxViews));
      }
    }
  }
  const auto keep = [&](auto& all) {
    std::decay_t<decltype(all)> kept;
    for (const size_t moment : chosen) kept.push_back(std::move(all[moment]));
    all = std::move(kept);
  };
  keep(names_.images);
  keep(numbers_);
  for (auto& camera : grids_) keep(camera);
}

std::map<int, ViewNote> RigViews::Notes(const velmora::RigResult& result) const {
  std::map<int, ViewNote> notes = notes_;
  for (size_t moment = 0; moment < std::min(numbers_.size(), result.views.size()); ++moment) {
    double squares = 0.0;
    int images = 0;
    for (const double rms : result.views[moment].rms) {
      if (rms < 0.0) continue;
      squares += rms * rms;
      ++images;
    }
    ViewNote& note = notes[numbers_[moment]];
    if (images > 0) note.rms = std::sqrt(squares / images);
    if (!result.views[moment].used) note.reason = common::DISAGREES;
  }
  for (const velmora::RigLeftOut& left : result.leftOut) {
    if (left.point < 0) notes[numbers_.at(left.view)].reason = common::DISAGREES;
  }
  return notes;
}

velmora::RigRecords RigViews::Records() const {
  velmora::RigRecords records;
  records.objectPoints.assign(names_.images.size(), common::GridPoints(arguments_.grid, UnitOf(arguments_)));
  for (const std::vector<GridView>& camera : grids_) {
    records.imagePoints.emplace_back();
    records.weights.emplace_back();
    records.deviations.emplace_back();
    for (const GridView& view : camera) {
      records.imagePoints.back().push_back(view.points);
      records.weights.back().push_back(view.weights);
      records.deviations.back().push_back(view.deviations);
    }
  }
  records.imageSizes = Frames();
  return records;
}

std::vector<Centres> RigViews::CirclesOf(size_t camera) const {
  std::vector<Centres> seen;
  for (const GridView& view : grids_[camera]) seen.push_back(view.Seen());
  return seen;
}

std::vector<cv::Size> RigViews::Frames() const {
  std::vector<cv::Size> frames;
  for (const ImageSearch& search : searches_) frames.push_back(search.FrameSize());
  return frames;
}

std::string RigViews::OtherGridText() {
  for (ImageSearch& search : searches_) {
    std::string text = names_.images.empty() ? search.OtherGridText() : "";
    if (!text.empty()) return text;
  }
  return "";
}

}  // namespace batch
