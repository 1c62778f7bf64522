// The rules of project and camera files.
#pragma once

#include "keyword_text.h"

namespace cli {

const KeywordRule* ProjectRules();
// CAMERA blocks, and { id c xh yh a1 a2 r0 "name" } blocks.
const KeywordRule* CameraFileRules();

}  // namespace cli
