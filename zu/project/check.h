// What is wrong or not plausible in a file, beyond what its reader needs: for a check before others
// rely on it.
//
//   ZuFindingList findings;
//   ZuCheckFile("house.prj", &findings);
//   for (const ZuFinding& finding : findings) std::puts(GetZuFindingLine(finding).c_str());
//
// The limits are wide: what is found is hardly ever meant so.
#pragma once

#include <string>
#include <string_view>

#include "zu/export.h"
#include "zu/points/format_table.h"
#include "zu/project/finding_list.h"

class ZuProject;

// Adds the findings of a file, whose kind is told by its content: project, camera file, reseau and
// digital camera file, planes, GSI file, coordinates. Of a project those of the reseau files beside
// it, too, where its photos name one. The columns are those of a coordinate file. False, and
// no finding, for a file of another kind, such as a cloud. Sorted by place; time grows with the
// size.
ZU_API bool ZuCheckFile(const char* szPath, const TZuFormatTable<eZuPointRWMask>& columns,
                        ZuFindingList* pFindings);
// The columns of a coordinate file are those of its titles, id, x, y, z without.
ZU_API bool ZuCheckFile(const char* szPath, ZuFindingList* pFindings);

// The parts of it.
//
// A project that was read: what its reading found, ids that stand twice, references that lead
// nowhere, cameras, orientations and pixels that are not plausible, coordinates of another unit
// than the others, rotations whose angles were taken as gon in place of degrees or the other way.
// Images and reseau files are looked for in strFolder; where none of them is there they are taken
// to lie elsewhere. Empty: not looked for.
ZU_API void ZuCheckProject(const ZuProject& project, const std::string& strFile,
                           const std::string& strFolder, ZuFindingList* pFindings);
// Text that is no UTF-8, or UTF-16, or holds NUL bytes: the first place.
ZU_API void ZuCheckEncoding(std::string_view text, const std::string& strFile,
                            ZuFindingList* pFindings);
