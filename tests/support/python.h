// Python packages as a second method, where they are installed.
#pragma once

#include <array>
#include <cstdio>
#include <string>

// The standard output of a script, with an argument; empty where python3 or a package that it
// imports is missing, or the script fails.
inline std::string RunPython(const std::string& strScript, const std::string& strArgument) {
  const std::string strLine =
      "python3 -c '" + strScript + "' '" + strArgument + "' 2>/dev/null </dev/null";
  std::FILE* pPipe = popen(strLine.c_str(), "r");
  if (pPipe == nullptr) return "";
  std::string strOut;
  std::array<char, 4096> acBlock{};
  for (std::size_t n; (n = std::fread(acBlock.data(), 1, acBlock.size(), pPipe)) > 0;) {
    strOut.append(acBlock.data(), n);
  }
  return pclose(pPipe) == 0 ? strOut : "";
}
