/// An installation and the packages, as their users find them.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>

#include "Process.h"

namespace {

namespace fs = std::filesystem;
using support::Process;
constexpr std::chrono::minutes LONG_ENOUGH{8};

/// With the one that is built where Java is.
std::vector<std::string> Programs() {
  std::vector<std::string> programs = {"Velmora",        "velmora-batch", "velmora-guided",
                                       "velmora-render", "velmora-poses", "velmora-compare"};
  if (*VELMORA_JAVAC != '\0') programs.push_back("velmora-live");
  return programs;
}

const std::vector<std::string> PROGRAMS = Programs();
const char* const CONSUMER_OUTPUT = "5.1.0 TWFu 100 12\n";

/// Runs a command to its end; what it printed on standard output. A failure is reported with its words.
std::string OutputOf(const std::vector<std::string>& command, const Process::Options& options = {}) {
  Process process(command, options);
  const int status = process.WaitForExit(LONG_ENOUGH);
  EXPECT_EQ(status, 0) << command.front() << ": " << process.Output() << process.Errors();
  return process.Output();
}

/// Without variables that would let a program find a library elsewhere.
Process::Options OnItsOwn() {
  Process::Options options;
  options.unset = {"LD_LIBRARY_PATH", "CMAKE_PREFIX_PATH"};
  return options;
}

void ExpectHelpFromEveryProgramIn(const std::string& folder) {
  for (const std::string& program : PROGRAMS) {
    Process process({folder + "/" + program, "--help"}, OnItsOwn());
    const int asked = program == "Velmora" ? 1 : 0;
    EXPECT_EQ(process.WaitForExit(LONG_ENOUGH), asked) << program << process.Errors();
    EXPECT_NE(process.Output().find("--help"), std::string::npos) << program;
  }
}

/// An installation in a folder of its own, made once.
class Installation : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new support::TemporaryFolder;
    OutputOf({VELMORA_CMAKE, "--install", VELMORA_BUILD, "--prefix", Prefix()});
  }
  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }

  static std::string Prefix() { return folder_->File("prefix"); }
  static std::string Poses() { return Prefix() + "/share/velmora/poses-4x11.json"; }

  static support::TemporaryFolder* folder_;
};

support::TemporaryFolder* Installation::folder_ = nullptr;

TEST_F(Installation, RunsEveryProgram) {
  ExpectHelpFromEveryProgramIn(Prefix() + "/bin");
  std::set<std::string> installed;
  for (const auto& entry : fs::directory_iterator(Prefix() + "/bin")) {
    installed.insert(entry.path().filename().string());
  }
  EXPECT_EQ(installed, std::set<std::string>(PROGRAMS.begin(), PROGRAMS.end()))
      << "examples stay where they are";
  for (const std::string& program : PROGRAMS) {
    EXPECT_TRUE(fs::exists(Prefix() + "/share/man/man1/" + program + ".1")) << program;
  }
  EXPECT_TRUE(fs::exists(Prefix() + "/" VELMORA_LIBDIR "/velmora/velmora-window-probe"));
  // The guided program knows the poses that were installed with it.
  EXPECT_NE(OutputOf({Prefix() + "/bin/velmora-guided", "--help"}, OnItsOwn()).find(Poses()),
            std::string::npos);
}

TEST_F(Installation, IsFoundByCMake) {
  const std::string build = folder_->File("consumer");
  OutputOf({VELMORA_CMAKE, "-S", VELMORA_CONSUMER, "-B", build, "-DCMAKE_PREFIX_PATH=" + Prefix(),
            "-DCMAKE_CXX_COMPILER=" VELMORA_CXX},
           OnItsOwn());
  OutputOf({VELMORA_CMAKE, "--build", build}, OnItsOwn());
  EXPECT_EQ(OutputOf({build + "/consumer", Poses()}, OnItsOwn()), CONSUMER_OUTPUT);
}

