/// Calibrations of real photographs by the headless tool, with either search. Skipped where the photographs
/// are absent.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "JSON.h"
#include "Process.h"
#include "TemporaryFolder.h"

namespace {

class RealPhotographs : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::is_directory(VELMORA_SHARED_DATA)) {
      GTEST_SKIP() << "no photographs at " << VELMORA_SHARED_DATA;
    }
  }

  /// Runs the tool and reads its result file; `views` is how many it must find of how many.
  JSON Calibrate(const std::string& set, const std::vector<std::string>& options, const std::string& views) {
    return CalibrateIn(std::string(VELMORA_SHARED_DATA) + "/" + set, options, views);
  }
  JSON CalibrateIn(const std::string& folder, const std::vector<std::string>& options,
                   const std::string& views) {
    std::vector<std::string> command = {VELMORA_BATCH, folder,     "--hdist",
                                        "0.2",         "--output", folder_.File("result")};
    command.insert(command.end(), {"--finder", finder_});
    command.insert(command.end(), options.begin(), options.end());
    // The figures are those of the bare calls.
    if (std::find(options.begin(), options.end(), "--solver") == options.end()) {
      command.insert(command.end(), {"--solver", "opencv"});
    }
    support::Process tool(command);
    EXPECT_EQ(tool.WaitForExit(std::chrono::minutes(4)), 0) << tool.Errors();
    printed_ = tool.Output();
    EXPECT_NE(printed_.find(views + " images used"), std::string::npos) << printed_;
    JSON result;
    EXPECT_TRUE(result.load(folder_.File("result.json")));
    return result;
  }

  static double Focal(JSON& result) { return result.readMat("cameraMatrix").at<double>(0, 0); }

  support::TemporaryFolder folder_;
  std::string finder_ = "standard";
  std::string printed_;
};

const std::vector<std::string> VGA = {"--width", "640", "--height", "480"};
const std::vector<std::string> VGA_RATIONAL = {"--width", "640", "--height", "480", "--model", "rational"};

