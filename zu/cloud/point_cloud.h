// One scan: an array of scan points with its boxes and centre, a selection, an undo stack of
// deleted points and the header record of its file.
//
// Points are plain 64-byte records side by side; every walk is one pass over them and allocates
// nothing. Coordinates have the unit of the application. One thread per cloud.
#pragma once

#include <cstdint>
#include <cstdio>
#include <vector>

#include "zu/cloud/scan_header.h"
#include "zu/cloud/scan_point3d.h"
#include "zu/foundation/list.h"
#include "zu/foundation/listnode.h"
#include "zu/foundation/observer.h"
#include "zu/numerics/bounding_box3d.h"
#include "zu/numerics/center_point3d.h"
#include "zu/numerics/point3d.h"
#include "zu/points/flag.h"

class Zu3dSelectVolume;
class ZuAffinMap3d;
class ZuFileBuff;
class ZuPointFeed;
class ZuProgress;

class ZU_API ZuPointCloud : public ZuListnode, public ZuFlag, public ZuStandardNotifier {
 public:
  // The most points Reserve takes.
  static constexpr unsigned int MaxPoints = 67108863;

  // An empty active cloud: flag word 2, empty boxes, centre (0, 0, 0).
  ZuPointCloud();

  // Copies points, undo stack, boxes, centre, header and eye, with Id, name and flags. Observers
  // stay with the cloud on which they stand.
  ZuPointCloud(const ZuPointCloud& other);
  ZuPointCloud& operator=(const ZuPointCloud& other);
  ~ZuPointCloud() override;

  // Tells the observers, all but pSkip, of a change; pHint goes along as the event's item.
  virtual void NotifyChanged(void* pHint, ZuObserver* pSkip);

  static const char* desc() { return gpDesc; }
  // The cloud of which the object is a part; null for null.
  static ZuPointCloud* cast(const ZuObject* pObject);

  ZuPointCloud* Next() const { return static_cast<ZuPointCloud*>(m_pNext); }
  ZuPointCloud* Previous() const { return static_cast<ZuPointCloud*>(m_pPrev); }

  // The nearest cloud with any of these bits in its flag word: this one or one behind it, one
  // behind it, one before it. Null where there is none.
  ZuPointCloud* First(int iMask);
  ZuPointCloud* Next(int iMask) const;
  ZuPointCloud* Previous(int iMask) const;

  bool IsActive() const { return IsFlagSet(2) != 0; }

  // Appends a copy of p; box and centre take it in, and the box of the selection if p is selected.
  void AddPoint(const ZuScanPoint3d& p);

  // Makes room for uCount points in addition to those held. Throws std::length_error
  // "vector<T> too long" above 67,108,863 points in all; std::bad_alloc without memory.
  void Reserve(unsigned int uCount);

  // Appends all points of another cloud; null does nothing. The array grows as one by AddPoint
  // does, so that many clouds can be joined one after the other.
  //
  // Required: the boxes are united as boxes, so that each box count rises by one and not by the
  // number of points. The centre counts points.
  void Insert(const ZuPointCloud* pOther);

  // Selects the points inside the volume and returns how many points are selected then.
  //
  // Required: selection only grows; points selected before stay so wherever they lie. Deselect
  // first for the volume alone.
  unsigned int Select(const Zu3dSelectVolume& volume);

  // Clears the whole selection byte of every point and empties the box of the selection.
  void Deselect();

  // Moves the selected points to the undo stack and returns their number. The others keep their
  // order.
  //
  // Required: box and centre go on describing the points before the deletion; only the box of the
  // selection is emptied. Views keep their extent while points are being cleaned away.
  unsigned int DeleteSelected();

  // Appends the points of the last deletion, unselected, behind the others. False when there is
  // none. Boxes and centre stay.
  bool UndoDelete();
  bool HasUndoData() const { return !m_aUndo.empty(); }

  // Moves every point and those of the undo stack, and forms box and centre anew. True.
  //
  // Required: normals, the eye and the box of the selection stay as they are. TransformNormals
  // turns the normals; Select forms the box of the selection anew.
  bool Transform(const ZuAffinMap3d& map);

  // Turns the normals, those of the undo stack too, as the map turns the surface, and gives them
  // the length 1: with the linear part A of the map a normal n becomes A^-T n. Beside Transform,
  // which moves the points alone. False, normals unchanged, for a map without inverse. A point
  // without a normal stays without.
  bool TransformNormals(const ZuAffinMap3d& map);

  // Keeps the eye and turns the normal of every point to it: (eye - p) / |eye - p|. A point on the
  // eye gets a normal that is not a number.
  void EstimateNormals(const ZuPoint3d& eye);

