#include "zu/cloud/internal/ply_layout.h"

namespace {

eZuPlyField FieldOf(const std::string& strName) {
  static const struct {
    const char* szName;
    eZuPlyField eField;
  } names[] = {{"x", eZuPlyX},
               {"y", eZuPlyY},
               {"z", eZuPlyZ},
               {"nx", eZuPlyNX},
               {"ny", eZuPlyNY},
               {"nz", eZuPlyNZ},
               {"red", eZuPlyRed},
               {"green", eZuPlyGreen},
               {"blue", eZuPlyBlue},
               {"r", eZuPlyRed},
               {"g", eZuPlyGreen},
               {"b", eZuPlyBlue},
               {"diffuse_red", eZuPlyRed},
               {"diffuse_green", eZuPlyGreen},
               {"diffuse_blue", eZuPlyBlue},
               {"intensity", eZuPlyIntensity},
               {"scalar_intensity", eZuPlyIntensity}};
  for (const auto& name : names) {
    if (strName == name.szName) return name.eField;
  }
  return eZuPlyNoField;
}

void Append(std::string* pstrNames, const std::string& strName) {
  constexpr std::size_t kMost = 200;  // bytes, more or less
  if (pstrNames->size() > kMost) return;
  *pstrNames += (pstrNames->empty() ? "" : " ") + strName;
  if (pstrNames->size() > kMost) *pstrNames = pstrNames->substr(0, kMost) + "...";
}

}  // namespace

ZuPlyLayout::ZuPlyLayout(const ZuPlyElement& vertex) {
  types.fill(eZuPlyNoType);
  std::uint64_t uOffset = 0;
  for (const ZuPlyProperty& property : vertex.properties) {
    eZuPlyField eField = property.IsList() ? eZuPlyNoField : FieldOf(property.strName);
    if (eField != eZuPlyNoField && Has(eField)) eField = eZuPlyNoField;  // the first one counts
    fields.push_back(eField);
    Append(eField == eZuPlyNoField ? &strOther : &strColumns, property.strName);
    if (eField != eZuPlyNoField) {
      types[eField] = property.eType;
      offsets[eField] = uOffset;
    }
    uOffset += ZuPlySize(property.IsList() ? property.eCountType : property.eType);
  }
}
