// What the clouds are compared with: the plain loops that a program for this one purpose would
// hold. Same files, same records, same boxes and running means.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

namespace reference {

struct Record {
  double x, y, z, w;
  float fDX, fDY, fDZ, fNX, fNY, fNZ;
  std::uint16_t uFlags;
  std::uint32_t uColor;
  bool IsSelected() const { return (uFlags & 0x100) != 0; }
};
static_assert(sizeof(Record) == 64);

struct Box {
  double dMin[3] = {std::numeric_limits<double>::max(), std::numeric_limits<double>::max(),
                    std::numeric_limits<double>::max()};
  double dMax[3] = {-std::numeric_limits<double>::max(), -std::numeric_limits<double>::max(),
                    -std::numeric_limits<double>::max()};
  unsigned int uCount = 0;
  void Update(double x, double y, double z) {
    if (x < dMin[0]) dMin[0] = x;
    if (y < dMin[1]) dMin[1] = y;
    if (z < dMin[2]) dMin[2] = z;
    if (x > dMax[0]) dMax[0] = x;
    if (y > dMax[1]) dMax[1] = y;
    if (z > dMax[2]) dMax[2] = z;
    ++uCount;
  }
};

struct Mean {
  double x = 0.0, y = 0.0, z = 0.0;
  int n = 0;
  void Add(double dX, double dY, double dZ) {
    const double dOld = n, dNew = n + 1;
    x = (dOld * x + dX) / dNew;
    y = (dOld * y + dY) / dNew;
    z = (dOld * z + dZ) / dNew;
    ++n;
  }
};

struct Cloud {
  std::vector<Record> points;
  Box box;
  Mean mean;
  void Add(const Record& p) {
    points.push_back(p);
    box.Update(p.x, p.y, p.z);
    mean.Add(p.x, p.y, p.z);
  }
};

// A file mapped as a whole.
class Mapped {
 public:
  explicit Mapped(const char* szPath) {
    const int fd = open(szPath, O_RDONLY);
    struct stat info = {};
    if (fd < 0 || fstat(fd, &info) != 0) std::abort();
    m_uSize = static_cast<std::size_t>(info.st_size);
    m_p = mmap(nullptr, m_uSize, PROT_READ, MAP_PRIVATE, fd, 0);
    close(fd);
    if (m_p == MAP_FAILED) std::abort();
    madvise(m_p, m_uSize, MADV_SEQUENTIAL);
  }
  ~Mapped() { munmap(m_p, m_uSize); }
  const char* Begin() const { return static_cast<const char*>(m_p); }
  const char* End() const { return Begin() + m_uSize; }

