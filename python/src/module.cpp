// The compiled part of the package: zu._core.
#include "types.h"
#include "zu/version.h"

PYBIND11_MODULE(_core, m) {
  m.doc() = "The compiled part of the package zu.";
  FollowProgress();
  m.attr("__version__") = ZuVersion();
  BindPoints(m);
  BindPlanes(m);
  BindClouds(m);
  BindCloudMoments(m);
  BindSimilarity(m);
  BindTrafo2d(m);
  BindProjects(m);
  BindNetworks(m);
  BindJoining(m);
  BindConstructions(m);
  BindExchange(m);
  BindPictures(m);
}
