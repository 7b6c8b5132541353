#include <iconv.h>

#include <cstring>

#include "host/string_object.h"

namespace host {
namespace {

const char* IconvName(uint32_t encoding) {
  switch (encoding) {
    case kEncodingASCII:
      return "US-ASCII";
    case kEncodingUTF8:
      return "UTF-8";
    case 0:
      return "MACINTOSH";
    case 0x100:
    case 0x14000100:
      return "UTF-16LE";
    case 0x10000100:
      return "UTF-16BE";
    case 0x0C000100:
      return "UTF-32LE";
    case 0x201:
      return "ISO-8859-1";
    case 0x500:
      return "CP1252";
    default:
      return nullptr;
  }
}

class Converter {
 public:
  Converter(const char* from, const char* to) : handle(iconv_open(to, from)) {}
  ~Converter() {
    if (Opened()) iconv_close(handle);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  bool Opened() const { return handle != reinterpret_cast<iconv_t>(-1); }

  // Nothing for invalid bytes, for an unfinished character and for one without a counterpart.
  std::optional<std::string> Run(std::string_view bytes) {
    std::string in(bytes);
    // No character grows by more than this: an ASCII byte to UTF-32.
    std::string out(bytes.size() * 4 + 4, '\0');
    char* from = in.data();
    char* to = out.data();
    size_t left = in.size();
    size_t room = out.size();
    const size_t irreversible = iconv(handle, &from, &left, &to, &room);
    if (irreversible != 0 || left != 0) return std::nullopt;
    out.resize(out.size() - room);
    return out;
  }

 private:
  iconv_t handle;
};

}  // namespace

std::optional<std::string> ConvertEncoding(std::string_view bytes, uint32_t from, uint32_t to) {
  if (from == kEncodingUnknown || to == kEncodingUnknown) return std::string(bytes);
  const char* fromName = IconvName(from);
  const char* toName = IconvName(to);
  if (fromName == nullptr || toName == nullptr) return std::nullopt;
  Converter converter(fromName, toName);
  if (!converter.Opened()) return std::nullopt;
  return converter.Run(bytes);
}

std::string String::Describe() const {
  return "String #" + std::to_string(Serial()) + " (" + std::to_string(bytes.size()) + " bytes)";
}

}  // namespace host
