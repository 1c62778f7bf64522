// Ways to cut a line of text into fields. The fields are parts of the line.
#pragma once

#include <string_view>
#include <vector>

using ZuLineFields = std::vector<std::string_view>;

// Without the blanks and tabs around it.
std::string_view ZuTrimmed(std::string_view text);

// The delimiters of coordinate files, and those of files with decimal commas.
constexpr std::string_view kZuAnyDelimiter = " \t;,";
constexpr std::string_view kZuNoComma = " \t;";

// Runs of delimiters count once; a field that starts with '"' ends at the next.
void ZuSplitLoosely(std::string_view line, std::string_view delimiters, ZuLineFields* pFields);

// By one delimiter alone: blanks around a field go, a field that starts with '"' ends at the next.
// Runs of tabs count once, since they align columns.
void ZuSplitBy(char cDelimiter, std::string_view line, ZuLineFields* pFields);

// The first of ';', tab and ',' that the line has; 0 for none.
char ZuDividerOf(std::string_view line);
