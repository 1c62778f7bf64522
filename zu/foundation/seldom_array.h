// A fixed array of what most records never have: it takes memory at the first write.
#pragma once

#include <memory>

// N elements, default ones until one of them is asked for to be changed. i from 0, not checked.
template <class T, int N>
class ZuSeldomArray {
 public:
  ZuSeldomArray() = default;
  ZuSeldomArray(const ZuSeldomArray& other) { *this = other; }
  ZuSeldomArray& operator=(const ZuSeldomArray& other) {
    if (this == &other || (!m_pItems && !other.m_pItems)) return *this;
    for (int i = 0; i < N; ++i) (*this)[i] = other[i];
    return *this;
  }

  T& operator[](int i) {
    if (!m_pItems) m_pItems.reset(new T[N]);
    return m_pItems[i];
  }
  const T& operator[](int i) const { return m_pItems ? m_pItems[i] : Default(); }

 private:
  static const T& Default() {
    static const T value{};
    return value;
  }

  std::unique_ptr<T[]> m_pItems;
};
