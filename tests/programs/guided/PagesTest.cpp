/// What the window shows of results.
#include "guided/Pages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <opencv2/calib3d.hpp>
#include <stdexcept>

#include "GuidedScenes.h"
#include "Matchers.h"
#include "TemporaryFolder.h"
#include "common/UncertaintyPicture.h"

namespace {

using guided::EndPage;
using guided::EndPageOf;
using guided::MapOf;
using guided::NamedSnapshot;
using guided::Outcome;
using guided::PrecisionOf;
using guided_test::Named;
using velmora::Session;

constexpr size_t NOISY = 4;

/// Views of which that one is worse than the others, but no circle so bad that it is left out.
unit::PointLists WithANoisyOne() {
  unit::PointLists views = unit::NoisyViews(9);
  for (size_t k = 0; k < views[NOISY].size(); ++k) {
    const double off = 0.05;
    views[NOISY][k] += cv::Point2d(k % 2 == 0 ? off : -off, k % 3 == 0 ? off : -off);
  }
  return views;
}

Outcome OutcomeOf(const std::vector<NamedSnapshot>& views) {
  const bool pair = views.front().snapshot.cameras.size() > 1;
  const int model = pair ? Calibrator::MODEL_RATIONAL : Calibrator::MODEL_CLASSIC;
  Outcome outcome = guided::Compute(views, guided_test::SettingsOfPoints(model), guided_test::JustCompute);
  if (outcome.Failed()) throw std::runtime_error(outcome.fault);
  return outcome;
}

const Outcome& OneCamera() {
  static const Outcome outcome = OutcomeOf(Named(WithANoisyOne()));
  return outcome;
}

const Outcome& APair() {
  static const Outcome outcome = OutcomeOf(Named(unit::NoisyPairs(9)));
  return outcome;
}

cv::Mat ImageOf(size_t view, size_t camera) {
  return cv::Mat(unit::FRAME, CV_8UC3,
                 cv::Scalar(10.0 * static_cast<double>(view), 90.0 * static_cast<double>(camera), 200.0));
}

/// A session of nine views, with an image of each that tells which it is.
class Pages : public ::testing::Test {
 protected:
  Session& SessionOf(size_t cameras, bool keepsImages) {
    velmora::SessionSettings settings;
    settings.grid = unit::GRID;
    settings.unit = static_cast<double>(unit::UNIT);
    settings.imageSizes.assign(cameras, unit::FRAME);
    settings.keepsImages = keepsImages;
    session_ = Session::Create(folder_.File("desk.velmora"), settings);
    const auto points = unit::NoisyViews(9);
    for (size_t view = 0; view < points.size(); ++view) {
      velmora::SessionSnapshot snapshot;
      snapshot.observations.assign(cameras, {points[view]});
      for (size_t camera = 0; camera < cameras; ++camera)
        snapshot.images.push_back({ImageOf(view, camera), {}, false});
      session_->Add(snapshot);
    }
    return *session_;
  }

