#include "zu/points/internal/columns.h"

#include <array>
#include <cstddef>
#include <ostream>

#include "zu/foundation/writer.h"

namespace {

using K = eZuColumnKind;
using P = ZuPoint;

// Required: "Flag" and " Color" have titles narrower than their values; files in use are laid out
// so.
constexpr ZuColumn kColumns[] = {
    {eZuPointRWId, "#", 8, K::Id, 8},
    {eZuPointRWName, "Name", 16, K::Name, 16},
    {eZuPointRWIdName, nullptr, 0, K::IdName, 0},
    {eZuPointRWFlag, "Flag", 8, K::Flag, 16},
    {eZuPointRWCode, "Code", 4, K::Code, 4},
    {eZuPointRWCodeNum, "Code", 4, &P::m_sControl, 4},
    {eZuPointRWPP, "PP", 8, K::Number, 8},
    {eZuPointRWPhoto, "Photo", 8, &P::m_iPhoto, 8, K::Key},
    {eZuPointRWCamera, "Camera", 8, &P::m_iCamera, 8, K::Key},
    {eZuPointRWX, "   X", 16, &P::m_dX, 16},
    {eZuPointRWY, "   Y", 16, &P::m_dY, 16},
    {eZuPointRWZ, "   Z", 16, &P::m_dZ, 16},
    {eZuPointRWDX, "  dx", 19, &P::m_dDX, 19},
    {eZuPointRWDY, "  dy", 19, &P::m_dDY, 19},
    {eZuPointRWDZ, "  dz", 19, &P::m_dDZ, 19},
    {eZuPointRWDS, "  dS", 19, K::Accuracy, 19},
    {eZuPointRWRedu1, "Redu", 19, &P::m_dRedu1, 19},
    {eZuPointRWRedu2, "Redu2", 19, &P::m_dRedu2, 19},
    {eZuPointRWRedu3, "Redu3", 19, &P::m_dRedu3, 19},
    {eZuPointRWColor, " Color", 8, &P::m_iColor, 16},
    {eZuPointRWNImo, " nImo", 8, &P::m_snImo, 8},
    {eZuPointRWVX, " vx", 16, &P::m_fVX, 16},
    {eZuPointRWVY, " vy", 16, &P::m_fVY, 16},
    {eZuPointRWVZ, " vz", 16, &P::m_fVZ, 16},
    {eZuPointRWBlank, nullptr, 0, K::Blank, 6},
    {eZuPointRWResidualX, "Residual x", 19, &P::m_dRedu1, 19},
    {eZuPointRWResidualY, "Residual y", 19, &P::m_dRedu2, 19},
    {eZuPointRWResidualZ, "Residual z", 19, &P::m_dRedu3, 19},
    {eZuPointRWSkip, nullptr, 0, K::Skip, 0},
    {eZuPointRWSX, "  Sx", 19, &P::m_dDX, 19},
    {eZuPointRWSY, "  Sy", 19, &P::m_dDY, 19},
    {eZuPointRWSZ, "  Sz", 19, &P::m_dDZ, 19},
};

constexpr std::size_t kIds = eZuPointRWSZ + 1;

// The columns by their ids.
constexpr std::array<ZuColumn, kIds> ById() {
  std::array<ZuColumn, kIds> byId;
  for (const ZuColumn& column : kColumns) byId[column.eColumn] = column;
  return byId;
}

constexpr std::array<ZuColumn, kIds> kById = ById();

}  // namespace

const ZuColumn& ZuFindColumn(eZuPointRWMask eColumn) {
  const auto i = static_cast<std::size_t>(eColumn);  // negative ids become large ones
  return kById[i < kIds ? i : 0];
}

std::ostream& operator<<(std::ostream& os, const TZuFormatTable<eZuPointRWMask>& table) {
  for (int i = 0; i < table.Size(); ++i) {
    const ZuColumn& column = ZuFindColumn(table[i]);
    if (column.szTitle == nullptr) continue;
    os << ' ' << std::right;
    os.width(column.iTitleWidth);
    os << column.szTitle;
  }
  return os;
}
