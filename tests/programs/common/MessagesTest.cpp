/// How the programs tell what is wrong.
#include "common/Messages.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <sstream>
#include <stdexcept>

namespace {

template <typename... Parts>
std::string ErrorOf(const Parts&... parts) {
  std::ostringstream err;
  common::PrintError(err, parts...);
  return err.str();
}

TEST(Messages, AnErrorIsALineThatBeginsWithTheWord) {
  EXPECT_EQ(ErrorOf("cannot open webcam 3."), "ERROR: cannot open webcam 3.\n");
}

TEST(Messages, AnExceptionBecomesASentence) {
  EXPECT_EQ(ErrorOf(std::runtime_error("'a  b' is a folder")), "ERROR: 'a  b' is a folder.\n");
  EXPECT_EQ(ErrorOf(std::runtime_error("It is over.")), "ERROR: It is over.\n");
}

TEST(Messages, AnExceptionIsToldAfterWhatItEnded) {
  EXPECT_EQ(ErrorOf(std::runtime_error("no solution"), "the calibration failed"),
            "ERROR: the calibration failed: no solution.\n");
}

TEST(Messages, AnExceptionOfSeveralLinesBecomesOne) {
  EXPECT_EQ(ErrorOf(std::runtime_error("first:\n> second\n")), "ERROR: first: > second.\n");
}

TEST(Messages, AnExceptionOfTheImageLibraryIsToldWithoutItsPlace) {
  const cv::Exception fault(cv::Error::StsBadArg, "too few points", "solve", "solve.cpp", 42);
  EXPECT_EQ(ErrorOf(fault), "ERROR: too few points.\n");
}

}  // namespace
