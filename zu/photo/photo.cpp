// The photo's record: making, copying, regions, camera and orientation.
#include "zu/photo/photo.h"

#include <cmath>
#include <cstdio>
#include <ostream>
#include <string>

#include "zu/foundation/file_name.h"
#include "zu/photo/bundle_aob.h"
#include "zu/photo/photo_list.h"
#include "zu/photo/photo_viva_pano.h"

ZU_INSTANTIATE_LIST(ZuPhoto);
ZU_INSTANTIATE_LIST(ZuPhotoVivaPano);
ZU_INSTANTIATE_LIST(ZuBundleAOB);

namespace {

constexpr double kEmptyRegion = 1e-10;      // difference of corners below which it is to be derived
constexpr double kMargin = 1.1;             // of the image radius for the inverse of the camera
constexpr double kPixelProbe = 5.0;         // length carried to pixels to measure them [mm]
constexpr double kGon = 63.66197723675813;  // in a radian

constexpr eZuPointRWMask kRegoiFormat[] = {eZuPointRWId, eZuPointRWX,  eZuPointRWY,
                                           eZuPointRWDX, eZuPointRWDY, eZuPointRWEnd};

bool IsSame(double a, double b) { return a == b && std::signbit(a) == std::signbit(b); }

}  // namespace

ZuPhoto::RegoiList::RegoiList() : ZuPointList(kRegoiFormat) {}

ZuPhoto::ZuPhoto(unsigned int uId) : ZuListnode(uId) { Init(); }

ZuPhoto::ZuPhoto(unsigned int uId, const String& strName) : ZuListnode(uId, strName) {
  Init();
  m_ePhototype = eZuPhototypeDigital;
}

ZuPhoto::ZuPhoto(ZuReaderObject* pObject) {
  Init();
  ZuPhoto::Read(pObject);
}

ZuPhoto::ZuPhoto(const ZuPhoto& other) : ZuListnode(), ZuFlag() { *this = other; }

ZuPhoto::~ZuPhoto() = default;

void ZuPhoto::Init() {
  m_sComment = "";
  m_iState = eZuPhotoStateInactive;
  m_iLayer = m_iRotation = 0;
  m_bOriented = false;
  m_dScale = m_dPixelSize = 0.0;
  m_ePhototype = eZuPhototypeAnalog;
  m_uDigitizerId = 1;
  m_DigiRegion.Set(0.0, 0.0, 0.0, 0.0);
  m_BikoRegion.Reset();
  m_Camera = ZuCamera();
  m_ReseauData = ZuReseauDataDesc();
  for (auto* pTrafo : {&m_PreTrafo, &m_MainTrafo, &m_PolyInvTrafo}) pTrafo->Reset();
  m_RotAOR.Clear();
  m_PosAOR.Clear();
  m_uLastZuspId = 0;
  m_iDigPictPage = m_iDigPictRot = 0;
  m_ScreenPos = ZuPosition();
  m_iScreenScale = m_iScreenFlags = 0;
  m_uAktBikoId = 0;
  ResetImoStat();
  m_bFieldOfViewValid = false;
  m_iSipError = eZuSipNoError;
  m_sTpsSetupId = "";
  if (m_RegoiList.IsOwn()) m_RegoiList.Own().SetMask(kRegoiFormat);
  m_BikoTransform.Reset();
}

ZuPhoto& ZuPhoto::operator=(const ZuPhoto& other) {
  if (this == &other) return *this;
  m_ImoSorted.Set(nullptr);
  m_MeasureSorted.Set(nullptr);
  m_MeasureList.Destroy();
  m_ZuspList.Destroy();
  m_AttributeList.Destroy();
  m_ImoList.Destroy();
  Init();
  ZuListnode::operator=(other);
  ZuFlag::operator=(other);
  CopyRecord(other);
  return *this;
}

