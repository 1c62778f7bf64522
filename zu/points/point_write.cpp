// Points as rows of text.
#include <cmath>
#include <sstream>
#include <string>

#include "zu/foundation/writer.h"
#include "zu/points/internal/columns.h"
#include "zu/points/internal/row_writer.h"
#include "zu/points/point_list.h"

void ZuPoint::WriteColumns(ZuRowWriter& row, const TZuFormatTable<eZuPointRWMask>& table) const {
  for (int i = 0; table[i] != eZuPointRWEnd; ++i) {
    const ZuColumn& column = ZuFindColumn(table[i]);
    switch (column.eKind) {
      case eZuColumnKind::Id:
        row.Number(m_uId, column.iWidth);
        break;
      case eZuColumnKind::Name:
        row.Quoted({m_strName.chars(), static_cast<std::size_t>(m_strName.length())},
                   column.iWidth);
        break;
      case eZuColumnKind::Flag:
        row.Number(m_iFlag, column.iWidth);
        break;
      case eZuColumnKind::Code:
        row.Right(GetControlFlagsAs123(), column.iWidth);
        break;
      case eZuColumnKind::Short:
        row.Number(static_cast<int>(this->*column.pShort), column.iWidth);
        break;
      case eZuColumnKind::Int:
      case eZuColumnKind::Key:
        row.Number(this->*column.pInt, column.iWidth);
        break;
      case eZuColumnKind::Double:
        row.Number(this->*column.pDouble, column.iWidth);
        break;
      case eZuColumnKind::Float:
        row.Number(static_cast<double>(this->*column.pFloat), column.iWidth);
        break;
      case eZuColumnKind::Accuracy:
        row.Number(std::sqrt(m_dDX * m_dDX + m_dDY * m_dDY + m_dDZ * m_dDZ), column.iWidth);
        break;
      case eZuColumnKind::Number:
      case eZuColumnKind::Blank:
        row.Right("", column.iWidth);
        break;
      case eZuColumnKind::IdName:
      case eZuColumnKind::Skip:
      case eZuColumnKind::Nothing:
        break;
    }
  }
}

std::ostream& ZuPoint::Write(std::ostream& os, const TZuFormatTable<eZuPointRWMask>& table) const {
  ZuRowWriter row(os);
  WriteColumns(row, table);
  row.Flush();
  return os;
}

std::ostream& ZuPointList::Write(std::ostream& os) const {
  std::ostringstream lineEnd;
  lineEnd << Zuendl;
  const std::string strLineEnd = lineEnd.str();

  ZuRowWriter row(os);
  for (const ZuPoint* p = First(); p != nullptr && os.good(); p = p->Next()) {
    p->WriteColumns(row, *this);
    if (p->Next() != nullptr) row.Text(strLineEnd);
  }
  row.Flush();
  return os;
}
