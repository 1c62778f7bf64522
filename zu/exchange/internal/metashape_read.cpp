// <document><chunk>
//   <sensors><sensor id label type><resolution width height/><property name="pixel_width" value/>
//     <calibration class="adjusted"><f/><cx/><cy/><b1/><b2/><k1/>...<k4/><p1/>...<p4/>
//   <components><component id><transform><rotation/><translation/><scale/>
//   <cameras><camera id sensor_id component_id label enabled><transform>4 x 4</transform>
//   <markers><marker id label><reference x y z/>
//   <frames><frame><markers><marker marker_id><location camera_id x y/>
//   <transform>, of the chunk, and <reference>, its coordinate system
//
// Ids count from 0, here from 1. Pixels count from the corner of the first one, cx and cy from the
// middle of the image. A camera's transform goes from its own system (x right, y down, z ahead) to
// the chunk's, that of component or chunk from there to the reference.
#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "zu/exchange/internal/metashape.h"
#include "zu/exchange/internal/text_scan.h"
#include "zu/exchange/internal/xml_tree.h"
#include "zu/foundation/number_text.h"
#include "zu/foundation/strict_number.h"

namespace zu::internal {

namespace {

using Turn = std::array<double, 9>;

struct ChunkSystem {
  Turn r{1, 0, 0, 0, 1, 0, 0, 0, 1};
  std::array<double, 3> t{};
  double dScale = 1.0;

  bool operator==(const ChunkSystem&) const = default;
};

bool IsOn(const XmlElement& element, const char* szName) {
  const std::string* p = element.Attribute(szName);
  return p == nullptr || (*p != "false" && *p != "0" && *p != "no");
}

class MetashapeReader {
 public:
  MetashapeReader(const ZuExchangeFile& file, const ZuImportOptions& options,
                  ZuExchangeReport* pReport)
      : m_file(file), m_options(options), m_pReport(pReport) {}

  PhotoBlock Read() {
    const XmlElement root = ReadXml(m_file);
    const XmlElement* pChunk = root.strName == "chunk" ? &root : root.Find("chunk");
    if (pChunk == nullptr)
      Fail(root, "is XML, but no camera file of Metashape", "<document> with a <chunk>");
    const auto IsChunk = [](const XmlElement& element) { return element.strName == "chunk"; };
    if (std::count_if(root.children.begin(), root.children.end(), IsChunk) > 1) {
      Warn("several chunks; all but the first are left out");
    }
    ReadSystems(*pChunk);
    if (const XmlElement* p = pChunk->Find("sensors")) {
      for (const XmlElement& sensor : p->children) ReadSensor(sensor);
    }
    if (const XmlElement* p = pChunk->Find("cameras")) ReadCameras(*p);
    if (const XmlElement* p = pChunk->Find("markers")) ReadMarkers(*p);
    if (const XmlElement* p = pChunk->Find("frames")) ReadFrames(*p);
    Finish();
    return std::move(m_block);
  }

 private:
  [[noreturn]] void Fail(const XmlElement& element, const std::string& strText,
                         const std::string& strRight) const {
    FailExchange(m_file.strName, element.uLine, strText, strRight);
  }
  void Warn(const std::string& strText) { WarnExchange(m_file.strName, strText, m_pReport); }

  double NumberIn(const XmlElement& element, const std::string& strText) const {
    double d = 0.0;
    if (!ZuParseNumber(strText, &d) || !std::isfinite(d)) {
      Fail(element, '<' + element.strName + "> has " + ZuQuoted(strText) + ", which is no number",
           "a number such as 12.345");
    }
    return d;
  }

  std::vector<double> NumbersIn(const XmlElement& element, std::size_t uNumber) const {
    std::string strText = element.strText;
    std::replace(strText.begin(), strText.end(), '\n', ' ');
    std::vector<double> numbers;
    std::string_view text = strText;
    for (std::string_view word; !(word = TakeWord(&text)).empty();) {
      numbers.push_back(NumberIn(element, std::string(word)));
    }
    if (numbers.size() != uNumber) {
      Fail(element, '<' + element.strName + "> has " + std::to_string(numbers.size()) + " numbers",
           std::to_string(uNumber) + " of them");
    }
    return numbers;
  }

  double NumberAt(const XmlElement& element, const char* szName) const {
    const std::string* p = element.Attribute(szName);
    if (p == nullptr) {
      Fail(element, '<' + element.strName + "> without " + szName,
           std::string(szName) + "=\"...\"");
    }
    return NumberIn(element, *p);
  }

