/// Spreads independent pieces of work over threads.
#pragma once

#include <cstddef>
#include <functional>

namespace velmora::solver {

/// Calls the work for contiguous ranges that make up 0 ... count, one for each thread, or fewer when
/// the system does not start as many. Whatever pieces share must not depend on how they are divided. The work
/// must not throw.
void ForRanges(std::size_t count, int threads, const std::function<void(std::size_t, std::size_t)>& work);

/// How many threads pay for a computation of that number of images: starting them takes as long as dozens of
/// these.
int ThreadsFor(std::size_t images);

}  // namespace velmora::solver
