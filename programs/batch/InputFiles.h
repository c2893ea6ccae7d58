/// Which files the inputs of the headless tool stand for.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "common/InputError.h"

namespace batch {

using common::InputError;

/// What lay in folders beside the images and was not taken, by kind.
class SkippedFiles {
 public:
  /// `kind` is an extension, or what else tells why.
  void Add(const std::string& kind) { ++kinds_[kind]; }

  /// "3 files skipped: 2 .heic, 1 folder", the most frequent kind first; empty when there were none.
  std::string Text() const;

 private:
  std::map<std::string, int> kinds_;
};

bool IsUrl(const std::string& input);

/// True of names that end as images do.
bool HasImageExtension(const std::string& file);

/// The inputs as single files and URLs: folders become their image files and patterns their matches, both in
/// order of name. Hidden files of a folder are not taken. Raises InputError for what does not exist, matches
/// nothing or holds no image.
std::vector<std::string> ExpandInputs(const std::vector<std::string>& inputs, SkippedFiles& skipped);
std::vector<std::string> ExpandInputs(const std::vector<std::string>& inputs);

/// ExpandInputs, with a line on standard error about what was skipped.
std::vector<std::string> ExpandInputsAloud(const std::vector<std::string>& inputs);

}  // namespace batch