  // Of an attribute, one more than the file tells.
  unsigned IdAt(const XmlElement& element, const char* szName) const {
    const double d = NumberAt(element, szName);
    if (!(d >= 0.0 && d <= 4294967294.0 && d == std::floor(d))) {
      Fail(element, '<' + element.strName + "> has an id that has no place in a project",
           "a whole number from 0 to 4294967294");
    }
    return static_cast<unsigned>(d) + 1U;
  }

  unsigned NewIdAt(const XmlElement& element, std::set<unsigned>* pSeen) const {
    const unsigned uId = IdAt(element, "id");
    if (!pSeen->insert(uId).second) {
      Fail(element, '<' + element.strName + "> " + std::to_string(uId - 1) + " stands there twice",
           "each id once");
    }
    return uId;
  }

  void CheckTurn(const XmlElement& element, const Turn& r) const {
    if (!IsRotation(r))
      Fail(element, '<' + element.strName + "> is no rotation", "an orthonormal matrix");
  }

  // False where the element has none.
  bool ReadSystem(const XmlElement& element, ChunkSystem* pSystem) const {
    const XmlElement* pTransform = element.Find("transform");
    if (pTransform == nullptr) return false;
    bool bAny = false;
    const auto Part = [&](const char* szName) -> const XmlElement* {
      const XmlElement* p = pTransform->Find(szName);
      if (p == nullptr || p->strText.empty()) return nullptr;
      bAny = true;
      return p;
    };
    if (const XmlElement* p = Part("rotation")) {
      const std::vector<double> numbers = NumbersIn(*p, 9);
      std::copy(numbers.begin(), numbers.end(), pSystem->r.begin());
      CheckTurn(*p, pSystem->r);
    }
    if (const XmlElement* p = Part("translation")) {
      const std::vector<double> numbers = NumbersIn(*p, 3);
      std::copy(numbers.begin(), numbers.end(), pSystem->t.begin());
    }
    if (const XmlElement* p = Part("scale")) {
      pSystem->dScale = NumbersIn(*p, 1)[0];
      if (!(pSystem->dScale > 0.0)) Fail(*p, "a scale that is not above 0", "one above 0");
    }
    return bAny;
  }

  void ReadSystems(const XmlElement& chunk) {
    m_bChunk = ReadSystem(chunk, &m_chunk);
    bool bAny = m_bChunk;
    if (const XmlElement* p = chunk.Find("components")) {
      for (const XmlElement& component : p->children) {
        if (component.strName != "component") continue;
        ChunkSystem system;
        if (!ReadSystem(component, &system)) continue;
        m_components[IdAt(component, "id")] = system;
        bAny = true;
      }
    }
    const XmlElement* pReference = chunk.Find("reference");
    m_bLocal = pReference == nullptr || pReference->strText.empty() ||
               pReference->strText.rfind("LOCAL", 0) == 0;
    const char* szTold =
        !bAny ? "the chunk has no transform: coordinates are in its own system"
        : !m_options.bTransform
            ? "coordinates are in the chunk's own system; its transform is not applied"
        : m_bLocal
            ? "coordinates are in the system of the references; the chunk's transform is applied"
            : "the chunk's transform is applied: coordinates are geocentric";
    NoteExchange(m_file.strName, szTold, m_pReport);
  }

  void ReadSensor(const XmlElement& sensor) {
    if (sensor.strName != "sensor") return;
    const unsigned uId = NewIdAt(sensor, &m_sensorIds);
    const XmlElement* pCalibration = nullptr;
    for (const XmlElement& child : sensor.children) {
      if (child.strName != "calibration") continue;
      const std::string* pClass = child.Attribute("class");
      if (pCalibration == nullptr || (pClass != nullptr && *pClass == "adjusted"))
        pCalibration = &child;
    }
    const std::string* pType = sensor.Attribute("type");
    const std::string strType = pType == nullptr ? "frame" : *pType;
    const XmlElement* pSize = sensor.Find("resolution");
    if (pSize == nullptr && pCalibration != nullptr) pSize = pCalibration->Find("resolution");
    if ((strType != "frame" && strType != "fisheye") || pCalibration == nullptr ||
        pCalibration->Find("f") == nullptr || pSize == nullptr) {
      Warn("sensor " + std::to_string(uId - 1) + ", " + strType +
           ", is no frame or fisheye camera with resolution and calibration; its cameras are left "
           "out");
      return;
    }
    BlockCamera camera;
    camera.uId = uId;
    camera.strModel = strType;
    const std::string* pLabel = sensor.Attribute("label");
    camera.strName = PlainName(pLabel == nullptr ? "" : *pLabel);
    camera.size = {NumberAt(*pSize, "width"), NumberAt(*pSize, "height")};
    CheckImageSize(camera.size, m_file.strName, pSize->uLine);
    camera.dPixelSize = PixelSizeOf(sensor);
    camera.model = ModelOf(*pCalibration, camera.size);
    if (strType == "fisheye") camera.model.eLens = Lens::Equidistant;
    m_cameras.emplace(uId, camera);
  }

