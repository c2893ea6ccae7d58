/// The headless tool on rigs of cameras, as a user runs it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

#include "Process.h"
#include "RigTruth.h"
#include "TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using support::Process;
constexpr std::chrono::minutes LONG_ENOUGH{4};

struct Outcome {
  int status;
  std::string output;
  std::string errors;
};

/// A row of three cameras that see the sheet in most moments, and a ring of four, of which images without
/// the sheet are missing; rendered once for all tests.
class RigBatchProgram : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new support::TemporaryFolder;
    const Outcome row =
        Run({VELMORA_RENDER, "--rig", "3", "--views", "12", "--noise", "2", "--output", "row"});
    ASSERT_EQ(row.status, 0) << row.errors;
    const Outcome ring = Run({VELMORA_RENDER, "--rig", "4", "--ring", "--views", "24", "--noise", "2",
                              "--leave-out-empty", "--output", "ring"});
    ASSERT_EQ(ring.status, 0) << ring.errors;
  }
  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }

  static Outcome Run(const std::vector<std::string>& command) {
    Process::Options options;
    options.folder = folder_->Path();
    Process tool(command, options);
    const int status = tool.WaitForExit(LONG_ENOUGH);
    return {status, tool.Output(), tool.Errors()};
  }

  static Outcome RunBatch(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), VELMORA_BATCH);
    return Run(arguments);
  }

  static json Result(const std::string& name) {
    return json::parse(support::ReadText(folder_->File(name)), nullptr, false);
  }

  /// The images of a camera of the row, in order.
  static std::vector<cv::Mat> Images(int camera) {
    std::vector<cv::Mat> images;
    for (int i = 0; i < 12; ++i) {
      const std::string number = std::string(i < 10 ? "00" : "0") + std::to_string(i);
      images.push_back(
          cv::imread(folder_->File("row/camera-" + std::to_string(camera) + "/view" + number + ".png")));
    }
    return images;
  }

  static void Write(const std::string& camera, const std::vector<cv::Mat>& images) {
    fs::create_directories(folder_->File(camera));
    for (size_t i = 0; i < images.size(); ++i) {
      cv::imwrite(folder_->File(camera) + "/" + std::to_string(100 + i) + ".png", images[i]);
    }
  }

  static void ExpectPicturesAndErrors(const std::string& name, size_t cameras);

  static support::TemporaryFolder* folder_;
};

support::TemporaryFolder* RigBatchProgram::folder_ = nullptr;

cv::Matx33d RotationIn(const json& rows) {
  cv::Matx33d R;
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 3; ++x) R(y, x) = rows.at(static_cast<size_t>(y)).at(static_cast<size_t>(x));
  }
  return R;
}

/// Each camera stands as in the truth: within a tenth of a degree and a millimetre.
void ExpectTruth(const json& result, const world::Rig& rig) {
  ASSERT_FALSE(result.is_discarded());
  ASSERT_EQ(result["cameras"].size(), rig.cameras.size());
  for (size_t i = 0; i < rig.cameras.size(); ++i) {
    const json& pose = result["cameras"][i]["camera_from_rig"];
    cv::Vec3d rotation;
    cv::Rodrigues(RotationIn(pose["R"]) * rig.cameras[i].R.t(), rotation);
    EXPECT_LT(cv::norm(rotation) * 180.0 / CV_PI, 0.1) << "camera " << i;
    const cv::Vec3d T(pose["T"][0], pose["T"][1], pose["T"][2]);
    EXPECT_LT(cv::norm(T - rig.cameras[i].T), 0.001) << "camera " << i;
    const double fx = result["cameras"][i]["K"][0][0];
    EXPECT_NEAR(fx, rig.cameras[i].lens.K()(0, 0), 0.002 * fx) << "camera " << i;
  }
}

