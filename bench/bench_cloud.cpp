// Point clouds against plain loops over arrays of the same records.
//
//   bench_cloud                  times; compare "ours" with "reference" in one run
//   bench_cloud --peak KIND      reads one file by one reader (pts_ours, pts_reference,
//   binary_ours,
//                                binary_reference) and prints the peak of the process's memory; the
//                                benchmarks "Peak" start the program this way
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>

#include "bench/cloud_reference.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/numerics/affin_map3d.h"
#include "zu/numerics/select_volume3d.h"

namespace {

constexpr std::size_t kPtsPoints = 5'000'000;
constexpr std::size_t kPtsWritePoints = 1'000'000;
constexpr std::size_t kPlyPoints = 1'000'000;
constexpr std::size_t kBinaryPoints = 10'000'000;
constexpr std::size_t kArrayPoints = 2'000'000;  // 128 MB, beyond the caches

[[noreturn]] void Differ(const char* szWhat) {
  std::fprintf(stderr, "bench_cloud: results differ: %s\n", szWhat);
  std::exit(1);
}

ZuScanPoint3d AsPoint(const reference::Record& r) {
  ZuScanPoint3d p(r.x, r.y, r.z, static_cast<int>(r.uColor));
  std::memcpy(&p.m_fDX, &r.fDX, 24);
  p.m_sFlags = r.uFlags;
  p.w = r.w;
  return p;
}

bool Same(const std::vector<ZuScanPoint3d>& ours, const std::vector<reference::Record>& theirs) {
  return std::equal(ours.begin(), ours.end(), theirs.begin(), theirs.end(),
                    [](const ZuScanPoint3d& p, const reference::Record& r) {
                      return std::memcmp(&p.x, &r.x, 32) == 0 &&
                             std::memcmp(&p.m_fDX, &r.fDX, 24) == 0 && p.m_sFlags == r.uFlags &&
                             p.m_uColor == r.uColor;
                    });
}

bool Same(const ZuBoundingBox3d& box, const reference::Box& r) {
  return box.Xmin() == r.dMin[0] && box.Ymin() == r.dMin[1] && box.Zmin() == r.dMin[2] &&
         box.Xmax() == r.dMax[0] && box.Ymax() == r.dMax[1] && box.Zmax() == r.dMax[2] &&
         box.GetCount() == r.uCount;
}

bool Same(const ZuCenterPoint3d& center, const reference::Mean& r) {
  return center.x() == r.x && center.y() == r.y && center.z() == r.z && center.GetCount() == r.n;
}

void Check(const ZuPointCloud& cloud, const reference::Cloud& theirs, const char* szWhat) {
  if (!Same(cloud.GetPoints(), theirs.points) || !Same(cloud.GetBox(), theirs.box) ||
      !Same(cloud.GetCenter(), theirs.mean)) {
    Differ(szWhat);
  }
}

// A scan of a site, three decimals, a third selected.
std::vector<reference::Record> Records(std::size_t n) {
  std::mt19937 random(1);
  std::uniform_int_distribution<int> east(630'000'000, 640'000'000), height(0, 500'000);
  std::vector<reference::Record> records(n);
  for (auto& r : records) {
    r.x = east(random) / 1000.0;
    r.y = east(random) / 1000.0;
    r.z = height(random) / 1000.0;
    r.w = 1.0;
    r.fNZ = 1.0f;
    r.uFlags = random() % 10 < 3 ? 0x100 : 0;
    r.uColor = static_cast<std::uint32_t>(random()) | 0x01000000;
  }
  return records;
}

void Fill(ZuPointCloud& cloud, const std::vector<reference::Record>& records) {
  cloud.Reserve(static_cast<unsigned int>(records.size()));
  for (const auto& r : records) cloud.AddPoint(AsPoint(r));
}

// A file made when first asked for and removed at the end.
class SharedFile {
 public:
  SharedFile(const char* szEnding, std::function<void(const char*)> make)
      : m_strPath((std::filesystem::temp_directory_path() / "bench_cloud_").string() +
                  std::to_string(getpid()) + szEnding),
        m_make(std::move(make)) {}
  ~SharedFile() {
    std::error_code ignored;
    std::filesystem::remove(m_strPath, ignored);
  }
  const char* Path() {
    if (m_make) std::exchange(m_make, nullptr)(m_strPath.c_str());
    return m_strPath.c_str();
  }
  std::int64_t Size() { return static_cast<std::int64_t>(std::filesystem::file_size(Path())); }

 private:
  std::string m_strPath;
  std::function<void(const char*)> m_make;
};

void MakePts(const char* szPath) {
  ZuPointCloud cloud;
  Fill(cloud, Records(kPtsPoints));
  std::FILE* fp = std::fopen(szPath, "wb");
  std::fprintf(fp, "%zu\n", kPtsPoints);
  cloud.WritePtsFile(fp, false);
  std::fclose(fp);
}

void MakePly(const char* szPath) {
  std::FILE* fp = std::fopen(szPath, "wb");
  std::fprintf(fp, "ply\nformat ascii 1.0\nelement vertex %zu\n", kPlyPoints);
  for (const char* szName : {"x", "y", "z", "nx", "ny", "nz", "red", "green", "blue"}) {
    std::fprintf(fp, "property float %s\n", szName);
  }
  std::fprintf(fp, "end_header\n");
  for (const auto& r : Records(kPlyPoints)) {
    std::fprintf(fp, "%.6f %.6f %.6f %.4f %.4f %.4f %u %u %u\n", r.x / 1e6, r.y / 1e6, r.z / 1e6,
                 0.5, -0.25, 0.8292, r.uColor & 0xFF, (r.uColor >> 8) & 0xFF,
                 (r.uColor >> 16) & 0xFF);
  }
  std::fclose(fp);
}

void MakeBinary(const char* szPath) {
  ZuPointCloudContainer container;
  Fill(*container.AddCloud(), Records(kBinaryPoints));
  container.Write(szPath);
}

SharedFile& PtsFile() {
  static SharedFile file(".pts", MakePts);
  return file;
}
SharedFile& PlyFile() {
  static SharedFile file(".ply", MakePly);
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
  {
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
  {
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
  {
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

void BM_PtsWrite_ours(benchmark::State& state) {
  const auto records = Records(kPtsWritePoints);
  ZuPointCloud cloud;
  Fill(cloud, records);
  WritePtsOurs(cloud);
  const std::string strOurs = Content(Target().Path());
  reference::WritePts(Target().Path(), records);
  if (Content(Target().Path()) != strOurs) Differ("PTS writing");
  for (auto _ : state) WritePtsOurs(cloud);
  state.SetBytesProcessed(state.iterations() * Target().Size());
}

void BM_PtsWrite_reference(benchmark::State& state) {
  const auto records = Records(kPtsWritePoints);
  for (auto _ : state) reference::WritePts(Target().Path(), records);
  state.SetBytesProcessed(state.iterations() * Target().Size());
}

void BM_BinaryWrite_ours(benchmark::State& state) {
  ZuPointCloudContainer container;
  container.Read(BinaryFile().Path());
  reference::Cloud theirs;
  reference::ReadBinary(BinaryFile().Path(), theirs);
  reference::WriteBinary(Target().Path(), Content(BinaryFile().Path()).data(), theirs.points);
  const std::string strTheirs = Content(Target().Path());
  container.Write(Target().Path());
  if (Content(Target().Path()) != strTheirs) Differ("binary writing");
  for (auto _ : state) container.Write(Target().Path());
  state.SetBytesProcessed(state.iterations() * Target().Size());
}

void BM_BinaryWrite_reference(benchmark::State& state) {
  reference::Cloud theirs;
  reference::ReadBinary(BinaryFile().Path(), theirs);
  const std::string strHead = Content(BinaryFile().Path()).substr(0, 1024);
  for (auto _ : state) reference::WriteBinary(Target().Path(), strHead.data(), theirs.points);
  state.SetBytesProcessed(state.iterations() * Target().Size());
}

// Points in memory

const ZuAffinMap3d& Map() {
  static const ZuAffinMap3d map =
      ZuAffinMap3d::Translate(1.0, 2.0, 3.0) * ZuAffinMap3d::RotXYZ(0.01, 0.02, 0.03);
  return map;
}
const double (&MapValues())[12] {
  static double ad[12];
  std::copy_n(Map().asDblArray(), 12, ad);
  return ad;
}

constexpr double kEye[3] = {635000.0, 635000.0, -1000.0};
constexpr double kSides[4][4] = {
    {0.9, 0.0, 0.4, 0.0}, {-0.9, 0.0, 0.4, 0.0}, {0.0, 0.9, 0.4, 0.0}, {0.0, -0.9, 0.4, 0.0}};

Zu3dSelectVolume Volume() {
  Zu3dSelectVolume volume;
  for (int i = 0; i < 4; ++i) {
    ZuPlane& plane = volume.GetPlane(i);
    plane.A() = kSides[i][0];
    plane.B() = kSides[i][1];
    plane.C() = kSides[i][2];
    plane.D() = kSides[i][3];
  }
  volume.SetEye(ZuPoint3d(kEye[0], kEye[1], kEye[2]));
  volume.StartPyramid();
  return volume;
}

struct Pair {
  ZuPointCloud ours;
  reference::Cloud theirs;
  Pair() {
    theirs.points = Records(kArrayPoints);
    Fill(ours, theirs.points);
  }
};

void BM_Transform_ours(benchmark::State& state) {
  Pair pair;
  pair.ours.Transform(Map());
  reference::Transform(pair.theirs, MapValues());
  Check(pair.ours, pair.theirs, "transformation");
  for (auto _ : state) pair.ours.Transform(Map());
}

void BM_Transform_reference(benchmark::State& state) {
  reference::Cloud cloud;
  cloud.points = Records(kArrayPoints);
  for (auto _ : state) {
    reference::Transform(cloud, MapValues());
    benchmark::DoNotOptimize(cloud.mean);  // also what nobody reads must be computed
    benchmark::DoNotOptimize(cloud.box);
  }
}

void BM_Boxes_ours(benchmark::State& state) {
  Pair pair;
  {
    ZuBoundingBox3d all, selected;
    pair.ours.UpdateBoundingBoxes(all, selected, Map());
    reference::Box theirAll, theirSelected;
    reference::Boxes(pair.theirs.points, MapValues(), theirAll, theirSelected);
    if (!Same(all, theirAll) || !Same(selected, theirSelected)) Differ("boxes");
  }
  for (auto _ : state) {
    ZuBoundingBox3d all, selected;
    benchmark::DoNotOptimize(pair.ours.UpdateBoundingBoxes(all, selected, Map()));
    benchmark::DoNotOptimize(all);
  }
}

void BM_Boxes_reference(benchmark::State& state) {
  const auto points = Records(kArrayPoints);
  for (auto _ : state) {
    reference::Box all, selected;
    reference::Boxes(points, MapValues(), all, selected);
    benchmark::DoNotOptimize(all);
    benchmark::DoNotOptimize(selected);
  }
}

void BM_Select_ours(benchmark::State& state) {
  Pair pair;
  const Zu3dSelectVolume volume = Volume();
  reference::Box box;
  if (pair.ours.Select(volume) != reference::Select(pair.theirs.points, kSides, kEye, box) ||
      !Same(pair.ours.GetSelBox(), box) || !Same(pair.ours.GetPoints(), pair.theirs.points)) {
    Differ("selection");
  }
  for (auto _ : state) benchmark::DoNotOptimize(pair.ours.Select(volume));
}

void BM_Select_reference(benchmark::State& state) {
  auto points = Records(kArrayPoints);
  for (auto _ : state) {
    reference::Box box;
    benchmark::DoNotOptimize(reference::Select(points, kSides, kEye, box));
    benchmark::DoNotOptimize(box);
  }
}

void BM_EyeNormals_ours(benchmark::State& state) {
  Pair pair;
  const ZuPoint3d eye(kEye[0], kEye[1], kEye[2]);
  pair.ours.EstimateNormals(eye);
  reference::EyeNormals(pair.theirs.points, kEye);
  if (!Same(pair.ours.GetPoints(), pair.theirs.points)) Differ("eye normals");
  for (auto _ : state) pair.ours.EstimateNormals(eye);
}

void BM_EyeNormals_reference(benchmark::State& state) {
  auto points = Records(kArrayPoints);
  for (auto _ : state) reference::EyeNormals(points, kEye);
}

void BM_Delete30_ours(benchmark::State& state) {
  Pair pair;
  for (auto _ : state) {
    state.PauseTiming();
    ZuPointCloud cloud(pair.ours);
    state.ResumeTiming();
    benchmark::DoNotOptimize(cloud.DeleteSelected());
    state.PauseTiming();
    if (state.iterations() == 0) {
      reference::DeleteSelected(pair.theirs.points);
      if (!Same(cloud.GetPoints(), pair.theirs.points)) Differ("deletion");
    }
    cloud = ZuPointCloud();
    state.ResumeTiming();
  }
}

void BM_Delete30_reference(benchmark::State& state) {
  const auto points = Records(kArrayPoints);
  for (auto _ : state) {
    state.PauseTiming();
    auto copy = points;
    state.ResumeTiming();
    auto undo = reference::DeleteSelected(copy);
    benchmark::DoNotOptimize(undo.data());
    state.PauseTiming();
    undo = {};
    copy = {};
    state.ResumeTiming();
  }
}

void BM_ZSort_ours(benchmark::State& state) {
  Pair pair;
  for (auto _ : state) {
    state.PauseTiming();
    ZuPointCloud cloud(pair.ours);
    state.ResumeTiming();
    cloud.ZSort(true);
    state.PauseTiming();
    const auto& points = cloud.GetPoints();
    if (!std::is_sorted(points.begin(), points.end(),
                        [](const auto& a, const auto& b) { return a.z < b.z; })) {
      Differ("sorting");
    }
    cloud = ZuPointCloud();
    state.ResumeTiming();
  }
}

void BM_ZSort_reference(benchmark::State& state) {
  const auto points = Records(kArrayPoints);
  for (auto _ : state) {
    state.PauseTiming();
    auto copy = points;
    state.ResumeTiming();
    std::sort(copy.begin(), copy.end(), [](const auto& a, const auto& b) { return a.z < b.z; });
    state.PauseTiming();
    benchmark::DoNotOptimize(copy.data());
    copy = {};
    state.ResumeTiming();
  }
}

#define ZU_BENCH_PAIR(name)                                   \
  BENCHMARK(BM_##name##_ours)->Unit(benchmark::kMillisecond); \
  BENCHMARK(BM_##name##_reference)->Unit(benchmark::kMillisecond)

ZU_BENCH_PAIR(PtsRead);
ZU_BENCH_PAIR(PtsWrite);
ZU_BENCH_PAIR(PlyRead);
ZU_BENCH_PAIR(BinaryRead);
ZU_BENCH_PAIR(BinaryWrite);
ZU_BENCH_PAIR(Transform);
ZU_BENCH_PAIR(Boxes);
ZU_BENCH_PAIR(Select);
ZU_BENCH_PAIR(EyeNormals);
ZU_BENCH_PAIR(Delete30);
ZU_BENCH_PAIR(ZSort);

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
  state.counters["peak_MB"] = dKiB / 1024.0;
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
