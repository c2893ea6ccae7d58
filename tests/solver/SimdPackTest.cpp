/// Arithmetic on several numbers at once: that of plain numbers, each for itself.
#include "solver/SimdPack.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace {

using velmora::solver::LANES;
using velmora::solver::SimdPack;

using Plain = std::array<double, LANES>;

SimdPack Of(const Plain& numbers) {
  SimdPack lanes{};
  for (size_t i = 0; i < LANES; ++i) lanes[i] = numbers[i];
  return lanes;
}

/// Numbers of very different sizes, so that each sum is rounded.
double Number(size_t i) {
  return std::ldexp(1.0 + 0.1 * static_cast<double>(i % 7), static_cast<int>(i * 5 % 23) - 11);
}

TEST(SimdPack, AreZeroAtFirst) {
  const SimdPack lanes{};
  for (size_t i = 0; i < LANES; ++i) EXPECT_EQ(lanes[i], 0.0);
}

TEST(SimdPack, CalculateAsPlainNumbersDo) {
  for (size_t first = 0; first < 40; ++first) {
    Plain a;
    Plain b;
    for (size_t i = 0; i < LANES; ++i) {
      a[i] = Number(first + i);
      b[i] = -Number(3 * first + 5 * i + 1);
    }
    const SimdPack sum = Of(a) + Of(b);
    const SimdPack difference = Of(a) - Of(b);
    const SimdPack product = Of(a) * Of(b);
    const SimdPack quotient = Of(a) / Of(b);
    const SimdPack negative = -Of(a);
    for (size_t i = 0; i < LANES; ++i) {
      EXPECT_EQ(sum[i], a[i] + b[i]);
      EXPECT_EQ(difference[i], a[i] - b[i]);
      EXPECT_EQ(product[i], a[i] * b[i]);
      EXPECT_EQ(quotient[i], a[i] / b[i]);
      EXPECT_EQ(negative[i], -a[i]);
    }
  }
}

TEST(SimdPack, TakeAPlainNumberForEachOfThem) {
  Plain numbers;
  for (size_t i = 0; i < LANES; ++i) numbers[i] = Number(i + 2);
  const SimdPack inverse = 1.0 / Of(numbers);
  const SimdPack threefold = 3.0 * Of(numbers);
  const SimdPack more = Of(numbers) + 0.1;
  for (size_t i = 0; i < LANES; ++i) {
    EXPECT_EQ(inverse[i], 1.0 / numbers[i]);
    EXPECT_EQ(threefold[i], 3.0 * numbers[i]);
    EXPECT_EQ(more[i], numbers[i] + 0.1);
  }
}

TEST(SimdPack, KeepWhatIsNotFiniteToItself) {
  for (size_t wrong = 0; wrong < LANES; ++wrong) {
    Plain numbers;
    for (size_t i = 0; i < LANES; ++i) numbers[i] = i == wrong ? 0.0 : Number(i + 1);
    const SimdPack inverse = 1.0 / Of(numbers);
    const SimdPack nothing = inverse - inverse;
    for (size_t i = 0; i < LANES; ++i) {
      EXPECT_EQ(std::isinf(inverse[i]), i == wrong);
      EXPECT_EQ(std::isnan(nothing[i]), i == wrong);
    }
  }
}

/// Two accumulators, whatever the processor could hold: results must not depend on that.
TEST(SimdPack, SumEverySecondNumberByItself) {
  std::vector<double> numbers;
  for (size_t i = 0; i < 1000; ++i) numbers.push_back((i % 3 == 0 ? -1.0 : 1.0) * Number(i));
  SimdPack lanes{};
  for (size_t i = 0; i < numbers.size(); i += LANES) {
    Plain next;
    for (size_t lane = 0; lane < LANES; ++lane) next[lane] = numbers[i + lane];
    lanes += Of(next);
  }
  double sum = 0.0;
  for (size_t lane = 0; lane < LANES; ++lane) sum += lanes[lane];
  double even = 0.0;
  double odd = 0.0;
  for (size_t i = 0; i < numbers.size(); i += 2) {
    even += numbers[i];
    odd += numbers[i + 1];
  }
  EXPECT_EQ(sum, even + odd);
}

}  // namespace
