// Files of point clouds against plain loops over mapped files and blocks.
//
//   bench_cloud_files                  times; compare "ours" with "reference" in one run
//   bench_cloud_files --peak KIND      reads one file by one reader (pts_ours, pts_reference,
//                                      binary_ours, binary_reference) and prints the peak of the
//                                      process's memory; "Peak" starts the program this way
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "bench/cloud_data.h"

namespace {

using namespace cloud_data;

constexpr std::size_t kPtsPoints = 5'000'000;
constexpr std::size_t kPtsWritePoints = 1'000'000;
constexpr std::size_t kPlyPoints = 1'000'000;
constexpr std::size_t kBinaryPoints = 10'000'000;

void MakeBinary(const char* szPath) {
  ZuPointCloudContainer container;
  Fill(*container.AddCloud(), Records(kBinaryPoints));
  container.Write(szPath);
}

SharedFile& PtsFile() {
  static SharedFile file(".pts", [](const char* szPath) { MakePts(szPath, kPtsPoints); });
  return file;
}
SharedFile& PlyFile() {
  static SharedFile file(".ply", [](const char* szPath) { MakePly(szPath, kPlyPoints); });
  return file;
}
SharedFile& BinaryFile() {
  static SharedFile file(".zpc", MakeBinary);
  return file;
}
SharedFile& Target() {
  static SharedFile file(".out", [](const char*) {});
  return file;
}

// Reading

void BM_PtsRead_ours(benchmark::State& state) {
  const char* const szPath = PtsFile().Path();
  if (static bool bFirst = true; std::exchange(bFirst, false)) {
    ZuPointCloudContainer container;
    reference::Cloud theirs;
    reference::ReadPts(szPath, theirs);
    Check(*container.ReadPtsFile(szPath), theirs, "PTS reading");
  }
  for (auto _ : state) {
    ZuPointCloudContainer container;
    benchmark::DoNotOptimize(container.ReadPtsFile(szPath));
  }
  state.SetBytesProcessed(state.iterations() * PtsFile().Size());
}

void BM_PtsRead_reference(benchmark::State& state) {
  const char* const szPath = PtsFile().Path();
  for (auto _ : state) {
    reference::Cloud cloud;
    reference::ReadPts(szPath, cloud);
    benchmark::DoNotOptimize(cloud.mean);
    benchmark::DoNotOptimize(cloud.box);
  }
  state.SetBytesProcessed(state.iterations() * PtsFile().Size());
}

void BM_PlyRead_ours(benchmark::State& state) {
  const char* const szPath = PlyFile().Path();
  if (static bool bFirst = true; std::exchange(bFirst, false)) {
    ZuPointCloudContainer container;
    reference::Cloud theirs;
    reference::ReadPly(szPath, kPlyPoints, theirs);
    Check(*container.ObsolteReadPlyFile(szPath), theirs, "PLY reading");
  }
  for (auto _ : state) {
    ZuPointCloudContainer container;
    benchmark::DoNotOptimize(container.ObsolteReadPlyFile(szPath));
  }
  state.SetBytesProcessed(state.iterations() * PlyFile().Size());
}

void BM_PlyRead_reference(benchmark::State& state) {
  const char* const szPath = PlyFile().Path();
  for (auto _ : state) {
    reference::Cloud cloud;
    reference::ReadPly(szPath, kPlyPoints, cloud);
    benchmark::DoNotOptimize(cloud.mean);
    benchmark::DoNotOptimize(cloud.box);
  }
  state.SetBytesProcessed(state.iterations() * PlyFile().Size());
}

void BM_BinaryRead_ours(benchmark::State& state) {
  const char* const szPath = BinaryFile().Path();
  if (static bool bFirst = true; std::exchange(bFirst, false)) {
    ZuPointCloudContainer container;
    reference::Cloud theirs;
    reference::ReadBinary(szPath, theirs);
    container.Read(szPath);
    Check(*container.First(), theirs, "binary reading");
  }
  for (auto _ : state) {
    ZuPointCloudContainer container;
    benchmark::DoNotOptimize(container.Read(szPath));
  }
  state.SetBytesProcessed(state.iterations() * BinaryFile().Size());
}

void BM_BinaryRead_reference(benchmark::State& state) {
  const char* const szPath = BinaryFile().Path();
  for (auto _ : state) {
    reference::Cloud cloud;
    reference::ReadBinary(szPath, cloud);
    benchmark::DoNotOptimize(cloud.mean);
    benchmark::DoNotOptimize(cloud.box);
  }
  state.SetBytesProcessed(state.iterations() * BinaryFile().Size());
}

// Writing

std::string Content(const char* szPath) {
  std::ifstream stream(szPath, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

void WritePtsOurs(const ZuPointCloud& cloud) {
  std::FILE* fp = std::fopen(Target().Path(), "wb");
  cloud.WritePtsFile(fp, false);
  std::fclose(fp);
}

struct WrittenPts {
  std::vector<reference::Record> records = Records(kPtsWritePoints);
  ZuPointCloud cloud;
  WrittenPts() {
    Fill(cloud, records);
    WritePtsOurs(cloud);
    const std::string strOurs = Content(Target().Path());
    reference::WritePts(Target().Path(), records);
    if (Content(Target().Path()) != strOurs) Differ("PTS writing");
  }
  static const WrittenPts& The() {
    static const WrittenPts data;
    return data;
  }
};

void BM_PtsWrite_ours(benchmark::State& state) {
  const WrittenPts& data = WrittenPts::The();
  for (auto _ : state) WritePtsOurs(data.cloud);
  state.SetBytesProcessed(state.iterations() * Target().Size());
}

void BM_PtsWrite_reference(benchmark::State& state) {
  const WrittenPts& data = WrittenPts::The();
  for (auto _ : state) reference::WritePts(Target().Path(), data.records);
  state.SetBytesProcessed(state.iterations() * Target().Size());
}

struct WrittenBinary {
  ZuPointCloudContainer container;
  reference::Cloud theirs;
  std::string strHead;
  WrittenBinary() {
    container.Read(BinaryFile().Path());
    reference::ReadBinary(BinaryFile().Path(), theirs);
    strHead = Content(BinaryFile().Path()).substr(0, 1024);
    reference::WriteBinary(Target().Path(), strHead.data(), theirs.points);
    const std::string strTheirs = Content(Target().Path());
    container.Write(Target().Path());
    if (Content(Target().Path()) != strTheirs) Differ("binary writing");
  }
  static WrittenBinary& The() {
    static WrittenBinary data;
    return data;
  }
};

void BM_BinaryWrite_ours(benchmark::State& state) {
  WrittenBinary& data = WrittenBinary::The();
  for (auto _ : state) data.container.Write(Target().Path());
  state.SetBytesProcessed(state.iterations() * Target().Size());
}

void BM_BinaryWrite_reference(benchmark::State& state) {
  const WrittenBinary& data = WrittenBinary::The();
  for (auto _ : state) {
    reference::WriteBinary(Target().Path(), data.strHead.data(), data.theirs.points);
  }
  state.SetBytesProcessed(state.iterations() * Target().Size());
}

#define ZU_BENCH_PAIR(name)                                   \
  BENCHMARK(BM_##name##_ours)->Unit(benchmark::kMillisecond); \
  BENCHMARK(BM_##name##_reference)->Unit(benchmark::kMillisecond)

ZU_BENCH_PAIR(PtsRead);
ZU_BENCH_PAIR(PtsWrite);
ZU_BENCH_PAIR(PlyRead);
ZU_BENCH_PAIR(BinaryRead);
ZU_BENCH_PAIR(BinaryWrite);

// Peak memory, in a process of its own

const char* const kPeakKinds[] = {"pts_ours", "pts_reference", "binary_ours", "binary_reference"};

int PrintPeak(const std::string& strKind, const char* szPath) {
  if (strKind == "pts_ours" || strKind == "binary_ours") {
    ZuPointCloudContainer container;
    if (strKind == "pts_ours") {
      container.ReadPtsFile(szPath);
    } else {
      container.Read(szPath);
    }
  } else {
    reference::Cloud cloud;
    if (strKind == "pts_reference") {
      reference::ReadPts(szPath, cloud);
    } else {
      reference::ReadBinary(szPath, cloud);
    }
  }
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("%ld\n", usage.ru_maxrss);
  return 0;
}

void BM_Peak(benchmark::State& state) {
  const std::string strKind = kPeakKinds[state.range(0)];
  SharedFile& file = strKind.starts_with("pts") ? PtsFile() : BinaryFile();
  const std::string strCall = std::filesystem::read_symlink("/proc/self/exe").string() +
                              " --peak " + strKind + " " + file.Path();
  double dKiB = 0.0;
  for (auto _ : state) {
    std::FILE* pipe = popen(strCall.c_str(), "r");
    if (!pipe || std::fscanf(pipe, "%lf", &dKiB) != 1) state.SkipWithError("no answer");
    if (pipe) pclose(pipe);
  }
  state.SetLabel(strKind);
  state.counters["peak_MiB"] = dKiB / 1024.0;
}
BENCHMARK(BM_Peak)->DenseRange(0, 3)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::string(argv[1]) == "--peak") return PrintPeak(argv[2], argv[3]);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
