// Coordinate files of a million lines with 16 digits, read and written, each beside a plain loop:
//
//   read   from_chars over the mapped file into four arrays, one pass
//   write  to_chars(general, 16) with the same padding into the same sink
//   peak   the largest resident memory of a process that reads the file; the other one maps it and
//          parses it into a list of the same nodes
//
// Both sides give the same values and the same bytes; that is checked before anything is timed.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <ostream>
#include <random>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/temp_file.h"
#include "zu/points/point_list.h"

namespace {

using Table = TZuFormatTable<eZuPointRWMask>;

constexpr int kLines = 1000000;
constexpr std::size_t kBlock = 32768;
constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                       eZuPointRWEnd};

[[noreturn]] void Fail(const char* szWhat) {
  std::fprintf(stderr, "bench_coordinate_file: %s\n", szWhat);
  std::exit(1);
}

// --- The sink of both writers: one block of memory, filled in turn ------------------------------

class Sink : public std::streambuf {
 public:
  explicit Sink(std::size_t uSize) : m_text(uSize, '\0') {}
  void Rewind() { m_uCount = 0; }
  void Put(const char* p, std::size_t n) {
    if (m_uCount + n > m_text.size()) Fail("the text is longer than expected");
    std::memcpy(m_text.data() + m_uCount, p, n);
    m_uCount += n;
  }
  std::string_view Text() const { return {m_text.data(), m_uCount}; }

 protected:
  std::streamsize xsputn(const char* p, std::streamsize n) override {
    Put(p, static_cast<std::size_t>(n));
    return n;
  }
  int overflow(int c) override {
    const char cByte = static_cast<char>(c);
    Put(&cByte, 1);
    return c;
  }

 private:
  std::string m_text;
  std::size_t m_uCount = 0;
};

// --- Reference loops ---------------------------------------------------------------------------

class MappedFile {
 public:
  explicit MappedFile(const char* szPath) {
    const int iFile = open(szPath, O_RDONLY);
    struct stat status {};
    if (iFile < 0 || fstat(iFile, &status) != 0) Fail("cannot open the file");
    m_uSize = static_cast<std::size_t>(status.st_size);
    void* const p = mmap(nullptr, m_uSize, PROT_READ, MAP_PRIVATE, iFile, 0);
    close(iFile);
    if (p == MAP_FAILED) Fail("cannot map the file");
    m_pData = static_cast<char*>(p);
  }
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;
  ~MappedFile() { munmap(m_pData, m_uSize); }
  const char* begin() const { return m_pData; }
  const char* end() const { return m_pData + m_uSize; }

 private:
  char* m_pData;
  std::size_t m_uSize;
};

struct Row {
  unsigned int uId = 0;
  double adCoordinate[3] = {};
};

// One line from p on; returns the start of the next one.
const char* ParseRow(const char* p, const char* pEnd, Row* pRow) {
  while (p != pEnd && *p == ' ') ++p;
  p = std::from_chars(p, pEnd, pRow->uId).ptr;
  for (double& d : pRow->adCoordinate) {
    while (p != pEnd && *p == ' ') ++p;
    p = std::from_chars(p, pEnd, d).ptr;
  }
  while (p != pEnd && *p != '\n') ++p;
  return p == pEnd ? p : p + 1;
}

struct Arrays {
  std::vector<unsigned int> ids;
  std::vector<double> x, y, z;
};

Arrays ReferenceRead(const char* szPath) {
  const MappedFile file(szPath);
  Arrays arrays;
  arrays.ids.reserve(kLines);
  for (auto* p : {&arrays.x, &arrays.y, &arrays.z}) p->reserve(kLines);
  for (const char* p = file.begin(); p != file.end();) {
    Row row;
    p = ParseRow(p, file.end(), &row);
    arrays.ids.push_back(row.uId);
    arrays.x.push_back(row.adCoordinate[0]);
    arrays.y.push_back(row.adCoordinate[1]);
    arrays.z.push_back(row.adCoordinate[2]);
  }
  return arrays;
}

template <class... Format>
char* PutRight(char* p, std::ptrdiff_t iWidth, Format... format) {
  char acText[32];
  const char* const pEnd = std::to_chars(acText, acText + sizeof(acText), format...).ptr;
  *p++ = ' ';
  for (std::ptrdiff_t n = pEnd - acText; n < iWidth; ++n) *p++ = ' ';
  return std::copy(static_cast<const char*>(acText), pEnd, p);
}

void ReferenceWrite(const ZuPointList& list, Sink& sink) {
  char acBlock[kBlock];
  char* p = acBlock;
  for (const ZuPoint* pPoint = list.First(); pPoint != nullptr; pPoint = pPoint->Next()) {
    if (acBlock + kBlock - p < 128) {
      sink.Put(acBlock, static_cast<std::size_t>(p - acBlock));
      p = acBlock;
    }
    p = PutRight(p, 8, pPoint->GetId());
    for (double d : {pPoint->m_dX, pPoint->m_dY, pPoint->m_dZ}) {
      p = PutRight(p, 16, d, std::chars_format::general, 16);
    }
    if (pPoint->Next() != nullptr) *p++ = '\n';
  }
  sink.Put(acBlock, static_cast<std::size_t>(p - acBlock));
}

