/// The robust search in what calibrators read, and in what is pushed to their grabbers. The discs are light
/// on dark, so that the standard search finds none.
#include <gtest/gtest.h>

#include <algorithm>
#include <opencv2/imgcodecs.hpp>

#include "TemporaryFolder.h"
#include "calibrator/Pushes.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

namespace {

constexpr int VIEWS = 8;

cv::Mat Negative(const cv::Mat& image) {
  return cv::Scalar::all(255) - image;
}

/// A video of the views.
class FinderCapture : public testing::Test {
 protected:
  FinderCapture() {
    for (int view = 0; view < VIEWS; ++view) {
      cv::imwrite(folder_.File(cv::format("view-%03d.jpg", view)),
                  Negative(unit::Rendered().images[static_cast<size_t>(view)]));
    }
  }

  std::string Video() const { return folder_.File("view-%03d.jpg"); }
  bool Opened() { return calibrator_->OpenFFmpegContent(Video()); }

  const unit::ScopedLogLevel silent_{0};
  support::TemporaryFolder folder_;
  const std::unique_ptr<Calibrator> calibrator_ = unit::MakeCalibrator();
};

TEST_F(FinderCapture, CalibratesFromWhatOnlyTheRobustSearchFinds) {
  calibrator_->SetFinder(Calibrator::FINDER_ROBUST);
  // On the reader's thread: one snapshot of each view.
  calibrator_->SetFrameListener([&](const auto&, const auto&) { calibrator_->AddPoints(); });
  ASSERT_TRUE(Opened());
  ASSERT_TRUE(unit::Eventually([&] { return calibrator_->GetNumberOfRecords() == VIEWS; }));
  calibrator_->CloseFFmpegContent();
  const float error = calibrator_->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  EXPECT_GT(error, 0.0F);
  EXPECT_LT(error, 0.5F);
  const double focal = unit::Rendered().scene.camera.lens.K()(0, 0);
  EXPECT_NEAR(calibrator_->GetK().at<double>(0, 0), focal, 0.01 * focal);
}

TEST_F(FinderCapture, SwitchesTheSearchBetweenFramesOfAVideo) {
  ASSERT_TRUE(Opened());
  bool detected = false;
  // Any number of frames passes before the switch; none of them shows dark discs.
  for (int look = 0; look < 100; ++look) detected = detected || calibrator_->IsDetected();
  EXPECT_FALSE(detected);
  calibrator_->CloseFFmpegContent();
  calibrator_->SetFinder(Calibrator::FINDER_ROBUST);
  ASSERT_TRUE(Opened());
  EXPECT_TRUE(unit::Eventually([&] { return calibrator_->IsDetected(); }));
}

class FinderGrabber : public unit::Pushes {};

INSTANTIATE_TEST_SUITE_P(Kinds, FinderGrabber, testing::Values(unit::Kind::JPEG, unit::Kind::RGB));

TEST_P(FinderGrabber, SearchesPushedFramesInTheWayChosen) {
  const cv::Mat image = Negative(unit::ImageWithGrid());
  Open();
  Push(image);
  ASSERT_TRUE(audience_.AwaitCalls(1));
  EXPECT_FALSE(calibrator_->IsDetected());
  calibrator_->SetFinder(Calibrator::FINDER_ROBUST);
  Push(image);
  ASSERT_TRUE(audience_.AwaitCalls(2));
  EXPECT_TRUE(calibrator_->IsDetected());
}

}  // namespace
