// zu photo info: the photos of a project, with their orientations in the convention asked for.
#include <cmath>
#include <memory>

#include "commands.h"
#include "id_list.h"
#include "project_input.h"
#include "text_table.h"
#include "zu/numerics/rotation_convention.h"

namespace cli {

namespace {

struct InfoValues {
  std::string strPath, strPhotos, strRotation, strAngle;
  bool bPartial = false;

  bool IsAsked() const { return !strRotation.empty() || !strAngle.empty(); }
};

// A rotation as named numbers.
class NamedRotation {
 public:
  NamedRotation(std::string strConvention, std::string strUnit)
      : m_strConvention(std::move(strConvention)), m_strUnit(std::move(strUnit)) {}

  void Add(const char* szName, double d) { m_values.emplace_back(szName, d); }
  void Add(const char* szName, ZuRad angle) {
    m_values.emplace_back(szName + ('_' + m_strUnit), m_strUnit == "rad"   ? angle.value
                                                      : m_strUnit == "deg" ? ZuDeg(angle).value
                                                                           : ZuGon(angle).value);
  }
  template <class Angles>
  void CheckGimbal(const Angles& angles) {
    m_bGimbal = angles.IsGimbal();
  }
  template <size_t n>
  void Add(const std::array<const char*, n>& names, const std::array<double, n>& values) {
    for (size_t i = 0; i < n; ++i) Add(names[i], values[i]);
  }

  cli::Json Json() const {
    cli::Json json{{"convention", m_strConvention}};
    for (const auto& value : m_values) json[value.first] = value.second;
    json["gimbal"] = m_bGimbal;
    return json;
  }
  std::string Text() const {
    std::string strText = "  rotation " + m_strConvention + ':';
    for (const auto& value : m_values) {
      strText += ' ' + value.first + ' ' + Shortest(value.second);
    }
    return strText + (m_bGimbal ? "; gimbal: first and third angle are one turn\n" : "\n");
  }

