// Cloud files on the command line: told apart by content on reading and by ending on writing.
#pragma once

#include <string>

#include "context.h"
#include "input_file.h"
#include "options.h"
#include "zu/cloud/cloud_file.h"
#include "zu/cloud/point_cloud_container.h"

namespace cli {

// How clouds are read and written, by the options of a command.
struct CloudOptions {
  ZuTableOptions table;               // how a table is to be taken
  std::string strColumns;             // of a coordinate file; empty: by its content
  int iDecimals = -1;                 // of coordinates that are written; -1: all
  bool bPartial = false;              // take what a cut file holds
  std::string strPly = "ascii";       // ascii, binary, binary-big, library
  std::string strPts = "auto";        // auto, plain, intensity, rgb
  std::string strIntensity = "auto";  // auto, 255, 65535, 2000
  double dResolution = 0.0;           // of a LAS file; 0: by the coordinates
  std::string strLas = "auto";        // auto, 1.2, 1.4
};

// Declares the options that reading has, and those of writing.
void AddCloudInput(Options& options, CloudOptions* pCloudOptions);
void AddCloudOutput(Options& options, CloudOptions* pCloudOptions);

// Adds the clouds of a binary, PTS, PLY, LAS, E57 or coordinate file, or of a pipe that gives one;
// clouds without a name are named after the file. Gives the scale of their intensities, none where
// the file does not tell. What a reader assumed, dropped or limited becomes a warning.
//
// Throws CommandError (bad input) naming file, line and column: no such file, no cloud in it, text
// that is no number, fewer points than announced unless a part is wanted.
eZuIntensityScale ReadClouds(const std::string& strPath, const CloudOptions& options,
                             Context& context, ZuPointCloudContainer* pClouds);

// The file is one that ReadClouds reads, but for what is wrong in it.
bool IsCloudFile(const InputFile& file, const CloudOptions& options);

// Throws CommandError (usage) unless the name has an ending by which clouds are written.
void CheckCloudEnding(const std::string& strPath);

// Writes all clouds as the ending says: .zpc binary, .pts, .ply, .las, .e57, .xyz lines of x y z,
// .csv, and .coo or .txt a coordinate file of id, x, y, z. What the format does not keep is told in
// a warning. Throws CommandError (cannot write).
void WriteClouds(ZuPointCloudContainer* pClouds, const std::string& strPath,
                 const CloudOptions& options, eZuIntensityScale eIntensity, Context& context);

}  // namespace cli