/// An image of each camera that is coloured where it saw the sheet, and an RMS of each of its images.
void RigBatchProgram::ExpectPicturesAndErrors(const std::string& name, size_t cameras) {
  const json result = Result(name + ".json");
  for (size_t i = 0; i < cameras; ++i) {
    const cv::Mat image = cv::imread(folder_->File(name) + "_uncertainty_" + std::to_string(i) + ".png");
    ASSERT_FALSE(image.empty()) << i;
    cv::Mat hsv;
    cv::cvtColor(image(cv::Rect(image.cols / 3, image.rows / 3, 60, 60)), hsv, cv::COLOR_BGR2HSV);
    EXPECT_GT(cv::mean(hsv)[1], 50.0) << i;
    double squares = 0.0;
    double images = 0.0;
    for (const json& view : result["views"]) {
      if (view["rms"][i].is_null()) continue;
      squares += std::pow(view["rms"][i].get<double>(), 2);
      images += 1.0;
    }
    const double rms = result["cameras"][i]["rms"];
    EXPECT_EQ(images, result["cameras"][i]["views"].get<double>());
    EXPECT_NEAR(std::sqrt(squares / images), rms, 0.1 * rms) << i;
  }
}

TEST_F(RigBatchProgram, FindsHowThreeCamerasInARowStand) {
  const Outcome outcome =
      RunBatch({"--rig", "row/camera-0/", "row/camera-1", "row/camera-2", "--output", "row.json"});
  ASSERT_EQ(outcome.status, 0) << outcome.errors;
  const json result = Result("row_rig.json");
  ExpectTruth(result, world::LoadRigTruth(folder_->File("row/truth.json")).rig);
  EXPECT_EQ(result["verdict"]["grade"], "good") << outcome.output;
  EXPECT_EQ(result["cameras"][2]["name"], "camera-2");
  EXPECT_EQ(result["views"].size(), 12U);
  EXPECT_LT(result["rms"], 0.1);
  const double deviation = result["cameras"][1]["camera_from_rig"]["translationDeviation"][0];
  EXPECT_GT(deviation, 0.0);
  EXPECT_LT(deviation, 0.001);
  EXPECT_NE(outcome.output.find("Rig: 3 cameras, rational model\n"), std::string::npos) << outcome.output;
  EXPECT_NE(outcome.output.find("\nWritten:\n  row_rig.json\n  row_rig_uncertainty_0.png\n"
                                "  row_rig_uncertainty_1.png\n  row_rig_uncertainty_2.png\n"),
            std::string::npos)
      << outcome.output;
  ExpectPicturesAndErrors("row_rig", 3);
  EXPECT_NE(outcome.errors.find("4/12 view003.png: grid found by camera-1, camera-2\n"), std::string::npos)
      << outcome.errors;
}

TEST_F(RigBatchProgram, MatchesImagesOfCamerasThatMissMomentsByTheirNames) {
  fs::create_directory(folder_->File("named"));
  for (const auto& entry : fs::directory_iterator(folder_->File("ring/camera-1"))) {
    const std::string name = entry.path().filename().string();
    if (entry.path().extension() == ".png") {
      fs::copy(entry.path(), folder_->File("named") + "/cam1-" + name.substr(4));
    }
  }
  const std::vector<std::string> cameras = {"--rig", "ring/camera-0", "named", "ring/camera-2",
                                            "ring/camera-3"};
  std::vector<std::string> arguments = cameras;
  const Outcome byOrder = RunBatch(arguments);
  EXPECT_EQ(byOrder.status, 2) << "no camera missed a moment";
  arguments.insert(arguments.end(), {"--match", "names", "--output", "ring"});
  const Outcome outcome = RunBatch(arguments);
  ASSERT_EQ(outcome.status, 0) << outcome.errors;
  const json result = Result("ring_rig.json");
  ExpectTruth(result, world::LoadRigTruth(folder_->File("ring/truth.json")).rig);
  bool differ = false;
  for (const json& view : result["views"]) {
    ASSERT_EQ(view["images"].size(), 4U);
    for (size_t i = 0; i < 4; ++i) {
      EXPECT_LE(view["images"][i].is_null(), view["rms"][i].is_null()) << view;
    }
    const json& images = view["images"];
    if (images[0].is_null() || images[1].is_null()) continue;
    differ = true;
    EXPECT_EQ("view" + images[1].get<std::string>().substr(5), images[0]);
  }
  EXPECT_TRUE(differ) << "no view of cameras 0 and 1";
}

