// Keyword files beside a plain loop over the same file: std::istream::getline, blanks by hand and
// std::from_chars. Every reader's sum is checked against that of the loop before it is timed.
#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "tests/support/temp_file.h"
#include "zu/foundation/reader.h"

namespace {

constexpr int kRows = 200000;
constexpr int kBlocks = 20000;

// POINTS { id x y ... }, one row a line.
const TempFile& RowFile() {
  static const TempFile file([] {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> pixel(0.0, 640.0);
    std::string strText = "POINTS {\n";
    char acLine[64];
    for (int i = 1; i <= kRows; ++i) {
      const double x = pixel(random), y = pixel(random);
      std::snprintf(acLine, sizeof(acLine), "    %d %.4f %.4f\n", i, x, y);
      strText += acLine;
    }
    return strText + "}\n";
  }());
  return file;
}

// CAMERA { ID 1 NAME "..." C 4.9 ... }, 8 values a block.
const TempFile& BlockFile() {
  static const TempFile file([] {
    std::string strText;
    char acBlock[256];
    for (int i = 1; i <= kBlocks; ++i) {
      std::snprintf(
          acBlock, sizeof(acBlock),
          "CAMERA {\n    ID %d NAME \"left radial\"\n    C 4.%04d XH 0.227808 YH 0.065727\n"
          "    A1 -0.00966481955 A2 -0.000198009113 R0 2.5\n}\n",
          i, i % 10000);
      strText += acBlock;
    }
    return strText;
  }());
  return file;
}

// The sum of all numbers of the file; words, strings and braces are passed over.
double ReferenceSum(const char* szPath) {
  std::ifstream stream(szPath, std::ios::binary);
  char acLine[ZuParser::kLineSize];
  double dSum = 0.0;
  while (stream.getline(acLine, sizeof(acLine))) {
    const char* p = acLine;
    const char* const pEnd = acLine + stream.gcount() - 1;
    while (p < pEnd) {
      double d = 0.0;
      const auto read = std::from_chars(p, pEnd, d);
      if (read.ec == std::errc()) {
        dSum += d;
        p = read.ptr;
      } else if (*p == '"') {
        p = static_cast<const char*>(
            std::memchr(p + 1, '"', static_cast<std::size_t>(pEnd - p - 1)));
        if (p == nullptr) break;
        ++p;
      } else {
        while (p < pEnd && *p != ' ') ++p;
      }
      while (p < pEnd && *p == ' ') ++p;
    }
  }
  return dSum;
}

double TokenSum(const char* szPath) {
  std::ifstream stream(szPath, std::ios::binary);
  ZuParser parser;
  double dSum = 0.0;
  while (parser.ParseForToken(stream).m_eType != eZuTokenEof) dSum += parser.GetToken().GetNumber();
  return dSum;
}

// Handlers as records have them.
class Sum : public LinkHdl {
 public:
  int Rows(ZuReaderObject* pObject) {
    pObject->ReadRows([&] {
      const int iId = pObject->TakeInt();
      const double x = pObject->TakeNumber();
      const double y = pObject->TakeNumber();
      m_dSum += iId;
      m_dSum += x;
      m_dSum += y;
    });
    return 1;
  }

  int Camera(ZuReaderObject* pObject) {
    int iId = 0;
    String strName;
    double ad[6] = {};
    ZuReaderObject objects[] = {{"ID", &iId},   {"NAME", &strName}, {"C", &ad[0]},  {"XH", &ad[1]},
                                {"YH", &ad[2]}, {"A1", &ad[3]},     {"A2", &ad[4]}, {"R0", &ad[5]}};
    for (ZuReaderObject& object : objects) pObject->RegisterObject(object);
    pObject->DoProcess();
    m_dSum += iId;
    for (double d : ad) m_dSum += d;
    return 1;
  }

  double m_dSum = 0.0;
};

double RecordSum(const char* szPath) {
  Sum sum;
  ZuReader reader(szPath);
  ZuReaderObject objects[] = {{"POINTS", Link(&sum, &Sum::Rows)},
                              {"CAMERA", Link(&sum, &Sum::Camera)}};
  for (ZuReaderObject& object : objects) reader.RegisterObject(object);
  reader.DoProcess(false);
  return sum.m_dSum;
}

void Read(benchmark::State& state, const TempFile& file, double (*pfnSum)(const char*)) {
  if (pfnSum(file.Path()) != ReferenceSum(file.Path())) {
    state.SkipWithError("another sum than the reference");
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(pfnSum(file.Path()));
  const auto uBytes = std::filesystem::file_size(file.Path());
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(uBytes));
}

void BM_RowsReference(benchmark::State& state) { Read(state, RowFile(), ReferenceSum); }
void BM_RowsTokens(benchmark::State& state) { Read(state, RowFile(), TokenSum); }
void BM_RowsRecords(benchmark::State& state) { Read(state, RowFile(), RecordSum); }
void BM_BlocksReference(benchmark::State& state) { Read(state, BlockFile(), ReferenceSum); }
void BM_BlocksTokens(benchmark::State& state) { Read(state, BlockFile(), TokenSum); }
void BM_BlocksRecords(benchmark::State& state) { Read(state, BlockFile(), RecordSum); }

BENCHMARK(BM_RowsReference);
BENCHMARK(BM_RowsTokens);
BENCHMARK(BM_RowsRecords);
BENCHMARK(BM_BlocksReference);
BENCHMARK(BM_BlocksTokens);
BENCHMARK(BM_BlocksRecords);

}  // namespace
