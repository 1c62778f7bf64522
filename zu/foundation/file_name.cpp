#include "zu/foundation/file_name.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include "zu/foundation/unicode.h"

namespace {

template <class C>
std::basic_string_view<C> Name(C const* szPath) {
  const std::basic_string_view<C> path = szPath ? szPath : std::basic_string_view<C>();
  const C separators[] = {'/', '\\', '\0'};
  return path.substr(path.find_last_of(separators) + 1);  // from 0 where there is none
}

template <class C>
std::basic_string_view<C> WithoutExtension(std::basic_string_view<C> name) {
  const std::size_t iDot = name.rfind(C('.'));
  return iDot == name.npos || iDot == 0 ? name : name.substr(0, iDot);
}

String ToString(std::string_view text) {
  return String(text.data(), static_cast<int>(text.size()));
}

}  // namespace

bool ZuExistFile(char const* szPath) {
  if (szPath == nullptr || *szPath == '\0') return false;
#if defined(_WIN32)
  const std::filesystem::path path(AnsiToUni(szPath)());
#else
  const std::filesystem::path path(szPath);
#endif
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
}

bool ZuExistFile(wchar_t const* szPath) { return ZuExistFile(UniToAnsi(szPath)()); }

std::string ZuGetFileEnding(std::string_view path) {
  const std::string_view name = path.substr(path.find_last_of("/\\") + 1);
  std::string strEnding(name.substr(WithoutExtension(name).size()));
  for (char& c : strEnding) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
  return strEnding;
}

String ZuGetFilename(char const* szPath) { return ToString(Name(szPath)); }

std::wstring ZuGetFilename(wchar_t const* szPath) { return std::wstring(Name(szPath)); }

String ZuGetFilenameNoExt(char const* szPath) { return ToString(WithoutExtension(Name(szPath))); }

std::wstring ZuGetFilenameNoExt(wchar_t const* szPath) {
  return std::wstring(WithoutExtension(Name(szPath)));
}