TEST_F(RigBatchProgram, HoldsGivenIntrinsics) {
  for (const std::string camera : {"camera-0", "camera-1", "camera-2"}) {
    ASSERT_EQ(RunBatch({"row/" + camera, "--model", "rational", "--output", "held-" + camera}).status, 0);
  }
  const Outcome outcome =
      RunBatch({"--rig", "row/camera-0", "row/camera-1", "row/camera-2", "--intrinsics", "held-camera-0.json",
                "held-camera-1.json", "held-camera-2.json", "--output", "held"});
  ASSERT_EQ(outcome.status, 0) << outcome.errors;
  const json result = Result("held_rig.json");
  ExpectTruth(result, world::LoadRigTruth(folder_->File("row/truth.json")).rig);
  EXPECT_TRUE(result["model"].is_null());
  EXPECT_TRUE(result["verdict"]["cameras"].empty());
  EXPECT_FALSE(fs::exists(folder_->File("held_rig_uncertainty_0.png")));
  for (size_t i = 0; i < 3; ++i) {
    const json given = Result("held-camera-" + std::to_string(i) + ".json");
    const json& camera = result["cameras"][i];
    EXPECT_EQ(camera["K"][0][0], given["cameraMatrix"]["data"][0]);
    EXPECT_EQ(camera["K"][1][2], given["cameraMatrix"]["data"][5]);
    EXPECT_EQ(camera["D"], given["distCoefs"]["data"]);
    EXPECT_EQ(camera["stdDevIntrinsics"], json(std::vector<double>(18, 0.0)));
  }
  const Outcome resized = RunBatch({"--rig", "row/camera-0", "row/camera-1", "--intrinsics",
                                    "held-camera-0.json", "held-camera-1.json", "--width", "320"});
  EXPECT_EQ(resized.status, 2);
  EXPECT_NE(resized.errors.find(
                "ERROR: 'held-camera-0.json' is of 640 x 480 pixels, but camera 'camera-0' has 320 x 480.\n"),
            std::string::npos)
      << resized.errors;
}

TEST_F(RigBatchProgram, TakesVideosFrameByFrame) {
  for (int camera = 0; camera < 3; ++camera) {
    cv::VideoWriter video(folder_->File("video-" + std::to_string(camera) + ".avi"),
                          cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 5.0, {640, 480});
    ASSERT_TRUE(video.isOpened());
    for (const cv::Mat& image : Images(camera)) video.write(image);
  }
  const std::vector<std::string> cameras = {"--rig",       "video-0.avi", "video-1.avi",
                                            "video-2.avi", "--output",    "video"};
  const Outcome outcome = RunBatch(cameras);
  ASSERT_EQ(outcome.status, 0) << outcome.errors;
  ExpectTruth(Result("video_rig.json"), world::LoadRigTruth(folder_->File("row/truth.json")).rig);
  std::vector<std::string> byNames = cameras;
  byNames.insert(byNames.end(), {"--match", "names"});
  const Outcome refused = RunBatch(byNames);
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.errors,
            "ERROR: --match names needs images: 'video-0.avi' is none, and frames have no names.\n");
}

TEST_F(RigBatchProgram, UsesSoManyViewsAtMostAsAreAskedFor) {
  const Outcome outcome = RunBatch(
      {"--rig", "row/camera-0", "row/camera-1", "row/camera-2", "--max-views", "7", "--output", "few"});
  ASSERT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(Result("few_rig.json")["views"].size(), 7U);
  EXPECT_NE(outcome.output.find(" found but not needed (--max-views 7):\n"), std::string::npos);
}

