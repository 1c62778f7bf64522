// A tree of yes-or-no tests on records, for operations that work on a selection.
//
// An inner node owns its children. Copies share them: of two copies only one may be destroyed, so
// build a tree once and hand it on by pointer. Test looks for no null child; destruction bears one.
#pragma once

#include "zu/export.h"

class ZuObject;

class ZU_API ZuFilter {
 public:
  ZuFilter() = default;
  ZuFilter(const ZuFilter&) = default;
  ZuFilter& operator=(const ZuFilter&) = default;
  virtual ~ZuFilter();

  // Not 0 for yes.
  virtual unsigned int Test(const ZuObject* pObject) const = 0;
};

class ZU_API ZuTrueFilter : public ZuFilter {
 public:
  unsigned int Test(const ZuObject* pObject) const override;  // 1
};

class ZU_API ZuFalseFilter : public ZuFilter {
 public:
  unsigned int Test(const ZuObject* pObject) const override;  // 0
};

// A leaf: a plain function.
class ZU_API ZuTestFilter : public ZuFilter {
 public:
  explicit ZuTestFilter(unsigned int (*pfnTest)(const ZuObject*)) : m_pfnTest(pfnTest) {}

  // The function's result, unchanged.
  unsigned int Test(const ZuObject* pObject) const override;

 protected:
  unsigned int (*m_pfnTest)(const ZuObject*);
};

class ZU_API ZuNotFilter : public ZuFilter {
 public:
  explicit ZuNotFilter(const ZuFilter* pFilter) : m_pFilter(pFilter) {}
  ZuNotFilter(const ZuNotFilter&) = default;
  ZuNotFilter& operator=(const ZuNotFilter&) = default;
  ~ZuNotFilter() override;

  // 1 if the inner test gives 0, otherwise 0.
  unsigned int Test(const ZuObject* pObject) const override;

 protected:
  const ZuFilter* m_pFilter;
};

// Two tests, the left one asked first. As it stands it tests like ZuOrFilter.
class ZU_API ZuBinaryFilter : public ZuFilter {
 public:
  ZuBinaryFilter(const ZuFilter* pLeft, const ZuFilter* pRight)
      : m_pLeft(pLeft), m_pRight(pRight) {}
  ZuBinaryFilter(const ZuBinaryFilter&) = default;
  ZuBinaryFilter& operator=(const ZuBinaryFilter&) = default;
  ~ZuBinaryFilter() override;  // the left child goes first

  unsigned int Test(const ZuObject* pObject) const override;

 protected:
  const ZuFilter* m_pLeft;
  const ZuFilter* m_pRight;
};

class ZU_API ZuOrFilter : public ZuBinaryFilter {
 public:
  using ZuBinaryFilter::ZuBinaryFilter;

  // 1 if either test is not 0, otherwise 0. The right one is asked only if the left gave 0.
  unsigned int Test(const ZuObject* pObject) const override;
};

class ZU_API ZuAndFilter : public ZuBinaryFilter {
 public:
  using ZuBinaryFilter::ZuBinaryFilter;

  // 1 if both tests are not 0, otherwise 0. The right one is asked only if the left gave not 0.
  unsigned int Test(const ZuObject* pObject) const override;
};
