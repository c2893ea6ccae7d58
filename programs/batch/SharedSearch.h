/// The search of the grid in the images of all cameras, which threads share.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "batch/Arguments.h"
#include "batch/ImageStream.h"
#include "batch/RunContext.h"
#include "batch/SingleSearch.h"

namespace batch {

/// Images of the same time, one for each camera, and what is seen in each. An image without a name stands for
/// one that a camera does not have.
struct SearchedImages {
  std::vector<NamedImage> inputs;
  std::vector<SearchOutcome> outcomes;
};

/// How the images of a search come, and where its outcome goes. `next` and `take` are called on the caller's
/// thread.
struct SearchSteps {
  /// The next images, read or not; false at the end.
  std::function<bool(std::vector<NamedImage>&)> next;
  /// What is still to be done to the images before they are searched, if anything. Called on several threads
  /// at a time. What it raises is the images' fault.
  std::function<void(std::vector<NamedImage>&)> prepare;
  /// Told of all images in their order. What is to be said of them.
  std::function<std::string(SearchedImages&)> take;
  /// How many there are as far as is known; 0 when it is not.
  std::function<int()> expected;
  /// The size of the first image of a camera that can be decoded, where only looking ahead tells it.
  std::function<cv::Size(size_t camera)> firstSize{};
};

/// Reads and searches the images on as many threads as the arguments say, and reports on them on standard
/// error. What is taken, and said, does not depend on the number of threads, nor on which of them is slow.
/// At most HELD_PER_THREAD images of each camera are in memory for each thread.
///
/// With a session only images are searched that it does not know, and what is taken is all that it then has.
/// Raises Interrupted when the user asked for the end; the session has what was found until then.
void SearchShared(const Arguments& arguments, Wanted wanted, const SearchSteps& steps,
                  const RunContext& context = {});

}  // namespace batch
