/// The files that a run writes, and what is said of them.
#pragma once

#include <string>
#include <vector>

namespace common {

/// A result's name without the extension .json that is added to it: who types "camera.json" means "camera".
std::string WithoutExtension(const std::string& name);

/// Lists the files of a run at its end.
class OutputFiles {
 public:
  /// Before the file is written: whether there was one of that name is looked up now.
  void Announce(const std::string& file);

  /// After the file was written: it is named at the end.
  void Written(const std::string& file);

  /// "Written:", then a line for each file, which says whether an earlier one was replaced.
  std::string Text() const;
  const std::vector<std::string>& Names() const { return written_; }

 private:
  std::vector<std::string> earlier_;
  std::vector<std::string> written_;
};

}  // namespace common
