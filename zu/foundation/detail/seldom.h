// A member that most records never use: it takes memory of its own at the first use.
#pragma once

#include <memory>

// One thread at a time, also for Own() of a const object.
template <class T>
class ZuSeldom {
 public:
  ZuSeldom() = default;
  ZuSeldom(const ZuSeldom& other) { *this = other; }
  ZuSeldom& operator=(const ZuSeldom& other) {
    if (this != &other && (m_pValue || other.m_pValue)) Own() = *other;
    return *this;
  }
  ZuSeldom& operator=(const T& value) {
    Own() = value;
    return *this;
  }

  // Whether there is memory for the value.
  bool IsOwn() const { return m_pValue != nullptr; }
  // Back to a default value.
  void Reset() {
    if (m_pValue) *m_pValue = T{};
  }

  // The value to look at, for now: a default one while there is none.
  const T& operator*() const { return m_pValue ? *m_pValue : Default(); }
  const T* operator->() const { return &**this; }
  // The value to change or to hold on to: it stays where it is as long as this object.
  T& Own() const {
    if (!m_pValue) Make();
    return *m_pValue;
  }

 private:
  void Make() const;  // apart, so that Own() is small enough for every getter
  static const T& Default() {
    static const T value{};
    return value;
  }

  mutable std::unique_ptr<T> m_pValue;
};

template <class T>
void ZuSeldom<T>::Make() const {
  m_pValue.reset(new T{});
}
