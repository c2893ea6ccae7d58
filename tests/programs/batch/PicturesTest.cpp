/// Where the headless tool finds its pictures.
#include "batch/Pictures.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>

#include "TemporaryFolder.h"

namespace {

using batch::ExpandInputs;
using batch::SamplingStep;
using common::InputError;

class Pictures : public ::testing::Test {
 protected:
  std::string Image(const std::string& name, int grey = 100) {
    const std::string path = folder_.File(name);
    EXPECT_TRUE(cv::imwrite(path, cv::Mat(20, 30, CV_8UC3, cv::Scalar::all(grey))));
    return path;
  }

  /// Frame i has the grey value 10 i.
  std::string Video(const std::string& name, int frames) {
    const std::string path = folder_.File(name);
    cv::VideoWriter writer(path, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 25.0, cv::Size(64, 48));
    EXPECT_TRUE(writer.isOpened());
    for (int i = 0; i < frames; ++i) writer.write(cv::Mat(48, 64, CV_8UC3, cv::Scalar::all(10 * i)));
    return path;
  }

  std::vector<batch::Picture> All(const std::vector<std::string>& inputs,
                                  const batch::SamplingOptions& options = {}) {
    batch::PictureStream stream(ExpandInputs(inputs), options);
    std::vector<batch::Picture> pictures;
    for (batch::Picture picture; stream.Next(picture);)
      pictures.push_back({picture.name, picture.image.clone()});
    return pictures;
  }

  support::TemporaryFolder folder_;
};

TEST_F(Pictures, AFolderGivesItsImagesInOrderOfName) {
  const std::string b = Image("b.png");
  const std::string a = Image("a.JPG");
  support::WriteText(folder_.File("notes.txt"), "no picture");
  EXPECT_EQ(ExpandInputs({folder_.Path()}), (std::vector<std::string>{a, b}));
}

TEST_F(Pictures, APatternGivesItsMatches) {
  const std::string one = Image("left_1.png");
  const std::string two = Image("left_2.png");
  Image("right_1.png");
  EXPECT_EQ(ExpandInputs({folder_.File("left_*.png")}), (std::vector<std::string>{one, two}));
}

TEST_F(Pictures, AFileWhoseNameLooksLikeAPatternIsTakenAsItIs) {
  const std::string path = Image("a[1].png");
  EXPECT_EQ(ExpandInputs({path}), std::vector<std::string>{path});
}

TEST_F(Pictures, InputsThatLeadNowhereAreNamed) {
  const auto messageOf = [](const std::string& input) -> std::string {
    try {
      ExpandInputs({input});
    } catch (const InputError& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(messageOf("missing.png"), "'missing.png' does not exist");
  EXPECT_EQ(messageOf(folder_.File("*.png")), "nothing matches '" + folder_.File("*.png") + "'");
  EXPECT_EQ(messageOf(folder_.Path()), "no image in folder '" + folder_.Path() + "'");
}

TEST_F(Pictures, ImagesAreHandedOutWithTheirNames) {
  const auto pictures = All({Image("x.png", 7), Image("y.png", 9)});
  ASSERT_EQ(pictures.size(), 2u);
  EXPECT_EQ(pictures[0].name, "x.png");
  EXPECT_EQ(pictures[0].image.at<cv::Vec3b>(3, 4), cv::Vec3b(7, 7, 7));
  EXPECT_EQ(pictures[1].name, "y.png");
}

TEST_F(Pictures, ABrokenImageIsHandedOutEmpty) {
  support::WriteText(folder_.File("broken.png"), "not a picture");
  const auto pictures = All({folder_.File("broken.png"), Image("whole.png")});
  ASSERT_EQ(pictures.size(), 2u);
  EXPECT_TRUE(pictures[0].image.empty());
  EXPECT_FALSE(pictures[1].image.empty());
}

/// A picture file that claims a size and holds next to nothing.
std::string Claiming(int width, int height) {
  std::vector<unsigned char> bytes;
  cv::imencode(".bmp", cv::Mat(1, 1, CV_8UC3), bytes);
  const auto put = [&bytes](size_t at, int value) {
    for (size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<unsigned char>(value >> (8 * i));
  };
  put(18, width);  // as the header of a bitmap has them
  put(22, height);
  return std::string(bytes.begin(), bytes.end());
}

TEST_F(Pictures, AnImageThatClaimsAnImpossibleSizeIsHandedOutEmpty) {
  support::WriteText(folder_.File("claims.bmp"), Claiming(60000, 60000));
  support::WriteText(folder_.File("nothing.png"), "");
  const auto pictures = All({folder_.File("claims.bmp"), folder_.File("nothing.png"), Image("whole.png")});
  ASSERT_EQ(pictures.size(), 3u);
  EXPECT_TRUE(pictures[0].image.empty());
  EXPECT_TRUE(pictures[1].image.empty());
  EXPECT_FALSE(pictures[2].image.empty());
}

TEST_F(Pictures, AFileThatIsNeitherPictureNorVideoIsRefused) {
  support::WriteText(folder_.File("data.bin"), "neither");
  EXPECT_THROW(All({folder_.File("data.bin")}), InputError);
}

TEST_F(Pictures, EveryNthFrameOfAVideoIsTaken) {
  batch::SamplingOptions options;
  options.every = 4;
  const auto pictures = All({Video("clip.avi", 10)}, options);
  ASSERT_EQ(pictures.size(), 3u);
  for (size_t i = 0; i < pictures.size(); ++i) {
    EXPECT_EQ(pictures[i].name, "clip.avi#" + std::to_string(4 * i));
    EXPECT_NEAR(cv::mean(pictures[i].image)[0], 40.0 * static_cast<double>(i), 3.0);
  }
}

TEST_F(Pictures, ImagesAndVideosMayBeMixed) {
  const auto pictures = All({Image("first.png"), Video("clip.avi", 3), Image("last.png")});
  ASSERT_EQ(pictures.size(), 5u);
  EXPECT_EQ(pictures.front().name, "first.png");
  EXPECT_EQ(pictures[3].name, "clip.avi#2");
  EXPECT_EQ(pictures.back().name, "last.png");
}

TEST_F(Pictures, TheCountOfImagesAndOfAVideoIsKnownAhead) {
  const std::string image = Image("a.png");
  EXPECT_EQ(batch::PictureStream({image, image, image}, {}).ExpectedCount(), 3);
  batch::PictureStream video({Video("clip.avi", 6)}, {});
  batch::Picture picture;
  ASSERT_TRUE(video.Next(picture));
  EXPECT_EQ(video.ExpectedCount(), 6);
}

TEST(PictureSampling, LongVideosAreThinnedToAboutAHundredAndFiftyFrames) {
  EXPECT_EQ(SamplingStep({}, 150), 1);
  EXPECT_EQ(SamplingStep({}, 151), 2);
  EXPECT_EQ(SamplingStep({}, 3000), 20);
  EXPECT_EQ(SamplingStep({}, 0), 1);
  EXPECT_EQ(SamplingStep({}, -1e18), 1);
  EXPECT_EQ(SamplingStep({9, 300}, 3000), 9);
}

}  // namespace
