/// The collection of snapshots and its status machine, without a calibrator.
#include "calibrator/Snapshots.h"

#include <gtest/gtest.h>

#include "unit/Scopes.h"
#include "unit/ThreadGroup.h"

using namespace velmora;

namespace {

const std::vector<cv::Point3d> TARGET = {{0, 0, 0}, {0.04, 0, 0}, {0.02, 0.02, 0}};

CameraSnapshot ViewAt(double x) {
  return {{{x, 1.0}, {x, 2.0}, {x, 3.0}}, cv::Mat(2, 2, CV_8UC1, cv::Scalar(7)), {}};
}

size_t AddAt(Snapshots& snapshots, double x, Snapshots::EarlierRms earlier = Snapshots::EarlierRms::Drop) {
  return snapshots.Add({ViewAt(x)}, earlier);
}

std::shared_ptr<const Result> ResultOfRms(float rms) {
  auto result = std::make_shared<Result>();
  result->rms = rms;
  return result;
}

class OneCamera : public ::testing::Test {
 protected:
  void Collect(int count) {
    for (int i = 0; i < count; ++i) AddAt(snapshots_, i);
  }

  Snapshots snapshots_{TARGET, 1};
};

TEST_F(OneCamera, StartWithNothing) {
  const Snapshots::Moment now = snapshots_.Current();
  EXPECT_EQ(now.status, STATUS_NOT_READY);
  EXPECT_EQ(now.snapshots->Count(), 0U);
  EXPECT_EQ(now.result, nullptr);
  EXPECT_FALSE(now.refused.has_value());
  EXPECT_EQ(now.rms, -1.0F);
  EXPECT_FALSE(snapshots_.HasFailed());
}

TEST_F(OneCamera, AreReadyWithTheFifth) {
  for (int i = 0; i < 4; ++i) EXPECT_EQ(AddAt(snapshots_, i), static_cast<size_t>(i) + 1);
  EXPECT_EQ(snapshots_.Status(), STATUS_NOT_READY);
  EXPECT_EQ(AddAt(snapshots_, 4), 5U);
  EXPECT_EQ(snapshots_.Status(), STATUS_READY);
}

TEST_F(OneCamera, KeepPointsFrameAndTargetOfEach) {
  Collect(2);
  const auto list = snapshots_.Current().snapshots;
  ASSERT_EQ(list->cameras.size(), 1U);
  EXPECT_EQ(list->cameras[0].points[1], ViewAt(1).points);
  EXPECT_EQ(list->cameras[0].frames[1].at<uchar>(1, 1), 7);
  EXPECT_EQ(list->target[1], TARGET);
}

TEST_F(OneCamera, LeaveAListThatSomebodyHoldsAsItIs) {
  Collect(2);
  const auto earlier = snapshots_.Current().snapshots;
  Collect(3);
  snapshots_.Reset();
  EXPECT_EQ(earlier->Count(), 2U);
  EXPECT_EQ(earlier->cameras[0].points.size(), 2U);
}

TEST_F(OneCamera, TakeBetterPointsOfOneOfThem) {
  Snapshots::Place place;
  EXPECT_EQ(snapshots_.Add({ViewAt(1)}, Snapshots::EarlierRms::Drop, place), 1U);
  AddAt(snapshots_, 2);
  const auto earlier = snapshots_.Current().snapshots;
  CameraSnapshot better = ViewAt(1.5);
  better.frame = cv::Mat();
  better.deviations = {0.1, 0.2, 0.3};
  EXPECT_TRUE(snapshots_.Improve(place, {better}));
  const auto now = snapshots_.Current().snapshots;
  EXPECT_EQ(now->Count(), 2U);
  EXPECT_EQ(now->cameras[0].points[0], better.points);
  EXPECT_EQ(now->cameras[0].deviations[0], better.deviations);
  EXPECT_FALSE(now->cameras[0].frames[0].empty());
  EXPECT_EQ(now->cameras[0].points[1], ViewAt(2).points);
  EXPECT_TRUE(now->cameras[0].deviations[1].empty());
  EXPECT_EQ(earlier->cameras[0].points[0], ViewAt(1).points) << "somebody holds it";
  EXPECT_THROW(snapshots_.Improve(place, {better, better}), cv::Exception);
}

TEST_F(OneCamera, TakeNoBetterPointsOfOneThatIsGone) {
  Snapshots::Place place;
  snapshots_.Add({ViewAt(1)}, Snapshots::EarlierRms::Drop, place);
  snapshots_.Reset();
  AddAt(snapshots_, 2);
  EXPECT_FALSE(snapshots_.Improve(place, {ViewAt(3)}));
  EXPECT_EQ(snapshots_.Current().snapshots->cameras[0].points[0], ViewAt(2).points);
  EXPECT_FALSE(snapshots_.Improve({}, {ViewAt(3)})) << "none at all";
}

TEST_F(OneCamera, TakeNoBetterPointsOnceAComputationBegan) {
  Collect(4);
  Snapshots::Place place;
  snapshots_.Add({ViewAt(4)}, Snapshots::EarlierRms::Drop, place);
  auto computation = snapshots_.Begin();
  EXPECT_FALSE(snapshots_.Improve(place, {ViewAt(9)}));
  computation->Publish(ResultOfRms(0.25F));
  computation.reset();
  EXPECT_FALSE(snapshots_.Improve(place, {ViewAt(9)})) << "the result is of the others";
  EXPECT_EQ(snapshots_.Current().snapshots->cameras[0].points[4], ViewAt(4).points);
  EXPECT_EQ(snapshots_.Status(), STATUS_COMPLETED);
  EXPECT_EQ(snapshots_.Current().rms, 0.25F);
}

TEST_F(OneCamera, RefuseAViewOfAnotherNumberOfCameras) {
  EXPECT_THROW(snapshots_.Add({ViewAt(1), ViewAt(2)}, Snapshots::EarlierRms::Drop), cv::Exception);
  EXPECT_EQ(snapshots_.Count(), 0U);
}

TEST_F(OneCamera, BeginNothingWithFour) {
  Collect(4);
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_EQ(snapshots_.Begin(), nullptr); }),
            "ERROR : Can't compute calibration. At least 5 pictures are needed. Current: 4\n");
  EXPECT_EQ(snapshots_.Status(), STATUS_NOT_READY);
  EXPECT_FALSE(snapshots_.HasFailed());
}

