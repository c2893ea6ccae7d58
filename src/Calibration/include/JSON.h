/// The one document type in which the engine writes and reads its JSON texts.
#pragma once

#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>
#include <string>

#include "Export.h"

/// One JSON value with typed top-level members by key, an encoding of cv::Mat, and file load and save.
///
/// A new document holds null; the first add turns it into an object. Members are kept and written in
/// ascending byte order of their keys. Adding under a key that exists replaces its value.
///
/// Exceptions of the JSON library pass through: a member that is absent (which is then created as null) or of
/// another type raises nlohmann::json::type_error, malformed text nlohmann::json::parse_error.
///
/// One thread at a time may use a document.
class VELMORA_API JSON {
 public:
  /// Version of the document format, "1.0.2".
  static const std::string VERSION;

  void addBool(const std::string& key, const bool& value);
  void addInt(const std::string& key, const int& value);
  void addDouble(const std::string& key, const double& value);
  void addString(const std::string& key, const std::string& value);

  /// Stores an object of "rows", "cols", "type" (OpenCV's type number), "depth" and "data" (the elements in
  /// row-major order). Matrices of several channels are reported at error level and stored all the same. A
  /// depth beyond CV_64F is reported at error level and stored without "data".
  ///
  /// A continuous matrix is stored from the start to the end of its underlying buffer: clone() a continuous
  /// view into a larger matrix first.
  void addMat(const std::string& key, const cv::Mat& matrix);

  bool readBool(const std::string& key);
  /// Any number (cut to 32 bits, truncated toward zero) or a boolean (true gives 1).
  int readInt(const std::string& key);
  /// Any number; a boolean is refused.
  double readDouble(const std::string& key);
  std::string readString(const std::string& key);

  /// Reads what addMat stored. The elements of "data" are read as "depth" says; at most as many as the matrix
  /// holds are copied, the rest of a matrix with fewer stays unset, as does all of one with a depth beyond
  /// CV_64F. Raises cv::Exception when no matrix of the stated size and type can be made;
  /// 2 GiB are the most.
  cv::Mat readMat(const std::string& key);

  /// The document as text, indented by four blanks, non-ASCII characters as they are.
  std::string toJson() const;

  /// Replaces the document by the parsed text; after an exception the document is as it was.
  void fromJson(const std::string& text);

  /// Writes the text to the path. False, silently, when the path cannot be opened for writing. An earlier
  /// file stays whole until the new one is complete, where it can be replaced; a failure while writing is
  /// reported at error level and leaves the earlier file.
  bool save(const std::string& path) const;

  /// Replaces the document by the content of the file. False, silently, when the path cannot be opened or
  /// read (a folder); the document is then as it was, as it is after a parse error.
  ///
  /// The file is read word by word and joined: all white space is dropped, blanks inside strings included.
  bool load(const std::string& path);

 private:
  nlohmann::json document_;
};
