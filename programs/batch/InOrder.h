/// Work on a sequence that several threads share, with results in the order of the sequence.
#pragma once

#include <cstddef>
#include <deque>
#include <exception>
#include <utility>

#include "batch/Workers.h"

namespace batch {

/// How many items are held at a time for each thread: one that is worked on, and one that is ready for it or
/// waits for its turn. Memory does not grow beyond that, however many items there are.
constexpr size_t HELD_PER_THREAD = 2;

/// Gets items, works on each on one of that many threads, and hands them over in the order in which it got
/// them. `bool next(Item&)` (false at the end) and `void take(Item&)` are called on the caller's thread;
/// `void work(Item&)` is not, and for several items at the same time. From `next` until `take` has returned
/// there are at most HELD_PER_THREAD items for each thread.
///
/// What is done is taken before the next item is got, so that a slow source delays no news. Exceptions end
/// it: one of the work is raised when it is that item's turn, one of `next` after all items before it were
/// taken, one of `take` at once. Work under way is waited for, and the rest left undone.
template <typename Item, typename Next, typename Work, typename Take>
void InOrder(size_t threads, Next&& next, Work&& work, Take&& take) {
  struct Held {
    Item item;
    Workers::Task task;
  };
  const size_t most = HELD_PER_THREAD * threads;
  std::deque<Held> held;
  std::exception_ptr fault;
  bool more = true;
  Workers workers(threads);  // ends before what it works on
  while (more || !held.empty()) {
    const bool turn = !held.empty() && (!more || held.size() >= most || workers.IsDone(held.front().task));
    if (turn) {
      workers.Finish(held.front().task);
      take(held.front().item);
      held.pop_front();
      continue;
    }
    Item item;
    try {
      more = next(item);
    } catch (...) {
      more = false;
      fault = std::current_exception();
    }
    if (!more) continue;
    Held& last = held.emplace_back();
    last.item = std::move(item);
    workers.Begin(last.task, [&work, &last] { work(last.item); });
  }
  if (fault) std::rethrow_exception(fault);
}

}  // namespace batch
