// The program's toolbox of small stateless helpers: path splitting, the sort
// keys of the file lists and the display-density rule.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

namespace trel {

// Text behind the last separator; the whole text when there is none.
std::string FileNameOf(const std::string& path);
// Text before and with the last separator; empty when there is none.
std::string FolderOf(const std::string& path);
// Each digit d becomes 9 - d and each "-" a blank, so that a descending order of
// fixed-width digit strings is an ascending text order.
std::string InvertDigits(std::string text);

// Columns of the file lists.
enum class SortColumn { Name = 0, Size = 1, Date = 2 };

// One cell as the sort sees it. A numeric cell carries its value, a date cell
// its time stamp; every other cell (a folder's blank size, a parent entry
// without a date) sorts by its text.
struct SortCell {
  std::string text;
  bool hasValue = false;
  int64_t value = 0;  // the number, or seconds since the epoch for a date
};

// The hidden sort text of a cell: compared as plain text, keys give the order of
// names (case-blind), of numbers by value and of dates to the second, ascending
// or descending. Cells without a value keep their text, which sorts before any
// number or date because keys of values start with "&".
std::string SortKeyOf(const SortCell& cell, SortColumn column, bool ascending);

// Forms are designed at 12 twips a pixel. Factors that bring a design measure
// to another density, and whether they apply at all: only when both twip sizes
// differ from the design's.
struct DensityFactors {
  double fx = 1.0;
  double fy = 1.0;
  bool apply = false;
};
DensityFactors DensityFactorsFor(double twipsPerPixelX, double twipsPerPixelY);
// Twips per pixel of a screen with the given logical dots per inch.
double TwipsPerPixel(double logicalDpi);
// Font sizes scale with the mean of both factors.
double ScaledFontSize(double size, const DensityFactors& f);

}  // namespace trel
