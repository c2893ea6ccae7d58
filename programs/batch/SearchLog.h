/// What a session's images were found to hold, also those without a grid, which are no snapshots.
#pragma once

#include <fstream>
#include <opencv2/core.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace batch {

/// How images were searched, and whose they are: what a session's settings do not tell.
struct SearchHeader {
  std::string kind;                  ///< "camera", "pair" or "rig"
  std::vector<std::string> cameras;  ///< the names of a rig's cameras
  bool parts = false;                ///< whether parts of the grid are views
  cv::Size frame;                    ///< the processing size as it was asked for; zero: that of the input
  bool copies = false;               ///< whether images are copied
  double disc = -1.0;  ///< radius of the discs in metres as it was asked for; negative: it was not
};

/// An image that was searched. One without a name stands for one that a camera does not have.
struct LoggedImage {
  std::string name;
  std::string origin;  ///< see NamedImage
  std::string stamp;   ///< see NamedImage; empty where a session is not to know where images are
  cv::Size size;       ///< as it was read; empty when it could not be decoded
  std::string fault;   ///< why it gave no view; empty when it did
};

/// One image of each camera, of the same time.
using LoggedMoment = std::vector<LoggedImage>;

bool HasView(const LoggedMoment& moment);

/// A file of JSON lines, to which each moment is added as soon as it was searched. A line that a process did
/// not come to write whole, and what is damaged, counts as never written: such images are searched again.
/// Errors are raised as InputError.
class SearchLog {
 public:
  /// Held in memory until it has a file.
  SearchLog() = default;
  /// Reads what is there.
  explicit SearchLog(const std::string& path);

  /// Writes all there is into a file that is made anew.
  void MoveTo(const std::string& path);

  const std::optional<SearchHeader>& Header() const { return header_; }
  void Set(const SearchHeader& header);

  const std::vector<LoggedMoment>& Moments() const { return moments_; }
  /// Nothing is done for a moment that is there already.
  void Add(const LoggedMoment& moment);

 private:
  void Append(const std::string& line);
  void Take(const std::string& line);

  std::string path_;  ///< empty: none yet
  std::optional<SearchHeader> header_;
  std::vector<LoggedMoment> moments_;
  std::set<std::string> lines_;
};

}  // namespace batch
