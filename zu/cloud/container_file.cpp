// The binary cloud file: magic word, version, number of clouds, the clouds.
#include <cstdint>
#include <string>
#include <utility>

#include "zu/cloud/file_buff.h"
#include "zu/cloud/internal/little_endian.h"
#include "zu/cloud/internal/stdio_file.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/foundation/debug.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/profiler.h"
#include "zu/foundation/progress.h"

namespace {

constexpr std::uint32_t kContainerMagic = 0xBABEF00D;
constexpr std::uint32_t kVersion = 2;  // of every file written

// What a file announces and does not hold. A file may have very many damaged clouds: the first is
// told, the others are counted.
class Losses {
 public:
  // Points of cloud i, from 0, that are missing.
  void AddPoints(std::uint32_t i, std::uint64_t uMissing) {
    if (uMissing == 0) return;
    if (m_uPoints == 0) m_uCutCloud = i;
    m_uPoints += uMissing;
  }

  // Cloud i, from 0, which begins at a position of the file, is none.
  void AddCloud(std::uint32_t i, std::uint64_t uPos) {
    if (m_uClouds++ == 0) {
      m_uBadCloud = i;
      m_uBadPos = uPos;
    }
  }

  void Report(std::uint32_t uAnnounced, std::uint32_t uTried, std::uint64_t uRest, bool bStopped,
              ZuReadFindings& findings) const {
    const auto add = [&findings](eZuReadKind eKind, std::string strText) {
      findings.Add(eKind, 0, 0, std::move(strText));
    };
    const auto text = [](std::uint64_t u) { return std::to_string(u); };
    if (bStopped) add(eZuReadCut, "reading was stopped");
    if (m_uClouds > 0) {
      add(eZuReadCut, "cloud " + text(m_uBadCloud + 1ull) + " at byte " + text(m_uBadPos) +
                          " is damaged; dropped clouds: " + text(m_uClouds));
    }
    if (m_uPoints > 0) {
      add(eZuReadCut, "cloud " + text(m_uCutCloud + 1ull) +
                          " ends early; points that are announced and missing: " + text(m_uPoints));
    }
    if (!bStopped && uTried < uAnnounced) {
      add(eZuReadCut,
          text(uAnnounced) + " clouds are announced, the file ends after " + text(uTried));
    }
    if (!bStopped && uTried == uAnnounced && uRest > 0) {
      add(eZuReadDropped, text(uRest) + " bytes stand behind the last cloud");
    }
  }

 private:
  std::uint64_t m_uPoints = 0, m_uClouds = 0, m_uBadPos = 0;
  std::uint32_t m_uCutCloud = 0, m_uBadCloud = 0;
};

}  // namespace

int ZuPointCloudContainer::Read(const char* szPath) {
  try {
    ZuFileBuff buff(szPath);
    return Read(buff);
  } catch (...) {
    dbgprintf("Error reading point clouds: no memory for the file buffer");
    return 0;
  }
}

int ZuPointCloudContainer::Read(const wchar_t* szPath) {
  try {
    ZuFileBuff buff(szPath);
    return Read(buff);
  } catch (...) {
    dbgprintf("Error reading point clouds: no memory for the file buffer");
    return 0;
  }
}

int ZuPointCloudContainer::Read(ZuFileBuff& buff) {
  m_bStopped = false;
  m_Findings.Clear();
  if (buff.GetError() != eZuFileBuffGood || buff.GetSize() == 0) return 0;
  ZuProfiler profiler("Read Zuvoformat");
  if (buff.ReadWord() != kContainerMagic) return 0;
  const int iVersion = static_cast<int>(buff.ReadWord());
  if (iVersion <= 1) return 0;
  try {
    m_Findings.m_Dialect.m_strForm = "binary cloud file";
    ReadClouds(buff, iVersion);
  } catch (...) {
    dbgprintf("Error reading point clouds: what was read before memory ended is kept");
    m_Findings.AddMemoryEnded();
  }
  m_iDirty = 0;
  m_Clouds.Renumber(1, nullptr, 1);
  return m_Clouds.Count();
}

void ZuPointCloudContainer::ReadClouds(ZuFileBuff& buff, int iVersion) {
  ZuProgress progress("Reading point clouds");
  const std::uint32_t uClouds = buff.ReadWord();
  // Ids count on from the first free one, without a walk of the list for each cloud; they are given
  // anew at the end.
  unsigned int uId = m_Clouds.GetFreeId(m_uNextIdHint);
  Losses losses;
  std::uint32_t i = 0;
  for (; i < uClouds && !buff.IsEnd() && !m_bStopped; ++i) {
    ZuPointCloud* const pCloud = AddCloudWithId(uId);
    const std::uint64_t uPos = buff.GetPosition();
    std::uint64_t uMissing = 0;
    int iGood = 0;
    try {
      iGood = pCloud->Read(buff, iVersion, progress, &uMissing);
    } catch (...) {
      UpdateCenterAndBox(pCloud);  // the points that had memory stay
      throw;
    }
    if (iGood) {
      UpdateCenterAndBox(pCloud);
      ++uId;
      losses.AddPoints(i, uMissing);
    } else {
      Delete(pCloud);
      losses.AddCloud(i, uPos);
    }
    m_bStopped = progress.IsStopped();
  }
  losses.Report(uClouds, i, buff.GetRest(), m_bStopped, m_Findings);
}

int ZuPointCloudContainer::Write(const char* szPath) {
  return zu::internal::OrWithoutMemory([&] { return WriteFile(szPath); }, 0);
}

int ZuPointCloudContainer::Write(const wchar_t* szPath) {
  return zu::internal::OrWithoutMemory([&] { return WriteFile(szPath); }, 0);
}

template <class Char>
int ZuPointCloudContainer::WriteFile(const Char* szPath) {
  ZuStdioFile file(szPath, "wb");
  const int iDirty = m_iDirty;
  if (!Write(file.Get())) return 0;
  if (file.Close() && !m_bStopped) return 1;
  m_iDirty = iDirty;
  return 0;
}

int ZuPointCloudContainer::Write(std::FILE* fp) {
  m_bStopped = false;
  if (!fp) return 0;
  unsigned char aBytes[3 * sizeof(std::uint32_t)];
  unsigned char* pOut = ZuStoreLittle(aBytes, kContainerMagic);
  pOut = ZuStoreLittle(pOut, kVersion);
  ZuStoreLittle(pOut, static_cast<std::uint32_t>(m_Clouds.Count()));
  bool bGood = std::fwrite(aBytes, 1, sizeof aBytes, fp) == sizeof aBytes;

  ZuProgress progress("Writing point clouds");
  const std::int64_t nAll = Size();
  std::int64_t nDone = 0;
  for (const ZuPointCloud* p = m_Clouds.First(); p && !m_bStopped; p = p->Next()) {
    bGood = p->Write(fp, progress, nDone, nAll) != 0 && bGood;
    nDone += p->GetPointCount();
    m_bStopped = progress.IsStopped();
  }
  // The counter tells of changes that are in no file yet.
  if (std::fflush(fp) == 0 && bGood && !m_bStopped) m_iDirty = 0;
  return 1;
}
