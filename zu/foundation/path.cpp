#include "zu/foundation/path.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "zu/foundation/internal/characters.h"

namespace {

namespace fs = std::filesystem;

constexpr char kSlashes[] = "/\\";

fs::path PathOf(const std::string& strUtf8) {
  return fs::path(std::u8string(strUtf8.begin(), strUtf8.end()));
}

std::string PathText(const fs::path& path) {
  const std::u8string str = path.u8string();
  return std::string(str.begin(), str.end());
}

// Length of "C:", 0 where there is no drive.
std::size_t DriveLength(const std::string& strPath) {
  return strPath.size() >= 2 && zu::internal::IsLetter(strPath[0]) && strPath[1] == ':' ? 2 : 0;
}

bool IsSlash(char c) { return c == '/' || c == '\\'; }

// Length of "/", "C:\" and "\\", 0 where there is no root.
std::size_t RootLength(const std::string& strPath) {
  std::size_t u = DriveLength(strPath);
  if (u >= strPath.size() || !IsSlash(strPath[u])) return 0;
  while (u < strPath.size() && IsSlash(strPath[u])) ++u;
  return u;
}

}  // namespace

std::string ZuJoinPath(const std::string& strFolder, const std::string& strName) {
  if (strFolder.empty() || ZuIsAbsolutePath(strName)) return strName;
  if (strName.empty() || IsSlash(strFolder.back())) return strFolder + strName;
  return strFolder + '/' + strName;
}

std::string ZuParentPath(const std::string& strPath) {
  const std::size_t uRoot = RootLength(strPath);
  std::size_t uEnd = strPath.find_last_of(kSlashes);
  if (uEnd == strPath.npos) return strPath.substr(0, DriveLength(strPath));
  while (uEnd > uRoot && IsSlash(strPath[uEnd - 1])) --uEnd;
  return strPath.substr(0, std::max(uEnd, uRoot));
}

std::string ZuPathExtension(const std::string& strPath) {
  const std::size_t uSlash = strPath.find_last_of(kSlashes);
  const std::size_t uName = uSlash == strPath.npos ? 0 : uSlash + 1;
  const std::size_t uDot = strPath.rfind('.');
  const bool bNone = uDot == strPath.npos || uDot <= uName || strPath.substr(uName) == "..";
  return bNone ? std::string() : strPath.substr(uDot);
}

bool ZuIsAbsolutePath(const std::string& strPath) { return RootLength(strPath) > 0; }

std::string ZuAbsolutePath(const std::string& strPath) {
  std::error_code error;
  const fs::path path = fs::absolute(PathOf(strPath), error);
  return error || strPath.empty() ? std::string() : PathText(path.lexically_normal());
}

std::string ZuRelativePath(const std::string& strPath, const std::string& strFolder) {
  const std::string strAbsolute = ZuAbsolutePath(strPath);
  const fs::path way = PathOf(strAbsolute).lexically_relative(PathOf(ZuAbsolutePath(strFolder)));
  return way.empty() ? strAbsolute : PathText(way);
}

bool ZuExistFolder(const std::string& strPath) {
  std::error_code error;
  return fs::is_directory(PathOf(strPath), error);
}

std::string ZuTempFolder() {
  std::error_code error;
  const fs::path path = fs::temp_directory_path(error);
  return error ? std::string() : PathText(path);
}

std::string ZuCurrentFolder() {
  std::error_code error;
  const fs::path path = fs::current_path(error);
  return error ? std::string() : PathText(path);
}

bool ZuSetCurrentFolder(const std::string& strPath) {
  std::error_code error;
  fs::current_path(PathOf(strPath), error);
  return !error;
}
