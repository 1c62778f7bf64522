#include "zu/mesh/internal/triangulate.h"

#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Constrained_triangulation_plus_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Spatial_sort_traits_adapter_2.h>
#include <CGAL/Triangulation_vertex_base_with_info_2.h>
#include <CGAL/property_map.h>
#include <CGAL/spatial_sort.h>

#include <numeric>

namespace {

struct PlaceIndex {
  int i = -1;  // a crossing until it is numbered
};

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using VertexBase = CGAL::Triangulation_vertex_base_with_info_2<PlaceIndex, Kernel>;
using FaceBase = CGAL::Constrained_triangulation_face_base_2<Kernel>;
using Structure = CGAL::Triangulation_data_structure_2<VertexBase, FaceBase>;
using Delaunay =
    CGAL::Constrained_Delaunay_triangulation_2<Kernel, Structure, CGAL::Exact_predicates_tag>;
// Knows which breakline an edge is a part of.
using Triangulation = CGAL::Constrained_triangulation_plus_2<Delaunay>;
using Vertex = Triangulation::Vertex_handle;

std::vector<Vertex> InsertPlaces(const std::vector<ZuPoint2d>& places, Triangulation* pResult) {
  std::vector<Kernel::Point_2> points;
  points.reserve(places.size());
  for (const ZuPoint2d& place : places) points.emplace_back(place.x, place.y);
  std::vector<size_t> order(places.size());
  std::iota(order.begin(), order.end(), size_t{0});
  using Map = CGAL::Pointer_property_map<Kernel::Point_2>::type;
  CGAL::spatial_sort(
      order.begin(), order.end(),
      CGAL::Spatial_sort_traits_adapter_2<Kernel, Map>(CGAL::make_property_map(points)));
  std::vector<Vertex> vertices(places.size());
  Triangulation::Face_handle hint;
  for (const size_t u : order) {
    vertices[u] = pResult->insert(points[u], hint);
    vertices[u]->info().i = static_cast<int>(u);
    hint = vertices[u]->face();
  }
  return vertices;
}

ZuBreakCrossing CrossingAt(const Triangulation& triangulation, Vertex vertex) {
  ZuBreakCrossing crossing;
  crossing.place = ZuPoint2d(vertex->point().x(), vertex->point().y());
  auto edge = triangulation.incident_edges(vertex);
  const auto end = edge;
  do {
    const Vertex other =
        edge->first->vertex(edge->second == Triangulation::ccw(edge->first->index(vertex))
                                ? Triangulation::cw(edge->first->index(vertex))
                                : Triangulation::ccw(edge->first->index(vertex)));
    if (triangulation.is_infinite(edge) || !triangulation.is_constrained(*edge)) continue;
    for (auto c = triangulation.contexts_begin(vertex, other);
         c != triangulation.contexts_end(vertex, other); ++c) {
      auto last = c->vertices_end();
      --last;
      const Vertex from = *c->vertices_begin(), to = *last;
      const Kernel::Vector_2 way = to->point() - from->point();
      const double dShare = (vertex->point() - from->point()) * way / (way * way);
      crossing.shares.push_back({from->info().i, to->info().i, dShare});
    }
  } while (++edge != end);
  return crossing;
}

}  // namespace

ZuTriangulation ZuTriangulatePlaces(const std::vector<ZuPoint2d>& places,
                                    const std::vector<std::pair<int, int>>& segments) {
  Triangulation triangulation;
  const std::vector<Vertex> vertices = InsertPlaces(places, &triangulation);
  for (const auto& [iFrom, iTo] : segments) {
    triangulation.insert_constraint(vertices[static_cast<size_t>(iFrom)],
                                    vertices[static_cast<size_t>(iTo)]);
  }
  ZuTriangulation result;
  for (const Vertex vertex : triangulation.finite_vertex_handles()) {
    if (vertex->info().i >= 0) continue;
    result.crossings.push_back(CrossingAt(triangulation, vertex));
  }
  int iNext = static_cast<int>(places.size());
  for (const Vertex vertex : triangulation.finite_vertex_handles()) {
    if (vertex->info().i < 0) vertex->info().i = iNext++;
  }
  if (triangulation.dimension() < 2) return result;
  result.triangles.reserve(triangulation.number_of_faces());
  for (const auto face : triangulation.finite_face_handles()) {
    result.triangles.push_back(
        {face->vertex(0)->info().i, face->vertex(1)->info().i, face->vertex(2)->info().i});
  }
  return result;
}
