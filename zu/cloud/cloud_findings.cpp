#include "zu/cloud/cloud_findings.h"

#include <algorithm>
#include <utility>

void ZuCloudFindings::Add(eZuCloudFinding eKind, std::uint64_t uLine, std::uint64_t uColumn,
                          std::string strText) {
  m_aFindings.push_back({eKind, uLine, uColumn, std::move(strText)});
}

void ZuCloudFindings::AddMemoryEnded() noexcept {
  m_bMemoryEnded = true;
  try {
    Add(eZuCloudFault, 0, 0, "memory ended; what was read until then is there");
  } catch (...) {
    // The flag tells.
  }
}

void ZuCloudFindings::Clear() {
  m_aFindings.clear();
  m_bMemoryEnded = false;
}

const ZuCloudFinding* ZuCloudFindings::First(eZuCloudFinding eKind) const {
  const auto found = std::find_if(m_aFindings.begin(), m_aFindings.end(),
                                  [eKind](const auto& f) { return f.m_eKind == eKind; });
  return found == m_aFindings.end() ? nullptr : &*found;
}
