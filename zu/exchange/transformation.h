// A transformation that was found once and is kept in a file, to be applied to other data.
//
//   similarity   target = s R (source - xs) + xt
//   affine       target = A source + t, of a 4 x 4 matrix from another program
//   plane        (X, Y) = f((x, y) - source centre) + target centre, z stays; f as in ZuTrafo2d
//
//   ZuTransformation transformation;
//   ZuFindingList findings;
//   if (!ZuReadTransformation(stream, &transformation, &findings)) ...
//   transformation.Carry(&points);
//
// The file is JSON (docs/files/transformation.md), or a matrix as text.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "zu/exchange/export.h"
#include "zu/numerics/affin_map3d.h"
#include "zu/points/point_list.h"
#include "zu/project/finding_list.h"
#include "zu/transform/trafo2d.h"
#include "zu/transform/trafo3d_data.h"

enum class ZuTransformationKind { Similarity, Affine, Plane };

// What a transformation was made from, for the reader of its file.
struct ZuTransformationOrigin {
  std::string strCommand, strVersion;  // "zu transform", of the program
  std::string strSource, strTarget;    // files
  std::vector<std::string> options;    // "--sigma", "0.002"
  std::vector<std::string> used;       // names or ids of the common points
  std::vector<std::string> setAside;
};

class ZU_EXCHANGE_API ZuTransformation {
 public:
  // The identity as an affine map, without accuracy.
  ZuTransformation() = default;

  ZuTransformationKind kind = ZuTransformationKind::Affine;
  ZuTrafo3dData similarity;  // of kind Similarity alone, as the next ones of theirs
  ZuAffinMap3d affine;
  eZuTrafo2DType ePlane = eZuTrafo2DNone;
  double adSourceCentre[2] = {}, adTargetCentre[2] = {};
  std::vector<double> coefficients;  // a0.. for coordinates less the centres
  bool bInverse = false;             // of a plane transformation: carries target to source

  // Of the parameters, by rows; empty: not known. Of a similarity shift x, y, z of xt, scale and
  // the small rotation vector w [rad] (R becomes R exp[w]), 7 x 7; of a plane transformation its
  // coefficients. Lengths in the unit of the target.
  std::vector<double> covariance;
  double dSigma0 = 1.0;
  int iRedundancy = 0;
  std::string strSigmaKind;  // "a priori", "a posteriori"
  // Accuracies that points bring (m_dDX, m_dDY, m_dDZ) are multiplied by it.
  double dAccuracyFactor = 1.0;
  // Standard deviation of a source coordinate that tells none [unit of the source]; 0: exact.
  double dSourceSd = 0.0;

  std::string strUnit;  // "mm"; empty: not told
  ZuTransformationOrigin origin;

  // The way back, with its covariance. False, nothing changed, where there is none: a matrix or
  // linear part that is singular to 1e-12 of its size.
  bool Invert();

  // Carries the points over in place; in m_dDX, m_dDY, m_dDZ their standard deviations, from those
  // that the points bring and the covariance of the parameters, as far as either is told. The
  // points count as others than those that the transformation was found from. Coordinates are those
  // of ZuTrafo3d::Transform to the last bit. Returns the ids of points that have no image, which
  // stay as they are: beyond the horizon of a projective transformation, or where the inverse of a
  // polynomial is not found.
  std::vector<unsigned> Carry(ZuPointList* pPoints) const;

  // As a map of space. False, *pMap untouched, for a plane transformation.
  bool AsMap(ZuAffinMap3d* pMap) const;

  // As a similarity, which carries orientations, too: an affine map whose columns are orthogonal
  // and equally long to 1e-5, by the nearest rotation. *pdOff becomes the largest element by which
  // s R differs from the map, over s. False, outputs untouched, for any other one.
  bool AsSimilarity(ZuTrafo3dData* pSimilarity, double* pdOff) const;
};

// Writes the JSON. Numbers have the shortest text that gives the same double.
ZU_EXCHANGE_API std::ostream& ZuExportTransformation(std::ostream& stream,
                                                     const ZuTransformation& transformation);

// Reads the JSON, or the sixteen numbers of a 4 x 4 matrix, or twelve of its first three rows, row
// by row, between blanks, commas, semicolons or brackets; lines that begin with # are passed over.
// A matrix that stands column by column (its translation in the last row) is taken with a warning.
//
// False with an error among the findings, *pTransformation untouched: text that is neither, a
// number that is missing or not finite, a rotation that is none, a covariance that is none,
// parameters and matrix that disagree, an unknown version. Reads to the end of the stream. strName
// is the file of the findings.
ZU_EXCHANGE_API bool ZuReadTransformation(std::istream& stream, ZuTransformation* pTransformation,
                                          ZuFindingList* pFindings,
                                          const std::string& strName = "");
