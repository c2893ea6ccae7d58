/// Runs of the headless tool with sessions.
#include "SessionRuns.h"

#include <filesystem>
#include <opencv2/imgcodecs.hpp>

#include "Rig.h"
#include "RigRenderer.h"

namespace batch_runs {

namespace fs = std::filesystem;

support::TemporaryFolder* SessionRuns::rendered_ = nullptr;

std::string NameOf(int number) {
  return std::to_string(100 + number) + ".png";
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

int CountOf(const std::string& text, const std::string& part) {
  int count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
  return count;
}

void SessionRuns::SetUpTestSuite() {
  rendered_ = new support::TemporaryFolder;
  for (const char* name : {"left", "right", "both"}) fs::create_directory(rendered_->File(name));
  const world::Pair rig =
      world::SideBySidePair({640, 480}, 60.0, 0.08, 2.0, {-0.1, 0.02, 0, 0, 0}, {-0.08, 0.01, 0, 0, 0});
  world::Scene scene;
  scene.noise = 2.0;
  world::RigRenderer renderer(rig, scene);
  int number = 0;
  for (const world::Pose& pose : world::RigViews(rig, IMAGES)) {
    const std::vector<cv::Mat> pair = renderer.Render(pose, static_cast<std::uint64_t>(number));
    const std::string name = "/" + NameOf(number++);
    cv::imwrite(rendered_->File("left") + name, pair[0]);
    cv::imwrite(rendered_->File("right") + name, pair[1]);
    cv::imwrite(rendered_->File("both") + name, world::SideBySide(pair));
  }
}

void SessionRuns::TearDownTestSuite() {
  delete rendered_;
  rendered_ = nullptr;
}

std::string SessionRuns::Copied(const std::string& folder, int from, int end) const {
  fs::create_directories(File(folder));
  for (int i = from; i < end; ++i) {
    fs::copy_file(Rendered("left/" + NameOf(i)), File(folder + "/" + NameOf(i)),
                  fs::copy_options::overwrite_existing);
  }
  return folder;
}

support::Process::Options SessionRuns::InPlace() const {
  support::Process::Options options;
  options.folder = place_.Path();
  return options;
}

Words SessionRuns::Command(const Words& words) const {
  Words command = {VELMORA_BATCH};
  command.insert(command.end(), words.begin(), words.end());
  return command;
}

Outcome SessionRuns::Run(const Words& words) const {
  support::Process tool(Command(words), InPlace());
  Outcome outcome;
  outcome.status = tool.WaitForExit(LONG_ENOUGH);
  outcome.output = tool.Output();
  outcome.errors = tool.Errors();
  return outcome;
}

Outcome SessionRuns::RunWell(const Words& words) const {
  Outcome outcome = Run(words);
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  return outcome;
}

std::string SessionRuns::Refusal(const Words& words) const {
  const Outcome outcome = Run(words);
  EXPECT_EQ(outcome.status, 2) << outcome.errors;
  return outcome.errors;
}

}  // namespace batch_runs
