#include "save_trafo.h"

#include <algorithm>
#include <cmath>
#include <fstream>

#include "exit_code.h"
#include "project_input.h"
#include "zu/version.h"

namespace cli {

void AddSaveOption(Options& options, SaveValues* pValues) {
  options.Output("--save", "FILE", &pValues->strFile,
                 "the transformation as JSON, for zu apply and cloud transform --matrix");
}

void NotePoints(const ZuPointList& common, const std::vector<unsigned>& setAside,
                SaveValues* pValues) {
  for (const ZuPoint* p = common.First(); p != nullptr; p = p->Next()) {
    const bool bAside = std::find(setAside.begin(), setAside.end(), p->GetId()) != setAside.end();
    (bAside ? pValues->setAside : pValues->used).push_back(PointLabel(*p));
  }
}

void SaveTransformation(const SaveValues& values, ZuTransformation transformation,
                        const PointFormat& format, Context& context) {
  ZuTransformationOrigin& origin = transformation.origin;
  origin.strCommand = context.Command();
  origin.strVersion = ZuVersion();
  origin.strSource = values.strSource;
  origin.strTarget = values.strTarget;
  origin.options = context.Arguments();
  origin.used = values.used;
  origin.setAside = values.setAside;
  if (format.form) transformation.strUnit = format.form->m_strUnit;
  ZuExportTransformation(context.NewOutput(values.strFile).Stream(), transformation);
}

void SaveSimilarity(const SaveValues& values, const ZuTrafo3dData& trafo,
                    const ZuSimilarityResult* pSure, const PointFormat& format, Context& context) {
  ZuTransformation t;
  t.kind = ZuTransformationKind::Similarity;
  t.similarity = trafo;
  if (pSure != nullptr && pSure->IsGood()) {
    t.covariance.assign(pSure->adCovariance, pSure->adCovariance + 49);
    t.dSigma0 = pSure->dSigma0;
    t.iRedundancy = pSure->iRedundancy;
    t.strSigmaKind = ZuSigmaKindText(pSure->sigmaKind);
    if (pSure->bSigmaGiven) t.dAccuracyFactor = pSure->dSigma0;
    t.dSourceSd = std::sqrt(pSure->dOwnVariance);
  }
  SaveTransformation(values, std::move(t), format, context);
}

ZuTransformation ReadTransformation(const std::string& strPath, Context& context) {
  const InputFile file(strPath, "a transformation");
  std::ifstream stream(file.Path(), std::ios::in | std::ios::binary);
  ZuTransformation transformation;
  ZuFindingList findings;
  if (!ZuReadTransformation(stream, &transformation, &findings)) FailOf(findings, file);
  WarnOf(findings, file, context);
  return transformation;
}

}  // namespace cli
