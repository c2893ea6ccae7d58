/// Owners of what the Java Native Interface hands out, and conversions. A Java exception that a call leaves
/// behind becomes a C++ one.
#pragma once

#include <jni.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace velmora::jni {

/// What Java threw, in the words of its toString().
class JavaException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Clears the pending Java exception, if there is one, and throws it as JavaException. To be called after
/// each call that may leave one behind.
void Check(JNIEnv* env);

/// A reference that ends with the scope. Threads of the engine stay attached for long: without this, each
/// frame would add to what the virtual machine keeps alive.
template <typename Object>
class LocalReference {
 public:
  LocalReference(JNIEnv* env, Object object) : env_(env), object_(object) {}
  LocalReference(LocalReference&& other) noexcept : env_(other.env_), object_(other.object_) {
    other.object_ = nullptr;
  }
  ~LocalReference() {
    if (object_ != nullptr) env_->DeleteLocalRef(object_);
  }
  LocalReference(const LocalReference&) = delete;
  LocalReference& operator=(const LocalReference&) = delete;
  LocalReference& operator=(LocalReference&&) = delete;

  Object Get() const { return object_; }

 private:
  JNIEnv* env_;
  Object object_;
};

/// A reference that any thread may use and release.
class GlobalReference {
 public:
  /// Throws JavaException when the virtual machine gives none.
  GlobalReference(JNIEnv* env, jobject object);
  ~GlobalReference();
  GlobalReference(const GlobalReference&) = delete;
  GlobalReference& operator=(const GlobalReference&) = delete;

  jobject Get() const { return object_; }

 private:
  JavaVM* machine_;
  jobject object_;
};

// Conversions; all throw JavaException for what the virtual machine refuses.

/// UTF-8. What is no UTF-8 is taken for Latin-1.
LocalReference<jstring> ToJava(JNIEnv* env, const std::string& text);
LocalReference<jbyteArray> ToJava(JNIEnv* env, const std::vector<unsigned char>& bytes);
LocalReference<jdoubleArray> ToJava(JNIEnv* env, const std::vector<double>& numbers);
/// UTF-8, a NUL character as a zero byte; empty for null. Throws std::invalid_argument for a text with half
/// of a pair of surrogates.
std::string FromJava(JNIEnv* env, jstring text);
std::vector<unsigned char> FromJava(JNIEnv* env, jbyteArray bytes);

}  // namespace velmora::jni
