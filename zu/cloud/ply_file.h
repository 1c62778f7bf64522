// PLY files by the names of their properties: ASCII and both binary forms, coordinates in double
// precision, normals and intensities kept (G. Turk, The PLY Polygon File Format, 1994).
//
// ZuPointCloudContainer::ObsolteReadPlyFile takes the places of nine columns of an ASCII file for
// their meaning and rounds coordinates to float; what is here goes by the header. One thread at a
// time for one container.
#pragma once

#include <cstdio>

#include "zu/cloud/cloud_reading.h"
#include "zu/export.h"

class ZuPointCloudContainer;

// Reads the element `vertex` into one new cloud. Its properties may stand in any order and have any
// type; letters count in either case:
//
//   x y z                                                   required
//   nx ny nz                                                normal
//   red green blue, or diffuse_red ..., or r g b            colour
//   intensity, or scalar_intensity                          intensity
//
// Colours are 0 to 255; those of ushort are 0 to 65535 and those of float or double 0 to 1 if none
// is larger. Intensities of uchar are 0 to 255 and of ushort 0 to 65535; of other types the scale
// is found as by ZuReadPts. Further properties and elements are passed over, with a finding.
//
// Reading ends, with a fault that names the line or the row, where the header or a number is not
// as it should be; a tolerant reading leaves out vertices of ASCII files that are not as they
// should be, as ZuReadPts does with lines. Rows that are missing, of any element, are a cut. The
// cloud is null only when the header is at fault or the file cannot be opened.
//
// Takes linear time, whatever the header announces, and the memory of the points. Stopped by the
// progress handler, it ends with a cut. Throws nothing: without memory the points read until then
// stay, with a fault.
ZU_API ZuCloudReading ZuReadPly(std::FILE* fp, ZuPointCloudContainer& clouds,
                                eZuReadMode eMode = eZuReadStrict);
ZU_API ZuCloudReading ZuReadPly(const char* szPath, ZuPointCloudContainer& clouds,
                                eZuReadMode eMode = eZuReadStrict);

// The values are given out: append, never renumber.
enum eZuPlyForm : int { eZuPlyAscii, eZuPlyBinaryLittle, eZuPlyBinaryBig };

// Writes the points of all clouds as one element: x y z (double), and where any point has one
// nx ny nz (float), red green blue (uchar), and intensity, uchar or on the scale of 65535 ushort.
// ASCII numbers have the digits that read back to the same value. False when the file cannot be
// opened, not all bytes could be written, or the progress handler wanted no more.
ZU_API bool ZuWritePly(std::FILE* fp, const ZuPointCloudContainer& clouds, eZuPlyForm eForm,
                       eZuIntensityScale eIntensity = eZuIntensity255);
ZU_API bool ZuWritePly(const char* szPath, const ZuPointCloudContainer& clouds, eZuPlyForm eForm,
                       eZuIntensityScale eIntensity = eZuIntensity255);
