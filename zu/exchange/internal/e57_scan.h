// The scans that the XML of an E57 file describes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zu/exchange/e57_file.h"
#include "zu/foundation/read_findings.h"

namespace zu::internal {

// What a value of a point is. The order of the names.
enum E57Meaning : int {
  eE57X,
  eE57Y,
  eE57Z,
  eE57Invalid,  // 0: the coordinates are good
  eE57Intensity,
  eE57IntensityInvalid,
  eE57Red,
  eE57Green,
  eE57Blue,
  eE57ColorInvalid,
  eE57NormalX,
  eE57NormalY,
  eE57NormalZ,
  eE57Meanings,
  eE57Other = -1
};

// Its name in the XML; not of eE57Other.
const char* E57FieldName(E57Meaning eMeaning);

struct E57Field {
  enum Kind { eDouble, eSingle, eInteger, eScaled };

  E57Meaning eMeaning = eE57Other;
  Kind eKind = eDouble;
  std::int64_t iLeast = INT64_MIN, iMost = INT64_MAX;  // of whole numbers
  double dScale = 1.0, dOffset = 0.0;
  double dLeast = 0.0, dMost = 1.0;  // of values, where they are told

  // Bits of a value in its stream; 0 where all are the same.
  unsigned int Bits() const;
};

struct E57Scan {
  std::string strName;
  ZuE57Pose pose;
  std::uint64_t uPlace = 0;    // physical, of the section
  std::uint64_t uRecords = 0;  // announced
  std::vector<E57Field> fields;
  double dIntensityLeast = 0.0, dIntensityMost = 0.0;  // equal: not told
  double dColorMost = 0.0;                             // 0: not told

  const E57Field* Find(E57Meaning eMeaning) const;
};

// Reads the XML of a file; the scans that can be read. Faults and what is passed over become
// findings.
std::vector<E57Scan> ReadE57Scans(const std::string& strXml, ZuReadFindings& findings);

}  // namespace zu::internal
