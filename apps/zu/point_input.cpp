#include "point_input.h"

#include <cmath>
#include <cstring>
#include <fstream>
#include <sstream>
#include <utility>
#include <vector>

#include "exit_code.h"
#include "point_columns.h"
#include "reading.h"
#include "text_table.h"
#include "zu/foundation/strict_number.h"
#include "zu/photo/detect_files.h"
#include "zu/points/column_names.h"
#include "zu/points/column_titles.h"
#include "zu/points/gsi_survey.h"
#include "zu/points/read_coordinates.h"

namespace cli {
namespace {

constexpr int kMostDecimals = 15;

Duplicates DuplicatesOf(const PointFormat& format) {
  if (format.strDuplicates == "first") return eDuplicatesFirst;
  if (format.strDuplicates == "last") return eDuplicatesLast;
  return format.strDuplicates == "mean" ? eDuplicatesMean : eDuplicatesError;
}

// `strSource` is where the columns were told: --columns, or the titles of a file.
void CheckCoordinates(const PointFormat& format, const std::string& strColumns,
                      const std::string& strSource) {
  const ColumnTable columns = ParseColumns(strColumns);
  for (const char* pc = format.szCoordinates; *pc != '\0'; ++pc) {
    const eZuPointRWMask eColumn = *pc == 'x'   ? eZuPointRWX
                                   : *pc == 'y' ? eZuPointRWY
                                                : eZuPointRWZ;
    if (columns.HasEntry(eColumn)) continue;
    throw CommandError(kUsage, strSource + ": \"" + strColumns + "\" has no column " + *pc +
                                   ", which the command computes with");
  }
}

void CheckIdColumn(const std::string& strColumns, const std::string& strSource) {
  const ColumnTable columns = ParseColumns(strColumns);
  if (columns.HasEntry(eZuPointRWId) || columns.HasEntry(eZuPointRWIdName)) return;
  throw CommandError(kUsage, strSource + ": \"" + strColumns +
                                 "\" has no column for the id; add id, or idname for names");
}

void TakePoints(const InputFile& file, const ZuCoordinateReading& reading,
                const ColumnTable& columns, Duplicates eDuplicates, const std::string& strColumns,
                Context& context, ZuPointList* pRead, ZuPointList* pPoints) {
  TellFindings(reading.m_Findings, file.Name(), false, "--tolerant takes what is there", context);
  if (pRead->Count() == 0) {
    throw CommandError(
        kBadInput, file.Name() + ": holds no point; lines of " + strColumns + " would be right");
  }
  if (!columns.HasEntry(eZuPointRWPhoto)) {
    JoinDuplicates(file.Name(), reading.m_aLines, eDuplicates, context, pRead);
  }
  pPoints->SetMask(columns);
  pRead->MoveTo(pPoints);
}

// In columns that are told, by nobody else than the command.
void ReadRows(const InputFile& file, const std::string& strColumns, Context& context,
              ZuPointList* pPoints) {
  const ColumnTable columns = ParseColumns(strColumns);
  ZuPointList points;
  const ZuCoordinateReading reading =
      ZuReadCoordinates(file.Path().c_str(), columns, points, ReadMode(context));
  TakePoints(file, reading, columns, eDuplicatesError, strColumns, context, &points, pPoints);
}

char DelimiterOf(const std::string& strDelimiter) {
  const std::pair<const char*, char> words[] = {{"", '\0'},     {"tab", '\t'},      {"\\t", '\t'},
                                                {"comma", ','}, {"semicolon", ';'}, {"blank", ' '}};
  for (const auto& [szWord, cDelimiter] : words) {
    if (strDelimiter == szWord) return cDelimiter;
  }
  if (strDelimiter.size() == 1) return strDelimiter[0];
  throw CommandError(kUsage, "--delimiter: \"" + strDelimiter +
                                 "\" is no character; tab, comma, semicolon, blank or one "
                                 "character would be right");
}

}  // namespace

ZuTableOptions TableOptions(const PointFormat& format, const std::string& strColumns, bool bIds) {
  ZuTableOptions options;
  options.m_cDelimiter = DelimiterOf(format.strDelimiter);
  options.m_bDecimalComma = format.bDecimalComma;
  options.m_uSkipLines = format.uSkipLines;
  options.m_bIds = bIds;
  options.m_bHeights = std::strchr(format.szCoordinates, 'z') != nullptr;
  if (strColumns.empty()) return options;
  const ColumnTable columns = ParseColumns(strColumns);
  for (int i = 0; i < columns.Size(); ++i) options.m_aColumns.push_back(columns[i]);
  return options;
}

namespace {

ColumnTable TableOf(const ZuTableForm& form) {
  std::vector<eZuPointRWMask> columns = form.m_aColumns;
  columns.push_back(eZuPointRWEnd);
  return ColumnTable(columns.data());
}

// What was found and a reader would not take for granted, in a line.
void TellForm(const ZuTableForm& form, const std::string& strColumns, const std::string& strName,
              const Context& context) {
  std::string strTitles, strFound;
  for (const std::string& strTitle : form.m_aTitles) {
    strTitles += (strTitles.empty() ? "" : ",") + strTitle;
  }
  if (!strTitles.empty() && strTitles != strColumns) {
    strFound = "columns " + strTitles + " taken as " + strColumns;
  }
  const auto add = [&strFound](const std::string& strText) {
    strFound += (strFound.empty() ? "" : ", ") + strText;
  };
  if (form.m_cDecimal == ',') add("decimal comma");
  if (form.m_eEncoding != eZuTextUtf8) add(GetZuTextEncodingName(form.m_eEncoding));
  if (!strFound.empty()) context.Note(strName + ": " + strFound);
}

// Accuracies of a further file belong to the columns of all.
void NoteColumns(const PointFormat& format, const std::string& strColumns) {
  if (format.strColumns.empty()) {
    format.strColumns = strColumns;
    return;
  }
  const ColumnTable known = ParseColumns(format.strColumns), more = ParseColumns(strColumns);
  for (const eZuPointRWMask eColumn : {eZuPointRWDX, eZuPointRWDY, eZuPointRWDZ}) {
    if (known.HasEntry(eColumn) || !more.HasEntry(eColumn)) continue;
    format.strColumns += std::string(",") + GetZuColumnName(eColumn);
  }
}

// Lengths in the unit of the first file.
void JoinUnits(const PointFormat& format, const ZuTableForm& form, const std::string& strName,
               const Context& context, ZuPointList* pPoints) {
  const std::string& strFirst = format.form->m_strUnit;
  const double dFirst = GetZuUnitLength(strFirst), dOwn = GetZuUnitLength(form.m_strUnit);
  if (dFirst == 0.0 || dOwn == 0.0 || dFirst == dOwn) return;
  for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    for (double* pd : {&p->m_dX, &p->m_dY, &p->m_dZ, &p->m_dDX, &p->m_dDY, &p->m_dDZ}) {
      *pd *= dOwn / dFirst;
    }
  }
  context.WarnAlways(strName + ": lengths in " + form.m_strUnit + " brought to " + strFirst);
}

ZuTableReading ReadAnyForm(const InputFile& file, const ZuTableOptions& options,
                           const Context& context, ZuPointList* pPoints) {
  const char* const szPath = file.Path().c_str();
  if (!ZuDetectZuvoFiles(szPath).IsType(eZuvoFileGsi)) {
    return ZuReadTable(szPath, options, *pPoints, ReadMode(context));
  }
  ZuTableReading reading;
  // With what follows from the measurements of points that have no recorded coordinates.
  static_cast<ZuCoordinateReading&>(reading) =
      ZuReadGsiPoints(szPath, ZuGsiOptions(), *pPoints, ReadMode(context));
  reading.m_Form.m_aColumns = {eZuPointRWIdName, eZuPointRWX, eZuPointRWY, eZuPointRWZ};
  reading.m_Form.m_iDecimals = 5;
  return reading;
}

}  // namespace

