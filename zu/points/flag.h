// The bit set that many records carry.
#pragma once

#include "zu/export.h"

// Bits with one meaning in every record; a record may give the others meanings of its own.
enum eZuFlag : int { eZuFlagGuiSelect = 1, eZuFlagActive = 2 };

// Base of records with 32 flag bits, none set in a new one. It stands behind the other bases.
class ZU_API ZuFlag {
 public:
  // Each returns the new value of all bits.
  int SetFlag(int iMask) { return m_iFlag |= iMask; }
  int ClearFlag(int iMask) { return m_iFlag &= ~iMask; }
  int ToggleFlag(int iMask) { return m_iFlag ^= iMask; }

  // The bits in common with iMask, 0 for none.
  int IsFlagSet(int iMask) const { return m_iFlag & iMask; }
  int GetFlag() const { return m_iFlag; }

 protected:
  int m_iFlag = 0;
};
