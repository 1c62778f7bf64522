// Other programs as a second method, where they are installed.
#pragma once

#include <array>
#include <cstdio>
#include <string>

// The standard output of a command line; empty where the program is missing or fails.
inline std::string RunOther(const std::string& strLine) {
  std::FILE* pPipe = popen((strLine + " 2>/dev/null </dev/null").c_str(), "r");
  if (pPipe == nullptr) return "";
  std::string strOut;
  std::array<char, 4096> acBlock{};
  for (std::size_t n; (n = std::fread(acBlock.data(), 1, acBlock.size(), pPipe)) > 0;) {
    strOut.append(acBlock.data(), n);
  }
  return pclose(pPipe) == 0 ? strOut : "";
}

// That of a script for the system's Python, with an argument; empty, too, where a package that it
// imports is missing.
inline std::string RunPython(const std::string& strScript, const std::string& strArgument) {
  return RunOther("/usr/bin/python3 -c '" + strScript + "' '" + strArgument + "'");
}
