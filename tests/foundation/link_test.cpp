#include "zu/foundation/link.h"

#include <gtest/gtest.h>

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

TEST(Link, GivesTheResultAsLong) {
  Plain plain;
  int n = 7;
  EXPECT_EQ(Link(&plain, &Plain::Long).Call(&n), 107);
  EXPECT_EQ(Link(&plain, &Plain::Bool).Call(&n), 1);
  EXPECT_EQ(Link(&plain, &Plain::Byte).Call(nullptr), 200);
  EXPECT_EQ(Link(&plain, &Plain::Pointer).Call(&n), 1);
  EXPECT_EQ(Link(&plain, &Plain::Pointer).Call(nullptr), 0);
  EXPECT_EQ(Link(&plain, &Plain::Const).Call(&n), -93);
  EXPECT_EQ(Link(&static_cast<const Plain&>(plain), &Plain::Const).Call(&n), -93);
  EXPECT_EQ(Link(&plain, &Plain::Void).Call(&n), 0);
  EXPECT_EQ(n, 100);
}

TEST(Link, ReachesTheObjectThroughSeveralBases) {
  Derived derived;
  Both both;
  Shared shared;
  int n = 7;
  EXPECT_EQ(Link(&derived, &Plain::Virtual).Call(&n), 2);
  EXPECT_EQ(Link(static_cast<Plain*>(&derived), &Plain::Virtual).Call(&n), 2);
  EXPECT_EQ(Link(&both, &Both::Own).Call(&n), 5007);
  EXPECT_EQ(Link(&both, &Both::FromLeft).Call(&n), 1007);
  EXPECT_EQ(Link(&both, &Both::Long).Call(&n), 107);
  EXPECT_EQ(Link(&shared, &Shared::Own).Call(&n), 127);
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

TEST(Link, IsASmallValue) {
  EXPECT_LE(sizeof(Link), 5 * sizeof(void*));
  Plain plain, other;
  other.m_iBase = 1;
  int n = 7;
  Link link(&plain, &Plain::Long);
  const Link copy = link;
  link = Link(&other, &Plain::Long);
  EXPECT_EQ(copy.Call(&n), 107);
  EXPECT_EQ(link.Call(&n), 8);
  link = Link();
  EXPECT_EQ(link.IsSet(), 0);
}

}  // namespace