void CheckTableFaults(const ZuReadFindings& findings, const InputFile& file) {
  const std::pair<const char*, const char*> options[] = {
      {"has a decimal comma", "where all numbers have one, --decimal-comma reads them"},
      {"the titles do not fit", "--columns tells what the columns are"}};
  const ZuReadFinding* const pFault = findings.First(eZuReadFault);
  if (pFault == nullptr) return;
  const eZuvoFile eType = ZuDetectZuvoFiles(file.Path().c_str()).GetType();
  for (const eZuvoFile eOther : {eZuvoFileProject, eZuvoFileCamera, eZuvoFileSimpleCamera,
                                 eZuvoFileReseau, eZuvoFileDigitalCamera}) {
    if (eType != eOther) continue;
    throw CommandError(kBadInput, file.Name() + ": is a " + GetZuvoFileText(eType) +
                                      "; a coordinate file would be right");
  }
  for (const auto& [szText, szOption] : options) {
    if (pFault->m_strText.find(szText) == std::string::npos) continue;
    throw CommandError(kBadInput, Placed(*pFault, file.Name()) + '\n' + szOption);
  }
}

void TellTable(const ZuTableForm& form, const std::string& strColumns, const std::string& strName,
               Context& context) {
  TellForm(form, strColumns, strName, context);
  context.SetUnit(form.m_strUnit);
}

