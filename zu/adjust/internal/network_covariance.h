// Cofactors of the solution of a network: of unknowns, in the datum that was chosen, and of
// observations, which no datum changes.
#pragma once

#include <memory>
#include <vector>

#include "zu/adjust/internal/network_model.h"
#include "zu/adjust/internal/network_normals.h"

// Holds all it needs: it outlives the network it came from.
class ZuNetworkCovariance {
 public:
  explicit ZuNetworkCovariance(const ZuNetwork& network) : m_network(network) {}

  ZuNetwork m_network;  // a copy
  std::unique_ptr<zu::internal::NetworkModel> m_pModel;
  std::unique_ptr<zu::internal::NetworkNormals> m_pNormals;
  zu::internal::NetworkState m_state;
  double m_dVariance = 1.0;  // sigma0^2

  // After the solution: inverts, and prepares the datum. False where the datum points decide no
  // frame.
  bool Prepare(const zu::internal::NetworkFreedom& freedom, bool bStatistics);

  // Cofactor of two unknowns, a reduced row (iPoint -1) or an axis of an eliminated point.
  struct Row {
    int iPoint, iRow;
  };
  double Cofactor(Row a, Row b) const;
  // The row of an unknown; false where it is fixed (*pbMissing false) or not estimated (true).
  bool Find(const ZuNetworkUnknown& unknown, Row* pRow, bool* pbMissing) const;
  // 3 x 3 of an eliminated point by rows.
  void PointCofactor(int iPoint, double* pQ) const;

  // A Q A' of a linearised group, m x m by rows, for sigma0 = 1: what of the group's own covariance
  // the adjusted observations keep.
  void OfGroup(const zu::internal::NetworkGroup& group, double* pH) const;

 private:
  static constexpr int kMost = zu::internal::NetworkModel::kGenerators;
  struct DatumRow {
    double f[kMost], h[kMost];
  };
  const DatumRow* Datum(Row row) const;
  double Raw(Row a, Row b) const;
  double ToDatum(Row a, Row b, double q) const;
  void SetPointCofactors();
  double TiedRow(int iPoint, int iReduced, int iAxis) const;  // sum of S^-1 T over the ties

  int m_iFree = 0;
  std::vector<double> m_k;    // B' Q B
  std::vector<double> m_raw;  // 9 a point, in no datum
  std::vector<DatumRow> m_reduced, m_points;
};
