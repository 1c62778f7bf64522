// The clouds of a project, with their common box and centre, and the cloud files.
//
//   binary   whole container, every field of a point           Read, Write
//   PTS      text, x y z [intensity] [red green blue]          ReadPtsFile, ExportPtsFile
//   PLY      ASCII, nine or more properties                    ObsolteReadPlyFile, ExportPlyFile
//
// Readers take whatever a file holds: counts in a file are hints, and what is complete before a
// damage is kept. The progress handler (progress.h) may stop a reader or writer. Files are read
// through a window, so that reading takes little more memory than the points. One thread at a time;
// the text readers change the number locale of the process while they run.
#pragma once

#include <cstdio>
#include <iosfwd>

#include "zu/cloud/point_cloud.h"
#include "zu/foundation/read_findings.h"

class ZuFileBuff;
class ZuPointList;
class ZuStdioFile;

class ZU_API ZuPointCloudContainer : public ZuObserver {
 public:
  ZuPointCloudContainer();
  ~ZuPointCloudContainer() override;

  ZuPointCloudContainer(const ZuPointCloudContainer&) = delete;
  ZuPointCloudContainer& operator=(const ZuPointCloudContainer&) = delete;

  // A change of a cloud, passed on to the observers of the list.
  void Notify(ZuNotifyEvent* pEvent) override;

  // Adds an empty cloud with a free Id at the end of the list. The container observes every cloud
  // it has added, until one of both ends. Its notify parent is the one added last.
  ZuPointCloud* AddCloud();

  // Adds a cloud with room for uCount points; a null name leaves it unnamed. Null when there is no
  // such room.
  //
  // Required: the cloud stays in the list also then; callers fill it point by point.
  ZuPointCloud* AddCloud(unsigned int uCount, const char* szName);

  // Adds a cloud "Coo Cloud" of the points of a list: coordinates, accuracies as deviations, the
  // direction as normal, number of measurements as flag word, colour. Null for null, and when
  // memory ends.
  ZuPointCloud* AddCloud(ZuPointList* pList);

  // Removes a cloud of this container from the list and deletes it; false for null.
  //
  // Required: box and centre go on describing the clouds before the deletion.
  bool Delete(ZuPointCloud* pCloud);

  ZuPointCloud* First() const { return m_Clouds.First(); }
  ZuPointCloudList& GetClouds() { return m_Clouds; }
  const ZuPointCloudList& GetClouds() const { return m_Clouds; }

  // Points in all clouds.
  unsigned int Size() const;

  // Changes since the last complete Read or Write; 0 when there is nothing to save.
  void SetDirty() { ++m_iDirty; }
  int GetDirty() const { return m_iDirty; }

  // Takes the box and centre of a cloud into those of the container; null does nothing.
  void UpdateCenterAndBox(const ZuPointCloud* pCloud);
  const ZuBoundingBox3d& GetBox() const { return m_Box; }
  const ZuCenterPoint3d& GetCenter() const { return m_Center; }

  // Adds the clouds of a cloud file and returns the number of clouds in the list, which then have
  // the Ids 1, 2, 3 and so on. 0, container unchanged: file missing or empty, wrong magic word,
  // version below 2. A damaged cloud is dropped and the next one tried.
  int Read(const char* szPath);
  int Read(const wchar_t* szPath);

  // What the last Read met: clouds and points that are announced and missing, damaged clouds that
  // were dropped, bytes behind the last cloud.
  const ZuReadFindings& GetFindings() const { return m_Findings; }

  // Writes all clouds. 0: the file could not be opened, or not all bytes could be written.
  int Write(const char* szPath);
  int Write(const wchar_t* szPath);

  // Reads a PTS file into a new cloud; null when the file cannot be opened or there is no memory
  // for a cloud. The wide form names the cloud after the file.
  ZuPointCloud* ReadPtsFile(const char* szPath);
  ZuPointCloud* ReadPtsFile(const wchar_t* szPath);

  // Reads an ASCII PLY file whose lines have at least nine properties, x y z first and red green
  // blue as the last three of nine, into a new cloud named after the file; null as above.
  // Coordinates are rounded to float.
  ZuPointCloud* ObsolteReadPlyFile(const char* szPath);
  ZuPointCloud* ObsolteReadPlyFile(const wchar_t* szPath);

  // Write the points of all clouds as one file; see ZuPointCloud::ExportPts and ExportPly. 0: the
  // file could not be opened, or not all bytes could be written.
  int ExportPtsFile(const char* szPath) const;
  int ExportPlyFile(const char* szPath) const;

  // Whether the progress handler stopped the last file operation. What had been read until then
  // is there; what was written is not complete.
  bool IsStopped() const { return m_bStopped; }

 protected:
  // Leaves the dirty counter at 0 also after a stop, as at the end of the data.
  int Read(ZuFileBuff& buff);
  // 1 with an open stream, 0 with a null one; the stream's error flag tells of lost bytes.
  int Write(std::FILE* fp);
  ZuPointCloud* ReadPtsFile(std::FILE* fp);
  ZuPointCloud* ObsolteReadPlyFile(std::istream& stream);

  ZuPointCloud* AddCloudWithId(unsigned int uId);
  // Stands on the cloud's table beside those of the other clouds; false without memory for that.
  bool Observe(ZuPointCloud* pCloud);
  void ReadClouds(ZuFileBuff& buff, int iVersion);
  template <class Char>
  int WriteFile(const Char* szPath);

  ZuPointCloudList m_Clouds;
  ZuBoundingBox3d m_Box;     // over all clouds
  ZuCenterPoint3d m_Center;  // over all clouds
  int m_iDirty = 0;
  unsigned int m_uNextIdHint = 0;  // where AddCloud looks for a free Id; 0: behind the largest
  mutable bool m_bStopped = false;
  ZuReadFindings m_Findings;  // of the last Read
};
