#include "zu/mesh/mesh_file.h"

#include <bit>
#include <charconv>
#include <cstdint>
#include <ostream>
#include <string>

namespace {

template <class Number>
void AddText(Number value, char cBehind, std::string* pText) {
  char text[32];
  pText->append(text, std::to_chars(text, text + sizeof text, value).ptr);
  pText->push_back(cBehind);
}

void AddLittleEndian(std::uint64_t uBits, int iBytes, std::string* pText) {
  for (int i = 0; i < iBytes; ++i) pText->push_back(static_cast<char>(uBits >> (8 * i) & 0xFF));
}

void AddPosition(const ZuPoint3d& p, std::string* pText) {
  AddText(p.x, ' ', pText);
  AddText(p.y, ' ', pText);
  AddText(p.z, '\n', pText);
}

constexpr size_t kChunk = 1 << 16;

void Flush(size_t uLimit, std::ostream& stream, std::string* pText) {
  if (pText->size() < uLimit) return;
  stream.write(pText->data(), static_cast<std::streamsize>(pText->size()));
  pText->clear();
}

}  // namespace

bool ZuExportMeshPly(std::ostream& stream, const ZuPlaneMesh& mesh, bool bBinary) {
  std::string text = std::string("ply\nformat ") + (bBinary ? "binary_little_endian" : "ascii") +
                     " 1.0\nelement vertex " + std::to_string(mesh.Vertices().size()) +
                     "\nproperty double x\nproperty double y\nproperty double z\nelement face " +
                     std::to_string(mesh.Triangles().size()) +
                     "\nproperty list uchar int vertex_indices\nend_header\n";
  for (const ZuMeshVertex& vertex : mesh.Vertices()) {
    if (bBinary) {
      for (const double d : {vertex.point.x, vertex.point.y, vertex.point.z}) {
        AddLittleEndian(std::bit_cast<std::uint64_t>(d), 8, &text);
      }
    } else {
      AddPosition(vertex.point, &text);
    }
    Flush(kChunk, stream, &text);
  }
  for (const ZuPlaneMesh::Triangle& t : mesh.Triangles()) {
    text += bBinary ? "\3" : "3 ";
    for (size_t k = 0; k < 3; ++k) {
      if (bBinary) {
        AddLittleEndian(static_cast<std::uint32_t>(t[k]), 4, &text);
      } else {
        AddText(t[k], k < 2 ? ' ' : '\n', &text);
      }
    }
    Flush(kChunk, stream, &text);
  }
  Flush(0, stream, &text);
  return stream.good();
}

bool ZuExportMeshObj(std::ostream& stream, const ZuPlaneMesh& mesh) {
  std::string text;
  for (const ZuMeshVertex& vertex : mesh.Vertices()) {
    text += "v ";
    AddPosition(vertex.point, &text);
    Flush(kChunk, stream, &text);
  }
  for (const ZuPlaneMesh::Triangle& t : mesh.Triangles()) {
    text += "f ";
    for (size_t k = 0; k < 3; ++k) AddText(t[k] + 1, k < 2 ? ' ' : '\n', &text);
    Flush(kChunk, stream, &text);
  }
  Flush(0, stream, &text);
  return stream.good();
}
