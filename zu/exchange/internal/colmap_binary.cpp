// The same records as the text form, little endian, each file behind the number of its records:
//
//   cameras.bin    u32 id, i32 model, u64 width, u64 height, f64 parameters
//   images.bin     u32 id, f64 q[4], f64 t[3], u32 camera, name with a 0 behind it, u64 number of
//                  features: f64 x, f64 y, u64 point, all bits set for none
//   points3D.bin   u64 id, f64 x[3], u8 colour[3], f64 error, u64 number of features: u32 image,
//                  u32 index
#include <bit>
#include <cmath>

#include "zu/exchange/internal/colmap.h"

namespace zu::internal {

namespace {

class BinaryScan {
 public:
  explicit BinaryScan(const ZuExchangeFile& file) : m_file(file) {}

  std::uint64_t Unsigned(std::size_t uBytes) {
    if (uBytes > Left()) FailCut();
    std::uint64_t u = 0;
    for (std::size_t i = uBytes; i-- > 0;) {
      u = u << 8 | static_cast<unsigned char>(m_file.strText[m_uAt + i]);
    }
    m_uAt += uBytes;
    return u;
  }
  double Real() { return std::bit_cast<double>(Unsigned(8)); }
  std::string Name() {
    const std::size_t uEnd = m_file.strText.find('\0', m_uAt);
    if (uEnd == std::string::npos) FailCut();
    std::string strName = m_file.strText.substr(m_uAt, uEnd - m_uAt);
    m_uAt = uEnd + 1;
    return strName;
  }
  // A number of records of which each takes so many bytes at least.
  std::uint64_t Count(const char* szWhat, std::size_t uBytes) {
    const std::uint64_t uCount = Unsigned(8);
    if (uCount > Left() / uBytes) {
      FailExchange(m_file.strName, 0,
                   "tells " + std::to_string(uCount) + ' ' + szWhat + " at byte " +
                       std::to_string(m_uAt - 8) + ", but has room for " +
                       std::to_string(Left() / uBytes),
                   "the whole file");
    }
    return uCount;
  }
  void End() const {
    if (Left() == 0) return;
    FailExchange(m_file.strName, 0, std::to_string(Left()) + " bytes behind its last record",
                 "a file that ends there");
  }
  const std::string& File() const { return m_file.strName; }

 private:
  std::size_t Left() const { return m_file.strText.size() - m_uAt; }
  [[noreturn]] void FailCut() const {
    FailExchange(m_file.strName, 0, "is cut off at byte " + std::to_string(m_file.strText.size()),
                 "the whole file");
  }

  const ZuExchangeFile& m_file;
  std::size_t m_uAt = 0;
};

void ReadCamera(BinaryScan* pScan, ColmapBuilder* pBuilder) {
  const std::uint64_t uId = pScan->Unsigned(4);
  const auto iModel = static_cast<int>(static_cast<std::uint32_t>(pScan->Unsigned(4)));
  const ColmapModel* pModel = FindColmapModel(iModel);
  if (pModel == nullptr) {
    FailExchange(pScan->File(), 0, "the camera model " + std::to_string(iModel) + " is not known",
                 "0 to 10: " + ColmapModelNames());
  }
  ZuImageSize size;
  size.dWidth = static_cast<double>(pScan->Unsigned(8));
  size.dHeight = static_cast<double>(pScan->Unsigned(8));
  std::vector<double> parameters(pModel->uParameters);
  for (double& d : parameters) d = pScan->Real();
  pBuilder->AddCamera(pScan->File(), 0, uId, *pModel, size, parameters.data());
}

void ReadImage(BinaryScan* pScan, ColmapBuilder* pBuilder) {
  ColmapBuilder::Image image;
  image.uId = pScan->Unsigned(4);
  for (double* pd :
       {&image.q.w, &image.q.x, &image.q.y, &image.q.z, &image.t[0], &image.t[1], &image.t[2]}) {
    *pd = pScan->Real();
  }
  image.uCamera = pScan->Unsigned(4);
  image.strName = pScan->Name();
  pBuilder->AddImage(pScan->File(), 0, image);
  for (std::uint64_t u = pScan->Count("features", 24); u > 0; --u) {
    const double x = pScan->Real(), y = pScan->Real();
    pBuilder->AddFeature(pScan->File(), 0, ZuPixelFromCorner(x, y), pScan->Unsigned(8));
  }
}

void ReadPoint(BinaryScan* pScan, ColmapBuilder* pBuilder) {
  const std::uint64_t uId = pScan->Unsigned(8);
  std::array<double, 3> X{};
  for (double& d : X) d = pScan->Real();
  pScan->Unsigned(3);  // colour
  pScan->Real();       // error
  pBuilder->AddPoint(pScan->File(), 0, uId, X);
  for (std::uint64_t u = pScan->Count("features", 8); u > 0; --u) {
    const std::uint64_t uImage = pScan->Unsigned(4);
    pBuilder->AddTrack({uImage, pScan->Unsigned(4)});
  }
}

void ReadRecords(const ZuExchangeFile& file, const char* szWhat, std::size_t uBytes,
                 void (*pfnRead)(BinaryScan*, ColmapBuilder*), ColmapBuilder* pBuilder) {
  BinaryScan scan(file);
  for (std::uint64_t u = scan.Count(szWhat, uBytes); u > 0; --u) pfnRead(&scan, pBuilder);
  scan.End();
}

}  // namespace

void ReadColmapBinary(const ZuExchangeFile& cameras, const ZuExchangeFile& images,
                      const ZuExchangeFile& points, ColmapBuilder* pBuilder) {
  ReadRecords(cameras, "cameras", 48, ReadCamera, pBuilder);
  ReadRecords(images, "images", 73, ReadImage, pBuilder);
  ReadRecords(points, "points", 51, ReadPoint, pBuilder);
}

}  // namespace zu::internal
