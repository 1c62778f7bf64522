// Cofactors of the solution of a network: of unknowns, in the datum that was chosen, and of
// observations, which no datum changes.
#pragma once

#include <memory>
#include <optional>
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

  // An unknown: a reduced row (iPoint -1) or an axis of an eliminated point.
  struct Row {
    int iPoint, iRow;
  };
  // A column of the inverse, in no datum.
  struct Column {
    std::vector<double> reduced;
    std::vector<zu::internal::Vec3> points;
  };
  // Cofactor of two unknowns: at once where they meet in the equations, else from the column of the
  // first, which is solved for and kept in *pColumn.
  double Cofactor(Row a, Row b, std::optional<Column>* pColumn) const;
  double Cofactor(Row a, Row b) const {
    std::optional<Column> column;
    return Cofactor(a, b, &column);
  }
  // The row of an unknown; false where it is fixed (*pbMissing false) or not estimated (true).
  bool Find(const ZuNetworkUnknown& unknown, Row* pRow, bool* pbMissing) const;
  // 3 x 3 of an eliminated point by rows.
  void PointCofactor(int iPoint, double* pQ) const;

  // S^-1 T of a point, a block a tie: what its rays have in common.
  struct Tied {
    struct Block {
      double u[zu::internal::NetworkGroup::kWidest][3];
    };
    int iPoint = -1;
    std::vector<Block> blocks;
  };
  // A Q A' of a linearised group, m x m by rows, for sigma0 = 1: what of the group's own covariance
  // the adjusted observations keep. *pTied keeps what the next group of the same point needs too.
  void OfGroup(const zu::internal::NetworkGroup& group, Tied* pTied, double* pH) const;

 private:
  static constexpr int kMost = zu::internal::NetworkModel::kGenerators;
  struct DatumRow {
    double f[kMost], h[kMost];
  };
  const DatumRow* Datum(Row row) const;
  // In no datum; false where the unknowns don't meet.
  bool Raw(Row a, Row b, double* pQ) const;
  Column SolveColumn(Row a) const;
  double ToDatum(Row a, Row b, double q) const;
  void SetPointCofactors();
  void SetTied(int iPoint, Tied* pTied) const;
  // S^-1 T of some reduced rows and a point, all within one block; false where they don't meet.
  bool TiedRows(int iPoint, int iRow, int iRows, double (*pU)[3]) const;
  void TiedPart(const zu::internal::NetworkGroup::Part& part, const Tied& tied,
                double (*pU)[3]) const;

  int m_iFree = 0;
  std::vector<double> m_k;    // B' Q B
  std::vector<double> m_raw;  // 9 a point, in no datum
  std::vector<DatumRow> m_reduced, m_points;
};