void ReferenceReadNodes(const char* szPath, ZuPointList* pList) {
  const MappedFile file(szPath);
  for (const char* p = file.begin(); p != file.end();) {
    Row row;
    p = ParseRow(p, file.end(), &row);
    pList->Add(new ZuPoint(row.uId, row.adCoordinate[0], row.adCoordinate[1], row.adCoordinate[2]));
  }
}

// --- The data ----------------------------------------------------------------------------------

struct Data {
  ZuPointList list{Table(kColumns)};
  TempFile file;
  std::size_t uBytes = 0;

  Data() {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> coordinate(1e6, 5e6);  // 16 digits each
    for (unsigned int u = 1; u <= kLines; ++u) {
      list.Add(new ZuPoint(u, coordinate(random), coordinate(random), coordinate(random)));
    }
    list.WriteFile(file.Path());
    uBytes = file.Read().size();
    CheckRead();
    CheckWrite();
  }

  void CheckRead() const {
    const Arrays arrays = ReferenceRead(file.Path());
    ZuPointList read;
    if (read.ReadFile(file.Path(), Table(kColumns)) != kLines) Fail("lines are missing");
    std::size_t i = 0;
    for (const ZuPoint* p = read.First(); p != nullptr; p = p->Next(), ++i) {
      if (p->GetId() != arrays.ids[i] || p->m_dX != arrays.x[i] || p->m_dY != arrays.y[i] ||
          p->m_dZ != arrays.z[i]) {
        Fail("the two readers differ");
      }
    }
  }

  void CheckWrite() const {
    Sink ours(uBytes), reference(uBytes);
    std::ostream os(&ours);
    list.Write(os);
    ReferenceWrite(list, reference);
    if (ours.Text() != reference.Text()) Fail("the two writers differ");
  }
};

const Data& TheData() {
  static const Data data;
  return data;
}

void SetBytes(benchmark::State& state) {
  state.SetBytesProcessed(static_cast<std::int64_t>(TheData().uBytes) * state.iterations());
}

void BM_Read(benchmark::State& state) {
  const Data& data = TheData();
  for (auto _ : state) {
    auto pList = std::make_unique<ZuPointList>();
    benchmark::DoNotOptimize(pList->ReadFile(data.file.Path(), Table(kColumns)));
    state.PauseTiming();
    pList.reset();
    malloc_trim(0);  // each round starts with fresh memory, as a program that reads one file does
    state.ResumeTiming();
  }
  SetBytes(state);
}

void BM_ReadReference(benchmark::State& state) {
  const Data& data = TheData();
  for (auto _ : state) {
    auto pArrays = std::make_unique<Arrays>(ReferenceRead(data.file.Path()));
    benchmark::DoNotOptimize(pArrays->z.data());
    state.PauseTiming();
    pArrays.reset();
    malloc_trim(0);
    state.ResumeTiming();
  }
  SetBytes(state);
}

void BM_Write(benchmark::State& state) {
  const Data& data = TheData();
  Sink sink(data.uBytes);
  for (auto _ : state) {
    sink.Rewind();
    std::ostream os(&sink);
    data.list.Write(os);
  }
  SetBytes(state);
}

void BM_WriteReference(benchmark::State& state) {
  const Data& data = TheData();
  Sink sink(data.uBytes);
  for (auto _ : state) {
    sink.Rewind();
    ReferenceWrite(data.list, sink);
  }
  SetBytes(state);
}

// --- Peak memory: this program again, as a child that does nothing but read ----------------------

// Prints the child's own peak in KiB.
int RunChild(const char* szWhat, const char* szPath) {
  ZuPointList list;
  if (std::strcmp(szWhat, "read") == 0) list.ReadFile(szPath, Table(kColumns));
  if (std::strcmp(szWhat, "reference") == 0) ReferenceReadNodes(szPath, &list);
  std::ifstream status("/proc/self/status");
  for (std::string strLine; std::getline(status, strLine);) {
    if (strLine.starts_with("VmHWM:")) std::printf("%d\n", std::atoi(strLine.c_str() + 6));
  }
  std::fflush(stdout);
  _exit(0);
}

double PeakOfChild(const char* szWhat) {
  const std::string strCommand = std::filesystem::read_symlink("/proc/self/exe").string() +
                                 " --child " + szWhat + " " + TheData().file.Path();
  FILE* const pPipe = popen(strCommand.c_str(), "r");
  double dKiB = 0.0;
  if (pPipe == nullptr || std::fscanf(pPipe, "%lf", &dKiB) != 1) Fail("the child failed");
  pclose(pPipe);
  return dKiB * 1024.0;
}

// Without what a process that reads nothing takes.
void PeakMemory(benchmark::State& state, const char* szWhat) {
  for (auto _ : state) {
    state.counters["peak_MiB"] = (PeakOfChild(szWhat) - PeakOfChild("nothing")) / 1048576.0;
  }
}
void BM_PeakMemory(benchmark::State& state) { PeakMemory(state, "read"); }
void BM_PeakMemoryReference(benchmark::State& state) { PeakMemory(state, "reference"); }

BENCHMARK(BM_Read)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadReference)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Write)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WriteReference)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PeakMemory)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PeakMemoryReference)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::strcmp(argv[1], "--child") == 0) return RunChild(argv[2], argv[3]);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
