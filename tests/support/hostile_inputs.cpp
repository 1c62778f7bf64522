#include "tests/support/hostile_inputs.h"

#include <cstdint>

namespace {

using Text = std::function<std::string(std::size_t)>;

// A piece over and over, between a head and a tail.
Text Repeated(std::string strPiece, std::string strHead = "", std::string strTail = "") {
  return [=](std::size_t uSize) {
    std::string str = strHead;
    while (str.size() + strPiece.size() + strTail.size() <= uSize) str += strPiece;
    return str + strTail;
  };
}

// Blocks in blocks.
Text Nested(std::string strOpen, std::string strClose) {
  return [=](std::size_t uSize) {
    std::string str;
    std::size_t n = 0;
    for (; str.size() < uSize * strOpen.size() / (strOpen.size() + strClose.size()); ++n) {
      str += strOpen;
    }
    for (; n > 0; --n) str += strClose;
    return str;
  };
}

std::string LittleEndian(std::uint32_t u) {
  std::string str;
  for (int i = 0; i < 4; ++i) str += static_cast<char>(u >> (8 * i) & 0xFF);
  return str;
}

// Head of a cloud file, and a cloud without points.
const std::string kCloudFile = LittleEndian(0xBABEF00D) + LittleEndian(2) + LittleEndian(~0u);
const std::string kCloudMagic = LittleEndian(0xBABEBEEB);

std::string PlyHead() {
  std::string str = "ply\nformat ascii 1.0\n";
  for (int i = 0; i < 9; ++i) str += "property float p\n";
  return str + "end_header\n";
}

}  // namespace

const std::vector<HostileInput>& HostileInputs() {
  static const char kPoints[] = "coordinate file";
  static const char kGsi[] = "GSI file";
  static const char kCamera[] = "camera file";
  static const char kReseau[] = "reseau file";
  static const char kPlane[] = "plane file";
  static const char kProject[] = "project file";
  static const char kCloud[] = "cloud file";
  static const char kPts[] = "PTS file";
  static const char kPly[] = "PLY file";
  static const std::string kZero("\0", 1);
  static const std::vector<HostileInput> inputs = {
      {"points of one id", kPoints, Repeated("1\n")},
      {"points of one letter", kPoints, Repeated("a\n")},
      {"points with quotes", kPoints, Repeated("\"\n")},
      {"one line of fields", kPoints, Repeated("1 ")},
      {"one line of quotes", kPoints, Repeated("\"")},
      {"one line without a blank", kPoints, Repeated("x")},
      {"NUL bytes", kPoints, Repeated(kZero)},
      {"words of one line", kGsi, Repeated("110001+00000001 ")},
      {"points of two words", kGsi, Repeated("110001+00000001 81..00+00000001\n")},
      {"empty cameras", kCamera, Repeated("CAMERA{}\n")},
      {"cameras in cameras", kCamera, Nested("CAMERA{\n", "}\n")},
      {"braces", kCamera, Nested("{\n", "}\n")},
      {"simple cameras", kCamera, Repeated("{1 1 1 1 1 1 1\"\"}\n")},
      {"unknown blocks", kCamera, Repeated("X{}\n")},
      {"unknown blocks in blocks", kCamera, Nested("X{\n", "}\n")},
      {"crosses", kReseau, Repeated("{1 1 1 1}\n", "\"\" {0 0 1 1} {0 0 1 1}\n")},
      {"digital cameras", kReseau, Repeated("{\"\" 1\"\"1 1 1 1}\n")},
      {"planes", kPlane, Repeated("{1\"\"1 1 1 1}\n")},
      {"cut planes", kPlane, Repeated("{1\"\"}\n")},
      {"photos", kProject, Repeated("PHOTO{PHOTOID 1\"a\"}\n")},
      {"photos without a field", kProject, Repeated("PHOTO{}\n")},
      {"orthophotos without a field", kProject, Repeated("ORTHOPHOTO{}\n")},
      {"photos in photos", kProject, Nested("PHOTO{\n", "}\n")},
      {"orthophotos", kProject, Repeated("ORTHOPHOTO{ID 1\"a\"}\n")},
      {"rectifications of one photo", kProject,
       Repeated("ZUSPPLANE{ZUSPID 1\"a\"}\n", "PHOTO{", "}")},
      {"matrices of a million", kProject, Repeated("AORM{1000 1000}\n", "PHOTO{", "}")},
      {"points of a photo", kProject, Repeated("1 1 1 1 1\n", "PHOTO{REGOI{", "}}")},
      {"rows of points", kProject, Repeated("1 1 1 1 1\n", "MEASURED{", "}")},
      {"rows of a polygon", kProject, Repeated("1 1 1 1\n", "POLYGON{", "}")},
      {"lines of ids", kProject, Repeated("1\n", "IDS{", "}")},
      {"pairs of ids", kProject, Repeated("1\n", "PAIRS{", "}")},
      {"grids of two thousand million", kProject, Repeated("GRID{46340 46340}\n")},
      {"numbers that are none", kProject, Repeated("1a\n")},
      {"strings without end", kProject, Repeated("\"\n")},
      {"misfits", kProject, Repeated("1\n")},
      {"unknown keywords", kProject, Repeated("X 1\n")},
      {"one line", kProject, Repeated("X ")},
      {"clouds without a point", kCloud,
       Repeated(kCloudMagic + std::string(300, '\0'), kCloudFile)},
      {"clouds of magic words", kCloud, Repeated(kCloudMagic, kCloudFile)},
      {"counts", kPts, Repeated("2000000000\n")},
      {"points of three digits", kPts, Repeated("1 1 1\n")},
      {"one line of digits", kPts, Repeated("1")},
      {"empty lines", kPts, Repeated("\n")},
      {"properties", kPly, Repeated("property\n", "ply\n")},
      {"element counts", kPly, Repeated("element v 2000000000\n", "ply\n")},
      {"points of nine digits", kPly, Repeated("1 1 1 1 1 1 1 1 1\n", PlyHead())},
      {"one line of tokens", kPly, Repeated("1 ", PlyHead())},
      {"one line of a token", kPly, Repeated("1", PlyHead())},
  };
  return inputs;
}
