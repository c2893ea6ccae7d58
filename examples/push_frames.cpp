/// How a program embeds the engine: it pushes frames, and gets each back annotated, with the status.
///
///   velmora-push-frames SOURCE FOLDER
///
/// SOURCE is a folder of pictures or a video. Annotated frames go to FOLDER as JPEG files, status lines to
/// standard output; every tenth frame that shows the grid becomes a snapshot, and with five or more of them
/// the camera is calibrated at the end.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/videoio.hpp>

#include "Calibration.h"
#include "Calibrator.h"

namespace {

namespace fs = std::filesystem;

const cv::Size GRID(4, 11);
constexpr float UNIT = 0.02F;
constexpr int WARNINGS = 2;
constexpr int FRAMES_PER_SNAPSHOT = 10;

/// The frames of a folder in the order of their names, or of a video.
class Frames {
 public:
  explicit Frames(const std::string& source) {
    if (!fs::is_directory(source)) {
      video_.open(source);
      return;
    }
    for (const auto& entry : fs::directory_iterator(source)) {
      if (entry.is_regular_file()) files_.push_back(entry.path().string());
    }
    std::sort(files_.begin(), files_.end());
  }

  /// A picture with pixels of its own each time; empty at the end.
  cv::Mat Next() {
    cv::Mat frame;
    if (video_.isOpened()) {
      video_.read(frame);
      return frame.clone();
    }
    while (frame.empty() && next_ < files_.size()) frame = cv::imread(files_[next_++], cv::IMREAD_COLOR);
    return frame;
  }

 private:
  cv::VideoCapture video_;
  std::vector<std::string> files_;
  size_t next_ = 0;
};

/// Keeps what the engine hands out.
class Album {
 public:
  explicit Album(std::string folder) : folder_(std::move(folder)) {}

  void Add(const std::vector<unsigned char>& jpeg, const std::string& status) {
    char name[32];
    std::snprintf(name, sizeof(name), "frame%05d.jpg", ++count_);
    std::ofstream file(fs::path(folder_) / name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(jpeg.data()), static_cast<std::streamsize>(jpeg.size()));
    file.close();
    if (!file) throw std::runtime_error("cannot write " + std::string(name));
    const nlohmann::json answer = nlohmann::json::parse(status);
    std::cout << name << ": status " << answer.at("ii") << ", snapshots " << answer.at("ni") << '\n';
  }

  int Count() const { return count_; }

 private:
  std::string folder_;
  int count_ = 0;
};

/// Pushes every frame; without an open grabber each is processed before the call returns.
void PushAll(cv::Mat frame, Frames& frames, Calibrator& calibrator) {
  int tag = 0;
  int found = 0;
  for (; !frame.empty(); frame = frames.Next()) {
    calibrator.NextFrameRGB(frame, ++tag, nullptr, false);
    if (calibrator.IsDetected() && found++ % FRAMES_PER_SNAPSHOT == 0) calibrator.AddPoints();
  }
}

int Run(const std::string& source, const std::string& folder) {
  Calibration::SetLogLevel(WARNINGS);
  fs::create_directories(folder);
  Frames frames(source);
  cv::Mat first = frames.Next();
  if (first.empty()) throw std::runtime_error("no frames in " + source);

  Calibrator calibrator(GRID, UNIT, Calibrator::MONOCULAR, first.cols, first.rows);
  Album album(folder);
  calibrator.SetFrameListener([&album](const std::vector<unsigned char>& jpeg, const std::string& status) {
    album.Add(jpeg, status);
  });
  PushAll(std::move(first), frames, calibrator);
  std::cout << album.Count() << " frames, " << calibrator.GetNumberOfRecords() << " snapshots\n";
  if (calibrator.GetStatus() == Calibrator::STATUS_READY) {
    std::cout << "RMS reprojection error: " << calibrator.ComputeCalibration(Calibrator::MODEL_CLASSIC)
              << " px\n";
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: velmora-push-frames SOURCE FOLDER\n";
    return 2;
  }
  try {
    return Run(argv[1], argv[2]);
  } catch (const std::exception& fault) {
    std::cerr << "ERROR: " << fault.what() << ".\n";
    return 1;
  }
}
