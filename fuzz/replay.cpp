// Runs inputs through the fuzz targets without a fuzzer, with any compiler:
//
//   zu_fuzz_replay FOLDER...          the files of FOLDER/<target>/, each through its target
//   zu_fuzz_replay --grow BYTES FOLDER...
//
// Ends with 1 if a target has no input at all.
//
// With --grow each file is repeated up to that size, and the slowest one of each target is told:
// what grows faster than the file shows here.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#define TARGET(name) extern "C" int Fuzz_##name(const std::uint8_t* pData, std::size_t uSize);
#include "fuzz/targets.inc"
#undef TARGET

namespace {

struct Target {
  const char* szName;
  int (*pfnRun)(const std::uint8_t* pData, std::size_t uSize);
};

#define TARGET(name) {#name, Fuzz_##name},
constexpr Target kTargets[] = {
#include "fuzz/targets.inc"
};
#undef TARGET

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

std::string Grown(const std::string& text, std::size_t uSize) {
  std::string grown(text);
  while (!text.empty() && grown.size() < uSize) grown += text;
  return grown;
}

// Seconds of the processor that the target took, so that other work on the machine does not count.
double Run(const Target& target, const std::string& text) {
  // A copy of exactly the size, so that a read behind the end is seen.
  const std::vector<std::uint8_t> data(text.begin(), text.end());
  const std::clock_t start = std::clock();
  target.pfnRun(data.data(), data.size());
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

std::vector<std::filesystem::path> Files(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> files;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

int RunFolder(const Target& target, const std::filesystem::path& folder, std::size_t uGrow) {
  double dSlowest = 0.0;
  std::string strSlowest;
  const auto files = Files(folder);
  for (const auto& path : files) {
    if (uGrow == 0) std::fprintf(stderr, "%s %s\n", target.szName, path.c_str());
    const double dSeconds = Run(target, Grown(ReadFile(path), uGrow));
    if (dSeconds <= dSlowest) continue;
    dSlowest = dSeconds;
    strSlowest = path.string();
  }
  if (uGrow > 0 && !files.empty()) {
    std::printf("%-18s %7.3f s  %s\n", target.szName, dSlowest, strSlowest.c_str());
    std::fflush(stdout);
  }
  return static_cast<int>(files.size());
}

bool IsTarget(const std::filesystem::path& folder) {
  return std::any_of(std::begin(kTargets), std::end(kTargets),
                     [&](const Target& target) { return folder.filename() == target.szName; });
}

}  // namespace

int main(int argc, char** argv) {
  int iFirst = 1, iRun = 0;
  std::map<std::string, int> runs;
  std::size_t uGrow = 0;
  if (argc > 2 && std::strcmp(argv[1], "--grow") == 0) {
    uGrow = std::strtoul(argv[2], nullptr, 10);
    iFirst = 3;
  }
  for (int i = iFirst; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) continue;  // no finding yet
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      if (!entry.is_directory() || IsTarget(entry.path())) continue;
      std::fprintf(stderr, "%s: no target of that name\n", entry.path().c_str());
      return 1;
    }
    for (const Target& target : kTargets) {
      runs[target.szName] +=
          RunFolder(target, std::filesystem::path(argv[i]) / target.szName, uGrow);
    }
  }
  for (const Target& target : kTargets) {
    if (runs[target.szName] == 0) std::fprintf(stderr, "%s: no input\n", target.szName);
    iRun += runs[target.szName];
  }
  std::printf("%d inputs\n", iRun);
  const auto isIdle = [&](const Target& target) { return runs[target.szName] == 0; };
  return std::any_of(std::begin(kTargets), std::end(kTargets), isIdle) ? 1 : 0;
}
