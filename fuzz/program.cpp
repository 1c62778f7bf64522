// The program, run in this process: the input is the file of one of its commands, which the last
// byte chooses among those that take such a file. Result files are whole or not there, drawings and
// reports are well-formed, what --json prints is JSON, and a failure is told.
#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "apps/zu/run_program.h"
#include "fuzz/input.h"

namespace {

// A drawing of a chessboard's plane, with which the projects among the samples are measured.
constexpr char kBoard[] =
    "1 0 125 0\n2 25 125 0\n9 200 125 0\n10 0 100 0\n23 100 75 0\n46 0 0 0\n50 100 0 0\n54 200 0 "
    "0\n";

// Two photos of it, for the files that are read beside a project.
constexpr char kPhotos[] = R"(PHOTO {
  PHOTOID 1 "one" DIGITAL 1 STATE 0 ORIENTED 1 DIGIREGION { 0 0 639 479 }
  CAMDATA { ID 1 MD 0 C 4.915686 XH 0.2278 YH 0.0657 A1 -0.00966 A2 -0.000198 R0 2.5 RM 4.4 }
  PRERESTRAFO { 2 0.5 1 0 479.5 0 -1 } MAINRESTRAFO { 1 -3.168 0.0099 -2.376 0 }
  AORM { 3 3 0.9627788920850574 -0.035057874944144342 0.26800699684872165
    -0.0095880916765550498 0.98649882981761838 0.16348739176606841
    -0.27012010930967717 -0.15997188557015482 0.94944411229606229 }
  AORV { 3 182.943688 83.861235 374.336515 }
}
PHOTO {
  PHOTOID 2 "two" DIGITAL 1 STATE 0 ORIENTED 1 DIGIREGION { 0 0 639 479 }
  CAMDATA { ID 1 MD 0 C 4.915686 XH 0.2278 YH 0.0657 A1 -0.00966 A2 -0.000198 R0 2.5 RM 4.4 }
  PRERESTRAFO { 2 0.5 1 0 479.5 0 -1 } MAINRESTRAFO { 1 -3.168 0.0099 -2.376 0 }
  AORM { 3 3 0.096009270419778137 0.75467072485306097 0.64904107500467001
    -0.97577320874367646 0.2001419152201879 -0.08837340589829408
    -0.1965931460950037 -0.62483222613894596 0.75560295399549471 }
  AORV { 3 297.625525 53.611196 202.054446 }
}
MEASURE { PHOTOID 1 POINTS { 1 244.4274 94.1646 2 274.4154 92.1932 9 513.7905 86.5479
  10 244.9057 126.2445 23 372.4008 157.4035 46 248.8261 253.6117 54 510.3763 266.2278 } }
MEASURE { PHOTOID 2 POINTS { 1 256.2426 357.2372 2 255.2491 334.4170 9 251.4651 78.1621
  10 291.5242 365.9118 23 342.2916 267.7661 46 437.7789 396.7280 54 540.0083 133.1381 } }
)";

// A command line: < stands before the ending of the input, > before that of the result, # is the
// board, % the photos.
constexpr const char* kProjectCalls[] = {
    "measure <.prj --plane # --check # --unit mm --report >.html --json",
    "measure <.prj --plane # --check # --report >.html",
    "measure <.prj --plane # --flip -o >.coo",
    "photo info <.prj --json",
    "photo info <.prj",
    "adjust <.prj --control # --estimate c,xh,yh --test --json --points-out >.coo",
    "adjust <.prj --control # --datum inner --sigma 0.001mm -o >.prj",
    "check <.prj --json",
    "convert <.prj -o >.json",
    "photo rescale <.prj --factor 0.5 -o >.prj",
    "project renumber <.prj --start 101 -o >.prj",
};
constexpr const char* kCameraCalls[] = {
    "camera plot <.cam --id 1 -o >.svg",
    "camera info <.cam --json",
    "camera gentri <.cam -o >.txt",
    "camera plot <.cam --id 2 -o >.svg --json",
    "check <.cam --json",
};
constexpr const char* kBinaryCalls[] = {"cloud info <.zpc --json", "cloud convert <.zpc >.pts"};
constexpr const char* kPlyCalls[] = {"cloud info <.ply --json", "cloud convert <.ply >.zpc"};
constexpr const char* kPointCalls[] = {
    "plane <.coo --json -o >.coo",
    "transform <.coo --control # --json -o >.coo",
    "trafo2d <.coo --control # --type auto -o >.coo",
    "merge # <.coo --tolerance 5 -o >.coo",
    "local <.coo --axis X:1,2 --plane XY:9 -o >.coo",
    "plane <.coo --columns idname,x,y,z -o >.coo",
    "transform # --control <.coo -o >.coo",
    "cloud info <.pts --report >.html --json",
    "cloud convert <.pts >.ply",
    "compare # <.coo --sigma 0.1 --plot >.svg --json",
    "adjust % --control <.coo --points-out >.coo --json",
    "adjust % --control # --approx # --measurements <.txt",
    "adjust % --control # --scale-bars <.txt",
    "check <.coo",
};
constexpr const char* kJsonCalls[] = {"convert <.json -o >.prj", "convert <.json -o >.prj --json"};

bool Holds(std::string_view text, std::string_view word) {
  return text.find(word) != std::string_view::npos;
}