void ZuPhoto::CopyRecord(const ZuPhoto& other) {
  m_sComment = other.m_sComment;
  m_iRotation = other.m_iRotation;
  m_iState = other.m_iState;
  m_iLayer = other.m_iLayer;
  m_dScale = other.m_dScale;
  m_bOriented = other.m_bOriented;
  m_DigiRegion = other.m_DigiRegion;
  m_BikoRegion = other.m_BikoRegion;
  m_RotAOR = other.m_RotAOR;
  m_PosAOR = other.m_PosAOR;
  m_ReseauData = other.m_ReseauData;
  m_PreTrafo = other.m_PreTrafo;
  m_MainTrafo = other.m_MainTrafo;
  m_PolyInvTrafo = other.m_PolyInvTrafo;
  m_Camera = other.m_Camera;
  m_ePhototype = other.m_ePhototype;
  m_uDigitizerId = other.m_uDigitizerId;
  m_ScreenPos = other.m_ScreenPos;
  m_iDigPictPage = other.m_iDigPictPage;
  m_iDigPictRot = other.m_iDigPictRot;
  m_iScreenScale = other.m_iScreenScale;
  m_iScreenFlags = other.m_iScreenFlags;
  m_uLastZuspId = other.m_uLastZuspId;
  m_dPixelSize = other.m_dPixelSize;
  m_bFieldOfViewValid = other.m_bFieldOfViewValid;
  m_FovPlanes = other.m_FovPlanes;
  m_FovCorners = other.m_FovCorners;
  m_sTpsSetupId = other.m_sTpsSetupId;
  for (int i = 0; i < 4; ++i) m_adPanorama[i] = other.m_adPanorama[i];
  m_iPanorama = other.m_iPanorama;
}

ZuPhoto* ZuPhoto::cast(const ZuObject* pObject) {
  return const_cast<ZuPhoto*>(static_cast<const ZuPhoto*>(pObject));
}

int ZuPhoto::Compare(ZuListnode* pOther) const { return static_cast<int>(m_uId - pOther->GetId()); }

std::ostream& ZuPhoto::Write(std::ostream& stream) { return stream; }

bool ZuPhoto::ExistFile() const { return ZuExistFile(m_strName); }

const ZuRegion& ZuPhoto::GetBikoRegion() const {
  PresentBikoRegion();
  return m_BikoRegion.Own();
}

// Without memory for the region of a photo that has none.
const ZuRegion& ZuPhoto::PresentBikoRegion() const {
  const ZuRegion& region = *m_BikoRegion;
  if (std::fabs(region.Right() - region.Left()) < kEmptyRegion) CalcBikoRegionFromDigiRegion();
  return *m_BikoRegion;
}

void ZuPhoto::CalcBikoRegionFromDigiRegion() const {
  const ZuRegion& digi = GetDigiRegion();
  ZuPoint p1(0, digi.Left(), digi.Bottom()), p2(0, digi.Right(), digi.Top());
  ConvertBiko(&p1, eDigiToBiko);
  ConvertBiko(&p2, eDigiToBiko);
  const ZuRegion& region = *m_BikoRegion;
  if (IsSame(region.Left(), p1.m_dX) && IsSame(region.Bottom(), p1.m_dY) &&
      IsSame(region.Right(), p2.m_dX) && IsSame(region.Top(), p2.m_dY)) {
    return;
  }
  m_BikoRegion.Own().Set(p1.m_dX, p1.m_dY, p2.m_dX, p2.m_dY);
}

double ZuPhoto::GetMaxBikoRadius() const {
  const ZuRegion& region = PresentBikoRegion();
  const double d = std::sqrt(region.Width() * region.Width() + region.Height() * region.Height());
  return d * 0.5 * kMargin;
}

void ZuPhoto::CompleteCamera() {
  if (m_Camera.m_dRMax == 0.0) m_Camera.m_dRMax = GetMaxBikoRadius();
}

void ZuPhoto::SetCamera(const ZuCamera& camera) {
  m_Camera = camera;
  CompleteCamera();
}

void ZuPhoto::SetCamera(const ZuCamera* pCamera) {
  if (pCamera != nullptr) m_Camera = *pCamera;
  CompleteCamera();
}

ZuMatrix ZuPhoto::GetReseauTrafoMat() const {
  ZuMatrix pre(3, 3), main(3, 3);
  m_PreTrafo->BuildMatrix(&pre);
  m_MainTrafo->BuildMatrix(&main);
  return main * pre;
}

// The length in pixels of a probe in the image.
double ZuPhoto::PixelLength(double dx, double dy) const {
  ZuPoint p1(0, 0.0, 0.0), p2(0, dx, dy);
  ConvertBiko(&p1, eBikoToDigi);
  ConvertBiko(&p2, eBikoToDigi);
  const double d = p1.Distance(p2);
  return d == 0.0 ? 1.0 : d;
}

double ZuPhoto::GetPixelSizeX() const {
  return std::fabs(kPixelProbe / PixelLength(kPixelProbe, 0.0));
}

