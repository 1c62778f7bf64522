#include "zu/points/filter.h"

ZuFilter::~ZuFilter() = default;

unsigned int ZuTrueFilter::Test(const ZuObject*) const { return 1; }

unsigned int ZuFalseFilter::Test(const ZuObject*) const { return 0; }

unsigned int ZuTestFilter::Test(const ZuObject* pObject) const { return m_pfnTest(pObject); }

ZuNotFilter::~ZuNotFilter() { delete m_pFilter; }

unsigned int ZuNotFilter::Test(const ZuObject* pObject) const {
  return m_pFilter->Test(pObject) == 0 ? 1 : 0;
}

ZuBinaryFilter::~ZuBinaryFilter() {
  delete m_pLeft;
  delete m_pRight;
}

unsigned int ZuBinaryFilter::Test(const ZuObject* pObject) const {
  return m_pLeft->Test(pObject) != 0 || m_pRight->Test(pObject) != 0 ? 1 : 0;
}

unsigned int ZuOrFilter::Test(const ZuObject* pObject) const {
  return ZuBinaryFilter::Test(pObject);
}

unsigned int ZuAndFilter::Test(const ZuObject* pObject) const {
  return m_pLeft->Test(pObject) != 0 && m_pRight->Test(pObject) != 0 ? 1 : 0;
}
