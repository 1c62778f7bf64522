#include "zu/cloud/internal/point_codec.h"

namespace {

template <class... T>
void ReadFields(ZuFileBuff& buff, T&... fields) {
  const auto read = [&buff](auto& field) {
    unsigned char aBytes[sizeof field];
    if (buff.Read(aBytes, sizeof aBytes) > 0) {
      field = ZuLoadLittle<std::remove_reference_t<decltype(field)>>(aBytes);
    }
  };
  (read(fields), ...);
}

}  // namespace

int ZuPointCodec::Read(ZuFileBuff& buff, ZuScanPoint3d& p) {
  if (buff.ReadWord() != Magic) return 0;
  ReadFields(buff, p.x, p.y, p.z, p.m_fDX, p.m_fDY, p.m_fDZ, p.m_fNX, p.m_fNY, p.m_fNZ, p.m_sFlags,
             p.m_uColor);
  return 1;
}