template <std::size_t N>
const char* Choose(const char* const (&aszCalls)[N], unsigned uOption) {
  return aszCalls[uOption % N];
}

const char* CallFor(const Input& input) {
  const unsigned uOption = input.Option() ^ '\n';
  const std::string_view text = input.Text();
  if (Holds(text, "\"format\"")) return Choose(kJsonCalls, uOption);
  if (Holds(text, "PHOTO") || Holds(text, "MEASURE")) return Choose(kProjectCalls, uOption);
  if (Holds(text, "CAMERA") || text.substr(0, 1) == "{") return Choose(kCameraCalls, uOption);
  if (Holds(text.substr(0, 4), "ply")) return Choose(kPlyCalls, uOption);
  if (Holds(text.substr(0, 4), "\xBE\xBA")) return Choose(kBinaryCalls, uOption);
  return Choose(kPointCalls, uOption);
}

struct Outcome {
  int iCode;
  std::string strOut, strError;
};

// Standard output goes to a file, which the program closes at its end; messages to a string.
Outcome Run(const std::vector<std::string>& args) {
  static const TempFile output;
  const int fdOld = dup(STDOUT_FILENO);
  const int fd = open(output.Path(), O_WRONLY | O_TRUNC);
  Require(fd >= 0 && dup2(fd, STDOUT_FILENO) >= 0);
  close(fd);
  std::ostringstream errors;
  std::streambuf* const pOld = std::cerr.rdbuf(errors.rdbuf());
  std::vector<char*> argv;
  for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
  argv.push_back(nullptr);
  const int iCode = cli::RunGuarded(static_cast<int>(args.size()), argv.data());
  std::cerr.rdbuf(pOld);
  if (fdOld >= 0) {
    dup2(fdOld, STDOUT_FILENO);
    close(fdOld);
  } else {
    close(STDOUT_FILENO);
  }
  return {iCode, output.Read(), errors.str()};
}

// The file of the input, with that ending.
std::string InputPath(const std::string& strEnding, std::string_view text) {
  static std::map<std::string, TempFile> files;
  const TempFile& file = files.try_emplace(strEnding, "", strEnding).first->second;
  file.Write(text);
  return file.Path();
}

struct Call {
  std::vector<std::string> args = {"zu"};
  std::string strResult;  // empty: none
};

Call MakeCall(const char* szCall, std::string_view text) {
  static const TempFile board(kBoard, ".coo"), photos(kPhotos, ".prj"), result;
  Call call;
  std::istringstream words(szCall);
  for (std::string strArg; words >> strArg;) {
    if (strArg[0] == '<') strArg = InputPath(strArg.substr(1), text);
    if (strArg[0] == '>') call.strResult = strArg = result.Path() + strArg.substr(1);
    if (strArg[0] == '#') strArg = board.Path();
    if (strArg[0] == '%') strArg = photos.Path();
    call.args.push_back(strArg);
  }
  return call;
}

// Elements that have no end.
bool IsVoid(const std::string& strName) {
  return strName == "meta" || strName == "br" || strName == "hr" || strName == "link" ||
         strName == "img" || strName == "col";
}

// Every element ends, in the order in which they began, and no number of a drawing is none.
void CheckMarkup(const std::string& strText) {
  std::vector<std::string> open;
  for (std::size_t i = strText.find('<'); i != std::string::npos; i = strText.find('<', i)) {
    const std::size_t uEnd = strText.find('>', i);
    Require(uEnd != std::string::npos);
    const std::string strTag = strText.substr(i + 1, uEnd - i - 1);
    i = uEnd;
    Require(!strTag.empty());
    if (strTag[0] == '!' || strTag[0] == '?') continue;
    for (const char* szNone : {"'nan", "'-nan", "'inf", "'-inf", " nan", " inf"}) {
      Require(!Holds(strTag, szNone) || Holds(strTag, "title"));
    }
    const std::string strName = strTag.substr(0, strTag.find_first_of(" \n/", 1));
    if (strTag[0] == '/') {
      Require(!open.empty() && "/" + open.back() == strTag);
      open.pop_back();
    } else if (strTag.back() != '/' && !IsVoid(strName)) {
      open.push_back(strName);
    }
  }
  Require(open.empty());
}

bool IsMarkup(const std::string& strText) {
  return strText.rfind("<!DOCTYPE", 0) == 0 || strText.rfind("<!doctype", 0) == 0 ||
         strText.rfind("<svg", 0) == 0 || strText.rfind("<?xml", 0) == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  const char* const szCall = CallFor(input);
  const Call call = MakeCall(szCall, input.Text());
  const Outcome outcome = Run(call.args);

  Require(outcome.iCode >= 0 && outcome.iCode <= 5);
  // What zu check finds is its result.
  if (outcome.iCode > 1) Require(!outcome.strError.empty() || !outcome.strOut.empty());
  std::ifstream stream(call.strResult, std::ios::binary);
  const std::string strResult(std::istreambuf_iterator<char>(stream), {});
  if (outcome.iCode == 0) Require(stream.is_open() || call.strResult.empty());
  if (outcome.iCode > 1) Require(!stream.is_open());
  unlink(call.strResult.c_str());
  if (Holds(szCall, "--json") && !outcome.strOut.empty()) {
    Require(nlohmann::json::accept(outcome.strOut));
  }
  if (IsMarkup(strResult)) CheckMarkup(strResult);
  return 0;
}
