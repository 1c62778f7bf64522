#include "bench/growth/cases.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <random>
#include <utility>

#include "bench/cloud_data.h"
#include "bench/similarity_lists.h"
#include "tests/support/temp_file.h"
#include "zu/foundation/list.h"
#include "zu/numerics/affin_map3d.h"
#include "zu/rectify/calc_plane.h"
#include "zu/transform/trafo3d.h"
#ifdef ZU_HAS_ADJUST
#include "bench/network_problem.h"
#endif

namespace growth {
namespace {

constexpr double kSeconds = 0.3;  // at least so long, and at least so often
constexpr int kRounds = 3;
constexpr int kMostRounds = 2000;

double Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// The shortest time of `work`; `prepare` runs before each and does not count.
template <class Prepare, class Work>
double Best(Prepare prepare, Work work) {
  double dBest = 1e99, dSum = 0.0;
  for (int i = 0; i < kMostRounds && (i < kRounds || dSum < kSeconds); ++i) {
    prepare();
    const double dStart = Now();
    work();
    const double dTime = Now() - dStart;
    dBest = std::min(dBest, dTime);
    dSum += dTime;
  }
  return dBest;
}

void Require(bool b, const char* szWhat) {
  if (b) return;
  std::fprintf(stderr, "bench_growth: %s failed\n", szWhat);
  std::exit(1);
}

// --- Lists --------------------------------------------------------------------------------------

class Record : public ZuListnode {
 public:
  using ZuListnode::ZuListnode;
  Record* Next() const { return static_cast<Record*>(m_pNext); }
};

// Nodes that lie in memory in the order of the list. Each round has new ids: a processor learns the
// branches of a small sort that it sees again.
struct Shuffled {
  explicit Shuffled(std::size_t n) : ids(n) {
    std::iota(ids.begin(), ids.end(), 1u);
    for (const unsigned int u : ids) nodes.push_back(new Record(u));
    Shuffle();
  }
  void Shuffle() {
    std::shuffle(ids.begin(), ids.end(), random);
    list.SubtractAll();
    for (std::size_t i = 0; i < ids.size(); ++i) {
      nodes[i]->SetId(ids[i]);
      list.Add(nodes[i]);
    }
  }
  std::mt19937 random{1};
  std::vector<unsigned int> ids;
  TZuListHeader<Record> list;
  std::vector<Record*> nodes;
};

double ListSort(std::size_t n) {
  Shuffled data(n);
  return Best([&] { data.Shuffle(); }, [&] { data.list.Sort(); });
}

double PointerSort(std::size_t n) {
  Shuffled data(n);
  std::vector<Record*> sorted;
  return Best(
      [&] {
        data.Shuffle();
        sorted.clear();
      },
      [&] {
        for (Record* p = data.list.First(); p; p = p->Next()) sorted.push_back(p);
        std::stable_sort(sorted.begin(), sorted.end(),
                         [](const Record* a, const Record* b) { return a->GetId() > b->GetId(); });
      });
}

// --- Coordinate files ---------------------------------------------------------------------------

double CoordinateRead(std::size_t n) {
  const TempFile file;
  std::FILE* const fp = std::fopen(file.Path(), "wb");
  Require(fp != nullptr, "writing");
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> value(1e6, 5e6);
  for (std::size_t i = 1; i <= n; ++i) {
    const double x = value(random), y = value(random), z = value(random);
    std::fprintf(fp, "%9zu %16.16g %16.16g %16.16g\n", i, x, y, z);
  }
  std::fclose(fp);
  ZuPointList list;
  constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                         eZuPointRWEnd};
  const TZuFormatTable<eZuPointRWMask> table(kColumns);
  const int iCount = static_cast<int>(n);
  return Best([&] { list.Destroy(); },
              [&] { Require(list.ReadFile(file.Path(), table) == iCount, "coordinate read"); });
}

// --- Transformations ----------------------------------------------------------------------------

double Similarity(std::size_t n) {
  const SimilarityLists lists(static_cast<int>(n), false);
  ZuTrafo3d trafo;
  return Best([] {},
              [&] {
                Require(trafo.CalcByControlPoints(&lists.target, &lists.source, 3, false),
                        "estimate");
              });
}

double RobustMerge(std::size_t n) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> value(-10.0, 10.0), unit(-1.0, 1.0);
  ZuPointList a, b, good, bad;
  for (unsigned int u = 1; u <= n; ++u) {
    const double x = value(random), y = value(random), z = value(random);
    const double dError = random() % 10 < 3 ? 1.0 : 0.001;
    b.Add(ZuPoint(u, x, y, z));
    a.Add(ZuPoint(u, 5.0 - 2.0 * y + dError * unit(random), 2.0 * x + dError * unit(random),
                  2.0 * z + dError * unit(random)));
  }
  return Best(
      [&] {
        good.Destroy();
        bad.Destroy();
        std::srand(1);
      },
      [&] {
        ZuTrafo3d trafo;
        Require(trafo.RobustCalcByControlPointsAndTransform(&good, &bad, nullptr, a, b, 0.01, true,
                                                            0.0, 3, false, 1, 0) == eTrafo3DOk,
                "robust merge");
      });
}