double ZuPhoto::GetPixelSizeY() const {
  return std::fabs(kPixelProbe / PixelLength(0.0, kPixelProbe));
}

double ZuPhoto::GetPixelSize() const {
  if (m_dPixelSize == 0.0) m_dPixelSize = std::sqrt(GetPixelSizeX() * GetPixelSizeY());
  return m_dPixelSize;
}

void ZuPhoto::SetPosAOR(double x, double y, double z) { SetPosAOR(ZuVector(x, y, z)); }

void ZuPhoto::SetPosAOR(const ZuVector& position) {
  m_PosAOR = position;
  m_bFieldOfViewValid = false;
}

void ZuPhoto::GetPosAOR(double* x, double* y, double* z) const {
  *x = m_PosAOR[1];
  *y = m_PosAOR[2];
  *z = m_PosAOR[3];
}

void ZuPhoto::SetRotAOR(double a, double b, double c) {
  const double sa = std::sin(a), ca = std::cos(a);
  const double sb = std::sin(b), cb = std::cos(b);
  const double sc = std::sin(c), cc = std::cos(c);
  const double rotation[9] = {
      cc * cb + sc * sb * sa, cc * sb * sa - cb * sc, ca * sb, ca * sc, ca * cc, -sa,
      cb * sa * sc - cc * sb, sc * sb + cb * sa * cc, ca * cb};
  SetRotAOR(ZuMatrix(rotation, 3, 3));
}

void ZuPhoto::SetRotAOR(const ZuMatrix& rotation) {
  m_RotAOR = rotation;
  m_bFieldOfViewValid = false;
}

void ZuPhoto::GetRotAOR(double* a, double* b, double* c) const { m_RotAOR.GetRotAngles(a, b, c); }

void ZuPhoto::GetAOR(ZuMatrix* pMatrix) const {
  if (pMatrix == nullptr) return;
  pMatrix->SetIdent();
  for (int i = 1; i <= 3; ++i) {
    for (int j = 1; j <= 3; ++j) (*pMatrix)[i][j] = m_RotAOR[i][j];
    (*pMatrix)[i][4] = m_PosAOR[i];
  }
}

void ZuPhoto::GetAOR(ZuPoint* pPoint, bool bGon) const {
  GetPosAOR(&pPoint->m_dX, &pPoint->m_dY, &pPoint->m_dZ);
  GetRotAOR(&pPoint->m_dDX, &pPoint->m_dDY, &pPoint->m_dDZ);
  if (bGon) {
    for (double* pdAngle : {&pPoint->m_dDX, &pPoint->m_dDY, &pPoint->m_dDZ}) *pdAngle *= kGon;
  }
  pPoint->SetId(m_uId);
  pPoint->m_iPhoto = static_cast<int>(m_uId);
  pPoint->m_iCamera = static_cast<int>(m_Camera.GetId());
}

void ZuPhoto::SetAOR(const ZuPhoto& other) {
  m_bOriented = other.m_bOriented;
  m_RotAOR = other.m_RotAOR;
  m_PosAOR = other.m_PosAOR;
  m_bFieldOfViewValid = false;
}

void ZuPhoto::DelAttribute(ZuAttribute* p) {
  if (p != nullptr) delete m_AttributeList.Subtract(p);
}

String ZuPhotoGuiString(const ZuPhoto* pPhoto, bool bMarkOriented) {
  if (pPhoto == nullptr) return String("??");
  const bool bFile = pPhoto->IsDigital() || pPhoto->IsOrthoPhoto() || pPhoto->IsVivaPanorama();
  String text(bMarkOriented && pPhoto->HasAOR() ? ":: " : "");
  text += std::to_string(pPhoto->GetId()).c_str();
  text += " - ";
  text += bFile ? pPhoto->GetName() : pPhoto->GetComment();
  return text;
}

ZuPhoto* ZuPhotoList::AddPhoto(ZuReaderObject* pObject) { return Add(new ZuPhoto(pObject)); }

void ZuPhotoDesc::Set(ZuPhoto* pPhoto) {
  m_bIsOrtho = pPhoto != nullptr && pPhoto->IsOrthoPhoto();
  m_bIsViva = pPhoto != nullptr && pPhoto->IsVivaPanorama();
  m_uId = pPhoto != nullptr ? pPhoto->GetId() : 0;
}
