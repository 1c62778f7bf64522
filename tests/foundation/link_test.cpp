#include "zu/foundation/link.h"

#include "tests/support/test.h"

namespace {

struct Pad {
  virtual ~Pad() = default;
  long m_lPad = -1;
};

class Plain : public LinkHdl {
 public:
  long Long(int* p) { return *p + m_iBase; }
  bool Bool(const int* p) { return *p > 0; }
  unsigned char Byte(void*) { return 200; }
  int* Pointer(int* p) { return p; }
  void Void(int* p) { *p = m_iBase; }
  int Const(int* p) const noexcept { return *p - m_iBase; }
  virtual int Virtual(int*) { return 1; }
  virtual ~Plain() = default;

  int m_iBase = 100;
};

class Derived : public Pad, public Plain {
 public:
  int Virtual(int*) override { return static_cast<int>(m_lPad) + 3; }
};

// Two ways to LinkHdl, and functions of every part.
class Left : public Pad, public LinkHdl {
 public:
  int FromLeft(int* p) { return *p + m_iLeft; }
  int m_iLeft = 1000;
};
class Both : public Left, public Plain {
 public:
  int Own(int* p) { return *p + m_iOwn; }
  int m_iOwn = 5000;
};
class Shared : public virtual Plain {
 public:
  int Own(int* p) { return *p + m_iBase + m_iOwn; }
  int m_iOwn = 20;
};

static_assert(sizeof(Link) <= 5 * sizeof(void*));

TEST(Link, GivesTheResultAsLong) {
  Plain plain;
  int n = 7;
  EXPECT_ROW("107 1 200 1", Link(&plain, &Plain::Long).Call(&n),
             Link(&plain, &Plain::Bool).Call(&n), Link(&plain, &Plain::Byte).Call(nullptr),
             Link(&plain, &Plain::Pointer).Call(&n));
  EXPECT_ROW("0 -93 -93", Link(&plain, &Plain::Pointer).Call(nullptr),
             Link(&plain, &Plain::Const).Call(&n),
             Link(&static_cast<const Plain&>(plain), &Plain::Const).Call(&n));
  EXPECT_ROW("0 100", Link(&plain, &Plain::Void).Call(&n), n);
}

TEST(Link, ReachesTheObjectThroughSeveralBases) {
  Derived derived;
  Both both;
  Shared shared;
  int n = 7;
  EXPECT_ROW("2 2 5007", Link(&derived, &Plain::Virtual).Call(&n),
             Link(static_cast<Plain*>(&derived), &Plain::Virtual).Call(&n),
             Link(&both, &Both::Own).Call(&n));
  EXPECT_ROW("1007 107 127", Link(&both, &Both::FromLeft).Call(&n),
             Link(&both, &Both::Long).Call(&n), Link(&shared, &Shared::Own).Call(&n));
}

TEST(Link, CallsNothingWhenUnset) {
  Plain plain;
  Plain* pNone = nullptr;
  long (Plain::*pfnNone)(int*) = nullptr;
  const Link links[] = {Link(), Link(pNone, &Plain::Long), Link(nullptr, &Plain::Long),
                        Link(&plain, pfnNone), Link(&plain, nullptr)};
  for (const Link& link : links) {
    int n = 7;
    EXPECT_EQ(link.IsSet(), 0);
    EXPECT_TRUE(!link);
    EXPECT_EQ(link.Call(&n), 0);
  }
}

}  // namespace
