/// What is said of the machine's cameras when one does not open.
#include "guided/Cameras.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "TemporaryFolder.h"

namespace {

TEST(Cameras, AreToldWhenTheWantedOneIsNotThere) {
  const support::TemporaryFolder dev;
  const std::string folder = dev.Path();
  EXPECT_EQ(guided::CamerasText(folder, 0), "  There is no camera: no " + folder + "/video* exists.\n");
  support::WriteText(dev.File("video2"), "");
  support::WriteText(dev.File("videos"), "");
  EXPECT_EQ(guided::CamerasText(folder, 0),
            "  There is no " + folder + "/video0; there is " + folder + "/video2.\n");
  support::WriteText(dev.File("video10"), "");
  EXPECT_EQ(guided::CamerasText(folder, 0), "  There is no " + folder + "/video0; there are " + folder +
                                                "/video2, " + folder + "/video10.\n");
}

TEST(Cameras, ThatAreThereAreInUseOrMayNotBeUsed) {
  const support::TemporaryFolder dev;
  support::WriteText(dev.File("video0"), "");
  EXPECT_EQ(guided::CamerasText(dev.Path(), 0),
            "  " + dev.File("video0") + " is there: another program may be using it, or it is no camera.\n");
  if (geteuid() == 0) GTEST_SKIP() << "the superuser may use every device";
  chmod(dev.File("video0").c_str(), 0);
  EXPECT_EQ(guided::CamerasText(dev.Path(), 0),
            "  You have no permission to use " + dev.File("video0") + ".\n");
}

TEST(Cameras, OfAFolderThatCannotBeReadAreNone) {
  EXPECT_EQ(guided::CamerasText("/nowhere", 3), "  There is no camera: no /nowhere/video* exists.\n");
}

}  // namespace