namespace {

// strTold: the columns that were told; empty: they are found.
void ReadTable(const InputFile& file, const PointFormat& format, const std::string& strTold,
               bool bIds, Context& context, ZuPointList* pPoints) {
  const ZuTableOptions options = TableOptions(format, strTold, bIds);
  ZuPointList points;
  const ZuTableReading reading = ReadAnyForm(file, options, context, &points);
  CheckTableFaults(reading.m_Findings, file);
  const ColumnTable columns = TableOf(reading.m_Form);
  const std::string strColumns = GetZuColumnNames(columns);
  const std::string strSource = strTold.empty() ? file.Name() : "--columns";
  CheckCoordinates(format, strColumns, strSource);
  if (bIds) CheckIdColumn(strColumns, strSource);
  TakePoints(file, reading, columns, DuplicatesOf(format), strColumns, context, &points, pPoints);
  TellTable(reading.m_Form, strColumns, file.Name(), context);
  NoteColumns(format, strColumns);
  if (format.form) {
    JoinUnits(format, reading.m_Form, file.Name(), context, pPoints);
  } else {
    format.form = reading.m_Form;
  }
}

// Before a file is opened.
void CheckTold(const PointFormat& format, const std::string& strColumns, bool bIds) {
  DelimiterOf(format.strDelimiter);
  if (strColumns.empty()) return;
  CheckCoordinates(format, strColumns, "--columns");
  if (bIds) CheckIdColumn(strColumns, "--columns");
}

}  // namespace

void AddColumnsOption(Options& options, std::string* pColumns) {
  options.Option("--columns", "NAMES", pColumns,
                 "columns of the coordinate files, of: id name idname flag code codenum photo "
                 "camera x y z dx dy dz red1 red2 red3 color nimo vx vy vz skip");
  options.Tolerant();
}

void AddPointOptions(Options& options, PointFormat* pFormat) {
  AddColumnsOption(options, &pFormat->strToldColumns);
  options.Choice("--duplicates", {"error", "first", "last", "mean"}, &pFormat->strDuplicates,
                 "what counts of a point that stands more than once in a file");
  options.Option("--delimiter", "C", &pFormat->strDelimiter,
                 "what separates the fields: tab, comma, semicolon, blank or a character");
  options.Flag("--decimal-comma", &pFormat->bDecimalComma, "numbers have decimal commas");
  options.Option("--skip-lines", "N", &pFormat->uSkipLines, "lines above the table, passed over");
  AddDecimals(options, &pFormat->iDecimals);
}

void AddDecimals(Options& options, int* pDecimals) {
  options.Option("--decimals", "N", pDecimals,
                 "decimals of coordinates and lengths in tables and in result files");
  options.AtLeast(-1);
  options.AtMost(kMostDecimals);
}

void WriteNewPoints(const ZuPointList& points, std::vector<eZuPointRWMask> columns,
                    const PointFormat& format, OutputFile* pOutput) {
  ZuTableForm form = format.form.value_or(ZuTableForm());
  const bool bTitles = !form.m_aTitles.empty();
  form.m_aTitles.clear();
  form.m_aColumns = std::move(columns);
  for (const eZuPointRWMask eColumn : form.m_aColumns) {
    if (bTitles) form.m_aTitles.emplace_back(GetZuColumnName(eColumn));
  }
  ZuWriteTable(pOutput->Stream(), points, form,
               format.iDecimals < 0 ? kZuAllDecimals : format.iDecimals);
}

void AddControlColumns(Options& options, PointFormat* pFormat) {
  options.Option("--control-columns", "NAMES", &pFormat->strControlColumns,
                 "columns of CONTROL, where they are others than those of SOURCE");
}

void ReadPoints(const InputFile& file, const PointFormat& format, Context& context,
                ZuPointList* pPoints) {
  ReadTable(file, format, format.strToldColumns, true, context, pPoints);
}

bool TellsItsColumns(const InputFile& file) {
  if (ZuDetectZuvoFiles(file.Path().c_str()).IsType(eZuvoFileGsi)) return true;
  constexpr size_t kHead = 16384;
  std::ifstream stream(file.Path(), std::ios::binary);
  std::string strHead(kHead, '\0');
  stream.read(strHead.data(), kHead);
  strHead.resize(static_cast<size_t>(stream.gcount()));
  return ZuHasColumnTitles(strHead);
}

void ReadPoints(const std::string& strPath, const PointFormat& format, Context& context,
                ZuPointList* pPoints) {
  CheckTold(format, format.strToldColumns, true);
  ReadPoints(InputFile(strPath, "a coordinate file"), format, context, pPoints);
}

void ReadControlPoints(const std::string& strPath, const PointFormat& format, Context& context,
                       ZuPointList* pPoints) {
  const bool bOwn = !format.strControlColumns.empty();
  const std::string& strTold = bOwn ? format.strControlColumns : format.strToldColumns;
  CheckTold(format, strTold, true);
  ReadTable(InputFile(strPath, "a coordinate file"), format, strTold, true, context, pPoints);
}

