// What the properties of the element `vertex` of a PLY file mean for a point.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "zu/cloud/internal/ply_header.h"

// What a property is for a point.
enum eZuPlyField {
  eZuPlyX,
  eZuPlyY,
  eZuPlyZ,
  eZuPlyNX,
  eZuPlyNY,
  eZuPlyNZ,
  eZuPlyRed,
  eZuPlyGreen,
  eZuPlyBlue,
  eZuPlyIntensity,
  eZuPlyFields,
  eZuPlyNoField
};

struct ZuPlyLayout {
  std::vector<eZuPlyField> fields;                    // of each property
  std::array<eZuPlyType, eZuPlyFields> types;         // of each field, none where it is missing
  std::array<std::uint64_t, eZuPlyFields> offsets{};  // in a row of a binary file without lists
  std::string strColumns;                             // the names of the properties that count
  std::string strOther;                               // and of those that a cloud does not keep

  explicit ZuPlyLayout(const ZuPlyElement& vertex);

  bool Has(eZuPlyField eField) const { return types[eField] != eZuPlyNoType; }
  bool HasPosition() const { return Has(eZuPlyX) && Has(eZuPlyY) && Has(eZuPlyZ); }
  bool HasColor() const { return Has(eZuPlyRed) || Has(eZuPlyGreen) || Has(eZuPlyBlue); }
  // Of the first colour there is.
  eZuPlyType ColorType() const {
    return types[Has(eZuPlyRed) ? eZuPlyRed : Has(eZuPlyGreen) ? eZuPlyGreen : eZuPlyBlue];
  }
};
