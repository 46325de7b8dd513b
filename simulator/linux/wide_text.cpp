#include "simulator/wide_text.h"

#include "platform/portable/utf8.h"

namespace zem::simulator {

std::wstring Widen(const std::string& text) {
  std::wstring wide;
  for (std::string_view rest = text; !rest.empty();) {
    wide += platform::DecodeUtf8(rest);
  }
  return wide;
}

std::string Narrow(const std::wstring& text) {
  std::string narrow;
  for (const wchar_t character : text) {
    narrow += platform::EncodeUtf8(character).text();
  }
  return narrow;
}

}  // namespace zem::simulator
