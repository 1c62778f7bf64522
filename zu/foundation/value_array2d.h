// Grids of plain values in one flat block. Filling and copying run in parallel for large grids.
#pragma once

#include <cstddef>
#include <memory>

#include "zu/export.h"

// The block and its sizes; values below 1 count as 0.
template <class T>
class ZU_API ValArray2DBase {
 public:
  int GetSizeX() const { return m_iSizeX; }
  int GetSizeY() const { return m_iSizeY; }
  std::size_t Count() const { return static_cast<std::size_t>(m_iSizeX) * m_iSizeY; }

  T* Data() { return m_pData.get(); }
  const T* Data() const { return m_pData.get(); }

 protected:
  ValArray2DBase() = default;
  ValArray2DBase(int iSizeX, int iSizeY);  // of zeros
  ValArray2DBase(const ValArray2DBase& other);
  ~ValArray2DBase() = default;
  ValArray2DBase& operator=(const ValArray2DBase& other);

  std::unique_ptr<T[]> m_pData;
  int m_iSizeX = 0;
  int m_iSizeY = 0;
};

// Row by row: x runs fastest. Indices count from 0 and are not checked.
template <class T>
class ZU_API ValArray2DXY : public ValArray2DBase<T> {
 public:
  ValArray2DXY() = default;
  ValArray2DXY(int iSizeX, int iSizeY) : ValArray2DBase<T>(iSizeX, iSizeY) {}

  T& operator()(int x, int y) { return this->m_pData[Index(x, y)]; }
  const T& operator()(int x, int y) const { return this->m_pData[Index(x, y)]; }

 private:
  std::size_t Index(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(this->m_iSizeX) +
           static_cast<std::size_t>(x);
  }
};

extern template class ValArray2DBase<unsigned int>;