 private:
  void* m_p;
  std::size_t m_uSize;
};

constexpr double kPowers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                              1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

inline double ReadDecimal(const char*& p) {
  while (*p == ' ') ++p;
  const bool bNegative = *p == '-';
  if (bNegative) ++p;
  std::uint64_t u = 0;
  while (*p >= '0' && *p <= '9') u = 10 * u + static_cast<std::uint64_t>(*p++ - '0');
  int iDigits = 0;
  if (*p == '.') {
    const char* const pPoint = ++p;
    while (*p >= '0' && *p <= '9') u = 10 * u + static_cast<std::uint64_t>(*p++ - '0');
    iDigits = static_cast<int>(p - pPoint);
  }
  const double d = static_cast<double>(u) / kPowers[iDigits];
  return bNegative ? -d : d;
}

inline std::uint32_t ReadByte(const char*& p) {
  while (*p == ' ') ++p;
  std::uint32_t u = 0;
  while (*p >= '0' && *p <= '9') u = 10 * u + static_cast<std::uint32_t>(*p++ - '0');
  return u & 0xFF;
}

inline std::uint32_t ReadColor(const char*& p) {
  const std::uint32_t uRed = ReadByte(p), uGreen = ReadByte(p), uBlue = ReadByte(p);
  return uRed | uGreen << 8 | uBlue << 16;
}

inline void ReadPts(const char* szPath, Cloud& cloud) {
  const Mapped file(szPath);
  const char* p = file.Begin();
  cloud.points.reserve(static_cast<std::size_t>(ReadDecimal(p)));
  while (++p < file.End()) {
    Record r = {};
    r.x = ReadDecimal(p);
    r.y = ReadDecimal(p);
    r.z = ReadDecimal(p);
    r.w = 1.0;
    const double dByte = ((ReadDecimal(p) + 2000.0) * 256.0) / 4000.0;
    r.uColor = static_cast<std::uint32_t>(dByte < 0.0 ? 0.0 : dByte > 255.0 ? 255.0 : dByte) << 24;
    r.uColor |= ReadColor(p);
    cloud.Add(r);
  }
}

inline void ReadPly(const char* szPath, std::size_t uCount, Cloud& cloud) {
  const Mapped file(szPath);
  const char* p = std::strstr(file.Begin(), "end_header\n") + 10;
  cloud.points.reserve(uCount);
  while (++p < file.End()) {
    Record r = {};
    r.x = static_cast<float>(ReadDecimal(p));
    r.y = static_cast<float>(ReadDecimal(p));
    r.z = static_cast<float>(ReadDecimal(p));
    r.w = 1.0;
    for (int i = 0; i < 3; ++i) {
      while (*++p != ' ') {
      }
    }
    r.uColor = ReadColor(p);
    cloud.Add(r);
  }
}

template <class T>
T Load(const char* p) {
  T t;
  std::memcpy(&t, p, sizeof t);
  return t;
}

// The one cloud of a file.
inline void ReadBinary(const char* szPath, Cloud& cloud) {
  const Mapped file(szPath);
  const char* p = file.Begin() + 12 + 4 + 60 + 4 + 472;
  const auto uCount = Load<std::uint32_t>(p);
  p += 4;
  cloud.points.reserve(uCount);
  for (std::uint32_t i = 0; i < uCount && Load<std::uint32_t>(p) == 0xBABEBABE; ++i, p += 58) {
    Record r = {};
    r.x = Load<double>(p + 4);
    r.y = Load<double>(p + 12);
    r.z = Load<double>(p + 20);
    r.w = 1.0;
    std::memcpy(&r.fDX, p + 28, 24);
    r.uFlags = Load<std::uint16_t>(p + 52);
    r.uColor = Load<std::uint32_t>(p + 54);
    cloud.Add(r);
  }
}

// Blocks on their way to a descriptor.
class BlockWriter {
 public:
  explicit BlockWriter(const char* szPath)
      : m_fd(open(szPath, O_WRONLY | O_CREAT | O_TRUNC, 0600)),
        m_spBlock(new char[kBlock + 1024]) {}
  ~BlockWriter() {
    Flush();
    close(m_fd);
  }
  char* Room() {
    if (m_uUsed >= kBlock) Flush();
    return m_spBlock.get() + m_uUsed;
  }
  void Filled(const char* p) { m_uUsed = static_cast<std::size_t>(p - m_spBlock.get()); }