 private:
  std::string m_strConvention, m_strUnit;
  std::vector<std::pair<std::string, double>> m_values;
  bool m_bGimbal = false;
};

NamedRotation RotationOf(const ZuPhoto& photo, const InfoValues& values) {
  const std::string strConvention = values.strRotation.empty() ? "abc" : values.strRotation;
  const bool bCamera = strConvention == "opencv" || strConvention == "colmap";
  NamedRotation named(strConvention, bCamera                   ? "rad"
                                     : values.strAngle.empty() ? "gon"
                                                               : values.strAngle);
  ZuCameraPose pose{ZuRotation(photo.GetRotAOR()), {}};
  photo.GetPosAOR(&pose.X0[0], &pose.X0[1], &pose.X0[2]);
  if (strConvention == "abc") {
    const auto angles = ZuAnglesAbc::From(pose.R);
    named.Add("a", angles.a);
    named.Add("b", angles.b);
    named.Add("c", angles.c);
    named.CheckGimbal(angles);
  } else if (strConvention == "opk") {
    const auto angles = ZuAnglesOpk::From(pose.R);
    named.Add("omega", angles.omega);
    named.Add("phi", angles.phi);
    named.Add("kappa", angles.kappa);
    named.CheckGimbal(angles);
  } else if (strConvention == "pok") {
    const auto angles = ZuAnglesPok::From(pose.R);
    named.Add("phi", angles.phi);
    named.Add("omega", angles.omega);
    named.Add("kappa", angles.kappa);
    named.CheckGimbal(angles);
  } else if (strConvention == "ypr") {
    const auto angles = ZuAnglesYpr::From(pose.R);
    named.Add("yaw", angles.yaw);
    named.Add("pitch", angles.pitch);
    named.Add("roll", angles.roll);
    named.CheckGimbal(angles);
  } else if (strConvention == "opencv") {
    named.Add<3>({"rx_rad", "ry_rad", "rz_rad"}, ZuVectorOpenCv::From(pose.R).v);
  } else {
    const auto q = ZuQuaternionColmap::From(pose.R);
    named.Add<4>({"qw", "qx", "qy", "qz"}, {q.w, q.x, q.y, q.z});
  }
  if (bCamera) named.Add<3>({"tx", "ty", "tz"}, ZuToOpenCv(pose).t);
  return named;
}

struct Angles {
  double a = 0.0, b = 0.0, c = 0.0;
};

Angles AnglesOf(const ZuPhoto& photo) {
  Angles angles;
  photo.GetRotAOR(&angles.a, &angles.b, &angles.c);
  return angles;
}

Json RegionJson(const ZuRegion& region) {
  return {region.Left(), region.Bottom(), region.Right(), region.Top()};
}

// strLacks: what the orientation lacks; empty for an oriented photo.
Json PhotoJson(const ZuPhoto& photo, int iMeasured, const std::string& strLacks,
               const InfoValues& values) {
  Json json;
  json["id"] = photo.GetId();
  json["name"] = photo.GetName().chars();
  json["comment"] = photo.GetComment().chars();
  json["digital"] = photo.IsDigital();
  json["state"] = photo.GetActiveFlag();
  json["oriented"] = strLacks.empty();
  json["camera"] = photo.GetCamera().GetId();
  json["reseau"] = photo.GetReseauData().GetName().chars();
  json["digital_region"] = RegionJson(photo.GetDigiRegion());
  json["biko_region"] = RegionJson(photo.GetBikoRegion());
  json["pixel_size"] = photo.GetPixelSize();
  json["transformation"] = photo.GetReseauTrafoName();
  const ZuVector& X0 = photo.GetPosAOR();
  json["position"] = {X0[1], X0[2], X0[3]};
  const Angles angles = AnglesOf(photo);
  json["angles_rad"] = {{"x", angles.a}, {"y", angles.b}, {"z", angles.c}};
  if (strLacks.empty() && values.IsAsked()) json["rotation_as"] = RotationOf(photo, values).Json();
  json["measured"] = iMeasured;
  json["rectifications"] = Json::array();
  for (const ZuZuspTrafo* p = photo.FirstZuspTrafo(); p != nullptr; p = p->Next()) {
    json["rectifications"].push_back(
        Json{{"id", p->GetId()}, {"name", p->GetName().chars()}, {"active", p->IsActive()}});
  }
  return json;
}

void PrintPhoto(const ZuPhoto& photo, int iMeasured, const std::string& strLacks,
                const InfoValues& values, std::ostream& stream) {
  stream << "Photo " << ZuPhotoGuiString(&photo, false).chars();
  if (!photo.GetComment().empty()) stream << " (" << photo.GetComment().chars() << ")";
  stream << "\n  " << (photo.IsDigital() ? "digital" : "analog") << ", "
         << (photo.IsActive()   ? "active"
             : photo.IsExtern() ? "external"
                                : "inactive")
         << ", " << (strLacks.empty() ? "oriented" : "not oriented") << ", camera "
         << photo.GetCamera().GetId() << " \"" << photo.GetCamera().GetName().chars()
         << "\", reseau \"" << photo.GetReseauData().GetName().chars() << "\" "
         << photo.GetReseauData().GetId() << '\n';
  const ZuRegion& digi = photo.GetDigiRegion();
  const ZuRegion& biko = photo.GetBikoRegion();
  stream << "  image " << Shortest(digi.Width() + 1.0) << " x " << Shortest(digi.Height() + 1.0)
         << " pixels, " << Fixed(std::fabs(biko.Width()), 4) << " x "
         << Fixed(std::fabs(biko.Height()), 4) << " mm between the outer pixels, pixel "
         << Fixed(photo.GetPixelSize() * 1000.0, 3) << " um\n";
  if (photo.HasAOR()) {
    const ZuVector& X0 = photo.GetPosAOR();
    const Angles angles = AnglesOf(photo);
    stream << "  position " << Fixed(X0[1], 4) << ' ' << Fixed(X0[2], 4) << ' ' << Fixed(X0[3], 4)
           << '\n';
    if (!strLacks.empty()) {
      stream << "  it " << strLacks << '\n';
    } else if (values.IsAsked()) {
      stream << RotationOf(photo, values).Text();
    } else {
      stream << "  angles, R = Ry(b) Rx(a) Rz(c): about X a " << Angle(angles.a)
             << "\n                                 about Y b " << Angle(angles.b)
             << "\n                                 about Z c " << Angle(angles.c) << '\n';
    }
  }
  stream << "  " << Counted(iMeasured, "measured point") << ", "
         << Counted(static_cast<size_t>(photo.CountZuspTrafo()), "rectification") << '\n';
}

ExitCode RunInfo(const InfoValues& values, Context& context) {
  const InputFile file(values.strPath, kProjectFile);
  const auto pProject = OpenProject(file, values.bPartial);
  ZuProject& project = *pProject;
  Json& json = context.Root();
  json["photos"] = Json::array();
  const std::set<unsigned> photos = PhotosOf(project, values.strPhotos, "--photo");
  for (ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    if (photos.count(p->GetId()) == 0) continue;
    const int iMeasured = project.Measurements(p->GetId()).Count();
    const std::string strLacks = project.Lacks(*p, eZuNeedOrientation);
    PrintPhoto(*p, iMeasured, strLacks, values, context.Text());
    json["photos"].push_back(PhotoJson(*p, iMeasured, strLacks, values));
  }
  json["orthophotos"] = Json::array();
  for (ZuOrthoPhoto* p = project.OrthoPhotoList().First(); p != nullptr; p = p->Next()) {
    context.Text() << "Orthophoto " << ZuPhotoGuiString(p, false).chars() << ", "
                   << Counted(static_cast<size_t>(p->ZuspPlaneList().Count()), "plane") << ", "
                   << Shortest(p->GetPixelSize()) << " object units a pixel\n";
    json["orthophotos"].push_back(Json{{"id", p->GetId()},
                                       {"name", p->GetName().chars()},
                                       {"planes", p->ZuspPlaneList().Count()},
                                       {"pixel_size", p->GetPixelSize()}});
  }
  WarnOf(project, file, context);
  return kGood;
}

}  // namespace

Runner DefinePhotoInfo(Options& options) {
  auto pValues = std::make_shared<InfoValues>();
  options.Positional("PROJECT", &pValues->strPath, "project file");
  options.Option("--photo", "IDS", &pValues->strPhotos, "these photos: 1,4,7-9; all without");
  options.Choice("--rotation", {"abc", "opk", "pok", "ypr", "opencv", "colmap"},
                 &pValues->strRotation,
                 "convention of the rotation: abc R = Ry(b) Rx(a) Rz(c), opk omega phi kappa, pok "
                 "phi omega kappa, ypr yaw pitch roll, opencv rvec and t, colmap quaternion and t");
  options.Choice("--angle", {"rad", "deg", "gon"}, &pValues->strAngle,
                 "unit of its angles (default: gon; rvec is in rad)");
  AddPartialOption(options, &pValues->bPartial);
  return [pValues](Context& context) { return RunInfo(*pValues, context); };
}

}  // namespace cli
