// Writing a LAS file in two passes over the points, none of which keeps them: the survey learns
// what the header says, the writer writes header and points.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>

#include "zu/cloud/internal/las_header.h"
#include "zu/cloud/internal/stream_writer.h"
#include "zu/cloud/las_file.h"
#include "zu/cloud/scan_point3d.h"

class ZuLasSurvey {
 public:
  static bool IsKept(const ZuScanPoint3d& p);  // whether a file has room for its coordinates

  void Add(const ZuScanPoint3d& p);

  // Chooses the grids; dResolution of 0 as told at ZuLasOptions. False, with the finest possible
  // resolution, when it is too fine for the extent.
  bool Choose(double dResolution, std::array<ZuLasGrid, 3>* pGrids, double* pdFinest) const;

  std::uint64_t Count() const { return m_uCount; }
  std::uint64_t LeftOut() const { return m_uLeftOut; }
  bool HasColors() const { return m_bColors; }
  double Least(std::size_t i) const { return m_aAxes[i].dLeast; }
  double Most(std::size_t i) const { return m_aAxes[i].dMost; }

 private:
  struct Axis {
    double dLeast = 0.0, dMost = 0.0;
    std::size_t uDecimals = 0;  // in the table of steps; beyond its end: no step holds all values
  };

  std::array<Axis, 3> m_aAxes;
  std::uint64_t m_uCount = 0, m_uLeftOut = 0;
  bool m_bColors = false;
};

class ZuLasWriter {
 public:
  // Writes the header. iMinor: 2 or 4.
  ZuLasWriter(std::FILE* fp, const ZuLasSurvey& survey, const std::array<ZuLasGrid, 3>& grids,
              int iMinor, eZuIntensityScale eIntensity);

  // Writes a point that is kept; false when a write failed.
  bool Add(const ZuScanPoint3d& p);
  bool Finish() { return m_writer.Flush(); }

 private:
  void WriteHeader(const ZuLasSurvey& survey);

  ZuStreamWriter m_writer;
  std::array<ZuLasGrid, 3> m_grids;
  bool m_bLong;  // LAS 1.4
  bool m_bColors;
  eZuIntensityScale m_eIntensity;
};