 private:
  static constexpr std::size_t kBlock = 64 * 1024;
  void Flush() {
    if (write(m_fd, m_spBlock.get(), m_uUsed) != static_cast<ssize_t>(m_uUsed)) std::abort();
    m_uUsed = 0;
  }
  int m_fd;
  std::unique_ptr<char[]> m_spBlock;
  std::size_t m_uUsed = 0;
};

inline char* Padded(char* pOut, const char* pText, const char* pEnd, int iWidth) {
  for (std::ptrdiff_t n = pEnd - pText; n < iWidth; ++n) *pOut++ = ' ';
  std::memcpy(pOut, pText, static_cast<std::size_t>(pEnd - pText));
  return pOut + (pEnd - pText);
}

inline void WritePts(const char* szPath, const std::vector<Record>& points) {
  BlockWriter writer(szPath);
  char ac[400];
  for (const Record& r : points) {
    char* p = writer.Room();
    for (const double d : {r.x, r.y, r.z}) {
      p = Padded(p, ac, std::to_chars(ac, ac + sizeof ac, d, std::chars_format::fixed, 9).ptr, 18);
      *p++ = ' ';
    }
    const auto byte = [&r](int i) { return static_cast<int>((r.uColor >> (8 * i)) & 0xFF); };
    int i = byte(3);
    if (i == 0) i = static_cast<int>(0.21 * byte(0) + 0.72 * byte(1) + 0.07 * byte(2));
    const int iIntensity = static_cast<int>((i - 128) * 0.0078125 * 2000.0);
    p = Padded(p, ac, std::to_chars(ac, ac + sizeof ac, iIntensity).ptr, 4);
    for (int iColor = 0; iColor < 3; ++iColor) {
      *p++ = ' ';
      p = Padded(p, ac, std::to_chars(ac, ac + sizeof ac, byte(iColor)).ptr, 3);
    }
    *p++ = '\n';
    writer.Filled(p);
  }
}

// Everything in front of the points is copied from an older file of the same cloud.
inline void WriteBinary(const char* szPath, const char* pHead, const std::vector<Record>& points) {
  BlockWriter writer(szPath);
  constexpr std::size_t kHead = 12 + 4 + 60 + 4 + 472 + 4;
  char* pStart = writer.Room();
  std::memcpy(pStart, pHead, kHead);
  writer.Filled(pStart + kHead);
  for (const Record& r : points) {
    char* p = writer.Room();
    const std::uint32_t uMagic = 0xBABEBABE;
    std::memcpy(p, &uMagic, 4);
    std::memcpy(p + 4, &r.x, 24);
    std::memcpy(p + 28, &r.fDX, 24);
    std::memcpy(p + 52, &r.uFlags, 2);
    std::memcpy(p + 54, &r.uColor, 4);
    writer.Filled(p + 58);
  }
}

inline void Transform(Cloud& cloud, const double (&m)[12]) {
  cloud.box = Box();
  cloud.mean = Mean();
  for (Record& r : cloud.points) {
    const double x = m[0] * r.x + m[1] * r.y + m[2] * r.z + m[3] * r.w;
    const double y = m[4] * r.x + m[5] * r.y + m[6] * r.z + m[7] * r.w;
    const double z = m[8] * r.x + m[9] * r.y + m[10] * r.z + m[11] * r.w;
    r.x = x;
    r.y = y;
    r.z = z;
    r.w = 1.0;
    cloud.mean.Add(x, y, z);
    cloud.box.Update(x, y, z);
  }
}

inline void Boxes(const std::vector<Record>& points, const double (&m)[12], Box& all,
                  Box& selected) {
  for (const Record& r : points) {
    const double x = m[0] * r.x + m[1] * r.y + m[2] * r.z + m[3] * r.w;
    const double y = m[4] * r.x + m[5] * r.y + m[6] * r.z + m[7] * r.w;
    const double z = m[8] * r.x + m[9] * r.y + m[10] * r.z + m[11] * r.w;
    all.Update(x, y, z);
    if (r.IsSelected()) selected.Update(x, y, z);
  }
}

inline unsigned int Select(std::vector<Record>& points, const double (&sides)[4][4],
                           const double (&eye)[3], Box& box) {
  for (Record& r : points) {
    const double x = r.x - eye[0], y = r.y - eye[1], z = r.z - eye[2];
    bool bInside = true;
    for (const auto& s : sides) bInside &= s[0] * x + s[1] * y + s[2] * z + s[3] >= 0.0;
    if (bInside) r.uFlags = static_cast<std::uint16_t>((r.uFlags & 0xFF) | 0x100);
    if (r.IsSelected()) box.Update(r.x, r.y, r.z);
  }
  return box.uCount;
}

inline void EyeNormals(std::vector<Record>& points, const double (&eye)[3]) {
  for (Record& r : points) {
    const double x = eye[0] - r.x, y = eye[1] - r.y, z = eye[2] - r.z;
    const double d = std::sqrt(x * x + y * y + z * z);
    r.fNX = static_cast<float>(x / d);
    r.fNY = static_cast<float>(y / d);
    r.fNZ = static_cast<float>(z / d);
  }
}

inline std::vector<Record> DeleteSelected(std::vector<Record>& points) {
  std::size_t n = 0;
  for (const Record& r : points) n += r.IsSelected();
  std::vector<Record> undo;
  undo.reserve(n);
  auto it = points.begin();
  for (const Record& r : points) {
    if (r.IsSelected()) {
      undo.push_back(r);
    } else {
      *it++ = r;
    }
  }
  points.erase(it, points.end());
  return undo;
}

}  // namespace reference
