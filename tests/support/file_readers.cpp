#include "tests/support/file_readers.h"

#include <fstream>
#include <new>
#include <optional>

#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/foundation/id_table.h"
#include "zu/foundation/reader.h"
#include "zu/photo/camera_list.h"
#include "zu/photo/ortho_photo.h"
#include "zu/photo/photo_list.h"
#include "zu/photo/reseau_file.h"
#include "zu/rectify/plane_list.h"
#include "zu/rectify/polygon.h"
#include "zu/transform/lokal_system.h"
#include "zu/transform/trafo2d.h"

namespace {

// A wide path that takes no memory of the heap. Of plain letters.
class WidePath {
 public:
  explicit WidePath(const char* szPath) {
    std::copy(szPath, szPath + std::min<std::size_t>(std::strlen(szPath), 1023), m_szPath);
  }
  operator const wchar_t*() const { return m_szPath; }

 private:
  wchar_t m_szPath[1024] = {};
};

// A path as the library's string, for which there may be no memory.
template <class Work>
void WithPath(const char* szPath, Work work) {
  std::optional<String> path;
  try {
    path.emplace(szPath);
  } catch (const std::bad_alloc&) {
    return;
  }
  work(*path);
}

std::string SampleFile(const char* szName) {
  std::ifstream stream(std::string(ZU_SOURCE_DIR "/samples/") + szName, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// --- Telling ---------------------------------------------------------------------------------

template <class... Values>
std::string Told(const Values&... values) {
  return Row{values...}.str;
}

std::string TellPoint(const ZuPoint& p) {
  return Told(p.GetId(), p.GetName(), p.m_dX, p.m_dY, p.m_dZ, p.GetFlag());
}

// One line a node; the chain is walked both ways.
template <class List, class TellNode>
void TellList(const List& list, TellNode tell, Lines* pLines) {
  int iForward = 0, iBackward = 0;
  for (const auto* p = list.First(); p != nullptr; p = p->Next(), ++iForward) {
    pLines->push_back(tell(*p));
    const bool bLinked = p->Next() != nullptr ? p->Next()->Previous() == p : list.Last() == p;
    if (!bLinked) pLines->push_back("broken chain");
  }
  for (const auto* p = list.Last(); p != nullptr; p = p->Previous()) ++iBackward;
  if (iForward != iBackward || iForward != list.Count()) pLines->push_back("broken chain");
}

std::string Joined(const Lines& lines) {
  std::string str;
  for (const std::string& strLine : lines) str += strLine + "; ";
  return str;
}

std::string TellPoints(const ZuPointList& list) {
  Lines lines;
  TellList(list, TellPoint, &lines);
  return Joined(lines);
}

std::string TellCamera(const ZuCamera& c) {
  return Told(c.GetId(), c.GetName(), c.m_iMode, c.m_dC, c.m_dXh, c.m_dYh, c.m_dA1, c.m_dA2,
              c.m_dR0, c.m_dRMax, c.m_dC2);
}

std::string TellPlane(const ZuPlane& p) {
  return Told(p.GetId(), p.GetName(), p.A(), p.B(), p.C(), p.D());
}

std::string TellTrafo(const ZuTrafo2d& t) {
  return Told(static_cast<int>(t.GetType()), t.GetCoef(0), t.GetCoef(1), t.GetCoef(2),
              t.GetCoef(3));
}

std::string TellZusp(const ZuZuspTrafo& z) {
  return Told(z.GetId(), z.GetName(), z.GetZuspMat()[1][1], z.GetTransMat()[1][4]) +
         TellPoints(z.GetPPList().GetPoints()) + TellPoints(z.GetBikoList().GetPoints()) +
         TellPoints(z.GetRegion().GetPoints()) + TellCamera(z.GetDistortCameraParam());
}

std::string TellPhoto(const ZuPhoto& constPhoto) {
  auto& p = const_cast<ZuPhoto&>(constPhoto);
  Lines zusps;
  TellList(p.GetZuspList(), TellZusp, &zusps);
  return Told(p.GetId(), p.GetName(), p.GetComment(), p.GetScale(), p.GetDigiRegion().Right(),
              p.GetReseauData().GetName(), p.GetRotAOR()[2][3], p.GetPosAOR()[3],
              p.GetTpsSetupId()) +
         TellCamera(p.GetCamera()) + TellTrafo(p.GetReseauPreTrafo()) +
         TellTrafo(p.GetReseauMainTrafo()) + TellPoints(p.GetRegoiList()) + Joined(zusps);
}

// A format keeps the crosses before the damage.
Lines TellReseaus(const ZuReseaufileList& list) {
  Lines lines;
  for (const ZuReseauFile* p = list.First(); p != nullptr; p = p->Next()) {
    lines.push_back(
        Told(p->GetSubId(), p->GetComment(), p->GetPhotoRegion().Right(), p->GetExifPixelWidth()));
    TellList(p->GetCrossList(), TellPoint, &lines);
  }
  return lines;
}

// Only the names tell where a cloud begins: points are kept when memory ends before the name.
Lines TellClouds(const ZuPointCloudContainer& container) {
  Lines lines;
  for (const ZuPointCloud* pCloud = container.First(); pCloud != nullptr; pCloud = pCloud->Next()) {
    ZuBoundingBox3d box;
    for (const ZuScanPoint3d& p : pCloud->GetPoints()) {
      lines.push_back(Told(p.x, p.y, p.z, p.m_uColor, static_cast<double>(p.m_fNX)));
      box.Update(p.x, p.y, p.z);
    }
    if (box.GetCount() != pCloud->GetBox().GetCount() || box.Xmax() != pCloud->GetBox().Xmax())
      lines.push_back("wrong box");
  }
  return lines;
}

// --- Readers ---------------------------------------------------------------------------------

template <class T>
class Reading : public ReadObject {
 public:
  Reading(void (*pfnRead)(T&, const char*), Lines (*pfnTell)(const T&))
      : m_pfnRead(pfnRead), m_pfnTell(pfnTell) {}
  void Read(const char* szPath) override { m_pfnRead(m_object, szPath); }
  Lines Tell() const override { return m_pfnTell(m_object); }

 private:
  T m_object;
  void (*m_pfnRead)(T&, const char*);
  Lines (*m_pfnTell)(const T&);
};

constexpr eZuPointRWMask kColumns[] = {eZuPointRWIdName, eZuPointRWX,    eZuPointRWY,
                                       eZuPointRWZ,      eZuPointRWFlag, eZuPointRWEnd};

// A list with an observer takes its points by copies.
class WatchedList : public ZuPointList {
 public:
  WatchedList() { AddObserver(&m_observer); }
  ~WatchedList() override { RemoveAllObservers(); }

 private:
  ZuObserver m_observer;
};

// A project file with every kind of record block, also those without a photo around them.
class Project : public LinkHdl {
 public:
  void Read(const char* szPath);
  Lines Tell() const;

 private:
  template <auto Member>
  int ReadInto(ZuReaderObject* pObject) {
    return (this->*Member).Read(pObject);
  }
  int ReadLocal(ZuReaderObject* pObject) { return m_iLocal = m_local.Read(pObject); }
  int ReadTrafo(ZuReaderObject* pObject) { return m_iTrafo = m_trafo.Read(pObject); }
  int ReadMeasured(ZuReaderObject* pObject) {
    m_measured.SetMask(TZuFormatTable<eZuPointRWMask>(kColumns));
    return m_measured.Read(pObject);
  }
  long GoOn(ZuReader*) { return 1; }

  ZuPhotoList m_photos;
  ZuOrthoPhotoList m_orthoPhotos;
  ZuCameraList m_cameras;
  ZuPlaneList m_planes;
  ZuLokalSystem m_local;
  ZuTrafo2d m_trafo;
  ZuPolygon m_polygon{eLPolygonIdXYZ};
  ZuPointList m_measured;
  ZuIdTable m_ids;
  ZuIdPairTable m_pairs;
  ZuIdTable2D m_grid;
  ZuMatrix m_matrix{1, 1};
  ZuVector m_vector{1};
  int m_iLocal = 0, m_iTrafo = 0;
};

void Project::Read(const char* szPath) {
  // Making a reader and its keywords is no reading: it may find no memory.
  bool bReading = false;
  try {
    ZuReader reader(szPath);
    ZuReaderObject keywords[] = {
        {"PHOTO", Link(&m_photos, &ZuPhotoList::AddPhoto)},
        {"ORTHOPHOTO", Link(&m_orthoPhotos, &ZuOrthoPhotoList::AddPhoto)},
        {"CAMERA", Link(&m_cameras, &ZuCameraList::ReadFormatFull)},
        {"PLANE", Link(&m_planes, &ZuPlaneList::AddPlane)},
        {"LOKAL", Link(this, &Project::ReadLocal)},
        {"TRAFO", Link(this, &Project::ReadTrafo)},
        {"POLYGON", Link(&m_polygon, &ZuPolygon::Read)},
        {"MEASURED", Link(this, &Project::ReadMeasured)},
        {"IDS", Link(this, &Project::ReadInto<&Project::m_ids>)},
        {"PAIRS", Link(this, &Project::ReadInto<&Project::m_pairs>)},
        {"GRID", Link(this, &Project::ReadInto<&Project::m_grid>)},
        {"MATRIX", Link(this, &Project::ReadInto<&Project::m_matrix>)},
        {"VECTOR", Link(this, &Project::ReadInto<&Project::m_vector>)},
    };
    for (ZuReaderObject& keyword : keywords) reader.RegisterObject(keyword);
    reader.SetParserErrorHdl(Link(this, &Project::GoOn));
    bReading = true;
    reader.DoProcess(false);
  } catch (const std::bad_alloc&) {
    if (bReading) throw;
  }
}

Lines Project::Tell() const {
  Lines lines;
  TellList(m_photos, TellPhoto, &lines);
  TellList(m_orthoPhotos, TellPhoto, &lines);
  TellList(m_cameras, TellCamera, &lines);
  TellList(m_planes, TellPlane, &lines);
  if (m_iLocal != 0) lines.push_back(Told(m_local.m_uIdA, m_local.m_dScale1Dist));
  if (m_iTrafo != 0) lines.push_back(TellTrafo(m_trafo));
  TellList(m_polygon.GetPoints(), TellPoint, &lines);
  TellList(m_measured, TellPoint, &lines);
  for (int i = 0; i < m_ids.Count(); ++i) lines.push_back(Told(m_ids[i]));
  for (int i = 0; i < m_pairs.Count(); ++i) {
    lines.push_back(Told(m_pairs[i].GetFirst(), m_pairs[i].GetSecond()));
  }
  for (int i = 0; i < m_grid.GetSizeY(); ++i) lines.push_back(Told(m_grid(0, i), m_grid(1, i)));
  if (m_matrix.GetZeilen() > 1) lines.push_back(Told(m_matrix[5][5]));
  if (m_vector.GetSize() > 1) lines.push_back(Told(m_vector[6]));
  return lines;
}

// --- Samples ---------------------------------------------------------------------------------

std::string Coordinates() {
  std::string str = "# a comment\r\n";
  for (int i = 1; i < 30; ++i) {
    const std::string strNumber = std::to_string(i);
    str += "point-of-the-facade-" + strNumber + " 1.5 -2.25e1, \"0.125\" ;" + strNumber + "\r\n";
  }
  return str;
}

std::string ProjectText() {
  std::string str = SampleFile("older/facade.prj");
  str.erase(str.find("MEASURE"));
  const std::string strLeft = SampleFile("chessboard/left.prj");
  str += strLeft.substr(strLeft.find("PHOTO"), strLeft.find("MEASURE") - strLeft.find("PHOTO"));
  return str +
         "PHOTO { PHOTOID 99 \"rectified facade\" TPS_SETUP_ID \"set-up 17\" ZUSPPLANE {\n"
         "  ZUSPID 1 \"facade to the west\" ACTIV 1 ZUSPTRAFO { 3 3 1 0 0 0 1 0 0 0 1 }\n"
         "  TRAFO3D { 4 4 1 0 0 5 0 1 0 6 0 0 1 7 0 0 0 1 } KAMERA 1\n"
         "  DISTORTION { 4 35.2 0 0 1e-5 0 12 \"wide angle\" }\n"
         "  DEFPOINTS { 1 0.5 0 0 2 1 0 0 3 1 1 0 } MEASPOINTS { 1 0 0 2 1 0 }\n"
         "  VALIDREGION { 0 0 10 10 } PARALLELDEF { DEFLINE { 1 \"sill\" 1 2 }\n"
         "  DEFLINE { 2 \"lintel\" 3 4 } CONSTRAINT { 1 2 0 0.5 } } } }\n"
         "ORTHOPHOTO { ID 1 \"facade in pieces.tif\" COMMENT \"the western side\"\n"
         "  PIXELSIZE { 0 0 4000 3000 } OBJECTSIZE { 0 0 20 15 } SCALE 2.5\n"
         "  PLANEINFO { 1 \"a plane of it\" } }\n"
         "CAMERA { ID 7 NAME \"a camera with a name\" MD 2 C 4.5 XH 0.25 R0 2.5 C2 1e-5 }\n"
         "PLANE { 3 \"facade of the house\" 0.5 0.5 0.7071067811865476 -12.25 }\n"
         "LOKAL { 1 101 102 4 103 101 0 0 0 101 104 5.25 0 0 0 0 0 0 }\n"
         "TRAFO { 1 -3.168 0.0099 -2.376 0 }\n"
         "POLYGON { 1 0.5 0 0 2 1 0 0 3 1 1 0 }\n"
         "MEASURED { name-of-a-point-1 1.5 2 3 0 name-of-a-point-2 4 5 6 1 }\n"
         "IDS { 17 4 205 } PAIRS { 17 4 205 206 } GRID { 2 3 11 12 21 22 31 32 }\n"
         "MATRIX { 5 5 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 2.5 }\n"
         "VECTOR { 6 1 2 3 4 5 6.5 }\n";
}

std::string CloudBytes() {
  ZuPointCloudContainer container;
  for (int i = 0; i < 2; ++i) {
    ZuPointCloud* pCloud = container.AddCloud(0, "a cloud with a name");
    for (int k = 0; k < 40; ++k) pCloud->AddPoint(ZuScanPoint3d(i + 0.5, k * 1.25, -k, k));
  }
  const TempFile file;
  if (container.Write(file.Path()) == 0) throw std::runtime_error("no cloud file");
  return file.Read();
}

std::string PtsText() {
  std::string str = "40\n";
  for (int i = 0; i < 40; ++i) str += std::to_string(i) + ".5 2.25 -1e-3 100 1 2 3\n";
  return str;
}

std::string PlyText() {
  std::string str = "ply\nformat ascii 1.0\nelement vertex 40\n";
  for (int i = 0; i < 9; ++i) str += "property double p" + std::to_string(i) + "\n";
  str += "end_header\n";
  for (int i = 0; i < 40; ++i) str += std::to_string(i) + ".5 2.25 -1e-3 0 0.5 1 10 20 30\n";
  return str;
}

template <class T>
std::function<std::unique_ptr<ReadObject>()> Make(void (*pfnRead)(T&, const char*),
                                                  Lines (*pfnTell)(const T&)) {
  return [=] { return std::make_unique<Reading<T>>(pfnRead, pfnTell); };
}

template <auto TellNode, class List>
Lines TellAll(const List& list) {
  Lines lines;
  TellList(list, TellNode, &lines);
  return lines;
}

const TZuFormatTable<eZuPointRWMask>& Columns() {
  static const TZuFormatTable<eZuPointRWMask> table(kColumns);
  return table;
}

}  // namespace

const std::vector<FileReader>& FileReaders() {
  using Points = ZuPointList;
  using Watched = WatchedList;
  using Cameras = ZuCameraList;
  using Reseaus = ZuReseaufileList;
  using Planes = ZuPlaneList;
  using Clouds = ZuPointCloudContainer;
  static const std::vector<FileReader> readers = {
      {"coordinate file", Coordinates,
       Make<Points>([](Points& list, const char* sz) { list.ReadFile(sz, Columns()); },
                    TellAll<TellPoint>)},
      {"coordinate file, observed", Coordinates,
       Make<Watched>([](Watched& list, const char* sz) { list.ReadFile(WidePath(sz), Columns()); },
                     TellAll<TellPoint>)},
      {"GSI file", [] { return SampleFile("gsi/station16.gsi"); },
       Make<Points>([](Points& list, const char* sz) { list.ReadGsiFile(sz); },
                    TellAll<TellPoint>)},
      {"camera file", [] { return SampleFile("chessboard/cameras.cam"); },
       Make<Cameras>([](Cameras& list, const char* sz) { list.Read(sz); }, TellAll<TellCamera>)},
      {"simple camera file", [] { return SampleFile("chessboard/cameras_simple.cam"); },
       Make<Cameras>([](Cameras& list, const char* sz) { list.Read(sz); }, TellAll<TellCamera>)},
      {"reseau file", [] { return SampleFile("chessboard/reseau.txt"); },
       Make<Reseaus>(
           [](Reseaus& list, const char* sz) {
             WithPath(sz, [&](const String& path) { list.ReadReseauFile(path); });
           },
           TellReseaus)},
      {"digital camera file", [] { return SampleFile("chessboard/digital_cameras.txt"); },
       Make<Reseaus>(
           [](Reseaus& list, const char* sz) {
             WithPath(sz, [&](const String& path) { list.ReadReseauFile(path); });
           },
           TellReseaus)},
      {"plane file", [] { return SampleFile("planes/walls.pln"); },
       Make<Planes>(
           [](Planes& list, const char* sz) {
             WithPath(sz, [&](const String& path) { list.ReadFile(path); });
           },
           TellAll<TellPlane>)},
      {"project file", ProjectText,
       Make<Project>([](Project& project, const char* sz) { project.Read(sz); },
                     [](const Project& project) { return project.Tell(); })},
      {"cloud file", CloudBytes,
       Make<Clouds>([](Clouds& clouds, const char* sz) { clouds.Read(sz); }, TellClouds)},
      {"PTS file", PtsText,
       Make<Clouds>([](Clouds& clouds, const char* sz) { clouds.ReadPtsFile(WidePath(sz)); },
                    TellClouds)},
      {"PLY file", PlyText,
       Make<Clouds>([](Clouds& clouds, const char* sz) { clouds.ObsolteReadPlyFile(WidePath(sz)); },
                    TellClouds)},
  };
  return readers;
}