std::vector<std::string> operator+(std::vector<std::string> a, const std::vector<std::string>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

TEST_F(RealPhotographs, OfficeAtItsOwnSizeClassic) {
  JSON result = Calibrate("office-4x11", {"--model", "classic"}, "11 of 15");
  EXPECT_NEAR(result.readDouble("error"), 0.143817, 2e-6);
  const cv::Mat K = result.readMat("cameraMatrix");
  EXPECT_NEAR(K.at<double>(0, 0), 1074.05, 0.01);
  EXPECT_NEAR(K.at<double>(1, 1), 1074.05, 0.01);
  EXPECT_NEAR(K.at<double>(0, 2), 651.77, 0.01);
  EXPECT_NEAR(K.at<double>(1, 2), 397.27, 0.01);
  EXPECT_EQ(result.readInt("imgWidth"), 1280);
  EXPECT_EQ(result.readInt("imgHeight"), 720);
}

TEST_F(RealPhotographs, OfficeAtItsOwnSizeRational) {
  JSON result = Calibrate("office-4x11", {"--model", "rational"}, "11 of 15");
  EXPECT_NEAR(result.readDouble("error"), 0.139649, 2e-6);
  EXPECT_EQ(result.readMat("distCoefs").cols, 14);
}

TEST_F(RealPhotographs, OfficeAtProcessingSizeClassic) {
  JSON result = Calibrate("office-4x11", VGA + std::vector<std::string>{"--model", "classic"}, "5 of 15");
  EXPECT_NEAR(result.readDouble("error"), 0.132132, 2e-6);
  EXPECT_NEAR(Focal(result), 699.86, 0.01);
}

TEST_F(RealPhotographs, FlatViewsAreAllFoundAndGiveAnAbsurdFocalLength) {
  JSON result = Calibrate("flat-4x11", {"--model", "classic"}, "10 of 10");
  EXPECT_NEAR(result.readDouble("error"), 0.475, 5e-4);
  EXPECT_NEAR(Focal(result), 3150.0, 10.0);
  EXPECT_NEAR(result.readMat("cameraMatrix").at<double>(1, 2), 1007.0, 1.0);
  EXPECT_NE(printed_.find("Verdict: worthless"), std::string::npos) << printed_;
}

TEST_F(RealPhotographs, OfAFlatSheetFlatViewsAreWorthlessAndTheOfficeIsUsable) {
  const std::vector<std::string> sparse = {"--solver", "sparse",        "--model",
                                           "classic",  "--sheet-shape", "flat"};
  Calibrate("flat-4x11", sparse, "8 of 10");
  EXPECT_NE(printed_.find("8 of 10 images used; 2 disagree\n"), std::string::npos) << printed_;
  EXPECT_NE(printed_.find("Verdict: worthless"), std::string::npos) << printed_;
  JSON office = Calibrate("office-4x11", sparse, "11 of 15");
  EXPECT_NEAR(Focal(office), 1074.05, 2.0);
  EXPECT_NE(printed_.find("Verdict: usable with care"), std::string::npos) << printed_;
  EXPECT_NE(printed_.find("The discs are printed off by about 0.0"), std::string::npos) << printed_;
}

TEST_F(RealPhotographs, EndoscopeLeftRational) {
  JSON result = Calibrate("endoscope-stereo-4x11/left", VGA_RATIONAL, "9 of 9");
  EXPECT_NEAR(result.readDouble("error"), 0.379975, 2e-6);
}

TEST_F(RealPhotographs, EndoscopeRightRational) {
  JSON result = Calibrate("endoscope-stereo-4x11/right", VGA_RATIONAL, "9 of 9");
  EXPECT_NEAR(result.readDouble("error"), 0.386482, 2e-6);
}

TEST_F(RealPhotographs, EndoscopePairRational) {
  const std::string right = std::string(VELMORA_SHARED_DATA) + "/endoscope-stereo-4x11/right";
  JSON result =
      Calibrate("endoscope-stereo-4x11/left", VGA + std::vector<std::string>{"--right", right}, "9 of 9");
  EXPECT_EQ(result.readInt("sensor"), 1);
  EXPECT_NEAR(result.readDouble("error"), 0.385785, 2e-6);
  const cv::Mat T = result.readMat("T");
  EXPECT_NEAR(cv::norm(T), 0.018554, 1e-6);
  EXPECT_NEAR(T.at<double>(0), -0.01810, 1e-5);
  EXPECT_NEAR(T.at<double>(1), -0.00034, 1e-5);
  EXPECT_NEAR(T.at<double>(2), -0.00406, 1e-5);
}

class RealPhotographsRobust : public RealPhotographs {
 protected:
  RealPhotographsRobust() { finder_ = "robust"; }
};

/// The one that is most oblique, of a sheet that is not quite flat, fits worse than all others.
TEST_F(RealPhotographsRobust, OfficeGivesAllItsViews) {
  JSON result = Calibrate("office-4x11", {"--model", "classic"}, "15 of 15");
  EXPECT_LT(result.readDouble("error"), 0.175);
  EXPECT_NEAR(Focal(result), 1074.05, 10.0);
}

/// A folder of all office views but some.
class OfficeWithout {
 public:
  explicit OfficeWithout(const std::set<std::string>& others) {
    for (const auto& file : std::filesystem::directory_iterator(VELMORA_SHARED_DATA "/office-4x11")) {
      const std::string name = file.path().filename().string();
      if (others.count(name) == 0) std::filesystem::create_symlink(file.path(), folder_.File(name));
    }
  }
  std::string Path() const { return folder_.Path(); }

 private:
  support::TemporaryFolder folder_;
};

TEST_F(RealPhotographsRobust, TheViewsThatBothSearchesFindGiveNoWorseAResult) {
  const OfficeWithout views(
      {"dotboard_close_10.jpg", "dotboard_close_2.jpg", "dotboard_far_6.jpg", "dotboard_far_9.jpg"});
  JSON result = CalibrateIn(views.Path(), {"--model", "classic"}, "11 of 11");
  EXPECT_LT(result.readDouble("error"), 0.143817);
}

const std::vector<std::string> SPARSE = {"--solver", "sparse", "--model", "classic"};

/// That sheet was bent by 5 mm and printed out of proportion: with its shape the views, which a flat one
/// makes worthless, give square pixels and a principal point in the middle, of which the computation knows
/// nothing.
TEST_F(RealPhotographsRobust, FlatViewsAreACameraOnceTheSheetHasItsShape) {
  JSON result = Calibrate("flat-4x11", SPARSE, "10 of 10");
  const cv::Mat K = result.readMat("cameraMatrix");
  EXPECT_NEAR(K.at<double>(0, 0) / K.at<double>(1, 1), 1.0, 0.003);
  EXPECT_NEAR(K.at<double>(0, 2), 319.5, 40.0);
  EXPECT_NEAR(K.at<double>(1, 2), 239.5, 40.0);
  EXPECT_LT(result.readDouble("error"), 0.025);
  EXPECT_EQ(printed_.find("Verdict: good"), std::string::npos) << printed_;
  EXPECT_NE(printed_.find("The sheet is bent by 5."), std::string::npos) << printed_;
}

TEST_F(RealPhotographsRobust, TheOfficeIsUsableOnceTheSheetHasItsShape) {
  JSON result = Calibrate("office-4x11", SPARSE, "15 of 15");
  EXPECT_LT(result.readDouble("error"), 0.08);
  EXPECT_NEAR(Focal(result), 1110.0, 10.0);
  EXPECT_NE(printed_.find("This is taken into account; projections would be off by"), std::string::npos)
      << printed_;
  EXPECT_NE(printed_.find("The dots are off their places by 0."), std::string::npos) << printed_;
  EXPECT_EQ(printed_.find("Verdict: worthless"), std::string::npos) << printed_;
}

/// The robust solver leaves out the points of the bent sheet that no flat one explains.
TEST_F(RealPhotographsRobust, AllViewsTogetherGiveNoWorseAResultOfAFlatSheet) {
  JSON result =
      Calibrate("office-4x11", SPARSE + std::vector<std::string>{"--sheet-shape", "flat"}, "15 of 15");
  EXPECT_LT(result.readDouble("error"), 0.143817);
  EXPECT_NEAR(Focal(result), 1074.05, 10.0);
  // Both are true of that sheet: whole rows are beside their places, and all of it is bent.
  EXPECT_NE(printed_.find("The discs are printed off by about 0.0"), std::string::npos) << printed_;
  EXPECT_NE(printed_.find("The sheet is bent by about 0."), std::string::npos) << printed_;
}

TEST_F(RealPhotographsRobust, AllViewsButTheBentOneGiveAboutThatResultToo) {
  const OfficeWithout views({"dotboard_close_10.jpg"});
  JSON result = CalibrateIn(views.Path(), {"--model", "classic"}, "14 of 14");
  EXPECT_LT(result.readDouble("error"), 1.03 * 0.143817);
}

/// One of them is cut by the crop.
TEST_F(RealPhotographsRobust, OfficeAtProcessingSizeGivesAllViewsThatAreWhole) {
  JSON result = Calibrate("office-4x11", VGA + std::vector<std::string>{"--model", "classic"}, "14 of 15");
  EXPECT_NEAR(Focal(result), 716.0, 8.0);
}

TEST_F(RealPhotographsRobust, FlatViewsAreAllFound) {
  JSON result = Calibrate("flat-4x11", {"--model", "classic"}, "10 of 10");
  EXPECT_LT(result.readDouble("error"), 1.03 * 0.475);
}

TEST_F(RealPhotographsRobust, EndoscopePairsAreAllFound) {
  const std::string right = std::string(VELMORA_SHARED_DATA) + "/endoscope-stereo-4x11/right";
  JSON result =
      Calibrate("endoscope-stereo-4x11/left", VGA + std::vector<std::string>{"--right", right}, "9 of 9");
  EXPECT_LT(result.readDouble("error"), 1.03 * 0.385785);
}

TEST_F(RealPhotographsRobust, APictureThatTheCropCutsIsRejectedInWords) {
  support::Process tool({VELMORA_BATCH,
                         std::string(VELMORA_SHARED_DATA) + "/office-4x11/dotboard_close_16.jpg", "--width",
                         "640", "--height", "480", "--whole-grids", "--output", folder_.File("result")});
  EXPECT_EQ(tool.WaitForExit(std::chrono::minutes(1)), 1);
  EXPECT_NE(tool.Output().find("no grid found: part of the grid is outside the picture"), std::string::npos)
      << tool.Output();
}

/// Each image of another grid is found with its own size and never as a 4 x 11.
TEST_F(RealPhotographs, OtherGridsAreFoundWithTheirOwnSizeOnly) {
  const std::vector<std::pair<std::string, std::string>> grids = {
      {"acircles1.png", "7x13"}, {"acircles4.png", "5x5"}, {"acircles7.png", "3x9"}};
  for (const auto& [file, grid] : grids) {
    for (const auto& [asked, finder] :
         {std::pair(grid, "standard"), std::pair(std::string("4x11"), "standard"), std::pair(grid, "robust"),
          std::pair(std::string("4x11"), "robust")}) {
      support::Process tool({VELMORA_BATCH, std::string(VELMORA_SHARED_DATA) + "/other-grids/" + file,
                             "--grid", asked, "--finder", finder, "--output", folder_.File("result")});
      EXPECT_EQ(tool.WaitForExit(std::chrono::minutes(1)), 1) << tool.Errors();
      const std::string views = asked == grid ? "1 of 1 image used\n" : "0 of 1 image used\n";
      EXPECT_NE(tool.Output().find(views), std::string::npos) << file << " asked for " << asked;
    }
  }
}

}  // namespace