void ReadPoints(const std::string& strPath, const std::string& strColumns, Context& context,
                ZuPointList* pPoints) {
  ReadRows(InputFile(strPath, "a coordinate file"), strColumns, context, pPoints);
}

void ReadPointsOrRows(const InputFile& file, const PointFormat& format, Context& context,
                      ZuPointList* pPoints) {
  ReadTable(file, format, format.strToldColumns, false, context, pPoints);
}

void ReadPointsOrRows(const std::string& strPath, const PointFormat& format, Context& context,
                      ZuPointList* pPoints) {
  CheckTold(format, format.strToldColumns, false);
  ReadPointsOrRows(InputFile(strPath, "a coordinate file"), format, context, pPoints);
}

void ReadPointsOrRows(const InputFile& file, const std::string& strColumns, Context& context,
                      ZuPointList* pPoints) {
  ReadRows(file, strColumns, context, pPoints);
}

namespace {

// The library writes small and large numbers with an exponent: in fixed notation, at the same place
// as far as the blanks behind them last.
std::string WithoutExponents(const std::string& strText) {
  std::string strOut;
  bool bQuoted = false;
  for (size_t u = 0; u < strText.size();) {
    const bool bQuote = strText[u] == '"';
    bQuoted ^= bQuote;
    const size_t uEnd = std::min(strText.find_first_of(" \n\"", u), strText.size());
    if (bQuoted || bQuote || uEnd == u) {
      strOut += strText[u++];
      continue;
    }
    const std::string strField = strText.substr(u, uEnd - u);
    double d = 0.0;
    const bool bExponent = strField.find('e') != strField.npos && ZuParseNumber(strField, &d);
    strOut += bExponent ? Shortest(d) : strField;
    size_t uLonger =
        bExponent ? std::max(Shortest(d).size(), strField.size()) - strField.size() : 0;
    for (u = uEnd; uLonger > 0 && strText.compare(u, 2, "  ") == 0; ++u) --uLonger;
  }
  return strOut;
}

// A zero is written without a sign.
void DropSignsOfZero(ZuPointList* pPoints) {
  for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    for (double* pd : {&p->m_dX, &p->m_dY, &p->m_dZ, &p->m_dRedu1, &p->m_dRedu2, &p->m_dRedu3}) {
      *pd += 0.0;
    }
  }
}

}  // namespace

void WritePoints(ZuPointList* pPoints, const std::string& strColumns, OutputFile* pOutput,
                 int iDecimals) {
  const ColumnTable given = ParseColumns(strColumns);
  DropSignsOfZero(pPoints);
  if (iDecimals >= 0) {
    ZuTableForm form;
    for (int i = 0; i < given.Size(); ++i) form.m_aColumns.push_back(given[i]);
    return ZuWriteTable(pOutput->Stream(), *pPoints, form, iDecimals);
  }
  std::vector<eZuPointRWMask> columns;
  for (int i = 0; i < given.Size(); ++i) {
    const eZuPointRWMask eColumn = given[i];
    if (eColumn == eZuPointRWSkip) continue;
    columns.push_back(eColumn == eZuPointRWIdName ? eZuPointRWName : eColumn);
    if (eColumn != eZuPointRWIdName) continue;
    for (ZuPoint* pPoint = pPoints->First(); pPoint != nullptr; pPoint = pPoint->Next()) {
      pPoint->SetName(PointLabel(*pPoint).c_str());
    }
  }
  columns.push_back(eZuPointRWEnd);
  pPoints->SetMask(ColumnTable(columns.data()));
  std::ostringstream text;
  text.imbue(std::locale::classic());
  pPoints->Write(text);
  pOutput->Stream() << WithoutExponents(text.str());
  if (pPoints->Count() > 0) pOutput->Stream() << '\n';
}

namespace {

// Noise of a computation with numbers of so many decimals.
void DropNoise(int iDecimals, ZuPointList* pPoints) {
  const double dNoise = 1e-6 * std::pow(10.0, -iDecimals);
  for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    for (double* pd : {&p->m_dX, &p->m_dY, &p->m_dZ}) {
      if (std::fabs(*pd) < dNoise) *pd = 0.0;
    }
  }
}

}  // namespace

void WritePoints(ZuPointList* pPoints, const PointFormat& format, OutputFile* pOutput) {
  const ZuTableForm form = format.form.value_or(ZuTableForm());
  if (format.iDecimals < 0 && form.m_cDelimiter == '\0' && form.m_aTitles.empty()) {
    DropNoise(form.m_iDecimals, pPoints);
    WritePoints(pPoints, format.strColumns, pOutput);
    return;
  }
  ZuWriteTable(pOutput->Stream(), *pPoints, form, format.iDecimals);
}

std::string ReadWholeFile(const std::string& strPath) {
  return InputFile(strPath, "a file").Text();
}

}  // namespace cli
