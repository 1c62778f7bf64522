// Pictures in and out of the commands that make them anew.
#pragma once

#include <string>

#include "context.h"
#include "options.h"
#include "zu/image/image_writer.h"
#include "zu/image/resample.h"
#include "zu/photo/photo.h"

namespace cli {

struct PictureOptions {
  std::string strKernel = "cubic";
  unsigned uQuality = 92;

  eZuInterpolation Kernel() const;
};

// Declares --interpolation and --quality.
void AddPictureOptions(Options& options, PictureOptions* pOptions);

// Throws CommandError (usage) for a result file whose ending is no picture's.
void CheckPictureEnding(const std::string& strPath);

// The picture of a photo, with the warnings of its file. Throws CommandError (bad input): not
// readable, or of another size than the photo's DIGIREGION tells.
ZuImage ReadPicture(const std::string& strPath, const ZuPhoto& photo, Context& context);

// Makes the picture of the resampler in a new result file; `options` has what is not told by the
// resampler. Throws CommandError (cannot write).
void WritePicture(ZuResampler* pResampler, const std::string& strPath, ZuImageWriteOptions options,
                  const PictureOptions& picture, Context& context);

// The picture of the resampler as a JPEG file in memory, 8 bits a sample. strBeside: a result file,
// in whose folder it is written first. Throws CommandError (cannot write).
std::string MakeJpeg(ZuResampler* pResampler, const std::string& strBeside);

}  // namespace cli