  // In mm; 0 where the file tells none that is sound.
  double PixelSizeOf(const XmlElement& sensor) const {
    constexpr double kSmallest = 1e-6, kLargest = 1e3;
    for (const XmlElement& property : sensor.children) {
      const std::string* pName = property.Attribute("name");
      if (property.strName != "property" || pName == nullptr || *pName != "pixel_width") continue;
      const double d = NumberAt(property, "value");
      if (d >= kSmallest && d <= kLargest) return d;
    }
    return 0.0;
  }

  PinholeModel ModelOf(const XmlElement& calibration, const ZuImageSize& size) const {
    const auto Value = [&](const char* szName) {
      const XmlElement* p = calibration.Find(szName);
      return p == nullptr ? 0.0 : NumbersIn(*p, 1)[0];
    };
    PinholeModel model;
    model.fy = Value("f");
    model.fx = model.fy + Value("b1");
    if (!(model.fy > 0.0) || !(model.fx > 0.0))
      Fail(calibration, "a focal length that is not above 0", "f and f + b1 above 0");
    model.skew = Value("b2");
    model.cx = (Value("cx") + 0.5 * size.dWidth) - 0.5;
    model.cy = (Value("cy") + 0.5 * size.dHeight) - 0.5;
    model.k = {Value("k1"), Value("k2"), Value("k3"), 0.0, 0.0, 0.0, Value("k4")};
    model.p = {Value("p2"), Value("p1")};
    model.q = {Value("p3"), Value("p4")};
    return model;
  }

  // Groups hold cameras, too.
  void ReadCameras(const XmlElement& parent) {
    for (const XmlElement& child : parent.children) {
      if (child.strName == "group") ReadCameras(child);
      if (child.strName == "camera") ReadCamera(child);
    }
  }

  void ReadCamera(const XmlElement& camera) {
    BlockImage image;
    image.uId = NewIdAt(camera, &m_imageIds);
    if (camera.Attribute("master_id") != nullptr || camera.Attribute("sensor_id") == nullptr) {
      ++m_uLeftOut;
      return;
    }
    image.uCamera = IdAt(camera, "sensor_id");
    if (m_sensorIds.count(image.uCamera) == 0) {
      Fail(camera,
           "camera " + std::to_string(image.uId - 1) + " has sensor " +
               std::to_string(image.uCamera - 1) + ", which is none of the sensors",
           "the id of a sensor");
    }
    const std::string* pLabel = camera.Attribute("label");
    image.strName = pLabel == nullptr ? "" : *pLabel;
    CheckPhotoName(image.strName, m_file.strName, camera.uLine);
    if (m_cameras.count(image.uCamera) == 0) {
      ++m_uLeftOut;
      return;
    }
    image.bActive = IsOn(camera, "enabled");
    const XmlElement* pTransform = camera.Find("transform");
    image.bOriented = pTransform != nullptr && !pTransform->strText.empty();
    if (image.bOriented) image.pose = PoseOf(*pTransform, SystemOf(camera));
    m_places[image.uId] = m_block.images.size();
    m_block.images.push_back(std::move(image));
  }

  const ChunkSystem* SystemOf(const XmlElement& camera) const {
    if (!m_options.bTransform) return nullptr;
    if (camera.Attribute("component_id") != nullptr) {
      const auto at = m_components.find(IdAt(camera, "component_id"));
      if (at != m_components.end()) return &at->second;
    }
    return m_bChunk ? &m_chunk : nullptr;
  }

  ZuCameraPose PoseOf(const XmlElement& transform, const ChunkSystem* pSystem) const {
    const std::vector<double> m = NumbersIn(transform, 16);
    Turn r{m[0], m[1], m[2], m[4], m[5], m[6], m[8], m[9], m[10]};
    std::array<double, 3> X{m[3], m[7], m[11]};
    CheckTurn(transform, r);
    if (m[12] != 0.0 || m[13] != 0.0 || m[14] != 0.0 || m[15] != 1.0) {
      Fail(transform, "the last row of <transform> is not 0 0 0 1", "4 x 4 numbers by rows");
    }
    // What changes nothing keeps the bits.
    if (pSystem != nullptr && *pSystem != ChunkSystem()) {
      const Turn a = r;
      const std::array<double, 3> Y = X;
      for (size_t i = 0; i < 3; ++i) {
        const double* p = &pSystem->r[3 * i];
        for (size_t j = 0; j < 3; ++j)
          r[3 * i + j] = p[0] * a[j] + p[1] * a[3 + j] + p[2] * a[6 + j];
        X[i] = pSystem->dScale * (p[0] * Y[0] + p[1] * Y[1] + p[2] * Y[2]) + pSystem->t[i];
      }
    }
    for (size_t i = 0; i < 9; ++i) r[i] = i % 3 == 0 ? r[i] : 0.0 - r[i];
    const ZuCameraPose pose{ZuRotation(r), X};
    if (!IsFinitePose(pose)) Fail(transform, "the position is not finite", "finite numbers");
    return pose;
  }

