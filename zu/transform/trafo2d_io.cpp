// The text forms of a plane transformation.
#include <ostream>

#include "zu/foundation/internal/classic_stream.h"
#include "zu/foundation/internal/item_writer.h"
#include "zu/foundation/reader_object.h"
#include "zu/foundation/writer.h"
#include "zu/transform/trafo2d.h"

namespace {

// Types by the codes of the older form.
constexpr eZuTrafo2DType kTypesV50[] = {eZuTrafo2DProjektiv, eZuTrafo2DAffin, eZuTrafo2DHelmert,
                                        eZuTrafo2DPolynomial};

}  // namespace

int ZuTrafo2d::CoefficientCount() const {
  switch (m_eType) {
    case eZuTrafo2DHelmert:
      return 4;
    case eZuTrafo2DAffin:
      return 6;
    case eZuTrafo2DProjektiv:
      return 8;
    case eZuTrafo2DPolynomial:
      return kCoefficients;
    default:
      return 0;
  }
}

void ZuTrafo2d::ReadCoefficients(ZuReaderObject* pObject) {
  for (int i = 0; i < CoefficientCount(); ++i) m_adCoef[i] = pObject->TakeValue();
}

// 1 -3.168 0.0099 -2.376 0
int ZuTrafo2d::Read(ZuReaderObject* pObject) {
  m_eType = static_cast<eZuTrafo2DType>(pObject->TakeInt());
  ReadCoefficients(pObject);
  return 1;
}

int ZuTrafo2d::ReadV50(ZuReaderObject* pObject) {
  const int iCode = pObject->TakeInt();
  if (iCode < 0 || iCode >= static_cast<int>(std::size(kTypesV50))) return 1;
  m_eType = kTypesV50[iCode];
  ReadCoefficients(pObject);
  return 1;
}

std::ostream& ZuTrafo2d::Write(std::ostream& stream) const {
  const zu::internal::ClassicStream classic(stream);
  stream << w4 << static_cast<int>(m_eType) << Zuendl << p16;
  for (int i = 0; i < CoefficientCount(); ++i) {
    stream << w19 << m_adCoef[i];
    if (i % 4 == 3) stream << Zuendl;
  }
  return stream;
}

std::ostream& ZuTrafo2d::Export(std::ostream& stream) const {
  zu::internal::WriteValue(stream, static_cast<int>(m_eType));
  for (int i = 0; i < CoefficientCount(); ++i) {
    stream.put(' ');
    zu::internal::WriteValue(stream, m_adCoef[i]);
  }
  return stream;
}