double PlaneFit(std::size_t n) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> value(0.0, 100.0), noise(0.0, 0.01);
  ZuPointList list;
  for (unsigned int u = 1; u <= n; ++u) {
    const double x = value(random), y = value(random);
    list.Add(ZuPoint(u, x, y, 0.1 * x + 0.2 * y + 3.0 + noise(random)));
  }
  return Best([] {},
              [&] {
                ZuCalcPlane calc;
                Require(calc.CalcPlaneFromFilteredPoints(&list, false, false), "plane fit");
              });
}

// --- Clouds -------------------------------------------------------------------------------------

double CloudRead(std::size_t n) {
  cloud_data::SharedFile file(".pts", [n](const char* szPath) { cloud_data::MakePts(szPath, n); });
  const char* const szPath = file.Path();
  return Best([] {},
              [&] {
                ZuPointCloudContainer container;
                const ZuPointCloud* const pCloud = container.ReadPtsFile(szPath);
                Require(pCloud != nullptr && pCloud->GetPoints().size() == n, "cloud read");
              });
}

double CloudTransform(std::size_t n) {
  ZuPointCloud cloud;
  cloud_data::Fill(cloud, cloud_data::Records(n));
  const ZuAffinMap3d map = ZuAffinMap3d::RotXYZ(0.01, 0.02, 0.03);
  return Best([] {}, [&] { cloud.Transform(map); });
}

// --- Networks -----------------------------------------------------------------------------------

#ifdef ZU_HAS_ADJUST
// A hundred points a photo, six rays a point.
double AdjustNetwork(std::size_t n, bool bStatistics) {
  const int iRays = static_cast<int>(n);
  const ZuNetwork network = network_problem::Maker::Block(std::max(10, iRays / 600), iRays / 6);
  ZuNetworkOptions options;
  options.bStatistics = bStatistics;
  return Best(
      [] {},
      [&] { Require(network.Adjust(options).status == ZuAdjustStatus::Good, "adjustment"); });
}
#endif

}  // namespace

std::vector<Case> NetworkCases() {
#ifdef ZU_HAS_ADJUST
  return {{"Network, estimate alone", 20000.0, [](auto n) { return AdjustNetwork(n, false); }},
          {"Network, standard deviations and tests", 20000.0,
           [](auto n) { return AdjustNetwork(n, true); }}};
#else
  return {};
#endif
}

std::vector<Case> AllCases() {
  return {{"List sort", 60.0, ListSort},
          {"std::stable_sort of pointers", 80.0, PointerSort, true},
          {"Coordinate read", 320.0, CoordinateRead},
          {"Similarity, two lists", 520.0, Similarity},
          {"Robust merge", 1300.0, RobustMerge},
          {"Plane fit", 700.0, PlaneFit},
          {"Cloud read (PTS)", 400.0, CloudRead},
          {"Cloud transform", 140.0, CloudTransform}};
}

}  // namespace growth
