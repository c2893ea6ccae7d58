/// Writing and reading a result file, beside writing and reading the same bytes.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "JSON.h"
#include "Ratio.h"

namespace {

JSON SomeResult() {
  JSON document;
  document.addInt("sensor", 0);
  document.addDouble("error", 0.123456789);
  document.addInt("imgWidth", 640);
  document.addInt("imgHeight", 480);
  cv::Mat K = (cv::Mat_<double>(3, 3) << 601.25, 0, 319.5, 0, 602.75, 239.5, 0, 0, 1);
  cv::Mat D(1, 14, CV_64F);
  cv::RNG(7).fill(D, cv::RNG::UNIFORM, -1.0, 1.0);
  document.addMat("cameraMatrix", K);
  document.addMat("distCoefs", D);
  return document;
}

std::string ScratchFile(const char* name) {
  return (std::filesystem::temp_directory_path() / name).string();
}

void WriteResultFile(benchmark::State& state) {
  const JSON document = SomeResult();
  const std::string text = document.toJson();
  const std::string path = ScratchFile("velmora-bench-write.json");
  const std::string barePath = ScratchFile("velmora-bench-bare.json");
  bench::Ratio().Run(
      state, [&] { document.save(path); }, [&] { std::ofstream(barePath) << text; });
  std::remove(path.c_str());
  std::remove(barePath.c_str());
}

void ReadResultFile(benchmark::State& state) {
  const std::string path = ScratchFile("velmora-bench-read.json");
  SomeResult().save(path);
  bench::Ratio().Run(
      state,
      [&] {
        JSON document;
        document.load(path);
        benchmark::DoNotOptimize(document.readMat("cameraMatrix"));
        benchmark::DoNotOptimize(document.readMat("distCoefs"));
      },
      [&] {
        std::ifstream file(path);
        const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        benchmark::DoNotOptimize(nlohmann::json::parse(text));
      });
  std::remove(path.c_str());
}

}  // namespace

BENCHMARK(WriteResultFile)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadResultFile)->UseManualTime()->Unit(benchmark::kMicrosecond);
