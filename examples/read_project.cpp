// Reads the photos of a project file and converts a pixel along the chain of image systems.
#include <zu/foundation/reader.h>
#include <zu/photo/photo_list.h>

#include <cmath>
#include <cstdio>

int main(int argc, char** argv) {
  ZuPhotoList photos;
  ZuReader reader(argc > 1 ? argv[1] : "samples/chessboard/left.prj");
  ZuReaderObject photo("PHOTO", Link(&photos, &ZuPhotoList::AddPhoto));
  reader.RegisterObject(photo);
  reader.DoProcess(false);
  std::printf("%d photos\n", photos.Count());
  if (photos.IsEmpty()) return 3;

  ZuPoint point(1, 244.4274, 94.1646);  // pixels, y down
  for (const eConvertBikoMode eMode : {eDigiToPre, ePreToBiko, eBikoToAdjusted}) {
    photos.First()->ConvertBiko(&point, eMode);
    std::printf("%.6f %.6f\n", point.m_dX, point.m_dY);
  }
  return std::fabs(point.m_dX + 0.9329419598855669) < 1e-12 ? 0 : 1;
}
