// A project as JSON, both ways, for scripts and for programs in other languages. The keys are those
// of docs/files/project_json.md, whose schema is docs/files/project.schema.json.
//
//   ZuProject project;
//   project.Read("house.prj");
//   ZuExportProjectJson(stream, project);
//   ...
//   ZuFindingList findings;
//   if (!ZuReadProjectJson(stream, &project, &findings)) ...
//
// Nothing is lost on the way: a project that was written as JSON and read again is written as the
// same project file, byte for byte.
#pragma once

#include <iosfwd>
#include <string>

#include "zu/exchange/export.h"
#include "zu/project/finding_list.h"

class ZuProject;

// Writes what ZuProject::Export writes, unknown keywords too. UTF-8, one item of the project a
// line; numbers have the shortest text that gives the same double, "inf", "-inf" and "nan" as
// texts. A text that is not UTF-8 is { "latin1": text }, each byte one character.
ZU_EXCHANGE_API std::ostream& ZuExportProjectJson(std::ostream& stream, const ZuProject& project);

// Reads that form from the place where the stream stands to its end, in place of what the project
// holds. False with errors among the findings: text that is no JSON (line and column), a key that
// is unknown or missing, a value of the wrong type ("items[3].camera.c: a number would be right"),
// and what ZuProject::Read finds in the project (no lines). Of such a file nothing is read, but a
// project whose own findings are errors is there as far as it could be read. strName is the file of
// the findings.
ZU_EXCHANGE_API bool ZuReadProjectJson(std::istream& stream, ZuProject* pProject,
                                       ZuFindingList* pFindings, const std::string& strName = "");
