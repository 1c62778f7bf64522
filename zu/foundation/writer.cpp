#include "zu/foundation/writer.h"

#include <iomanip>
#include <ostream>
#include <utility>

namespace {

int g_iIndent = 0;

void Outdent() {
  if (g_iIndent > 0) --g_iIndent;
}

// The blank is exactly one, whatever width is set.
std::ostream& Column(std::ostream& stream, int iWidth) {
  stream.put(' ');
  return stream << std::right << std::setw(iWidth);
}

std::ostream& LeftColumn(std::ostream& stream, int iWidth) {
  return stream << std::left << std::setw(iWidth);
}

std::ostream& Precision(std::ostream& stream, int iDigits) {
  stream.precision(iDigits);
  return stream;
}

}  // namespace

void ZuWriterReset() { g_iIndent = 0; }

ZuWriterStart::ZuWriterStart() : m_iFormer(std::exchange(g_iIndent, 0)) {}

ZuWriterStart::~ZuWriterStart() { g_iIndent = m_iFormer; }

std::ostream& ZuBeginBlock(std::ostream& stream) {
  ++g_iIndent;
  return stream << '{';
}

std::ostream& ZuBeginBlockNL(std::ostream& stream) {
  stream << '{';
  ++g_iIndent;
  return Zuendl(stream);
}

std::ostream& ZuEndBlock(std::ostream& stream) {
  Outdent();
  return stream << '}';
}

std::ostream& ZuEndBlockNL(std::ostream& stream) {
  Outdent();
  return Zuendl(stream) << '}';
}

std::ostream& ZuTabPlus(std::ostream& stream) {
  ++g_iIndent;
  return stream;
}

std::ostream& ZuTabMinus(std::ostream& stream) {
  Outdent();
  return stream;
}

std::ostream& ZuComment(std::ostream& stream) { return stream << "; "; }

std::ostream& Zuendl(std::ostream& stream) {
  stream.put('\n');
  for (int i = 0; i < g_iIndent; ++i) stream.write("    ", 4);
  return stream;
}

std::ostream& w4(std::ostream& stream) { return Column(stream, 4); }
std::ostream& w5(std::ostream& stream) { return Column(stream, 5); }
std::ostream& w6(std::ostream& stream) { return Column(stream, 6); }
std::ostream& w8(std::ostream& stream) { return Column(stream, 8); }
std::ostream& w10(std::ostream& stream) { return Column(stream, 10); }
std::ostream& w12(std::ostream& stream) { return Column(stream, 12); }
std::ostream& w14(std::ostream& stream) { return Column(stream, 14); }
std::ostream& w16(std::ostream& stream) { return Column(stream, 16); }
std::ostream& w19(std::ostream& stream) { return Column(stream, 19); }

std::ostream& s2(std::ostream& stream) { return LeftColumn(stream, 2); }
std::ostream& s4(std::ostream& stream) { return LeftColumn(stream, 4); }
std::ostream& s8(std::ostream& stream) { return LeftColumn(stream, 8); }
std::ostream& s10(std::ostream& stream) { return LeftColumn(stream, 10); }
std::ostream& s12(std::ostream& stream) { return LeftColumn(stream, 12); }
std::ostream& s14(std::ostream& stream) { return LeftColumn(stream, 14); }
std::ostream& s16(std::ostream& stream) { return LeftColumn(stream, 16); }
std::ostream& s20(std::ostream& stream) { return LeftColumn(stream, 20); }
std::ostream& s30(std::ostream& stream) { return LeftColumn(stream, 30); }
std::ostream& s34(std::ostream& stream) { return LeftColumn(stream, 34); }

std::ostream& p4(std::ostream& stream) { return Precision(stream, 4); }
std::ostream& p6(std::ostream& stream) { return Precision(stream, 6); }
std::ostream& p8(std::ostream& stream) { return Precision(stream, 8); }
std::ostream& p16(std::ostream& stream) { return Precision(stream, 16); }