TEST_F(RigBatchProgram, NamesACameraThatIsLinkedToNoOther) {
  const std::vector<cv::Mat> left = Images(0);
  const std::vector<cv::Mat> right = Images(1);
  const cv::Mat empty(480, 640, CV_8UC3, cv::Scalar::all(120));
  std::vector<cv::Mat> early;
  std::vector<cv::Mat> late;
  for (size_t i = 0; i < 24; ++i) {
    early.push_back(i < 12 ? left[i] : empty);
    late.push_back(i < 12 ? empty : right[i - 12]);
  }
  Write("apart/early", early);
  Write("apart/late", late);
  const Outcome outcome = RunBatch({"--rig", "apart/early", "apart/late", "--output", "apart"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(
      outcome.errors.find("\nERROR: the calibration failed: Camera 'late' never saw the target together "
                          "with a camera that is linked to the first.\n"),
      std::string::npos)
      << outcome.errors;
  EXPECT_FALSE(fs::exists(folder_->File("apart_rig.json")));
}

TEST_F(RigBatchProgram, NamesACameraWithTooFewViews) {
  std::vector<cv::Mat> few = Images(2);
  for (size_t i = 4; i < few.size(); ++i) few[i].setTo(cv::Scalar::all(120));
  Write("few", few);
  const Outcome outcome = RunBatch({"--rig", "row/camera-0", "row/camera-1", "few", "--output", "none"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.errors.find(
                "ERROR: too few views: the grid was found in 3 images of camera 'few', at least 5 are "
                "needed.\n"),
            std::string::npos)
      << outcome.errors;
  EXPECT_NE(outcome.output.find("  8 not used, camera 'few': no grid found"), std::string::npos)
      << outcome.output;
}

TEST_F(RigBatchProgram, ImagesThatAreNotOfTheSameTimeMakeNoGoodRig) {
  std::vector<cv::Mat> turned = Images(1);
  std::rotate(turned.begin(), turned.begin() + 5, turned.end());
  Write("turned", turned);
  const Outcome outcome =
      RunBatch({"--rig", "row/camera-0", "turned", "row/camera-2", "--strict", "--output", "turned"});
  ASSERT_EQ(outcome.status, 3) << outcome.errors;
  EXPECT_EQ(Result("turned_rig.json")["verdict"]["grade"], "worthless");
  EXPECT_NE(outcome.output.find("Verdict: worthless\n"), std::string::npos);
}

TEST_F(RigBatchProgram, UnequalNumbersOfImagesAreRefused) {
  const Outcome outcome = RunBatch({"--rig", "row/camera-0", "row/camera-1", "row/camera-2/view000.png"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_NE(outcome.errors.find("ERROR: camera 'camera-0' has 12 images, camera 'view000.png' has 1 image; "),
            std::string::npos)
      << outcome.errors;
}

TEST_F(RigBatchProgram, UnusableInputIsNamedInOneLineWithStatusTwo) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{"row/camera-0", "nowhere"}, "'nowhere' does not exist"},
      {{"row/camera-0", "row/camera-0/"}, "'row/camera-0/' is given for two cameras"},
      {{"row/camera-0", "row/camera-1", "--intrinsics", "a.json", "b.json"}, "'a.json' cannot be read"},
      {{"row/camera-0", "row/camera-1", "--output", "nowhere/rig"}, "folder 'nowhere' does not exist"}};
  for (auto [arguments, message] : cases) {
    arguments.insert(arguments.begin(), "--rig");
    const Outcome outcome = RunBatch(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.errors.find("ERROR: " + message + ".\n"), std::string::npos) << outcome.errors;
  }
}

TEST_F(RigBatchProgram, WrongUsageIsToldInOneLine) {
  const std::string help = ". See velmora-batch --help.\n";
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{"--rig"}, "--rig needs a value"},
      {{"--rig", "a"}, "--rig: inputs of at least two cameras are needed"},
      {{"a", "--rig", "b", "c"}, "--rig: all cameras are named after it, but 'a' is not"},
      {{"--rig", "a", "b", "--right", "c"}, "--right does not go with --rig"},
      {{"--rig", "a", "b", "--split", "vertical"}, "--split does not go with --rig"},
      {{"--rig", "a", "b", "--calib_left", "l", "--calib_right", "r"}, "--calib_left does not go with --rig"},
      {{"--rig", "a", "b", "--refine-lenses"}, "--refine-lenses does not go with --rig"},
      {{"--rig", "a", "b", "--record-model", "m.json"}, "--record-model does not go with --rig"},
      {{"--rig", "a", "b", "--model", "auto"},
       "--model: auto is for one camera; a rig takes classic, rational, full or fisheye"},
      {{"--rig", "a", "b", "--solver", "opencv"}, "--solver: only the sparse solver computes rigs"},
      {{"--rig", "a", "b", "--match", "time"}, "--match: 'time' is not one of order, names"},
      {{"--rig", "a", "b", "--intrinsics", "a.json"},
       "--intrinsics: a file for each camera is needed: there are 2 cameras and 1 file"},
      {{"a", "--match", "names"}, "--match goes only with --rig"},
      {{"a", "--intrinsics", "a.json"}, "--intrinsics goes only with --rig"},
      {{}, "nothing to do: name images, a folder or a video"}};
  for (const auto& [arguments, message] : cases) {
    const Outcome outcome = RunBatch(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors, "ERROR: " + message + help);
    EXPECT_EQ(outcome.output, "");
  }
}

}  // namespace
