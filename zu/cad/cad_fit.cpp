#include "zu/cad/cad_fit.h"

const char* ZuCadStatusText(eCadStatus eStatus) {
  switch (eStatus) {
    case eCadOk:
      return "ok";
    case eCadTooFew:
      return "too few points or measurements";
    case eCadCoincident:
      return "points that must be apart coincide";
    case eCadCollinear:
      return "the points stand in a line";
    case eCadParallel:
      return "the directions are parallel";
    case eCadNoIntersection:
      return "there is no common point";
    case eCadDangerousCircle:
      return "the point stands on the circle through the known ones";
    case eCadUndetermined:
      return "the points leave the direction open";
    case eCadNotFinite:
      return "a number is not finite";
    case eCadNotConverged:
      return "not converged";
    case eCadTooMany:
      return "too many points";
  }
  return "unknown";
}
