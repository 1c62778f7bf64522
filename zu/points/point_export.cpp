// Points as rows of keyword files that read back as they were.
#include "zu/foundation/internal/item_writer.h"
#include "zu/points/internal/columns.h"
#include "zu/points/point_list.h"

using zu::internal::WriteValue;

namespace {

// The digits by which SetAsControlFlag gives the code again.
int CodeDigits(short int sControl) {
  int iDigits = 0;
  for (int i = 0; i < 3; ++i) {
    if ((sControl & (1 << i)) != 0) iDigits = 10 * iDigits + i + 1;
  }
  return iDigits;
}

}  // namespace

void ZuPoint::ExportColumn(std::ostream& os, const ZuColumn& column) const {
  switch (column.eKind) {
    case eZuColumnKind::Id:
      return WriteValue(os, m_uId);
    case eZuColumnKind::Name:
      return WriteValue(os, m_strName);
    case eZuColumnKind::IdName:
      return m_strName.empty() ? WriteValue(os, m_uId) : WriteValue(os, m_strName);
    case eZuColumnKind::Flag:
      return WriteValue(os, m_iFlag);
    case eZuColumnKind::Code:
      return WriteValue(os, CodeDigits(m_sControl));
    case eZuColumnKind::Short:
      return WriteValue(os, static_cast<int>(this->*column.pShort));
    case eZuColumnKind::Int:
      return WriteValue(os, this->*column.pInt);
    case eZuColumnKind::Key:
      return WriteValue(os, static_cast<unsigned int>(this->*column.pInt));
    case eZuColumnKind::Double:
      return WriteValue(os, this->*column.pDouble);
    case eZuColumnKind::Float:
      return WriteValue(os, static_cast<double>(this->*column.pFloat));
    case eZuColumnKind::Accuracy:
    case eZuColumnKind::Number:
    case eZuColumnKind::Skip:
      return WriteValue(os, 0);
    case eZuColumnKind::Blank:
    case eZuColumnKind::Nothing:
      return;
  }
}

std::ostream& ZuPoint::Export(std::ostream& os, const TZuFormatTable<eZuPointRWMask>& table) const {
  bool bFirst = true;
  for (int i = 0; table[i] != eZuPointRWEnd; ++i) {
    const ZuColumn& column = ZuFindColumn(table[i]);
    if (column.eKind == eZuColumnKind::Blank || column.eKind == eZuColumnKind::Nothing) continue;
    if (!bFirst) os.put(' ');
    bFirst = false;
    ExportColumn(os, column);
  }
  return os;
}

std::ostream& ZuPointList::Export(std::ostream& os,
                                  const TZuFormatTable<eZuPointRWMask>& table) const {
  for (const ZuPoint* p = First(); p != nullptr && os.good(); p = p->Next()) {
    p->Export(os, table);
    if (p->Next() != nullptr) os << Zuendl;
  }
  return os;
}
