#include "zu/exchange/internal/json_shapes.h"

#include <sstream>

namespace zu::internal {

namespace {

using F = JsonForm;

constexpr JsonShape kEnd = {nullptr, F::Values, nullptr, nullptr};

constexpr JsonShape kCamera[] = {{"ID", F::Values, nullptr, "id:u"},
                                 {"NAME", F::Values, nullptr, "name:t"},
                                 {"MD", F::Values, nullptr, "model:i"},
                                 {"C", F::Values, nullptr, "c:n"},
                                 {"XH", F::Values, nullptr, "xh:n"},
                                 {"YH", F::Values, nullptr, "yh:n"},
                                 {"R0", F::Values, nullptr, "r0:n"},
                                 {"RM", F::Values, nullptr, "r_max:n"},
                                 {"A1", F::Values, nullptr, "a1:n"},
                                 {"A2", F::Values, nullptr, "a2:n"},
                                 {"A3", F::Values, nullptr, "a3:n"},
                                 {"B1", F::Values, nullptr, "b1:n"},
                                 {"B2", F::Values, nullptr, "b2:n"},
                                 {"C1", F::Values, nullptr, "c1:n"},
                                 {"C2", F::Values, nullptr, "c2:n"},
                                 {"CV", F::Values, nullptr, "c_viva:n"},
                                 {"XHV", F::Values, nullptr, "xh_viva:n"},
                                 {"YHV", F::Values, nullptr, "yh_viva:n"},
                                 kEnd};

constexpr JsonShape kLines[] = {
    {"DEFLINE", F::Objects, "lines", "id:u from:u to:u x_axis:i value:n"},
    {"CONSTRAINT", F::Objects, "constraints", "line1:u line2:u type:i value:n"},
    kEnd};

constexpr JsonShape kRectification[] = {
    {"ZUSPID", F::Values, nullptr, "id:u name:t"},
    {"ACTIV", F::Values, nullptr, "active:b"},
    {"REGIONACTIV", F::Values, nullptr, "region_active:b"},
    {"KAMERA", F::Values, nullptr, "distortion_active:b"},
    {"DISTORTION", F::Object, "distortion", "id:u c:n xh:n yh:n a1:n a2:n r0:n name:t"},
    {"ZUSPTRAFO", F::Matrix, "projective", nullptr},
    {"TRAFO3D", F::Matrix, "spatial", nullptr},
    {"MEASPOINTS", F::Rows, "measured", "id:u x:n y:n"},
    {"DEFPOINTS", F::Rows, "defined", "id:u x:n y:n z:n"},
    {"VALIDREGION", F::Rows, "region", "x:n y:n"},
    {"PARALLELDEF", F::Block, "definition", nullptr, kLines},
    kEnd};

constexpr JsonShape kPhoto[] = {{"PHOTOID", F::Values, nullptr, "id:u name:t"},
                                {"COMMENT", F::Values, nullptr, "comment:t"},
                                {"DIGITALPAGE", F::Values, nullptr, "page:i"},
                                {"DIGITALROT", F::Values, nullptr, "image_rotation:i"},
                                {"DIGITAL", F::Values, nullptr, "digital:i"},
                                {"DIGITIZERID", F::Values, nullptr, "digitizer:u"},
                                {"CHECKACTIVE", F::Values, nullptr, "check_active:b"},
                                {"STATE", F::Values, nullptr, "state:i"},
                                {"ROTATION", F::Values, nullptr, "view_rotation:i"},
                                {"SCALE", F::Values, nullptr, "scale:n"},
                                {"ORIENTED", F::Values, nullptr, "oriented:b"},
                                {"DIGIREGION", F::Numbers, "digital_region", nullptr},
                                {"CAMDATA", F::Block, "camera", nullptr, kCamera},
                                {"RESEAUFILE", F::Values, nullptr, "reseau:t"},
                                {"RESEAUSUBID", F::Values, nullptr, "reseau_sub_id:u"},
                                {"PRERESTRAFO", F::Trafo, "pre_transformation", nullptr},
                                {"PRERESEAU", F::Name, "pre_name", nullptr},
                                {"MAINRESTRAFO", F::Trafo, "main_transformation", nullptr},
                                {"MAINRESEAU", F::Name, "main_name", nullptr},
                                {"POLYRESINVTRAFO", F::Trafo, "inverse_transformation", nullptr},
                                {"POLYRESINV", F::Name, "inverse_name", nullptr},
                                {"AORM", F::Matrix, "rotation", nullptr},
                                {"AORV", F::Vector, "position", nullptr},
                                {"ZUSPPLANE", F::Blocks, "rectifications", nullptr, kRectification},
                                {"LASTZUSPID", F::Values, nullptr, "last_rectification:u"},
                                {"SCREENPOS", F::Numbers, "screen_position", nullptr},
                                {"SCREENSIZE", F::Values, nullptr, "screen_scale:i"},
                                {"SCREENFLAGS", F::Values, nullptr, "screen_flags:i"},
                                {"REGOI", F::Rows, "regions_of_interest", "id:u x:n y:n dx:n dy:n"},
                                {"TPS_SETUP_ID", F::Values, nullptr, "station_setup:t"},
                                kEnd};

constexpr JsonShape kOrthoPhoto[] = {{"ID", F::Values, nullptr, "id:u name:t"},
                                     {"COMMENT", F::Values, nullptr, "comment:t"},
                                     {"RECTPIXEL", F::Values, nullptr, "pixels:i"},
                                     {"TIME", F::Values, nullptr, "time:n"},
                                     {"SCALE", F::Values, nullptr, "scale:n"},
                                     {"PLANEANGLE", F::Values, nullptr, "plane_angle:n"},
                                     {"DIGITALROT", F::Values, nullptr, "image_rotation:i"},
                                     {"MIRROR", F::Values, nullptr, "mirror:i"},
                                     {"PIXELSIZE", F::Numbers, "digital_region", nullptr},
                                     {"OBJECTSIZE", F::Numbers, "object_region", nullptr},
                                     {"PLANEINFO", F::Blocks, "planes", nullptr, kRectification},
                                     kEnd};

constexpr JsonShape kPlane[] = {{"", F::Values, nullptr, "id:u name:t a:n b:n c:n d:n"}, kEnd};

constexpr JsonShape kLocalSystem[] = {
    {"", F::Values, nullptr,
     "axis:i a:u b:u plane:i c:u origin:u x:n y:n z:n scale1_a:u scale1_b:u scale1_distance:n "
     "scale2_a:u scale2_b:u scale2_distance:n scale3_a:u scale3_b:u scale3_distance:n"},
    kEnd};

constexpr JsonShape kMeasure[] = {{"PHOTOID", F::Values, nullptr, "photo:u"},
                                  {"POINTS", F::Rows, "points", "id:u x:n y:n"},
                                  {"SIGMA", F::Rows, "sigma", "id:u sx:n sy:n"},
                                  kEnd};

constexpr JsonShape kCovariance[] = {{"PHOTOID", F::Values, nullptr, "photo:u"},
                                     {"WITH", F::Values, nullptr, "with:u"},
                                     {"CAMERAID", F::Values, nullptr, "camera:u"},
                                     {"PARAMETERS", F::Values, nullptr, "parameters:t"},
                                     {"MATRIX", F::Matrix, "matrix", nullptr},
                                     kEnd};

constexpr JsonShape kPoints[] = {{"", F::Rows, "points", "id:u x:n y:n z:n"}, kEnd};

}  // namespace

std::vector<JsonColumn> JsonColumns(const JsonShape& shape) {
  std::vector<JsonColumn> columns;
  std::istringstream words(shape.szColumns);
  for (std::string strWord; words >> strWord;) {
    columns.push_back({strWord.substr(0, strWord.size() - 2), strWord.back()});
  }
  return columns;
}

const std::vector<JsonItemShape>& JsonItems() {
  static const std::vector<JsonItemShape> items = {{"PHOTO", "photo", kPhoto},
                                                   {"ORTHOPHOTO", "orthophoto", kOrthoPhoto},
                                                   {"CAMERA", "camera", kCamera},
                                                   {"PLANE", "plane", kPlane},
                                                   {"LOKAL", "local_system", kLocalSystem},
                                                   {"MEASURE", "measurements", kMeasure},
                                                   {"POINTS", "object_points", kPoints},
                                                   {"COVARIANCE", "covariance", kCovariance}};
  return items;
}

}  // namespace zu::internal
