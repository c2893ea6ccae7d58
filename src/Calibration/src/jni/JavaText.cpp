/// Conversion of texts between Java (UTF-16) and the engine (UTF-8). The virtual machine's own "UTF"
/// functions use a dialect of UTF-8 in which emoji and NUL are no UTF-8.
#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include "jni/Jni.h"

namespace velmora::jni {

namespace {

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
constexpr char UTF16[] = "UTF-16BE";
#else
constexpr char UTF16[] = "UTF-16LE";
#endif

/// A converter of the C library; throws std::runtime_error when it has none.
class Converter {
 public:
  Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {
    if (reinterpret_cast<std::intptr_t>(handle_) == -1) throw std::runtime_error("texts cannot be converted");
  }
  ~Converter() { iconv_close(handle_); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  /// Converts the bytes into `result`; false when they are no text of the source's encoding.
  bool Convert(const char* bytes, size_t count, std::string& result) {
    char* input = const_cast<char*>(bytes);  // NOLINT: it is only read
    result.assign(2 * count + 4, '\0');
    size_t written = 0;
    for (;;) {
      char* output = &result[written];
      size_t room = result.size() - written;
      const size_t outcome = iconv(handle_, &input, &count, &output, &room);
      written = result.size() - room;
      if (outcome != static_cast<size_t>(-1)) break;
      if (errno != E2BIG) return false;
      result.resize(2 * result.size());
    }
    result.resize(written);
    return true;
  }

 private:
  iconv_t handle_;
};

/// ASCII without NUL. Whether a plain char has a sign is the machine's choice.
bool IsPlain(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<signed char>(c) > 0; });
}

}  // namespace

LocalReference<jstring> ToJava(JNIEnv* env, const std::string& text) {
  if (IsPlain(text)) {
    LocalReference<jstring> result(env, env->NewStringUTF(text.c_str()));
    Check(env);
    return result;
  }
  std::string units;
  if (!Converter(UTF16, "UTF-8").Convert(text.data(), text.size(), units)) {
    Converter(UTF16, "ISO-8859-1").Convert(text.data(), text.size(), units);
  }
  const std::vector<jchar> characters(reinterpret_cast<const jchar*>(units.data()),
                                      reinterpret_cast<const jchar*>(units.data() + units.size()));
  LocalReference<jstring> result(env,
                                 env->NewString(characters.data(), static_cast<jsize>(characters.size())));
  Check(env);
  return result;
}

std::string FromJava(JNIEnv* env, jstring text) {
  if (text == nullptr) return "";
  const jsize length = env->GetStringLength(text);
  std::string result;
  if (env->GetStringUTFLength(text) == length) {
    // One byte a character: the dialects agree.
    result.resize(static_cast<size_t>(length) + 1);
    env->GetStringUTFRegion(text, 0, length, &result[0]);
    Check(env);
    result.resize(static_cast<size_t>(length));
    return result;
  }
  std::vector<jchar> characters(static_cast<size_t>(length));
  env->GetStringRegion(text, 0, length, characters.data());
  Check(env);
  if (!Converter("UTF-8", UTF16)
           .Convert(reinterpret_cast<const char*>(characters.data()), characters.size() * sizeof(jchar),
                    result)) {
    throw std::invalid_argument("The text holds half of a pair of surrogates.");
  }
  return result;
}

}  // namespace velmora::jni
