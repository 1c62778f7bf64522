// Parts of the header comments of written files.
#pragma once

#include <ostream>

#include "zu/foundation/writer.h"

namespace zu::internal {

inline std::ostream& CommentLine(std::ostream& stream, const char* szText) {
  return stream << ZuComment << szText << '\n';
}

// An empty line, the program with its version and the kind of file (" Reseau File"), an empty line.
inline void WriteTitle(std::ostream& stream, const char* szKind) {
  CommentLine(stream, "");
  stream << ZuComment << "ZUVOVISION 10 Version "
         << "8.205" << szKind << '\n';
  CommentLine(stream, "");
}

}  // namespace zu::internal
