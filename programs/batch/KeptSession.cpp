/// The session that keeps what a run finds.
#include "batch/KeptSession.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <utility>

#include "batch/InputFiles.h"
#include "batch/MomentText.h"
#include "batch/RigCameras.h"
#include "batch/SessionArguments.h"
#include "batch/SessionReplay.h"
#include "batch/SessionTable.h"
#include "batch/TogetherStream.h"
#include "common/ResultFile.h"

namespace batch {

namespace {

namespace fs = std::filesystem;

const char* const LOG = "searched.jsonl";
const char* const NOTES = "views.json";

/// What the session says against an action, as a fault of the input.
template <typename Action>
auto Ask(const Action& action) {
  try {
    return action();
  } catch (const std::runtime_error& fault) {
    throw InputError(fault.what());
  } catch (const std::invalid_argument& fault) {
    throw InputError(fault.what());
  }
}

std::string Text(const cv::Size& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

LoggedMoment MomentOf(const SearchedImages& images, bool withPaths) {
  LoggedMoment moment;
  for (size_t i = 0; i < images.inputs.size(); ++i) {
    const NamedImage& input = images.inputs[i];
    const SearchOutcome& outcome = images.outcomes[i];
    if (input.name.empty()) {
      moment.emplace_back();
    } else {
      moment.push_back({input.name, input.origin, withPaths ? input.stamp : "", outcome.size, outcome.fault});
    }
  }
  return moment;
}

/// What the session keeps of an image: pixels of what is no file by itself, where copies are wanted.
velmora::SessionImage ImageOf(const NamedImage& input, const Arguments& arguments, const cv::Size& size) {
  velmora::SessionImage image;
  if (arguments.noImages || input.file.empty()) return image;
  const bool wholeFile = input.frame < 0 && arguments.split == common::Split::None;
  if (wholeFile && fs::is_regular_file(input.file)) {
    image.path = input.file;
    image.copy = arguments.keepImages;
  } else if (arguments.keepImages && input.image.size() == size) {
    image.pixels = input.image;
  }
  return image;
}

}  // namespace

void KeptSession::Open(Arguments& arguments) {
  std::error_code error;
  if (!fs::exists(fs::symlink_status(arguments.session, error))) {
    if (!arguments.HasInputs()) {
      throw InputError("there is no session '" + arguments.session + "': name images to begin it");
    }
    common::CheckWritable(arguments.session);
    return;
  }
  // Results come from what was observed; whether images have changed since does not matter to them.
  session_ = Ask([&] { return velmora::Session::Open(arguments.session, velmora::SessionOptions{false}); });
  log_ = SearchLog(session_->PathFor(LOG));
  TakeOver(session_->Settings(), log_.Header(), arguments);
}

void KeptSession::Begin(Arguments& arguments) {
  search_ = arguments;
  arguments.frame = {};
  const SearchHeader header = HeaderFor(search_);
  kind_ = header.kind;
  cameras_ = header.cameras;
  inputSizes_.resize(search_.Cameras());
  hasImage_.resize(search_.Cameras());
  if (session_ == nullptr) return log_.Set(header);
  if (log_.Header()) CheckParts(*log_.Header(), search_);
  for (const std::string& warning : session_->Warnings()) std::cerr << warning << "\n";
  const auto snapshots = session_->Snapshots();
  for (const velmora::StoredSnapshot& snapshot : snapshots) {
    if (snapshot.fault.empty()) continue;
    std::cerr << "View " << snapshot.number << (snapshot.name.empty() ? "" : " (" + snapshot.name + ")")
              << " is damaged and left out. " << snapshot.fault << "\n";
  }
  known_ = KnownImages(snapshots, log_);
  unmatched_ = UnmatchedSnapshots(snapshots);
  origins_ = ImageOrigins(log_);
  for (const LoggedMoment& moment : log_.Moments()) {
    for (size_t i = 0; i < std::min(moment.size(), inputSizes_.size()); ++i) {
      if (inputSizes_[i].empty() && moment[i].fault.empty()) inputSizes_[i] = moment[i].size;
    }
  }
  if (search_.HasInputs() && !log_.Header()) log_.Set(header);
}

void KeptSession::CheckSizes(SearchedImages& images) {
  for (size_t i = 0; i < images.inputs.size(); ++i) {
    SearchOutcome& outcome = images.outcomes[i];
    if (images.inputs[i].name.empty() || images.inputs[i].known || outcome.size.empty()) continue;
    cv::Size& expected = inputSizes_[i];
    const bool first = !hasImage_[i];
    hasImage_[i] = true;
    const cv::Size frame = FrameSizeOf(search_, outcome.size);
    const cv::Size sessionFrame = session_ != nullptr ? session_->Settings().imageSizes[i] : frame;
    if (first && ((!expected.empty() && outcome.size != expected) || frame != sessionFrame)) {
      throw InputError(Named() + " is of images of " + Text(expected.empty() ? sessionFrame : expected) +
                       " pixels; '" + images.inputs[i].name + "' has " + Text(outcome.size));
    }
    if (expected.empty()) expected = outcome.size;
    if (outcome.size == expected) continue;
    outcome.fault = "of another size than the first (" + Text(expected) + ")";
    outcome.view = {};
  }
}

std::string KeptSession::Take(SearchedImages& images, const SearchSteps& steps) {
  CheckSizes(images);
  const LoggedMoment moment =
      MomentOf(images, session_ == nullptr ? !search_.noImages : session_->Settings().keepsImages);
  bool known = true;
  for (const NamedImage& input : images.inputs) {
    if (input.name.empty()) continue;
    known = known && input.known;
    ++(input.known ? recognised_ : searched_);
  }
  if (HasView(moment) && session_ == nullptr) Create(steps);
  // First, so that no view is in the session of whose image the log knows nothing.
  log_.Add(moment);
  if (HasView(moment)) Ask([&] { Store(images); });
  constexpr int OFTEN = 25;
  constexpr int USUAL = 30;
  if (session_ != nullptr && moments_ % OFTEN == 0) {
    WarnOfTheDisk(steps.expected() > 0 ? std::max(1, steps.expected() - moments_) : USUAL);
  }
  ++moments_;
  return TextOf(moment, kind_, cameras_) + (known ? ", as the session has it" : "");
}

void KeptSession::Create(const SearchSteps& steps) {
  std::vector<cv::Size> frames;
  for (size_t i = 0; i < inputSizes_.size(); ++i) {
    if (inputSizes_[i].empty() && steps.firstSize) inputSizes_[i] = steps.firstSize(i);
    if (inputSizes_[i].empty())
      throw InputError("no image of camera " + std::to_string(i) + " could be read");
    frames.push_back(FrameSizeOf(search_, inputSizes_[i]));
  }
  if (kind_ == "pair" && frames[0] != frames[1]) {
    throw InputError("the images of the two cameras differ in size: give --width and --height");
  }
  session_ = Ask([&] { return velmora::Session::Create(search_.session, SettingsFor(search_, frames)); });
  log_.MoveTo(session_->PathFor(LOG));
}

void KeptSession::Store(const SearchedImages& images) {
  velmora::SessionSnapshot snapshot;
  const auto& sizes = session_->Settings().imageSizes;
  for (size_t i = 0; i < images.inputs.size(); ++i) {
    const NamedImage& input = images.inputs[i];
    const GridView& view = images.outcomes[i].view;
    snapshot.origins.push_back(input.origin);
    snapshot.observations.push_back({view.points, view.weights, view.deviations});
    snapshot.images.push_back(ImageOf(input, search_, sizes[i]));
  }
  if (unmatched_.Take(snapshot.origins) != 0) return;
  snapshot.name = NameTogether(images.inputs);
  try {
    session_->Add(snapshot);
  } catch (const std::invalid_argument&) {
    // A path that is no UTF-8 text cannot be noted. What was found counts without it.
    snapshot.images.clear();
    session_->Add(snapshot);
  }
}

void KeptSession::WarnOfTheDisk(int snapshots) {
  if (warned_) return;
  const std::string warning = Ask([&] { return session_->DiskWarning(snapshots); });
  if (warning.empty()) return;
  warned_ = true;
  news_ += warning + "\n";
}

void KeptSession::Conclude() {
  if (session_ == nullptr) return;
  Decide();
  const auto snapshots = session_->Snapshots();
  const auto used = std::count_if(snapshots.begin(), snapshots.end(),
                                  [](const velmora::StoredSnapshot& snapshot) { return snapshot.IsUsed(); });
  std::cerr << "The session '" << search_.session << "' has " << used << (used == 1 ? " view" : " views")
            << " in " << MegabytesText(session_->BytesTaken()) << "; " << searched_
            << (searched_ == 1 ? " image" : " images") << " searched, " << recognised_ << " known already\n";
  WarnOfTheDisk(1);
  std::cerr << News();
}

std::vector<int> KeptSession::NumbersOf(const std::vector<std::string>& names) const {
  std::vector<int> numbers;
  const auto snapshots = session_->Snapshots();
  for (const std::string& name : names) {
    std::vector<int> named;
    for (const velmora::StoredSnapshot& snapshot : snapshots) {
      if (snapshot.decision != velmora::SnapshotDecision::Removed && snapshot.name == name) {
        named.push_back(snapshot.number);
      }
    }
    for (const velmora::StoredSnapshot& snapshot : snapshots) {
      if (named.empty() && std::to_string(snapshot.number) == name) named = {snapshot.number};
    }
    if (named.empty()) throw InputError(Named() + " has no view '" + name + "' (--list names them)");
    if (named.size() > 1) {
      throw InputError(Named() + " has " + std::to_string(named.size()) + " views '" + name +
                       "': give the number of one, such as " + std::to_string(named.front()));
    }
    numbers.push_back(named.front());
  }
  return numbers;
}

void KeptSession::Decide() {
  const std::vector<int> excluded = NumbersOf(search_.excluded);
  const std::vector<int> included = NumbersOf(search_.included);
  Ask([&] {
    if (!excluded.empty()) session_->Exclude(excluded);
    if (!included.empty()) session_->Include(included);
  });
}

void KeptSession::Replay(const std::function<void(SearchedImages&)>& take) const {
  const std::vector<velmora::StoredSnapshot> snapshots =
      session_ != nullptr ? session_->Snapshots() : std::vector<velmora::StoredSnapshot>{};
  std::vector<cv::Size> frames;
  for (size_t i = 0; i < inputSizes_.size(); ++i) {
    frames.push_back(session_ != nullptr ? session_->Settings().imageSizes[i]
                                         : FrameSizeOf(search_, inputSizes_[i]));
  }
  const SessionReplay replay(log_.Moments(), frames, search_.TakesParts());
  for (const velmora::StoredSnapshot& snapshot : snapshots) {
    if (snapshot.decision == velmora::SnapshotDecision::Removed) continue;
    SearchedImages images = replay.Of(snapshot);
    take(images);
  }
  for (SearchedImages& images : replay.WithoutView()) take(images);
}

void KeptSession::Write(const std::map<int, ViewNote>& notes) const {
  if (session_ != nullptr) WriteNotes(notes, session_->PathFor(NOTES));
}

void KeptSession::PrintList() {
  Decide();
  std::cout << SessionTable(*session_, ReadNotes(session_->PathFor(NOTES)));
  const std::string warning = Ask([&] { return session_->DiskWarning(); });
  if (!warning.empty()) std::cerr << warning << "\n";
}

std::string KeptSession::Whereabouts() const {
  if (session_ == nullptr) return "no view had been found, so that there is no session yet.";
  const size_t views = session_->Snapshots().size();
  return "the session '" + search_.session + "' has " + std::to_string(views) +
         (views == 1 ? " view" : " views") + ". The same command goes on with it; velmora-batch --session " +
         search_.session + " computes from what is there.";
}

}  // namespace batch