TEST_F(OneCamera, AreClosedDuringAComputation) {
  Collect(5);
  const auto computation = snapshots_.Begin();
  ASSERT_NE(computation, nullptr);
  EXPECT_EQ(snapshots_.Status(), STATUS_PROGRESS);
  EXPECT_EQ(AddAt(snapshots_, 9), 0U);
  EXPECT_EQ(snapshots_.Begin(), nullptr);
  snapshots_.Reset();
  snapshots_.KeepRefused({});
  EXPECT_FALSE(snapshots_.Current().refused.has_value());
  EXPECT_EQ(snapshots_.Count(), 5U);
  EXPECT_EQ(computation->Views().Count(), 5U);
}

TEST_F(OneCamera, ArePublishedWithStatusAndRmsAtOnce) {
  Collect(5);
  snapshots_.Begin()->Publish(ResultOfRms(0.25F));
  const Snapshots::Moment now = snapshots_.Current();
  EXPECT_EQ(now.status, STATUS_COMPLETED);
  ASSERT_NE(now.result, nullptr);
  EXPECT_EQ(now.rms, 0.25F);
  EXPECT_EQ(snapshots_.Completed(), 1);
  EXPECT_FALSE(snapshots_.HasFailed());
}

TEST_F(OneCamera, GiveTheStatusBackWhenNothingWasPublished) {
  Collect(5);
  snapshots_.Begin()->Publish(ResultOfRms(0.25F));
  snapshots_.Begin().reset();
  const Snapshots::Moment now = snapshots_.Current();
  EXPECT_EQ(now.status, STATUS_COMPLETED);
  EXPECT_EQ(now.rms, 0.25F);
  EXPECT_TRUE(snapshots_.HasFailed());
  snapshots_.ForgetFailure();
  EXPECT_FALSE(snapshots_.HasFailed());
}

