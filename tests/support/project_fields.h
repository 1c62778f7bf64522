// All records of a project, as text (see record_fields.h).
#pragma once

#include "tests/support/record_fields.h"
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