  support::TemporaryFolder folder_;
  std::unique_ptr<Session> session_;
};

Outcome Failed() {
  Outcome outcome;
  outcome.fault = "the views agree with no camera";
  return outcome;
}

double NumberIn(const std::string& text) {
  return std::stod(text.substr(text.find_first_of("0123456789")));
}

TEST_F(Pages, SayHowWellTheCamerasAreKnown) {
  const std::string one = PrecisionOf(OneCamera());
  EXPECT_EQ(one.compare(0, 9, "known to "), 0) << one;
  EXPECT_NE(one.find(" px, from 9 views"), std::string::npos) << one;
  const double expected = OneCamera().cameras[0].verdict.ExpectedInData();
  EXPECT_NEAR(NumberIn(one), expected, 0.06 * expected);
  const double worse =
      std::max(APair().cameras[0].verdict.ExpectedInData(), APair().cameras[1].verdict.ExpectedInData());
  EXPECT_NEAR(NumberIn(PrecisionOf(APair())), worse, 0.06 * worse) << "of the camera that is known less";
  EXPECT_EQ(PrecisionOf(Failed()), "");
}

TEST_F(Pages, HaveTwoDigitsThatTell) {
  Outcome outcome = OneCamera();
  CalibrationVerdict& verdict = outcome.cameras[0].verdict;
  const auto precision = [&](double value) {
    verdict.deviationInData = verdict.jackknifeInData = value;
    verdict.systematicInData = 0.0;
    return PrecisionOf(outcome);
  };
  EXPECT_EQ(precision(0.0123), "known to 0.012 px, from 9 views");
  EXPECT_EQ(precision(0.123), "known to 0.12 px, from 9 views");
  EXPECT_EQ(precision(1.23), "known to 1.2 px, from 9 views");
  EXPECT_EQ(precision(12.3), "known to 12 px, from 9 views");
  EXPECT_EQ(precision(1234.0), "known to 1234 px, from 9 views");
  EXPECT_EQ(precision(std::numeric_limits<double>::infinity()), "");
}

TEST_F(Pages, HaveTheMapsOfAllCamerasSideBySide) {
  const cv::Size one = common::UncertaintyLayout(unit::FRAME).picture;
  EXPECT_EQ(MapOf(OneCamera()).size(), one);
  const cv::Mat both = MapOf(APair());
  ASSERT_EQ(both.size(), cv::Size(2 * one.width, one.height));
  for (size_t i : {0U, 1U}) {
    const guided::CameraOutcome& camera = APair().cameras[i];
    EXPECT_SAME_MAT(
        both.colRange(static_cast<int>(i) * one.width, static_cast<int>(i + 1) * one.width).clone(),
        common::DrawUncertainty(camera.verdict, unit::FRAME, camera.seen));
  }
  EXPECT_TRUE(MapOf(Failed()).empty());
}

TEST_F(Pages, EndWithVerdictNumbersMapAndFiles) {
  const Outcome& outcome = OneCamera();
  const guided::CameraOutcome& camera = outcome.cameras[0];
  const EndPage page = EndPageOf(outcome, SessionOf(1, true), {"a.json", "a_verdict.json"});
  EXPECT_EQ(page.grade, camera.verdict.grade);
  EXPECT_EQ(page.verdict, "Verdict: " + camera.verdict.ToString());
  ASSERT_EQ(page.sentences.size(), camera.verdict.remarks.size());
  for (size_t i = 0; i < page.sentences.size(); ++i) {
    EXPECT_EQ(page.sentences[i].compare(0, camera.verdict.remarks[i].reason.size(),
                                        camera.verdict.remarks[i].reason),
              0);
    EXPECT_NE(page.sentences[i].find(camera.verdict.remarks[i].advice), std::string::npos);
  }
  ASSERT_EQ(page.numbers.size(), 5U);
  const std::vector<std::string> names = {"fx", "fy", "cx", "cy", "RMS"};
  const std::vector<double> values = {camera.report.K.at<double>(0, 0), camera.report.K.at<double>(1, 1),
                                      camera.report.K.at<double>(0, 2), camera.report.K.at<double>(1, 2)};
  for (size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(page.numbers[i].name, names[i]);
    if (i == 4) continue;
    EXPECT_NEAR(NumberIn(page.numbers[i].value), values[i], 0.006);
    const double deviation = camera.report.stdDevs.at<double>(static_cast<int>(i));
    EXPECT_NEAR(NumberIn(page.numbers[i].deviation), deviation, 0.06 * deviation) << names[i];
    EXPECT_EQ(page.numbers[i].deviation.compare(0, 3, "+- "), 0);
  }
  EXPECT_NEAR(NumberIn(page.numbers[4].value), camera.report.rms, 0.006);
  ASSERT_EQ(page.maps.size(), 1U);
  EXPECT_SAME_MAT(page.maps[0], MapOf(outcome));
  EXPECT_EQ(page.files, (std::vector<std::string>{"a.json", "a_verdict.json"}));
  EXPECT_FALSE(guided::Draw(page).empty());
}

double RootMeanSquare(const std::vector<cv::Point2d>& residuals) {
  double sum = 0.0;
  for (const cv::Point2d& residual : residuals) sum += residual.dot(residual);
  return std::sqrt(sum / static_cast<double>(residuals.size()));
}

TEST_F(Pages, ShowTheWorstViewWithItsResidualsAndItsImage) {
  const EndPage page = EndPageOf(OneCamera(), SessionOf(1, true), {});
  ASSERT_EQ(page.worst.size(), 1U);
  const guided::WorstView& worst = page.worst[0];
  EXPECT_EQ(worst.name, "pose " + std::to_string(NOISY + 1));
  EXPECT_SAME_MAT(worst.image, ImageOf(NOISY, 0));
  EXPECT_EQ(worst.frame, unit::FRAME);
  EXPECT_EQ(worst.points, WithANoisyOne()[NOISY]);
  ASSERT_EQ(worst.residuals.size(), 44U);
  EXPECT_NEAR(worst.rms, RootMeanSquare(worst.residuals), 1e-6);
  EXPECT_GT(worst.rms, 1.1 * OneCamera().cameras[0].report.rms);
}

TEST_F(Pages, ShowResidualsOfWhatWasSeenOnly) {
  auto views = Named(WithANoisyOne());
  auto& seen = views[NOISY].snapshot.cameras[0];
  seen.weights.assign(44, 1.0);
  std::fill_n(seen.weights.begin(), 4, 0.0);
  const EndPage page = EndPageOf(OutcomeOf(views), SessionOf(1, true), {});
  ASSERT_EQ(page.worst[0].name, "pose 5");
  EXPECT_EQ(page.worst[0].points.size(), 40U);
  EXPECT_EQ(page.worst[0].residuals.size(), 40U);
  EXPECT_EQ(page.worst[0].points.front(), seen.centres[4]);
}

TEST_F(Pages, DoNotTakeAViewThatWasLeftOutForTheWorst) {
  auto views = WithANoisyOne();
  cv::RNG random(4);
  for (cv::Point2d& centre : views[1]) centre += cv::Point2d(random.gaussian(20.0), random.gaussian(20.0));
  const Outcome outcome = OutcomeOf(Named(views));
  ASSERT_EQ(outcome.cameras[0].report.disagreeing, std::set<size_t>{1});
  EXPECT_EQ(EndPageOf(outcome, SessionOf(1, true), {}).worst[0].name, "pose 5");
}

TEST_F(Pages, ShowTheWorstViewWithoutImagesThatAreNotKept) {
  const EndPage page = EndPageOf(OneCamera(), SessionOf(1, false), {});
  EXPECT_TRUE(page.worst[0].image.empty());
  EXPECT_EQ(page.worst[0].frame, unit::FRAME);
  EXPECT_EQ(page.worst[0].points.size(), 44U);
  EXPECT_FALSE(guided::Draw(page).empty());
}

TEST_F(Pages, ShowTheWorstViewWithoutAnImageThatIsDamaged) {
  const Session& session = SessionOf(1, true);
  support::WriteText(session.Snapshot(NOISY + 1).images.at(0).path, "no image");
  const EndPage page = EndPageOf(OneCamera(), session, {});
  EXPECT_TRUE(page.worst[0].image.empty());
  EXPECT_EQ(page.worst[0].name, "pose 5");
}

TEST_F(Pages, OfAPairHaveBothCamerasAndThePair) {
  const Outcome& outcome = APair();
  ASSERT_TRUE(outcome.pair);
  const EndPage page = EndPageOf(outcome, SessionOf(2, true), {});
  EXPECT_EQ(page.verdict, "Verdict: " + outcome.pair->verdict.ToString());
  EXPECT_EQ(static_cast<int>(page.grade), static_cast<int>(outcome.pair->verdict.grade));
  std::vector<std::string> names;
  for (const auto& number : page.numbers) names.push_back(number.name);
  EXPECT_EQ(names, (std::vector<std::string>{"left fx", "left fy", "left cx", "left cy", "left RMS",
                                             "right fx", "right fy", "right cx", "right cy", "right RMS",
                                             "baseline", "rotation", "pair's RMS"}));
  EXPECT_NEAR(NumberIn(page.numbers[10].value), 1000.0 * cv::norm(outcome.pair->report.T), 0.006);
  EXPECT_NE(page.numbers[10].value.find(" mm"), std::string::npos);
  cv::Mat turn;
  cv::Rodrigues(outcome.pair->report.R, turn);
  EXPECT_NEAR(NumberIn(page.numbers[11].value), cv::norm(turn) * 180.0 / CV_PI, 0.0006);
  EXPECT_EQ(page.maps.size(), 2U);
  ASSERT_EQ(page.worst.size(), 2U);
  for (size_t camera : {0U, 1U}) {
    const guided::WorstView& worst = page.worst[camera];
    const auto number = static_cast<size_t>(NumberIn(worst.name));
    EXPECT_SAME_MAT(worst.image, ImageOf(number - 1, camera));
    const cv::Mat& errors = outcome.cameras[camera].report.viewErrors;
    double most = 0.0;
    cv::minMaxIdx(errors, nullptr, &most);
    EXPECT_EQ(errors.at<double>(static_cast<int>(number) - 1), most);
  }
  const auto has = [&](const std::string& start) {
    return std::any_of(page.sentences.begin(), page.sentences.end(), [&](const std::string& sentence) {
      return sentence.compare(0, start.size(), start) == 0;
    });
  };
  EXPECT_EQ(has("Left camera: "), !outcome.cameras[0].verdict.remarks.empty());
  EXPECT_EQ(has("Right camera: "), !outcome.cameras[1].verdict.remarks.empty());
}

}  // namespace
