#include "zu/cloud/scan_point3d.h"

#include "zu/cloud/internal/point_codec.h"
#include "zu/cloud/internal/pts_line.h"
#include "zu/numerics/point3d.h"

ZuScanPoint3d::ZuScanPoint3d(const ZuPoint3d& p) : x(p.x), y(p.y), z(p.z), w(p.w) {}

int ZuScanPoint3d::GetIntensity() const {
  const int iStored = static_cast<int>(m_uColor >> 24);
  if (iStored != 0) return iStored;
  return static_cast<int>(0.21 * GetRed() + 0.72 * GetGreen() + 0.07 * GetBlue());
}

int ZuScanPoint3d::Read(ZuFileBuff& buff) { return ZuPointCodec::Read(buff, *this); }

int ZuScanPoint3d::Write(std::FILE* fp) const {
  if (!fp) return 0;
  unsigned char aBytes[FileSize];
  ZuPointCodec::Store(aBytes, *this);
  return std::fwrite(aBytes, 1, sizeof aBytes, fp) == sizeof aBytes ? 1 : 0;
}

int ZuScanPoint3d::WritePTS(std::FILE* fp) const {
  if (!fp) return 0;
  char acLine[kZuPtsLineSize];
  const auto uSize = static_cast<std::size_t>(ZuFormatPtsLine(acLine, *this) - acLine);
  return std::fwrite(acLine, 1, uSize, fp) == uSize ? 1 : 0;
}
