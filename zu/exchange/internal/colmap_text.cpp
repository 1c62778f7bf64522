// cameras.txt    CAMERA_ID MODEL WIDTH HEIGHT PARAMS...
// images.txt     IMAGE_ID QW QX QY QZ TX TY TZ CAMERA_ID NAME, then a line of X Y POINT3D_ID ...
// points3D.txt   POINT3D_ID X Y Z R G B ERROR IMAGE_ID POINT2D_IDX ...
#include "zu/exchange/internal/colmap.h"
#include "zu/exchange/internal/text_scan.h"
#include "zu/foundation/number_text.h"

namespace zu::internal {

namespace {

void ReadCameras(const ZuExchangeFile& file, ColmapBuilder* pBuilder) {
  TextScan scan(file);
  for (std::string_view line; scan.NextFilled(&line);) {
    const std::uint64_t uId = scan.Whole(TakeWord(&line));
    const std::string_view name = TakeWord(&line);
    const ColmapModel* pModel = FindColmapModel(name);
    if (pModel == nullptr) {
      scan.Fail("the camera model " + ZuQuoted(name) + " is not known", ColmapModelNames());
    }
    ZuImageSize size;
    size.dWidth = scan.Number(TakeWord(&line));
    size.dHeight = scan.Number(TakeWord(&line));
    std::vector<double> parameters;
    for (std::string_view word; !(word = TakeWord(&line)).empty();) {
      parameters.push_back(scan.Number(word));
    }
    if (parameters.size() != pModel->uParameters) {
      scan.Fail(std::string(pModel->szName) + " with " + std::to_string(parameters.size()) +
                    " parameters",
                std::to_string(pModel->uParameters) + " of them");
    }
    pBuilder->AddCamera(file.strName, scan.Line(), uId, *pModel, size, parameters.data());
  }
}

void ReadFeatures(const ZuExchangeFile& file, const TextScan& scan, std::string_view line,
                  ColmapBuilder* pBuilder) {
  for (std::string_view word; !(word = TakeWord(&line)).empty();) {
    const double x = scan.Number(word), y = scan.Number(TakeWord(&line));
    word = TakeWord(&line);
    if (word.empty()) scan.Fail("a feature without its point", "X Y POINT3D_ID, -1 for none");
    const std::uint64_t uPoint = word == "-1" ? kNoColmapPoint : scan.Whole(word);
    pBuilder->AddFeature(file.strName, scan.Line(), ZuPixelFromCorner(x, y), uPoint);
  }
}

void ReadImages(const ZuExchangeFile& file, ColmapBuilder* pBuilder) {
  TextScan scan(file);
  for (std::string_view line; scan.NextFilled(&line);) {
    ColmapBuilder::Image image;
    image.uId = scan.Whole(TakeWord(&line));
    for (double* pd :
         {&image.q.w, &image.q.x, &image.q.y, &image.q.z, &image.t[0], &image.t[1], &image.t[2]}) {
      *pd = scan.Number(TakeWord(&line));
    }
    image.uCamera = scan.Whole(TakeWord(&line));
    const std::string_view first = TakeWord(&line);
    const std::size_t uLast = line.find_last_not_of(" \t\r") + 1;  // 0 where nothing follows
    image.strName.assign(first.data(), first.size() + uLast);
    pBuilder->AddImage(file.strName, scan.Line(), image);
    if (scan.Next(&line)) ReadFeatures(file, scan, line, pBuilder);
  }
}

void ReadPoints(const ZuExchangeFile& file, ColmapBuilder* pBuilder) {
  TextScan scan(file);
  for (std::string_view line; scan.NextFilled(&line);) {
    const std::uint64_t uId = scan.Whole(TakeWord(&line));
    std::array<double, 3> X{};
    for (double& d : X) d = scan.Number(TakeWord(&line));
    for (int i = 0; i < 4; ++i) scan.Number(TakeWord(&line));  // colour and error
    pBuilder->AddPoint(file.strName, scan.Line(), uId, X);
    for (std::string_view word; !(word = TakeWord(&line)).empty();) {
      const std::uint64_t uImage = scan.Whole(word);
      pBuilder->AddTrack({uImage, scan.Whole(TakeWord(&line))});
    }
  }
}

}  // namespace

void ReadColmapText(const ZuExchangeFile& cameras, const ZuExchangeFile& images,
                    const ZuExchangeFile& points, ColmapBuilder* pBuilder) {
  ReadCameras(cameras, pBuilder);
  ReadImages(images, pBuilder);
  ReadPoints(points, pBuilder);
}

}  // namespace zu::internal
