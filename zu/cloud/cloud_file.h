// Files of clouds of every kind that is read, told apart by content and, where that leaves it open,
// by the ending of the name.
#pragma once

#include <string>

#include "zu/cloud/cloud_detect.h"
#include "zu/cloud/intensity_scale.h"
#include "zu/export.h"
#include "zu/foundation/read_findings.h"
#include "zu/points/table.h"

class ZuPointCloudContainer;

struct ZuCloudFileOptions {
  std::string m_strName;        // of the file where the path is another; empty: the path
  ZuTableOptions m_Table;       // of tables and coordinate files; columns that are told make it one
  bool m_bPlyByPlaces = false;  // nine columns, as ZuPointCloudContainer::ObsolteReadPlyFile
};

// The kind of a file. None, with the reason in *pstrWhy, where it is no cloud or its name says
// otherwise; a table with titles and a GSI file are eZuCloudFileCoordinates. Text without a count
// whose lines are numbers is a PTS file where the name ends in .pts or .xyz, a coordinate file
// where it ends in .csv or .coo or columns are told, and otherwise what its first column shows.
ZU_API eZuCloudFile ZuFindCloudFileKind(const char* szPath, const ZuCloudFileOptions& options,
                                        std::string* pstrWhy);

// A table whose titles tell coordinates, and a colour, an intensity or normals beside them: a scan,
// not a list of points. False for everything else.
ZU_API bool ZuIsTitledScan(const char* szPath);

struct ZuCloudFileReading {
  eZuCloudFile m_eKind = eZuCloudFileNone;
  eZuIntensityScale m_eIntensity = eZuIntensityNone;
  ZuReadFindings m_Findings;
  ZuTableForm m_Form;  // of a table
};

// Appends the clouds of a file to the container, without names where the file has none. The
// findings hold a fault where the kind is None or Either, or there is no point in a whole
// file (a binary one without points, but with a cloud, has what it needs).
//
// An E57 file is a fault here: ZuReadE57 of zu::exchange reads it.
//
// A table gives one cloud of the points in its order, with what its titles tell: R, G, B or Red,
// Green, Blue (0 to 255, or 0 to 1 where none is above), Intensity or Reflectance on the scales of
// ZuReadPts, and nx, ny, nz of the normals. Ids and names are passed over.
//
// Takes linear time and the memory of the points; a table that of its text, too. Stopped by the
// progress handler, it ends with a cut. Throws nothing.
ZU_API ZuCloudFileReading ZuReadClouds(const char* szPath, ZuPointCloudContainer& clouds,
                                       const ZuCloudFileOptions& options = {},
                                       eZuReadMode eMode = eZuReadStrict);
