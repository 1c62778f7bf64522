// What a photo can see: tests that a computation makes before it trusts a point.
#pragma once

#include "zu/export.h"

class ZuCamera;
class ZuPhoto;
class ZuPoint;

// The object point lies before the camera: its image vector R' (P - X0) has a third component below
// 0. The collinearity equations give an image point for the others too, mirrored. Before a round
// picture (ZuPhoto::IsRound) is everything.
ZU_API bool ZuIsBeforeCamera(const ZuPhoto& photo, const ZuPoint& object);

// The pixel lies in the image, whose outer pixels reach half a pixel beyond their centres. True
// where the photo has no digital region.
ZU_API bool ZuIsInImage(const ZuPhoto& photo, double x, double y);

// y of a pixel counted the other way, as the flip of ZuBikoTransform counts: height + 1 - y, with
// the height of the digital region.
ZU_API double ZuTurnPixelY(const ZuPhoto& photo, double y);

// The photo's plane transformations carry the corners of its image (without a region: a pixel) to a
// figure with an area in the image system. False for a singular transformation.
ZU_API bool ZuMapsPixels(const ZuPhoto& photo);

// Distance from the distortion centre [mm] up to which the camera's model is one to one, where that
// ends within the image; infinite where it does not.
ZU_API double ZuValidImageRadius(const ZuPhoto& photo);

// The measured point lies where the camera is meant for, as InvAdjustExact has it: within the
// half-width of its table (RM, or 2.1 r0, or 30 mm) and where its forward map is one to one. Beyond
// that Adjust gives numbers that mean nothing. False for a camera without a forward map.
ZU_API bool ZuIsInCameraDomain(const ZuCamera& camera, double x, double y);
