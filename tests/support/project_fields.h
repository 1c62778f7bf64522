// A project as text: all its records (see record_fields.h), its file.
#pragma once

#include <sstream>
#include <string>

#include "tests/support/record_fields.h"
#include "zu/exchange/project_json.h"
#include "zu/project/project.h"

inline std::string FieldsOfProject(const ZuProject& project) {
  FieldText text;
  for (const auto& [uPhoto, rows] : project.GetMeasurements()) {
    if (!rows.IsEmpty()) text(uPhoto, rows);
  }
  for (const ZuLokalSystem& system : project.LocalSystems()) text(system, '\n');
  return FieldsOfList(project.PhotoList()) + FieldsOfList(project.OrthoPhotoList()) +
         FieldsOfList(project.CameraList()) + FieldsOfList(project.PlaneList()) +
         FieldsOf(project.ObjectPoints()) + text.Text();
}

inline std::string Exported(const ZuProject& project) {
  std::ostringstream os;
  project.Export(os);
  return os.str();
}