  void ReadMarkers(const XmlElement& parent) {
    for (const XmlElement& marker : parent.children) {
      if (marker.strName == "group") ReadMarkers(marker);
      if (marker.strName != "marker") continue;
      const unsigned uId = NewIdAt(marker, &m_markerIds);
      const XmlElement* p = marker.Find("reference");
      if (p == nullptr || p->Attribute("x") == nullptr || p->Attribute("y") == nullptr ||
          p->Attribute("z") == nullptr) {
        continue;
      }
      const BlockPoint point{uId, {NumberAt(*p, "x"), NumberAt(*p, "y"), NumberAt(*p, "z")}};
      if (m_bLocal) m_block.points.push_back(point);
      if (!m_bLocal) ++m_uNotLocal;
    }
  }

  void ReadFrames(const XmlElement& frames) {
    const XmlElement* pFrame = frames.Find("frame");
    if (frames.children.size() > 1) Warn("several frames; all but the first are left out");
    const XmlElement* pMarkers = pFrame == nullptr ? nullptr : pFrame->Find("markers");
    if (pMarkers == nullptr) return;
    for (const XmlElement& marker : pMarkers->children) {
      if (marker.strName != "marker") continue;
      const unsigned uId = IdAt(marker, "marker_id");
      if (m_markerIds.count(uId) == 0) {
        Fail(marker,
             "locations of marker " + std::to_string(uId - 1) + ", which is none of the markers",
             "the id of a marker");
      }
      for (const XmlElement& location : marker.children) {
        if (location.strName == "location") ReadLocation(location, uId);
      }
    }
  }

  void ReadLocation(const XmlElement& location, unsigned uMarker) {
    const unsigned uImage = IdAt(location, "camera_id");
    const ZuPixelFromCorner corner(NumberAt(location, "x"), NumberAt(location, "y"));
    if (m_imageIds.count(uImage) == 0) {
      Fail(location,
           "a location in camera " + std::to_string(uImage - 1) + ", which is none of the cameras",
           "the id of a camera");
    }
    const auto at = m_places.find(uImage);
    if (at == m_places.end() || !IsOn(location, "valid")) return;
    m_block.images[at->second].measures.push_back(
        {uMarker, ZuPixelCast<ZuPixel>(corner, ZuImageSize{})});
  }

  void Finish() {
    if (m_uLeftOut > 0) {
      Warn(std::to_string(m_uLeftOut) +
           " cameras without a sensor of their own that is read; left out");
    }
    if (m_uNotLocal > 0) {
      Warn(std::to_string(m_uNotLocal) +
           " references of markers, which are not in the system of the cameras; left out");
    }
    std::set<unsigned> used;
    std::size_t uDropped = 0;
    for (BlockImage& image : m_block.images) {
      used.insert(image.uCamera);
      uDropped += DropSecondMeasures(&image);
    }
    WarnSecondMeasures(m_file.strName, uDropped, m_pReport);
    for (const auto& entry : m_cameras) {
      if (used.count(entry.first) > 0) {
        m_block.cameras.push_back(entry.second);
      } else {
        Warn("sensor " + std::to_string(entry.first - 1) + " has no camera; left out");
      }
    }
  }

  const ZuExchangeFile& m_file;
  const ZuImportOptions& m_options;
  ZuExchangeReport* m_pReport;
  PhotoBlock m_block;
  ChunkSystem m_chunk;
  bool m_bChunk = false, m_bLocal = true;
  std::map<unsigned, ChunkSystem> m_components;
  std::map<unsigned, BlockCamera> m_cameras;
  std::set<unsigned> m_sensorIds, m_imageIds, m_markerIds;
  std::map<unsigned, std::size_t> m_places;  // of the images
  std::size_t m_uLeftOut = 0, m_uNotLocal = 0;
};

}  // namespace

PhotoBlock ReadMetashape(const std::vector<ZuExchangeFile>& files, const ZuImportOptions& options,
                         ZuExchangeReport* pReport) {
  return MetashapeReader(OneFile(files), options, pReport).Read();
}

}  // namespace zu::internal
