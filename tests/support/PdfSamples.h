#pragma once

#include <QByteArray>
#include <QSizeF>
#include <QString>

#include <ostream>
#include <vector>

namespace inkory::test
{

/// One page of a file to be made. Everything is written into the file as it stands here, also where it is wrong.
struct PageSpec
{
    /// Four numbers, "x0 y0 x1 y1"; empty for a page without the entry.
    QByteArray mediaBox = "0 0 612 792";
    QByteArray cropBox = {};
    /// A number of degrees, clockwise; empty for a page without the entry.
    QByteArray rotate = {};
    /// One content stream each; none for a page without the entry.
    std::vector<QByteArray> contents = {};
    /// The dictionary. /F1 is Helvetica in the standard one; empty for a page without the entry.
    QByteArray resources = "<< /Font << /F1 3 0 R >> >>";
    /// Further entries, such as "/UserUnit 2".
    QByteArray more = {};
};

/// A healthy file (PDF 1.7, cross-reference table) with these pages. Object 1 is the catalogue, 2 the root of the page
/// tree, 3 the font Helvetica. `treeEntries` go into the root, where pages inherit them.
QByteArray makePdf(const std::vector<PageSpec> &pages, const QByteArray &treeEntries = {});

/// The same with further entries in the catalogue and further objects behind the pages. With one content stream each,
/// the pages are objects 5, 7 and so on, and the first further object is number 4 + 2 x pages.
QByteArray makePdf(const std::vector<PageSpec> &pages, const QByteArray &treeEntries,
                   const QByteArray &catalogueEntries, const std::vector<QByteArray> &furtherObjects);

/// An annotation for "/Annots [...]": the rectangle ("x0 y0 x1 y1") leads where the entries say, such as
/// "/Dest [5 0 R /Fit]" or "/A << /S /URI /URI (https://example.org) >>".
QByteArray linkAnnotation(const QByteArray &rectangle, const QByteArray &entries);

/// A font for a page's resources in which "a" stands for the first of these glyph names, "b" for the next one: how text
/// of any characters is made, "/uni05D0" or "/u1D400".
QByteArray fontOf(const QByteArray &glyphNames);

/// Content: one line of text (ASCII, no parentheses) in Helvetica, its base line beginning at the point.
QByteArray textContent(const QByteArray &text, double x = 72, double y = 700, double size = 18);

/// Content: a filled rectangle, `color` being "red green blue" from 0 to 1.
QByteArray rectangleContent(double x, double y, double width, double height, const QByteArray &color);

/// One page per text, US letter.
QByteArray textPages(const std::vector<QByteArray> &texts);

/// `count` pages that say "Page 1" and so on.
QByteArray manyPages(int count);

/// The file rewritten by the qpdf program with these options; empty (and a failed test) where it fails.
QByteArray rewriteWithQpdf(const QByteArray &file, const QStringList &options);

/// What becomes of a sample when it is opened.
enum class Opens { Yes, WithPassword, No };

/// One kind of trouble as a file.
struct Sample
{
    /// Lower case, with hyphens: also right for a file name and a test name.
    QString name;
    QByteArray bytes;
    Opens opens = Opens::Yes;
    /// Once it is open; 0 where it does not open.
    int pages = 1;
    /// Of the first page, before its rotation, in points; 0 x 0 where it does not open.
    QSizeF shownBox = {612, 792};
    /// Of the first page: 0, 90, 180 or 270 degrees.
    int rotation = 0;
    /// The password that opens it.
    QString password = {};
    /// False where poppler sees another number of pages, or another box or rotation of the first page.
    bool popplerAgrees = true;
};

/// Names a sample in the messages of a test.
void PrintTo(const Sample &sample, std::ostream *stream);

/// The file that everything else is a variation of: three pages, "First page" to "Third page", a red square of 100
/// points at (100, 500) on each.
QByteArray threePages();

/// One sample for each kind of trouble. Made once; needs the qpdf program.
const std::vector<Sample> &troubleSamples();

/// The one of that name; an empty sample (and a failed test) where there is none.
Sample troubleSample(const QString &name);

} // namespace inkory::test
