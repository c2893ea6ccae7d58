/// Views of a guided calibration with all that they keep in agreement, for tests.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "GuidedScenes.h"
#include "TemporaryFolder.h"
#include "guided/Views.h"

namespace guided_test {

/// A session of rendered views; those of the first eight images are the guide's targets.
class GuidedViews : public ::testing::Test {
 protected:
  static constexpr size_t TARGETS = 8;

  GuidedViews() {
    const auto& centres = unit::Rendered().centres;
    guide_.SetTargets({centres.begin(), centres.begin() + TARGETS});
    velmora::SessionSettings settings;
    settings.grid = unit::GRID;
    settings.unit = static_cast<double>(unit::UNIT);
    settings.imageSizes = {unit::FRAME};
    session_ = velmora::Session::Create(path_, settings);
    Begin();
  }

  /// As a program does that is started on the session.
  void Begin() {
    collector_ = std::make_unique<guided::Collector>(SettingsOfImages(), 1);
    views_ = std::make_unique<guided::Views>(*collector_, *session_, guide_);
  }
  void StartAgain() {
    views_.reset();
    session_.reset();
    session_ = velmora::Session::Open(path_);
    Begin();
    views_->Resume();
  }

  std::string Keep(size_t image, bool reachesTarget) {
    collector_->Search({unit::Rendered().images.at(image)});
    return views_->Keep(reachesTarget);
  }
  /// At the target to reach now.
  std::string KeepTarget() { return Keep(static_cast<size_t>(guide_.TargetNumber()) - 1, true); }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const guided::NamedSnapshot& view : views_->All()) names.push_back(view.name);
    return names;
  }
  using Words = std::vector<std::string>;

  /// The four of them hold the same views.
  void ExpectAgreement() {
    std::vector<velmora::StoredSnapshot> used;
    for (const auto& stored : session_->Snapshots()) {
      if (stored.IsUsed()) used.push_back(stored);
    }
    const auto& all = views_->All();
    ASSERT_EQ(all.size(), used.size());
    EXPECT_EQ(views_->Count(), used.size());
    EXPECT_EQ(collector_->Count(), static_cast<int>(used.size()));
    EXPECT_EQ(guide_.Views(), static_cast<int>(used.size()));
    for (size_t i = 0; i < used.size(); ++i) {
      EXPECT_EQ(all[i].number, used[i].number);
      EXPECT_EQ(all[i].name, used[i].name);
      EXPECT_EQ(all[i].snapshot.cameras.at(0).centres, used[i].observations.at(0).centres);
      EXPECT_EQ(all[i].snapshot.cameras.at(0).deviations, used[i].observations.at(0).deviations);
      EXPECT_TRUE(all[i].snapshot.cameras.at(0).frame.empty()) << "images are on the disk";
    }
    if (used.empty()) return;
    EXPECT_EQ(collector_->Last().cameras.at(0).centres, all.back().snapshot.cameras.at(0).centres);
  }

  support::TemporaryFolder folder_;
  const std::string path_ = folder_.File("desk.velmora");
  velmora::Guide guide_{{unit::GRID, unit::FRAME}};
  std::unique_ptr<velmora::Session> session_;
  std::unique_ptr<guided::Collector> collector_;
  std::unique_ptr<guided::Views> views_;
};

}  // namespace guided_test
