/// How velmora-batch reads and searches many images: on two threads against one, and with what memory.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "Calibration.h"
#include "Frames.h"
#include "Ratio.h"
#include "batch/InOrder.h"
#include "batch/KeptSession.h"
#include "batch/SharedSearch.h"
#include "batch/SingleSearch.h"

namespace {

namespace fs = std::filesystem;

/// Photographs of the grid, some of them without one. Removed with the object.
class Folder {
 public:
  Folder() {
    fs::create_directory(path_);
    for (int i = 0; i < IMAGES; ++i) {
      const cv::Size size(1280, 960);
      const cv::Mat image = i % 4 == 3 ? bench::EmptyFrame(size) : bench::GridFrame(size, i);
      files_.push_back((path_ / (std::to_string(i) + ".png")).string());
      if (!cv::imwrite(files_.back(), image)) throw std::runtime_error("cannot write " + files_.back());
    }
  }
  ~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  /// Any number of images: those that there are, again and again.
  const std::string& File(int number) const { return files_.at(static_cast<size_t>(number % IMAGES)); }

  const fs::path& Path() const { return path_; }

  static constexpr int IMAGES = 20;

 private:
  const fs::path path_ = fs::temp_directory_path() / ("velmora-bench-" + std::to_string(getpid()));
  std::vector<std::string> files_;
};

template <typename Work>
double Seconds(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Reads and searches that many images; how many of them show the grid.
int Search(const Folder& folder, int images, size_t threads) {
  const batch::Arguments arguments;
  struct Item {
    batch::NamedImage input;
    batch::SearchOutcome outcome;
  };
  int next = 0;
  int found = 0;
  batch::InOrder<Item>(
      threads,
      [&](Item& item) {
        if (next == images) return false;
        item.input.name = item.input.unread = folder.File(next++);
        return true;
      },
      [&](Item& item) { item.outcome = batch::SearchImage(item.input, arguments, batch::Wanted::Views); },
      [&](Item& item) { found += item.outcome.fault.empty() ? 1 : 0; });
  return found;
}

/// `ratio` is at most 0.6 on two cores that have nothing else to do.
void TwoThreads(benchmark::State& state) {
  Calibration::SetLogLevel(0);
  cv::setNumThreads(1);  // as in the program
  const Folder folder;
  bench::Ratio().Run(
      state, [&] { benchmark::DoNotOptimize(Search(folder, Folder::IMAGES, 2)); },
      [&] { benchmark::DoNotOptimize(Search(folder, Folder::IMAGES, 1)); });
  state.counters["images"] = Folder::IMAGES;
  cv::setNumThreads(-1);
}

/// The most memory that the process has had since this was called last, megabytes.
double PeakMemory() {
  double kilobytes = 0.0;
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) kilobytes = std::stod(line.substr(6));
  }
  std::ofstream("/proc/self/clear_refs") << "5";  // forgets the peak
  return kilobytes / 1024.0;
}

/// Of as many images as a thousand there is no more in memory than of sixty: `growth_mb` is near zero.
void MemoryOfManyImages(benchmark::State& state) {
  Calibration::SetLogLevel(0);
  cv::setNumThreads(1);
  const Folder folder;
  for (auto iteration : state) {
    static_cast<void>(iteration);
    PeakMemory();
    benchmark::DoNotOptimize(Search(folder, 60, 2));
    const double few = PeakMemory();
    benchmark::DoNotOptimize(Search(folder, 1000, 2));
    const double many = PeakMemory();
    state.counters["mb_of_60"] = few;
    state.counters["mb_of_1000"] = many;
    state.counters["growth_mb"] = many - few;
  }
  cv::setNumThreads(-1);
}

/// Searches the files into a session and takes all that it has; how many views there are.
int SearchIntoSession(const std::vector<std::string>& files, const std::string& folder) {
  batch::Arguments arguments;
  arguments.session = folder;
  arguments.inputs = files;
  batch::KeptSession session;
  session.Open(arguments);
  session.Begin(arguments);
  batch::RunContext context;
  context.session = &session;
  batch::ImageStream stream(files, {});
  int views = 0;
  batch::SearchSteps steps;
  steps.next = [&](std::vector<batch::NamedImage>& inputs) {
    inputs.resize(1);
    return stream.Next(inputs.front());
  };
  steps.take = [&](batch::SearchedImages& images) {
    views += images.outcomes.front().fault.empty() ? 1 : 0;
    return images.outcomes.front().fault;
  };
  steps.expected = [&] { return stream.ExpectedCount(); };
  batch::SearchShared(arguments, batch::Wanted::Views, steps, context);
  return views;
}

/// Adding five photographs to a session of three hundred, all of which are given again, against searching the
/// three hundred: `ratio` is below 0.05.
void FiveMoreOfASession(benchmark::State& state) {
  Calibration::SetLogLevel(0);
  constexpr int MANY = 300;
  constexpr int MORE = 5;
  const Folder folder;
  for (auto iteration : state) {
    const fs::path place = folder.Path() / "many";
    fs::create_directory(place);
    std::vector<std::string> files;
    const auto add = [&] {
      files.push_back((place / (std::to_string(1000 + files.size()) + ".png")).string());
      std::ifstream image(folder.File(static_cast<int>(files.size())), std::ios::binary);
      // What follows the end of an image makes it another file.
      std::ofstream(files.back(), std::ios::binary) << image.rdbuf() << files.size();
    };
    while (files.size() < MANY) add();
    const std::string session = (place / "desk").string();
    const double all = Seconds([&] { benchmark::DoNotOptimize(SearchIntoSession(files, session)); });
    while (files.size() < MANY + MORE) add();
    const double more = Seconds([&] { benchmark::DoNotOptimize(SearchIntoSession(files, session)); });
    fs::remove_all(place);
    state.SetIterationTime(more);
    state.counters["all_ms"] = all * 1e3;
    state.counters["ratio"] = more / all;
  }
}

}  // namespace

BENCHMARK(FiveMoreOfASession)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(TwoThreads)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(MemoryOfManyImages)->Iterations(1)->Unit(benchmark::kMillisecond);
