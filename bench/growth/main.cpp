// How the cost of the larger pieces of work grows with the number of elements.
//
//   bench_growth [--networks] [--once] [--results FILE [--only NAME]] [--table PAGE PLOT]
//
// Measures each piece at two sizes a decade, from a thousand to ten million elements as far as the
// memory goes, prints times and slopes, and keeps them in FILE (name, tab, n, seconds a line).
// --only measures one piece and keeps
// what FILE tells of the others. --networks takes networks, whose elements are rays, and a section
// of PAGE of their own. --once stops at ten thousand. --table measures nothing: it writes the
// slopes in FILE into PAGE and draws PLOT.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/growth/cases.h"
#include "bench/growth/plot.h"
#include "bench/report/section.h"

namespace {

using growth::Series;

constexpr double kMargin = 2e9;  // memory left to others [bytes]

double AvailableMemory() {
  std::ifstream stream("/proc/meminfo");
  for (std::string strKey; stream >> strKey;) {
    double dKiB = 0.0;
    if (strKey == "MemAvailable:" && stream >> dKiB) return dKiB * 1024.0;
  }
  return 4e9;
}

Series Measure(const growth::Case& work, double dMost) {
  Series series{work.strName, {}, {}, work.bReference};
  for (int i = 6; i <= 14; ++i) {
    const double n = std::round(std::pow(10.0, 0.5 * i));
    if (n > dMost || n * work.dBytes > AvailableMemory() - kMargin) break;
    series.x.push_back(n);
    series.y.push_back(work.run(static_cast<std::size_t>(n)));
    std::printf("%-30s n = %8.0f  %12.3f us  %8.2f ns an element\n", work.strName.c_str(), n,
                series.y.back() * 1e6, series.y.back() * 1e9 / n);
    std::fflush(stdout);
  }
  return series;
}

// The least squares line through the logarithms, from dFrom on.
double Slope(const Series& series, double dFrom) {
  double n = 0.0, sx = 0.0, sy = 0.0, sxx = 0.0, sxy = 0.0;
  for (std::size_t i = 0; i < series.x.size(); ++i) {
    if (series.x[i] < dFrom) continue;
    const double x = std::log(series.x[i]), y = std::log(series.y[i]);
    n += 1.0;
    sx += x;
    sy += y;
    sxx += x * x;
    sxy += x * y;
  }
  return (n * sxy - sx * sy) / (n * sxx - sx * sx);
}

// What n log n itself gives over the same sizes.
double SlopeOfNLogN(Series series, double dFrom) {
  for (std::size_t i = 0; i < series.x.size(); ++i) {
    series.y[i] = series.x[i] * std::log(series.x[i]);
  }
  return Slope(series, dFrom);
}

std::string Slopes(const std::vector<Series>& all) {
  std::string str =
      "| Work | Largest n | Slope | of n log n | Slope from 10^5 | of n log n | ns an element at "
      "1000 "
      "| at the largest n |\n|---|---:|---:|---:|---:|---:|---:|---:|\n";
  for (const Series& s : all) {
    const auto PerElement = [&s](std::size_t i) { return s.y[i] * 1e9 / s.x[i]; };
    const double dLast = s.x.back() > 1e6 ? 1e5 : s.x.front();
    char ac[300];
    std::snprintf(ac, sizeof ac, "| %s | %.0f | %.2f | %.2f | %.2f | %.2f | %.1f | %.1f |\n",
                  s.strName.c_str(), s.x.back(), Slope(s, 0.0), SlopeOfNLogN(s, 0.0),
                  Slope(s, dLast), SlopeOfNLogN(s, dLast), PerElement(0),
                  PerElement(s.x.size() - 1));
    str += ac;
  }
  return str;
}

std::string Plot(const std::vector<Series>& all) {
  growth::Panel total{"Time", "elements n", "time [s]", all};
  growth::Panel each{"Time for one element", "elements n", "time / n [ns]", all};
  for (Series& s : each.series) {
    for (std::size_t i = 0; i < s.x.size(); ++i) s.y[i] *= 1e9 / s.x[i];
  }
  return growth::Draw({total, each});
}

void Save(const std::string& strPath, const std::vector<Series>& all) {
  std::ofstream stream(strPath);
  stream.precision(10);
  for (const Series& s : all) {
    for (std::size_t i = 0; i < s.x.size(); ++i) {
      stream << s.strName << '\t' << s.x[i] << ' ' << s.y[i] << '\n';
    }
  }
}

std::vector<Series> Load(const std::string& strPath, const std::vector<growth::Case>& cases) {
  std::vector<Series> all;
  for (const growth::Case& work : cases) {
    all.push_back({work.strName, {}, {}, work.bReference});
  }
  std::ifstream stream(strPath);
  std::string strName;
  for (double n = 0.0, t = 0.0;
       std::getline(stream >> std::ws, strName, '\t') && stream >> n >> t;) {
    for (Series& s : all) {
      if (s.strName != strName) continue;
      s.x.push_back(n);
      s.y.push_back(t);
    }
  }
  std::erase_if(all, [](const Series& s) { return s.x.size() < 2; });
  return all;
}

void Run(const std::vector<std::string>& args) {
  double dMost = 1e7;
  std::vector<growth::Case> cases = growth::AllCases();
  std::string strSection = "growth";
  std::string strResults, strOnly, strPage, strPlot;
  for (std::size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--networks") {
      cases = growth::NetworkCases();
      strSection = "growth of networks";
    } else if (args[i] == "--once") {
      dMost = 1e4;
    } else if (args[i] == "--results" && i + 1 < args.size()) {
      strResults = args[++i];
    } else if (args[i] == "--only" && i + 1 < args.size()) {
      strOnly = args[++i];
    } else if (args[i] == "--table" && i + 2 < args.size()) {
      strPage = args[++i];
      strPlot = args[++i];
    } else {
      throw std::runtime_error("unknown argument " + args[i]);
    }
  }
  std::vector<Series> all;
  if (strPage.empty()) {
    if (!strOnly.empty()) all = Load(strResults, cases);
    for (const growth::Case& work : cases) {
      if (!strOnly.empty() && work.strName != strOnly) continue;
      std::erase_if(all, [&](const Series& s) { return s.strName == work.strName; });
      all.push_back(Measure(work, dMost));
      if (!strResults.empty()) Save(strResults, all);
    }
  } else {
    all = Load(strResults, cases);
    if (all.empty()) throw std::runtime_error(strResults + ": no results");
    report::ReplaceSection(strPage, strSection, Slopes(all));
    std::ofstream(strPlot) << Plot(all);
  }
  std::printf("\n%s", Slopes(all).c_str());
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Run(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const std::exception& e) {
    std::fprintf(stderr, "bench_growth: %s\n", e.what());
    return 1;
  }
  return 0;
}
