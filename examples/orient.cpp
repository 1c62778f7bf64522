// Where the photos stood: every photo of a project oriented from four known points, the others
// intersected on the way.
#include <zu/adjust/orientation_project.h>
#include <zu/points/point_list.h>
#include <zu/project/project.h>

#include <cstdio>

int main() {
  // 21 photos of which nothing is known but their camera and measured pixels.
  ZuProject project;
  if (!project.Read("samples/network/camcal_unoriented.prj")) return 3;
  const eZuPointRWMask columns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                    eZuPointRWEnd};
  ZuPointList control;
  if (control.ReadFile("samples/network/control_fixed.coo", columns) < 3) return 3;

  ZuOrientationOptions options;
  options.dSigma = 0.1;  // of a measured coordinate [px]
  const ZuProjectOrientation found = ZuOrientProject(&project, control, {}, options);
  for (const ZuPhotoOrientation& photo : found.photos) {
    if (!photo.IsGood()) {
      std::printf("photo %2u: %s\n", photo.uId, photo.strWhy.c_str());
      continue;
    }
    const ZuVector& X0 = photo.pose.position;
    std::printf("photo %2u: %3d points, %.2f px, at %8.4f %8.4f %8.4f\n", photo.uId, photo.iPoints,
                photo.dRmsPixels, X0[1], X0[2], X0[3]);
  }
  // The project holds the orientations: start values for the adjustment of all photos at once.
  return found.CountGood() == 21 ? 0 : 1;
}