  // Gives all points the normal of the plane through about 35 of them. False, normals unchanged:
  // 35 points or fewer, or no plane.
  //
  // Required: the points the plane was fitted to turn black, their intensity included, and stay so
  // also when the fit fails: they show where the plane comes from.
  bool CalcEstimatedNormals();

  void CountNormals(unsigned int& uWithNormal, unsigned int& uTotal) const;

  // Widens boxes by the mapped points, w of the point taking part; a count rises by one a point.
  // The boxes are not reset first, so that a caller collects over several clouds. False for an
  // empty cloud.
  bool UpdateBoundingBox(ZuBoundingBox3d& box, const ZuAffinMap3d& map, bool bOnlySelected) const;
  bool UpdateBoundingBoxes(ZuBoundingBox3d& all, ZuBoundingBox3d& selected,
                           const ZuAffinMap3d& map) const;

  // Sorts the points by z, numbers before what is not a number. The order among equal z is
  // arbitrary. In place, in linear time.
  void ZSort(bool bAscending);

  // Reads one cloud of a cloud file from the buffer's position; the header record stands in it when
  // the version is above 1. 0 when the magic word of the cloud is wrong. A point with a wrong magic
  // word, or the end of the file, ends the points and is no failure.
  int Read(ZuFileBuff& buff, int iVersion);

  // Writes the cloud as it stands in a cloud file of version 2. 0 with a null stream or when the
  // stream took less.
  int Write(std::FILE* fp) const;

  // Writes the points as text, one line each by ZuScanPoint3d::WritePTS, and returns their number;
  // 0 with a null stream. The stream's error flag tells of lost bytes.
  //
  // Required: with bWithCount the first line begins with the count, then the letter d, and the
  // first point follows on the same line. Programs that take this library's files expect it;
  // ExportPts writes for all others.
  unsigned int WritePtsFile(std::FILE* fp, bool bWithCount) const;

  // Writes a PTS file as other programs read it: the count on a line of its own, then x y z,
  // followed by the intensity if any point has one and red green blue if any point has a colour.
  // Numbers have the digits that read back to the same double, intensities those that read back
  // to the same byte. Returns the number of points; 0 with a null stream.
  unsigned int ExportPts(std::FILE* fp) const;

  // Writes an ASCII PLY file with the properties x y z nx ny nz (double) red green blue (uchar).
  // Returns the number of points; 0 with a null stream.
  unsigned int ExportPly(std::FILE* fp) const;

  const std::vector<ZuScanPoint3d>& GetPoints() const { return m_aPoints; }
  unsigned int GetPointCount() const { return static_cast<unsigned int>(m_aPoints.size()); }
  const ZuBoundingBox3d& GetBox() const { return m_Box; }
  const ZuBoundingBox3d& GetSelBox() const { return m_SelBox; }
  const ZuCenterPoint3d& GetCenter() const { return m_Center; }
  const ZuPoint3d& GetEye() const { return m_pEye; }
  ZuScanHeader& GetHeader() { return m_Header; }
  const ZuScanHeader& GetHeader() const { return m_Header; }

 protected:
  friend class ZuPointCloudContainer;
  friend class ZuPointFeed;

  // The file forms as parts of a longer operation that shows its own progress. nDone of nAll points
  // were written before; a stopped writer ends after any point. *puMissing becomes how many of the
  // points that a good cloud announces the file does not hold.
  int Read(ZuFileBuff& buff, int iVersion, ZuProgress& progress, std::uint64_t* puMissing);
  int Write(std::FILE* fp, ZuProgress& progress, std::int64_t nDone, std::int64_t nAll) const;

  static const char* const gpDesc;

  std::vector<ZuScanPoint3d> m_aPoints;
  std::vector<std::vector<ZuScanPoint3d>> m_aUndo;  // one entry for each deletion
  ZuBoundingBox3d m_Box;                            // all points
  ZuBoundingBox3d m_SelBox;                         // the selected points
  ZuCenterPoint3d m_Center;                         // running mean of all points
  std::vector<unsigned char> m_aAux;                // an application's own bytes
  ZuPoint3d m_pEye;                                 // scanner position, default (0, 0, 0, 1)
  ZuScanHeader m_Header;
  unsigned int m_uWord1 = 0;
  unsigned int m_uWord2 = 0;
};

ZU_DECLARE_LIST(ZuPointCloud);

class ZU_API ZuPointCloudList : public TZuListHeader<ZuPointCloud> {
 public:
  using TZuListHeader<ZuPointCloud>::operator=;
};
