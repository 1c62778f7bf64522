// Projects and their photos as Python holds them.
#pragma once

#include "types.h"
#include "zu/project/project.h"

struct PyProject {
  ZuProject project;
  Gate gate;
};

// A photo of a project, which it keeps alive: a project loses no photo while it lives.
struct PyPhoto {
  py::object owner;
  PyProject* pProject;
  ZuPhoto* p;
};

constexpr eZuPointRWMask kIdXyz[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                     eZuPointRWEnd};

py::list CopiesOf(const ZuCameraList& cameras);

void BindPhotos(py::module_& m);
