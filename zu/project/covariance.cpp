#include "zu/project/covariance.h"

#include <cmath>
#include <sstream>

#include "zu/foundation/internal/item_writer.h"
#include "zu/foundation/link.h"
#include "zu/foundation/reader.h"
#include "zu/numerics/matrix.h"

namespace {

std::size_t Index(int i) { return static_cast<std::size_t>(i); }

struct MatrixValue : LinkHdl {
  int Read(ZuReaderObject* pObject) { return matrix.Read(pObject); }
  ZuMatrix matrix{1, 1};
};

}  // namespace

int ZuCovariance::Read(ZuReaderObject* pObject) {
  String strParameters;
  MatrixValue value;
  ZuReaderObject keywords[] = {
      {"PHOTOID", &m_uPhoto},
      {"WITH", &m_uWith},
      {"CAMERAID", &m_uCamera},
      {"PARAMETERS", &strParameters},
      {"MATRIX", Link(&value, &MatrixValue::Read)},
  };
  for (ZuReaderObject& keyword : keywords) pObject->RegisterObject(keyword);
  pObject->DoProcess();
  if (m_uPhoto != 0) m_uCamera = 0;
  const ZuMatrix& matrix = value.matrix;
  m_iRows = matrix.GetZeilen();
  m_iColumns = matrix.GetSpalten();
  m_matrix.assign(matrix.GetData(), matrix.GetData() + Index(m_iRows) * Index(m_iColumns));
  m_parameters.clear();
  std::istringstream words(strParameters.chars());
  for (std::string strWord; words >> strWord;) m_parameters.push_back(strWord);
  return 1;
}

std::ostream& ZuCovariance::Export(std::ostream& os) const {
  zu::internal::ItemWriter items(os);
  if (m_uPhoto != 0) {
    items.Item("PHOTOID", m_uPhoto);
  } else {
    items.Item("CAMERAID", m_uCamera);
  }
  items.ItemUnless(0U, "WITH", m_uWith);
  std::string strParameters;
  for (const std::string& strName : m_parameters) {
    strParameters += (strParameters.empty() ? "" : " ") + strName;
  }
  if (!strParameters.empty()) items.Item("PARAMETERS", String(strParameters.c_str()));
  items.Lines("MATRIX", [this](std::ostream& stream) {
    ZuMatrix(m_matrix.data(), m_iRows, m_iColumns).Export(stream);
  });
  return os;
}

std::array<std::string, 2> ZuCovariance::Fault() const {
  const auto shape = [](int r, int c) { return std::to_string(r) + " x " + std::to_string(c); };
  if (m_uWith != 0) {
    if (m_uPhoto == 0 || m_uPhoto == m_uWith) return {"no two photos", "PHOTOID and WITH"};
    if (m_iRows < kOrientation || m_iColumns < kOrientation) {
      return {shape(m_iRows, m_iColumns) + " elements", shape(kOrientation, kOrientation)};
    }
  } else {
    const int n = (m_uPhoto != 0 ? kOrientation : 0) + static_cast<int>(m_parameters.size());
    if (n == 0) return {"no photo and no parameters", "PHOTOID, or CAMERAID and PARAMETERS"};
    if (m_iRows != n || m_iColumns != n) {
      return {shape(m_iRows, m_iColumns) + " elements", shape(n, n)};
    }
    for (int i = 0; i < n; ++i) {
      if (m_matrix[Index(i) * Index(n + 1)] < 0.0) return {"a negative variance", "0 or more"};
    }
  }
  for (const double d : m_matrix) {
    if (!std::isfinite(d)) return {"an element that is not finite", "numbers"};
  }
  return {};
}

const ZuCovariance* ZuCovarianceList::Find(const Key& key) const {
  const auto found = m_all.find(key);
  return found != m_all.end() ? &found->second : nullptr;
}

std::vector<double> ZuCovarianceList::Cross(unsigned uPhoto, unsigned uWith) const {
  const ZuCovariance *pA = OfPhoto(uPhoto), *pB = OfPhoto(uWith);
  if (pA == nullptr || pB == nullptr) return {};
  if (uPhoto == uWith) return pA->m_matrix;
  const ZuCovariance* pCross = Find({uPhoto, uWith, 0});
  const bool bTurned = pCross == nullptr;
  if (bTurned) pCross = Find({uWith, uPhoto, 0});
  if (pCross == nullptr) return {};
  constexpr int n = ZuCovariance::kOrientation;
  const int iRows = pA->m_iRows, iColumns = pB->m_iRows;
  const int iGiven = bTurned ? pCross->m_iColumns : pCross->m_iRows;
  const bool bWhole =
      iGiven == iRows && (bTurned ? pCross->m_iRows : pCross->m_iColumns) == iColumns;
  const bool bShared =
      pCross->m_iRows == n && pCross->m_iColumns == n && pA->m_parameters == pB->m_parameters;
  if (!bWhole && !bShared) return {};
  const auto given = [&](int i, int k) {
    return pCross
        ->m_matrix[bTurned ? Index(k * pCross->m_iColumns + i) : Index(i * pCross->m_iColumns + k)];
  };
  std::vector<double> cross;
  for (int i = 0; i < iRows; ++i) {
    for (int k = 0; k < iColumns; ++k) {
      // Beside the orientations of both, the one camera: in the matrix of the photo in question.
      const bool bGiven = bWhole || (i < n && k < n);
      const ZuCovariance& own = i < n ? *pA : *pB;
      cross.push_back(bGiven ? given(i, k) : own.m_matrix[Index(i * iColumns + k)]);
    }
  }
  return cross;
}

void ZuCovarianceList::ErasePhoto(unsigned uPhoto) {
  std::erase_if(m_all, [uPhoto](const auto& entry) {
    return entry.first[0] == uPhoto || entry.first[1] == uPhoto;
  });
}

void ZuCovarianceList::RenumberPhotos(const std::map<unsigned, unsigned>& ids) {
  const auto renumber = [&ids](unsigned* pu) {
    const auto found = ids.find(*pu);
    if (found != ids.end() && *pu != 0) *pu = found->second;
  };
  std::map<Key, ZuCovariance> all;
  for (auto& [key, covariance] : m_all) {
    renumber(&covariance.m_uPhoto);
    renumber(&covariance.m_uWith);
    all[KeyOf(covariance)] = covariance;
  }
  m_all = std::move(all);
}
