/// A folder that is made beside its place and put there when all is in it.
#pragma once

#include <string>

namespace velmora {

/// Removed on destruction unless it was finished. What a process that was killed left behind is removed when
/// the next one begins with the same place.
class UnfinishedFolder {
 public:
  /// For a place where nothing is. Raises std::runtime_error that begins with `failure`.
  UnfinishedFolder(const std::string& place, const std::string& failure);
  ~UnfinishedFolder();
  UnfinishedFolder(const UnfinishedFolder&) = delete;
  UnfinishedFolder& operator=(const UnfinishedFolder&) = delete;

  /// Where it is.
  const std::string& Path() const { return path_; }
  /// Has it in its place, on the disk. Raises as the constructor does.
  void Finish();

 private:
  void RequireNothingThere() const;

  const std::string place_;
  const std::string failure_;
  std::string path_;
  bool finished_ = false;
};

}  // namespace velmora
