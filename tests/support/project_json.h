// A project as JSON text.
#pragma once

#include <sstream>
#include <string>

#include "tests/support/project_fields.h"
#include "zu/exchange/project_json.h"

inline std::string JsonOf(const ZuProject& project) {
  std::ostringstream os;
  ZuExportProjectJson(os, project);
  return os.str();
}
