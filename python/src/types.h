// Objects of the library as Python holds them.
#pragma once

#include <optional>
#include <string>

#include "values.h"
#include "zu/points/point_list.h"
#include "zu/points/table.h"

struct PyPoints {
  ZuPointList list;
  std::optional<ZuTableForm> form;  // of the file it was read from
  Gate gate;
};

// Points of an argument: a PointList, which then is in use, or an n x 3 array, whose rows are
// numbered from 1.
class PointsArgument {
 public:
  PointsArgument(const py::object& value, const char* szArgument);
  const ZuPointList& List() const { return *m_pList; }
  // List and name of the argument are of that kind.
  bool IsArray() const { return m_own.has_value(); }

 private:
  py::object m_keep;
  std::optional<ZuPointList> m_own;
  std::optional<Reading> m_reading;
  const ZuPointList* m_pList = nullptr;
};

// Columns of points: "id,x,y,z". Raises ValueError for a word that is none.
std::vector<eZuPointRWMask> ToColumns(const std::string& strColumns);

// A file that is whole or not there: written beside its place, put there at the end.
class ResultFile {
 public:
  explicit ResultFile(const std::string& strPath);
  ~ResultFile();
  ResultFile(const ResultFile&) = delete;
  ResultFile& operator=(const ResultFile&) = delete;

  const std::string& Path() const { return m_strTemp; }  // to write to
  // Raises zu.WriteError where the writing or the renaming failed. With the interpreter's lock.
  void Finish(bool bWritten);

 private:
  std::string m_strPath, m_strTemp;
  bool m_bDone = false;
};

void BindCloudMoments(py::module_& m);
void BindClouds(py::module_& m);
void BindConstructions(py::module_& m);
void BindExchange(py::module_& m);
void BindJoining(py::module_& m);
void BindNetworks(py::module_& m);
void BindPictures(py::module_& m);
void BindPoints(py::module_& m);
void BindProjects(py::module_& m);
void BindPlanes(py::module_& m);
void BindSimilarity(py::module_& m);
void BindTrafo2d(py::module_& m);
