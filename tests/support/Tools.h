#pragma once

#include "platform/core/Geometry.h"

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QMutex>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace inkory
{

inline void PrintTo(const PageRect &rect, std::ostream *out)
{
    *out << "(" << rect.x << ", " << rect.y << ", " << rect.width << ", " << rect.height << ")";
}

} // namespace inkory

namespace inkory::test
{

/// What an external program did.
struct ToolOutcome
{
    /// The exit status; -1 where the program could not be started, crashed, or had to be killed at its time limit.
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;

    bool succeeded() const { return exitCode == 0; }
};

/// Runs a program in the C.UTF-8 locale, without input, and waits, for a minute at most.
ToolOutcome runTool(const QString &program, const QStringList &arguments);

/// Writes the bytes as a new file and answers its path; fails the running test where that is impossible.
QString writeFile(const QString &folder, const QString &name, const QByteArray &bytes);

/// All bytes of a file; empty (and a failed test) where it cannot be read.
QByteArray readFile(const QString &path);

/// The rotation of every page in degrees (0, 90, 180 or 270) as pdfinfo sees it; none where it cannot open the file.
std::optional<std::vector<int>> pdfRotations(const QString &path);

/// The shown part (crop box, turned by the page's rotation) of a page, numbered from 1, drawn by pdftoppm on white; a
/// null image where it fails.
QImage renderWithPdftoppm(const QString &path, int page, double dotsPerInch = 72, const QString &password = {});

/// The text of a page, numbered from 1, as pdftotext reads it.
QString pdfText(const QString &path, int page);

/// One line of pdfimages -list.
struct ListedImage
{
    /// "image", "smask", "stencil".
    QString type;
    /// "image" (lossless), "jpeg", "jpx", ...
    QString encoding;
    /// The object's number: equal for an image that is stored once and drawn twice.
    int object = 0;
};

/// Every image drawn on the pages of the file, as pdfimages lists them.
std::vector<ListedImage> pdfImages(const QString &path, const QString &password = {});

/// The pixels of those images, in the same order.
std::vector<QImage> pdfImagePixels(const QString &path);

/// What qpdf --check complains about; empty for a file that is clean.
QString qpdfCheck(const QString &path, const QString &password = {});

/// The smallest rectangle around all pixels whose red, green and blue differ from the colour by at most the tolerance;
/// empty where there is none.
QRect findInkBounds(const QImage &image, const QColor &color, int tolerance = 40);

/// The largest difference of a colour channel between two images, on white; 255 where their sizes differ.
int largestDifference(const QImage &first, const QImage &second);

/// Compares places and sizes, and fails the running test where one differs by more than the tolerance.
void expectNear(const QRectF &found, const QRectF &expected, double tolerance);

/// Collects what is logged while it lives, from all threads. One at a time.
class LogCatcher
{
public:
    LogCatcher();
    ~LogCatcher();
    LogCatcher(const LogCatcher &) = delete;
    LogCatcher &operator=(const LogCatcher &) = delete;

    QStringList lines() const;
    bool contains(const QString &part) const;

private:
    mutable QMutex m_mutex;
    QStringList m_lines;
};

} // namespace inkory::test
