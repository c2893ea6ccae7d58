/// Where the headless tool finds its images.
#include "batch/ImageStream.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>

#include "TemporaryFolder.h"

namespace {

using batch::ExpandInputs;
using batch::SamplingStep;
using common::InputError;

class ImageStreams : public ::testing::Test {
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

  std::vector<batch::NamedImage> All(const std::vector<std::string>& inputs,
                                     const batch::SamplingOptions& options = {}) {
    batch::ImageStream stream(ExpandInputs(inputs), options);
    std::vector<batch::NamedImage> images;
    for (batch::NamedImage input; stream.Next(input);) {
      batch::Read(input);
      images.push_back({input.name, input.image.clone()});
    }
    return images;
  }

  support::TemporaryFolder folder_;
};

TEST_F(ImageStreams, AFolderGivesItsImagesInOrderOfName) {
  const std::string b = Image("b.png");
  const std::string a = Image("a.JPG");
  support::WriteText(folder_.File("notes.txt"), "no picture");
  EXPECT_EQ(ExpandInputs({folder_.Path()}), (std::vector<std::string>{a, b}));
}

TEST_F(ImageStreams, APatternGivesItsMatches) {
  const std::string one = Image("left_1.png");
  const std::string two = Image("left_2.png");
  Image("right_1.png");
  EXPECT_EQ(ExpandInputs({folder_.File("left_*.png")}), (std::vector<std::string>{one, two}));
}

TEST_F(ImageStreams, AFileWhoseNameLooksLikeAPatternIsTakenAsItIs) {
  const std::string path = Image("a[1].png");
  EXPECT_EQ(ExpandInputs({path}), std::vector<std::string>{path});
}

TEST_F(ImageStreams, InputsThatLeadNowhereAreNamed) {
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

TEST_F(ImageStreams, ImagesAreHandedOutWithTheirNames) {
  const auto inputs = All({Image("x.png", 7), Image("y.png", 9)});
  ASSERT_EQ(inputs.size(), 2u);
  EXPECT_EQ(inputs[0].name, "x.png");
  EXPECT_EQ(inputs[0].image.at<cv::Vec3b>(3, 4), cv::Vec3b(7, 7, 7));
  EXPECT_EQ(inputs[1].name, "y.png");
}

TEST_F(ImageStreams, ABrokenImageIsHandedOutEmpty) {
  support::WriteText(folder_.File("broken.png"), "not a picture");
  const auto inputs = All({folder_.File("broken.png"), Image("whole.png")});
  ASSERT_EQ(inputs.size(), 2u);
  EXPECT_TRUE(inputs[0].image.empty());
  EXPECT_FALSE(inputs[1].image.empty());
}

/// An image file that claims a size and holds next to nothing.
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

TEST_F(ImageStreams, AnImageThatClaimsAnImpossibleSizeIsHandedOutEmpty) {
  support::WriteText(folder_.File("claims.bmp"), Claiming(60000, 60000));
  support::WriteText(folder_.File("nothing.png"), "");
  const auto inputs = All({folder_.File("claims.bmp"), folder_.File("nothing.png"), Image("whole.png")});
  ASSERT_EQ(inputs.size(), 3u);
  EXPECT_TRUE(inputs[0].image.empty());
  EXPECT_TRUE(inputs[1].image.empty());
  EXPECT_FALSE(inputs[2].image.empty());
}

TEST_F(ImageStreams, ImagesAreNotReadBeforeTheyAreToBe) {
  const std::string image = Image("a.png");
  support::WriteText(folder_.File("photograph"), support::ReadText(image));
  batch::ImageStream stream({image, folder_.File("photograph"), Video("clip.avi", 1)}, {});
  batch::NamedImage input;
  ASSERT_TRUE(stream.Next(input));
  EXPECT_EQ(input.unread, image);
  EXPECT_TRUE(input.image.empty());
  batch::Read(input);
  EXPECT_EQ(input.unread, "");
  EXPECT_EQ(input.image.size(), cv::Size(30, 20));
  for (const char* name : {"photograph", "clip.avi#0"}) {  // which only reading tells
    ASSERT_TRUE(stream.Next(input));
    EXPECT_EQ(input.name, name);
    EXPECT_EQ(input.unread, "");
    EXPECT_FALSE(input.image.empty());
  }
  EXPECT_FALSE(stream.Next(input));
}

TEST_F(ImageStreams, AFileThatIsNeitherPictureNorVideoIsRefused) {
  support::WriteText(folder_.File("data.bin"), "neither");
  EXPECT_THROW(All({folder_.File("data.bin")}), InputError);
}

TEST_F(ImageStreams, EveryNthFrameOfAVideoIsTaken) {
  batch::SamplingOptions options;
  options.every = 4;
  const auto inputs = All({Video("clip.avi", 10)}, options);
  ASSERT_EQ(inputs.size(), 3u);
  for (size_t i = 0; i < inputs.size(); ++i) {
    EXPECT_EQ(inputs[i].name, "clip.avi#" + std::to_string(4 * i));
    EXPECT_NEAR(cv::mean(inputs[i].image)[0], 40.0 * static_cast<double>(i), 3.0);
  }
}

TEST_F(ImageStreams, ImagesAndVideosMayBeMixed) {
  const auto inputs = All({Image("first.png"), Video("clip.avi", 3), Image("last.png")});
  ASSERT_EQ(inputs.size(), 5u);
  EXPECT_EQ(inputs.front().name, "first.png");
  EXPECT_EQ(inputs[3].name, "clip.avi#2");
  EXPECT_EQ(inputs.back().name, "last.png");
}

TEST_F(ImageStreams, TheCountOfImagesAndOfAVideoIsKnownAhead) {
  const std::string image = Image("a.png");
  EXPECT_EQ(batch::ImageStream({image, image, image}, {}).ExpectedCount(), 3);
  batch::ImageStream video({Video("clip.avi", 6)}, {});
  batch::NamedImage input;
  ASSERT_TRUE(video.Next(input));
  EXPECT_EQ(video.ExpectedCount(), 6);
}

TEST(ImageSampling, LongVideosAreThinnedToAboutAHundredAndFiftyFrames) {
  EXPECT_EQ(SamplingStep({}, 150), 1);
  EXPECT_EQ(SamplingStep({}, 151), 2);
  EXPECT_EQ(SamplingStep({}, 3000), 20);
  EXPECT_EQ(SamplingStep({}, 0), 1);
  EXPECT_EQ(SamplingStep({}, -1e18), 1);
  EXPECT_EQ(SamplingStep({9, 300}, 3000), 9);
}

}  // namespace