TEST_F(OneCamera, KeepTheResultButNotItsRmsWhenOneIsAdded) {
  Collect(5);
  snapshots_.Begin()->Publish(ResultOfRms(0.25F));
  AddAt(snapshots_, 9, Snapshots::EarlierRms::Keep);
  EXPECT_EQ(snapshots_.Current().rms, 0.25F);
  AddAt(snapshots_, 9);
  EXPECT_EQ(snapshots_.Current().rms, -1.0F);
  EXPECT_NE(snapshots_.Current().result, nullptr);
  EXPECT_EQ(snapshots_.Status(), STATUS_READY);
}

TEST_F(OneCamera, CancelOnlyWhatIsUnderWay) {
  Collect(5);
  snapshots_.Cancel();
  auto computation = snapshots_.Begin();
  EXPECT_FALSE(computation->Cancelled());
  snapshots_.Cancel();
  EXPECT_TRUE(computation->Cancelled());
  computation.reset();
  EXPECT_FALSE(snapshots_.Begin()->Cancelled());
}

TEST_F(OneCamera, KnowRefusedIntrinsicsUntilAResultReplacesThem) {
  Collect(5);
  StereoIntrinsics read;
  read.K = cv::Mat::eye(3, 3, CV_64F);
  snapshots_.KeepRefused(read);
  ASSERT_TRUE(snapshots_.Current().refused.has_value());
  snapshots_.Begin()->Publish(ResultOfRms(0.25F));
  EXPECT_FALSE(snapshots_.Current().refused.has_value());
}

TEST_F(OneCamera, NoteAComputationThatEndedBeforeItBegan) {
  const int before = snapshots_.Completed();
  snapshots_.NoteEndWithoutResult(before);
  EXPECT_TRUE(snapshots_.HasFailed());

  Collect(5);
  snapshots_.Begin()->Publish(ResultOfRms(0.25F));
  snapshots_.NoteEndWithoutResult(before);  // another one brought a result meanwhile
  EXPECT_FALSE(snapshots_.HasFailed());
}

TEST_F(OneCamera, GoBackToTheBeginning) {
  Collect(5);
  snapshots_.Begin().reset();
  snapshots_.Reset();
  EXPECT_EQ(snapshots_.Count(), 0U);
  EXPECT_EQ(snapshots_.Status(), STATUS_NOT_READY);
  EXPECT_FALSE(snapshots_.HasFailed());
  EXPECT_EQ(AddAt(snapshots_, 1), 1U);
}

TEST(SnapshotsOfAPair, SayWhatTheyAreTooFewFor) {
  Snapshots snapshots(TARGET, 2);
  snapshots.Add({ViewAt(1), ViewAt(2)}, Snapshots::EarlierRms::Drop);
  EXPECT_EQ(snapshots.Current().snapshots->cameras[1].points[0], ViewAt(2).points);
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_FALSE(snapshots.RequireEnough()); }),
            "ERROR : Can't compute stereo calibration. At least 5 pictures are needed. Current: 1\n");
}

// Meant for the thread sanitizer as much as for its own checks.
TEST(SnapshotsOfManyThreads, AreWholeAtAnyMoment) {
  Snapshots snapshots(TARGET, 1);
  std::atomic<int> published{0};
  unit::ThreadGroup threadGroup;
  for (int thread = 0; thread < 2; ++thread) {
    threadGroup.Add([&] {
      for (int i = 0; i < 300; ++i) AddAt(snapshots, i, Snapshots::EarlierRms::Keep);
    });
  }
  threadGroup.Add([&] {
    while (published < 20) {
      if (snapshots.Count() < Snapshots::ENOUGH) continue;
      const auto computation = snapshots.Begin();
      auto result = std::make_shared<Result>();
      result->snapshots = computation->Views().Count();
      result->rms = static_cast<float>(result->snapshots);
      computation->Publish(std::move(result));
      ++published;
    }
  });
  threadGroup.Add([&] {
    while (published < 20) {
      const Snapshots::Moment now = snapshots.Current();
      EXPECT_EQ(now.snapshots->cameras[0].points.size(), now.snapshots->Count());
      if (now.result == nullptr) continue;
      EXPECT_EQ(now.rms, static_cast<float>(now.result->snapshots));
      EXPECT_LE(now.result->snapshots, now.snapshots->Count());
    }
  });
  threadGroup.RunToTheEnd();
  EXPECT_EQ(snapshots.Completed(), 20);
}

}  // namespace
