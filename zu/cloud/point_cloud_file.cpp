// The binary form of a cloud: magic word, name, flag word, header record, count, points.
#include <algorithm>
#include <cstring>

#include "zu/cloud/file_buff.h"
#include "zu/cloud/internal/point_codec.h"
#include "zu/cloud/internal/point_feed.h"
#include "zu/cloud/internal/stream_writer.h"
#include "zu/cloud/point_cloud.h"
#include "zu/foundation/debug.h"
#include "zu/foundation/progress.h"

namespace {

constexpr std::uint32_t kCloudMagic = 0xBABEBEEB;
constexpr std::size_t kNameSize = 60;
constexpr std::size_t kMagicSize = sizeof(std::uint32_t);

std::int64_t Signed(std::uint64_t u) { return static_cast<std::int64_t>(u); }

// Adds up to uCount points that stand whole in the next bytes. False when the points end there, at
// a wrong magic word, which is passed over, or because nothing whole is left in the file.
bool AddWholePoints(ZuFileBuff& buff, std::uint32_t& uCount, ZuPointFeed& feed) {
  std::size_t uHave = 0;
  const unsigned char* const pBytes = buff.Peek(ZuScanPoint3d::FileSize, &uHave);
  const std::size_t n = std::min<std::size_t>(uCount, uHave / ZuScanPoint3d::FileSize);
  for (std::size_t i = 0; i < n; ++i) {
    const unsigned char* const pPoint = pBytes + i * ZuScanPoint3d::FileSize;
    if (!ZuPointCodec::HasMagic(pPoint)) {
      buff.Skip(i * ZuScanPoint3d::FileSize + kMagicSize);
      uCount = 0;
      return false;
    }
    ZuScanPoint3d point;
    ZuPointCodec::Load(pPoint, point);
    feed.Add(point);
  }
  buff.Skip(n * ZuScanPoint3d::FileSize);
  uCount -= static_cast<std::uint32_t>(n);
  return n > 0;
}

// True when the last point is one that the file ends within.
bool AddPoints(ZuFileBuff& buff, std::uint32_t uCount, ZuPointFeed& feed, ZuProgress& progress) {
  while (uCount > 0 && AddWholePoints(buff, uCount, feed)) {
    if (!progress.SetPosition(Signed(buff.GetPosition()), Signed(buff.GetSize()))) return false;
  }
  // The file may end within a point, or within its magic word.
  ZuScanPoint3d point;
  if (uCount == 0 || !point.Read(buff)) return false;
  feed.Add(point);
  return true;
}

}  // namespace

int ZuPointCloud::Read(ZuFileBuff& buff, int iVersion) {
  ZuProgress progress("Reading point cloud");
  std::uint64_t uMissing = 0;
  try {
    return Read(buff, iVersion, progress, &uMissing);
  } catch (...) {
    dbgprintf("Error reading a point cloud: points read before memory ended are kept");
    return 1;
  }
}

int ZuPointCloud::Read(ZuFileBuff& buff, int iVersion, ZuProgress& progress,
                       std::uint64_t* puMissing) {
  if (buff.ReadWord() != kCloudMagic) return 0;
  char acName[kNameSize + 1] = {};
  if (buff.Read(acName, kNameSize) > 0) SetName(String(acName));
  if (!buff.IsEnd()) m_iFlag = static_cast<int>(buff.ReadWord());
  if (iVersion > 1) m_Header.Read(buff);

  // A cloud without its count is cut, however many points it had.
  const bool bHasCount = buff.GetRest() >= sizeof(std::uint32_t);
  const std::uint32_t uCount = buff.ReadWord();
  const std::size_t uFirst = m_aPoints.size();
  ZuPointFeed feed(*this);
  const std::size_t uBefore = m_aPoints.capacity();
  // The count is of all points of the array, as far as the file can hold them.
  if (uCount > m_aPoints.size()) {
    feed.Expect(uCount - m_aPoints.size(), buff.GetRest() / ZuScanPoint3d::FileSize + 1);
  }
  const bool bLastIsCut = AddPoints(buff, uCount, feed, progress);
  const std::size_t uWhole = m_aPoints.size() - uFirst - (bLastIsCut ? 1 : 0);
  *puMissing = bHasCount ? uCount - uWhole : 1;
  // Of a false count nothing stays: each cloud of a file may have one.
  if (m_aPoints.capacity() > uBefore && m_aPoints.size() < m_aPoints.capacity() / 2) {
    m_aPoints.shrink_to_fit();
  }
  return 1;
}

int ZuPointCloud::Write(std::FILE* fp) const {
  ZuProgress progress("Writing point cloud");
  return Write(fp, progress, 0, static_cast<std::int64_t>(m_aPoints.size()));
}

int ZuPointCloud::Write(std::FILE* fp, ZuProgress& progress, std::int64_t nDone,
                        std::int64_t nAll) const {
  if (!fp) return 0;
  unsigned char aBytes[kMagicSize + kNameSize + sizeof(std::uint32_t)] = {};
  unsigned char* pOut = ZuStoreLittle(aBytes, kCloudMagic);
  const String& strName = GetName();
  std::memcpy(pOut, strName.chars(), strnlen(strName.chars(), kNameSize));
  ZuStoreLittle(pOut + kNameSize, static_cast<std::uint32_t>(m_iFlag));
  bool bGood = std::fwrite(aBytes, 1, sizeof aBytes, fp) == sizeof aBytes;
  bGood = m_Header.Write(fp) != 0 && bGood;

  ZuStreamWriter writer(fp);
  writer.Filled(ZuStoreLittle(writer.ByteRoom(sizeof(std::uint32_t)),
                              static_cast<std::uint32_t>(m_aPoints.size())));
  for (const ZuScanPoint3d& p : m_aPoints) {
    writer.Filled(ZuPointCodec::Store(writer.ByteRoom(ZuScanPoint3d::FileSize), p));
    if (!writer.IsGood() || !progress.SetPosition(++nDone, nAll)) break;
  }
  return writer.Flush() && bGood ? 1 : 0;
}
