#include <sys/sysinfo.h>

#include <fstream>
#include <string>
#include <thread>

#include "bench/report/table.h"

namespace report {
namespace {

std::string Processor() {
  std::ifstream stream("/proc/cpuinfo");
  for (std::string strLine; std::getline(stream, strLine);) {
    const std::size_t uValue = strLine.find(": ");
    if (strLine.starts_with("model name") && uValue != std::string::npos) {
      return strLine.substr(uValue + 2);
    }
  }
  return "unknown processor";
}

std::string Memory() {
  struct sysinfo info = {};
  if (sysinfo(&info) != 0) return "unknown memory";
  const double dGiB =
      static_cast<double>(info.totalram) * info.mem_unit / (1024.0 * 1024.0 * 1024.0);
  return std::to_string(static_cast<int>(dGiB + 0.5)) + " GiB";
}

}  // namespace

std::string Machine() {
  return Processor() + ", " + std::to_string(std::thread::hardware_concurrency()) + " cores, " +
         Memory() + "; " ZU_BENCH_COMPILER ", `" ZU_BENCH_FLAGS "`";
}

}  // namespace report
