/// Runs the unit tests, each with the same random numbers.
#include <gtest/gtest.h>

#include <cstdlib>
#include <opencv2/core.hpp>

#if defined(__SANITIZE_ADDRESS__)
/// Matrices too large for the machine must come back as an error, as they do without the sanitizer.
extern "C" const char* __asan_default_options() {
  return "allocator_may_return_null=1";
}
#endif
#if defined(__SANITIZE_THREAD__)
extern "C" const char* __tsan_default_options() {
  return "allocator_may_return_null=1";
}
#endif

namespace {

class ReseedBeforeEachTest : public ::testing::EmptyTestEventListener {
  void OnTestStart(const ::testing::TestInfo& /*test*/) override { cv::setRNGSeed(1); }
};

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (std::getenv("VELMORA_TEST_SINGLE_THREAD") != nullptr) cv::setNumThreads(1);
  ::testing::UnitTest::GetInstance()->listeners().Append(new ReseedBeforeEachTest);
  return RUN_ALL_TESTS();
}
