#include "zu/project/internal/keyword_rule.h"

namespace zu::internal {

namespace {

constexpr char kCameraRow[] = "i nnnnnn t";  // id, c, xh, yh, a1, a2, r0, name

constexpr char kCameraFileRow[] = "k nnnnnn t";

constexpr KeywordRule kEnd = {nullptr, nullptr};

constexpr KeywordRule kCamera[] = {
    {"ID", "k"}, {"NAME", "t"}, {"MD", "i"},  {"C", "n"},   {"CV", "n"}, {"XH", "n"}, {"YH", "n"},
    {"X0", "n"}, {"Y0", "n"},   {"XHV", "n"}, {"YHV", "n"}, {"A1", "n"}, {"A2", "n"}, {"A3", "n"},
    {"R0", "n"}, {"RM", "n"},   {"B1", "n"},  {"B2", "n"},  {"C1", "n"}, {"C2", "n"}, kEnd};

constexpr KeywordRule kParallelDef[] = {{"DEFLINE", "*"}, {"CONSTRAINT", "*"}, kEnd};

constexpr KeywordRule kRectification[] = {{"ZUSPID", "ut"},
                                          {"KAMERA", "i"},
                                          {"ACTIV", "i"},
                                          {"DISTORTION", kCameraRow},
                                          {"REGIONACTIV", "i"},
                                          {"ZUSPTRAFO", "M33"},
                                          {"TRAFO3D", "M44"},
                                          {"DEFPOINTS", "*"},
                                          {"MEASPOINTS", "*"},
                                          {"VALIDREGION", "*"},
                                          {"PARALLELDEF", nullptr, kParallelDef},
                                          kEnd};

constexpr KeywordRule kPhoto[] = {{"PHOTOID", "ut"},
                                  {"COMMENT", "t"},
                                  {"USERDATA", "t"},
                                  {"DIGITALPAGE", "i"},
                                  {"DIGITALROT", "i"},
                                  {"TYPE", "ii"},
                                  {"DIGITAL", "i"},
                                  {"DIGITIZERID", "i"},
                                  {"CHECKACTIVE", "i"},
                                  {"STATE", "i"},
                                  {"ROTATION", "i"},
                                  {"SCALE", "n"},
                                  {"ORIENTED", "i"},
                                  {"DIGIREGION", "nnnn"},
                                  {"AORM", "M33"},
                                  {"AORV", "V3"},
                                  {"TPS_SETUP_ID", "t"},
                                  {"CAMERA", kCameraRow},
                                  {"CAMDATA", nullptr, kCamera},
                                  {"PRERESEAU", "G?t"},
                                  {"MAINRESEAU", "G?t"},
                                  {"POLYRESINV", "G?t"},
                                  {"RESEAUFILE", "t"},
                                  {"RESEAUSUBID", "i"},
                                  {"PRERESTRAFO", "F"},
                                  {"MAINRESTRAFO", "F"},
                                  {"POLYRESINVTRAFO", "F"},
                                  {"ZUSPTRAFO", "*"},
                                  {"ZUSPPLANE", nullptr, kRectification},
                                  {"LASTZUSPID", "i"},
                                  {"SCREENPOS", "nn"},
                                  {"SCREENSIZE", "i"},
                                  {"SCREENFLAGS", "i"},
                                  {"REGOI", "(unnnn)"},
                                  kEnd};

constexpr KeywordRule kOrthoPhoto[] = {{"ID", "ut"},
                                       {"COMMENT", "t"},
                                       {"RECTPIXEL", "i"},
                                       {"TIME", "n"},
                                       {"SCALE", "n"},
                                       {"PLANEANGLE", "n"},
                                       {"DIGITALROT", "i"},
                                       {"MIRROR", "i"},
                                       {"PIXELSIZE", "nnnn"},
                                       {"OBJECTSIZE", "nnnn"},
                                       {"PLANEINFO", nullptr, kRectification},
                                       kEnd};

constexpr KeywordRule kMeasure[] = {
    {"PHOTOID", "u"}, {"POINTS", "(unn)", nullptr, true}, {"SIGMA", "[unn]"}, kEnd};

constexpr KeywordRule kCovariance[] = {{"PHOTOID", "u"},    {"WITH", "u"},   {"CAMERAID", "k"},
                                       {"PARAMETERS", "t"}, {"MATRIX", "*"}, kEnd};

constexpr KeywordRule kProject[] = {{"PHOTO", nullptr, kPhoto, true},
                                    {"ORTHOPHOTO", nullptr, kOrthoPhoto},
                                    {"CAMERA", nullptr, kCamera},
                                    {"PLANE", "*"},
                                    {"LOKAL", "*"},
                                    {"MEASURE", nullptr, kMeasure, true},
                                    {"COVARIANCE", nullptr, kCovariance},
                                    {"POINTS", "(unnn)", nullptr, true},
                                    kEnd};

constexpr KeywordRule kCameraFile[] = {{"CAMERA", nullptr, kCamera}, {"", kCameraFileRow}, kEnd};

constexpr KeywordRule kReseau[] = {{"\"", "t"}, {"", "nnnn"}, {"", "nnnn"}, {"", "knni"}, kEnd};

constexpr KeywordRule kDigitalCamera[] = {{"", "t i t ii nn"}, kEnd};

}  // namespace

const KeywordRule* ProjectRules() { return kProject; }
const KeywordRule* CameraFileRules() { return kCameraFile; }
const KeywordRule* ReseauRules() { return kReseau; }
const KeywordRule* DigitalCameraRules() { return kDigitalCamera; }

}  // namespace zu::internal
