#include "picture_files.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>

#include "exit_code.h"
#include "input_file.h"
#include "progress_line.h"
#include "project_input.h"
#include "zu/image/image_file.h"

namespace cli {

eZuInterpolation PictureOptions::Kernel() const {
  return strKernel == "bilinear"  ? eZuInterpolationBilinear
         : strKernel == "lanczos" ? eZuInterpolationLanczos
                                  : eZuInterpolationCubic;
}

void AddPictureOptions(Options& options, PictureOptions* pOptions) {
  options.Choice("--interpolation", {"bilinear", "cubic", "lanczos"}, &pOptions->strKernel,
                 "grey values between pixels, of 2 x 2, 4 x 4 or 8 x 8 of them");
  options.Option("--quality", "N", &pOptions->uQuality, "of a JPEG file, 1 to 100");
  options.AtLeast(1);
  options.AtMost(100);
}

void CheckPictureEnding(const std::string& strPath) {
  if (ZuImageFormatOf(strPath) != eZuImageNone) return;
  throw CommandError(kUsage, strPath + ": a picture is written as .png, .jpg or .tif");
}

ZuImage ReadPicture(const std::string& strPath, const ZuPhoto& photo, Context& context) {
  const InputFile file(strPath, "a JPEG, PNG or TIFF picture");
  ZuImage image;
  ZuFindingList findings;
  if (!ZuReadImage(file.Path(), &image, nullptr, &findings)) FailOf(findings, file);
  WarnOf(findings, file, context);
  const ZuRegion& region = photo.GetDigiRegion();
  const double dWidth = std::fabs(region.Width()) + 1.0, dHeight = std::fabs(region.Height()) + 1.0;
  // Some programs count the pixels instead of naming the last one, and the last centre of a photo
  // rescaled by F lies F - 1 pixels before the new border.
  constexpr double kBorder = 0.005;  // of a side
  const auto fits = [](double dTold, int iPixels) {
    return std::fabs(dTold - iPixels) <= std::max(1.0, kBorder * iPixels);
  };
  if (fits(dWidth, image.GetWidth()) && fits(dHeight, image.GetHeight())) return image;
  throw CommandError(
      kBadInput, file.Name() + ": " + std::to_string(image.GetWidth()) + " x " +
                     std::to_string(image.GetHeight()) + " pixels, and photo " +
                     std::to_string(photo.GetId()) + " has " + std::to_string(std::lround(dWidth)) +
                     " x " + std::to_string(std::lround(dHeight)) +
                     "; its own picture would be right, or a photo adapted by zu photo rescale");
}

void WritePicture(ZuResampler* pResampler, const std::string& strPath, ZuImageWriteOptions options,
                  const PictureOptions& picture, Context& context) {
  OutputFile& output = context.NewOutput(strPath);
  options.m_iWidth = pResampler->GetWidth();
  options.m_iHeight = pResampler->GetHeight();
  options.m_iChannels = pResampler->GetChannels();
  options.m_iBits = pResampler->GetBits();
  options.m_iQuality = static_cast<int>(picture.uQuality);
  const LibraryProgress progress(context.IsQuiet());
  ZuImageWriter writer;
  if (writer.Open(output.TempPath(), options) &&
      pResampler->Write(&writer, ("writing " + strPath).c_str()) && writer.Close()) {
    return;
  }
  throw CommandError(kCannotWrite, strPath + ": " + writer.GetError());
}

std::string MakeJpeg(ZuResampler* pResampler, const std::string& strBeside) {
  constexpr int kBand = 64, kQuality = 90;
  const OutputFile file(strBeside + ".jpg");
  ZuImageWriter writer;
  ZuImageWriteOptions options{pResampler->GetWidth(), pResampler->GetHeight(),
                              pResampler->GetChannels(), 8, kQuality};
  bool bGood = writer.Open(file.TempPath(), options);
  ZuImage rows = pResampler->MakeRows(kBand),
          eight(rows.GetWidth(), rows.GetHeight(), rows.GetChannels(), 8);
  for (int y = 0; bGood && y < options.m_iHeight; y += kBand) {
    pResampler->Resample(y, &rows);
    const std::size_t uSamples = eight.GetRowBytes() * static_cast<std::size_t>(rows.GetHeight());
    if (rows.GetBits() == 8) {
      std::copy_n(rows.GetData(), uSamples, eight.GetData());
    } else {
      std::transform(rows.GetRow<std::uint16_t>(0), rows.GetRow<std::uint16_t>(0) + uSamples,
                     eight.GetData(),
                     [](std::uint16_t u) { return static_cast<std::uint8_t>(u >> 8); });
    }
    bGood = writer.Write(eight, std::min(kBand, options.m_iHeight - y));
  }
  if (!bGood || !writer.Close()) {
    throw CommandError(kCannotWrite, strBeside + ": " + writer.GetError());
  }
  std::ifstream stream(file.TempPath(), std::ios::binary);
  std::ostringstream bytes;
  bytes << stream.rdbuf();
  return bytes.str();
}

}  // namespace cli
