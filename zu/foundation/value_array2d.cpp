#include "zu/foundation/value_array2d.h"

#include <algorithm>

namespace {

// Below this many values the threads cost more than they save.
[[maybe_unused]] constexpr long long kParallel = 1 << 16;

template <class T>
std::unique_ptr<T[]> MakeBlock(std::size_t uCount) {
  return uCount == 0 ? nullptr : std::unique_ptr<T[]>(new T[uCount]);
}

}  // namespace

template <class T>
ValArray2DBase<T>::ValArray2DBase(int iSizeX, int iSizeY)
    : m_iSizeX(std::max(iSizeX, 0)), m_iSizeY(std::max(iSizeY, 0)) {
  m_pData = MakeBlock<T>(Count());
  T* pData = m_pData.get();
  const auto lCount = static_cast<long long>(Count());
#pragma omp parallel for schedule(static) if (lCount >= kParallel)
  for (long long i = 0; i < lCount; ++i) pData[i] = T();
}

template <class T>
ValArray2DBase<T>::ValArray2DBase(const ValArray2DBase& other) {
  *this = other;
}

template <class T>
ValArray2DBase<T>& ValArray2DBase<T>::operator=(const ValArray2DBase& other) {
  if (this == &other) return *this;
  if (Count() != other.Count()) m_pData = MakeBlock<T>(other.Count());
  m_iSizeX = other.m_iSizeX;
  m_iSizeY = other.m_iSizeY;
  T* pData = m_pData.get();
  const T* pSource = other.m_pData.get();
  const auto lCount = static_cast<long long>(Count());
#pragma omp parallel for schedule(static) if (lCount >= kParallel)
  for (long long i = 0; i < lCount; ++i) pData[i] = pSource[i];
  return *this;
}

template class ValArray2DBase<unsigned int>;