TEST_F(Installation, IsFoundByPkgConfig) {
  const fs::path library = fs::path(Prefix()) / VELMORA_LIBDIR;
  Process::Options options = OnItsOwn();
  options.environment["PKG_CONFIG_PATH"] = (library / "pkgconfig").string();
  std::string flags = OutputOf({"pkg-config", "--cflags", "--libs", "velmora"}, options);
  flags.erase(std::remove(flags.begin(), flags.end(), '\n'), flags.end());
  const std::string program = folder_->File("by_pkg_config");
  OutputOf({"sh", "-c",
            std::string(VELMORA_CXX) + " -std=c++17 -o " + program + " " VELMORA_CONSUMER "/consumer.cpp " +
                flags});
  options.environment["LD_LIBRARY_PATH"] = library.string();
  options.unset.clear();
  EXPECT_EQ(OutputOf({program, Poses()}, options), CONSUMER_OUTPUT);
}

TEST_F(Installation, IsUsedByJavaPrograms) {
  const std::string javac = VELMORA_JAVAC;
  if (javac.empty()) GTEST_SKIP() << "built without Java";
  const std::string jar = Prefix() + "/" VELMORA_LIBDIR "/velmora.jar";
  OutputOf({javac, "-cp", jar, "-d", folder_->Path(), VELMORA_CONSUMER "/Consumer.java"});
  EXPECT_EQ(OutputOf({"java", "-cp", folder_->Path() + ":" + jar, "Consumer"}, OnItsOwn()), "5.1.0 100\n");
}

TEST_F(Installation, HasALiveWindowThatFindsTheEngineWhereverItIsMoved) {
  if (*VELMORA_JAVAC == '\0') GTEST_SKIP() << "built without Java";
  const std::string moved = folder_->File("moved here");
  fs::copy(Prefix(), moved, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  // The engine itself tells its version.
  EXPECT_EQ(OutputOf({moved + "/bin/velmora-live", "--version"}, OnItsOwn()), "5.1.0\n");
  const std::string link = folder_->File("live");
  fs::create_symlink(moved + "/bin/velmora-live", link);
  EXPECT_EQ(OutputOf({link, "--version"}, OnItsOwn()), "5.1.0\n");
}

TEST(Packages, RunFromARootOfTheirOwn) {
  const support::TemporaryFolder folder;
  OutputOf({VELMORA_CPACK, "-G", "DEB", "-B", folder.Path(), "--config",
            std::string(VELMORA_BUILD) + "/CPackConfig.cmake"});
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder.Path())) {
    if (entry.path().extension() != ".deb") continue;
    const std::string file = entry.path().string();
    std::string name = OutputOf({"dpkg-deb", "-f", file, "Package"});
    name.pop_back();
    names.insert(name);
    const std::string depends = OutputOf({"dpkg-deb", "-f", file, "Depends"});
    const char* const needed = name == "libvelmora5"    ? "libopencv-"
                               : name == "velmora-live" ? "libvelmora-java"
                                                        : "libvelmora5";
    EXPECT_NE(depends.find(needed), std::string::npos) << name << " depends on " << depends;
    OutputOf({"dpkg-deb", "-x", file, folder.File("root")});
  }
  std::set<std::string> expected = {"libvelmora5", "libvelmora-dev", "velmora"};
  if (*VELMORA_JAVAC != '\0') expected.insert({"libvelmora-java", "velmora-live"});
  EXPECT_EQ(names, expected);
  ExpectHelpFromEveryProgramIn(folder.File("root/usr/bin"));
  EXPECT_TRUE(fs::exists(folder.File("root/usr/share/velmora/poses-4x11.json")));
  EXPECT_TRUE(fs::exists(folder.File("root/usr/include/velmora/Calibrator.h")));
}

TEST(ManPages, NameEveryOptionOfTheirPrograms) {
  const std::regex option("(^|[ ,])(--[a-z][a-z_-]*)");
  for (const std::string& program : PROGRAMS) {
    std::string page = support::ReadText(std::string(VELMORA_MAN) + "/" + program + ".1");
    page = std::regex_replace(page, std::regex("\\\\-"), "-");
    Process process({std::string(VELMORA_BUILD) + "/bin/" + program, "--help"});
    process.WaitForExit(LONG_ENOUGH);
    std::string help = process.Output();
    help = help.substr(0, help.find("Examples:"));
    int count = 0;
    for (std::sregex_iterator match(help.begin(), help.end(), option), end; match != end; ++match) {
      EXPECT_NE(page.find((*match)[2].str()), std::string::npos) << program << ": " << (*match)[2];
      ++count;
    }
    EXPECT_GT(count, 0) << program;
  }
}

}  // namespace
