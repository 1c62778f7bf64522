// The two forms of a reader of clouds in text files, of an open stream and of a path: what they do
// when the file cannot be opened or read, and when memory ends.
#pragma once

#include <cstdio>
#include <new>

#include "zu/cloud/cloud_reading.h"
#include "zu/cloud/internal/stdio_file.h"
#include "zu/cloud/point_cloud_container.h"

template <class Read>  // void Read(std::FILE*, ZuCloudReading&)
ZuCloudReading ZuReadCloudStream(std::FILE* fp, ZuPointCloudContainer& clouds, Read read) {
  ZuCloudReading reading;
  if (!fp) return reading;
  try {
    read(fp, reading);
    if (std::ferror(fp) != 0) {
      reading.m_Findings.Add(eZuReadCut, 0, 0, "not all bytes could be read");
    }
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
  clouds.UpdateCenterAndBox(reading.m_pCloud);
  return reading;
}

template <class Read>
ZuCloudReading ZuReadCloudFile(const char* szPath, ZuPointCloudContainer& clouds, Read read) {
  ZuCloudReading reading;
  try {
    const ZuStdioFile file(szPath, "rb");
    if (file.Get()) return ZuReadCloudStream(file.Get(), clouds, read);
    reading.m_Findings.Add(eZuReadFault, 0, 0, "cannot be opened");
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
  return reading;
}

// Runs a reader and gives the points what only the whole file tells, also where memory ends
// underway: then the points read until there stay.
template <class Reader, class Run>
void ZuRunAndFinish(Reader& reader, Run run) {
  try {
    run();
  } catch (const std::bad_alloc&) {
    reader.Finish();
    throw;
  }
  reader.Finish();
}
