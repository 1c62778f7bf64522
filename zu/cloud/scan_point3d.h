// One point of a laser scan: homogeneous position, deviations, normal, flags and colour.
//
// A plain record of exactly 64 bytes. A cloud holds millions of them side by side in one array;
// in a cloud file a point takes 58 bytes (w is not stored).
#pragma once

#include <cstdint>
#include <cstdio>
#include <type_traits>

#include "zu/export.h"

class ZuFileBuff;
class ZuPoint3d;

class ZU_API ZuScanPoint3d {
 public:
  // Bytes of a point in a cloud file, its magic word included.
  static constexpr unsigned int FileSize = 58;

  ZuScanPoint3d() = default;

  // Takes the four coordinates and clears all else.
  ZuScanPoint3d(const ZuPoint3d& p);

  // Takes the colour word whole, the intensity in its top byte included; w is 1.0.
  ZuScanPoint3d(double dX, double dY, double dZ, int iColor)
      : x(dX), y(dY), z(dZ), m_uColor(static_cast<std::uint32_t>(iColor)) {}

  // True when at least one component of the normal is not zero.
  bool HasNormVector() const { return m_fNX != 0.0f || m_fNY != 0.0f || m_fNZ != 0.0f; }

  // The selection is bit 0 of the high byte of m_sFlags. Selecting stores 1 in that byte,
  // deselecting clears the byte; the low byte stays.
  bool IsSelected() const { return (m_sFlags & 0x0100u) != 0; }
  void SetSelected(bool bSelected) { SetFlags(bSelected ? 1 : 0); }

  // The whole selection byte. SetFlags keeps the low byte of m_sFlags and returns its argument.
  unsigned char SetFlags(unsigned char uFlags) {
    m_sFlags = static_cast<std::uint16_t>((m_sFlags & 0x00FFu) | (uFlags << 8));
    return uFlags;
  }
  unsigned char GetFlags() const { return static_cast<unsigned char>(m_sFlags >> 8); }

  int GetRed() const { return static_cast<int>(m_uColor & 0xFFu); }
  int GetGreen() const { return static_cast<int>((m_uColor >> 8) & 0xFFu); }
  int GetBlue() const { return static_cast<int>((m_uColor >> 16) & 0xFFu); }

  // Red, green and blue in the low three bytes, red lowest. SetColor keeps the intensity.
  unsigned long GetColor() const { return m_uColor & 0x00FFFFFFu; }
  void SetColor(unsigned long uColor) {
    m_uColor = (m_uColor & 0xFF000000u) | (static_cast<std::uint32_t>(uColor) & 0x00FFFFFFu);
  }

  // The stored intensity, 0 to 255. A point whose stored intensity is 0 answers with the
  // luminance of its colour, the integer part of 0.21 red + 0.72 green + 0.07 blue.
  int GetIntensity() const;
  void SetIntensity(unsigned char uIntensity) {
    m_uColor = (m_uColor & 0x00FFFFFFu) | (static_cast<std::uint32_t>(uIntensity) << 24);
  }

  // Reads one point of a cloud file from the buffer's position; 0 when its magic word is wrong, and
  // the fields are then as before. w is not in the file and stays.
  int Read(ZuFileBuff& buff);

  // Writes one point of a cloud file. 0 with a null stream or when the stream took less.
  int Write(std::FILE* fp) const;

  // Writes "%18.9f %18.9f %18.9f %4d %3d %3d %3d\n": x, y, z, the intensity as the integer part of
  // (GetIntensity() - 128) 0.0078125 2000, red, green, blue; with a decimal point in any locale.
  // 0 with a null stream or when the stream took less.
  int WritePTS(std::FILE* fp) const;

 public:
  double x = 0.0, y = 0.0, z = 0.0;
  double w = 1.0;                                  // 1.0 in a new point
  float m_fDX = 0.0f, m_fDY = 0.0f, m_fDZ = 0.0f;  // deviations
  float m_fNX = 0.0f, m_fNY = 0.0f, m_fNZ = 0.0f;  // normal; all zero: none
  std::uint16_t m_sFlags = 0;                      // high byte: selection
  std::uint32_t m_uColor = 0;  // bytes from the lowest: red, green, blue, intensity
};

static_assert(sizeof(ZuScanPoint3d) == 64, "clouds are arrays of 64-byte records");
static_assert(std::is_trivially_copyable_v<ZuScanPoint3d>, "clouds move points as plain memory");
