#include <map>
#include <set>

#include "zu/exchange/internal/metashape.h"
#include "zu/exchange/internal/text_scan.h"
#include "zu/exchange/internal/xml_tree.h"

namespace zu::internal {

namespace {

std::string NumberText(double d) {
  std::string strText;
  AppendNumber(d, &strText);
  return strText.substr(1);
}

// Ids of the file count from 0.
std::string FileId(unsigned uId) { return std::to_string(uId - 1); }

void AddSensor(const BlockCamera& camera, XmlElement* pSensors) {
  XmlElement& sensor = pSensors->Add("sensor");
  sensor.attributes = {{"id", FileId(camera.uId)}, {"label", camera.strModel}, {"type", "frame"}};
  const decltype(sensor.attributes) size{
      {"width", std::to_string(static_cast<long>(camera.size.dWidth))},
      {"height", std::to_string(static_cast<long>(camera.size.dHeight))}};
  sensor.Add("resolution").attributes = size;
  for (const char* szName : {"pixel_width", "pixel_height"}) {
    sensor.Add("property").attributes = {{"name", szName},
                                         {"value", NumberText(camera.dPixelSize)}};
  }
  XmlElement& calibration = sensor.Add("calibration");
  calibration.attributes = {{"type", "frame"}, {"class", "adjusted"}};
  calibration.Add("resolution").attributes = size;
  const PinholeModel& m = camera.model;
  const std::pair<const char*, double> values[] = {{"f", m.fy},
                                                   {"cx", (m.cx + 0.5) - 0.5 * camera.size.dWidth},
                                                   {"cy", (m.cy + 0.5) - 0.5 * camera.size.dHeight},
                                                   {"b1", m.fx - m.fy},
                                                   {"b2", m.skew},
                                                   {"k1", m.k[0]},
                                                   {"k2", m.k[1]},
                                                   {"k3", m.k[2]},
                                                   {"p1", m.p[1]},
                                                   {"p2", m.p[0]}};
  for (const auto& value : values) calibration.Add(value.first, NumberText(value.second));
}

void AddSystem(XmlElement* pParent) {
  XmlElement& transform = pParent->Add("transform");
  transform.Add("rotation", "1 0 0 0 1 0 0 0 1");
  transform.Add("translation", "0 0 0");
  transform.Add("scale", "1");
}

std::string TransformText(const ZuCameraPose& pose) {
  std::string strText;
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) {
      const double d = pose.R.r[3 * i + j];
      AppendNumber(j == 0 ? d : 0.0 - d, &strText);
    }
    AppendNumber(pose.X0[i], &strText);
  }
  return strText.substr(1) + " 0 0 0 1";
}

void AddCameras(const PhotoBlock& block, XmlElement* pCameras) {
  for (const BlockImage& image : block.images) {
    CheckPhotoName(image.strName, "photo " + std::to_string(image.uId), 0);
    XmlElement& camera = pCameras->Add("camera");
    camera.attributes = {{"id", FileId(image.uId)}, {"sensor_id", FileId(image.uCamera)}};
    if (image.bOriented) camera.attributes.emplace_back("component_id", "0");
    camera.attributes.emplace_back("label", image.strName);
    camera.attributes.emplace_back("enabled", image.bActive ? "true" : "false");
    if (image.bOriented) camera.Add("transform", TransformText(image.pose));
  }
}

// Points with coordinates in their order, then those that are measured alone.
void AddMarkers(const PhotoBlock& block, XmlElement* pChunk) {
  std::map<unsigned, std::vector<std::pair<unsigned, ZuPixel>>> seen;
  for (const BlockImage& image : block.images) {
    for (const BlockMeasure& measure : image.measures) {
      seen[measure.uPoint].emplace_back(image.uId, measure.pixel);
    }
  }
  XmlElement markers, locations;
  markers.strName = locations.strName = "markers";
  const auto Marker = [&](unsigned uId) -> XmlElement& {
    XmlElement& marker = markers.Add("marker");
    marker.attributes = {{"id", FileId(uId)}, {"label", std::to_string(uId)}};
    return marker;
  };
  std::set<unsigned> told;
  for (const BlockPoint& point : block.points) {
    told.insert(point.uId);
    Marker(point.uId).Add("reference").attributes = {{"x", NumberText(point.X[0])},
                                                     {"y", NumberText(point.X[1])},
                                                     {"z", NumberText(point.X[2])},
                                                     {"enabled", "true"}};
  }
  for (const auto& entry : seen) {
    if (told.count(entry.first) == 0) Marker(entry.first);
    XmlElement& marker = locations.Add("marker");
    marker.attributes = {{"marker_id", FileId(entry.first)}};
    for (const auto& place : entry.second) {
      const auto corner = ZuPixelCast<ZuPixelFromCorner>(place.second, ZuImageSize{});
      marker.Add("location").attributes = {{"camera_id", FileId(place.first)},
                                           {"pinned", "true"},
                                           {"x", NumberText(corner.x)},
                                           {"y", NumberText(corner.y)}};
    }
  }
  pChunk->children.push_back(std::move(markers));
  XmlElement& frames = pChunk->Add("frames");
  frames.attributes = {{"next_id", "1"}};
  XmlElement& frame = frames.Add("frame");
  frame.attributes = {{"id", "0"}};
  frame.children.push_back(std::move(locations));
}

}  // namespace

const BlockNeeds kMetashapeNeeds{
    {kFitFocal | kFitSkew | kFitK1 | kFitK2 | kFitK3 | kFitTangential}, false, false};

PinholeModel ThroughMetashape(const PinholeModel& model) {
  PinholeModel through = model;
  through.fx = model.fy + (model.fx - model.fy);
  return through;
}

std::vector<ZuExchangeFile> WriteMetashape(const PhotoBlock& block, const ZuExportOptions& options,
                                           ZuExchangeReport* pReport) {
  for (ZuExchangedCamera& camera : pReport->cameras) camera.strModel = "frame";
  XmlElement document;
  document.strName = "document";
  document.attributes = {{"version", "1.5.0"}};
  XmlElement& chunk = document.Add("chunk");
  chunk.attributes = {{"label", "Chunk 1"}, {"enabled", "true"}};
  XmlElement& sensors = chunk.Add("sensors");
  for (const BlockCamera& camera : block.cameras) AddSensor(camera, &sensors);
  XmlElement& components = chunk.Add("components");
  components.attributes = {{"next_id", "1"}, {"active_id", "0"}};
  XmlElement& component = components.Add("component");
  component.attributes = {{"id", "0"}, {"label", "Component 1"}};
  AddSystem(&component);
  AddCameras(block, &chunk.Add("cameras"));
  AddMarkers(block, &chunk);
  chunk.Add("reference",
            "LOCAL_CS[\"Local Coordinates (m)\",LOCAL_DATUM[\"Local Datum\",0],"
            "UNIT[\"metre\",1,AUTHORITY[\"EPSG\",\"9001\"]]]");
  AddSystem(&chunk);
  return {{options.strName, WriteXml(document)}};
}

}  // namespace zu::internal
