#include "support/Tools.h"

#include "platform/core/Log.h"

#include <QDir>
#include <QFile>
#include <QPainter>
#include <QProcess>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace inkory::test
{

namespace
{

QStringList passwordOption(const QString &password)
{
    return password.isEmpty() ? QStringList{} : QStringList{QStringLiteral("-upw"), password};
}

QStringList pageOptions(int page)
{
    const QString number = QString::number(page);
    return {QStringLiteral("-f"), number, QStringLiteral("-l"), number};
}

QImage onWhite(const QImage &image)
{
    QImage result(image.size(), QImage::Format_RGB32);
    result.fill(Qt::white);
    QPainter painter(&result);
    painter.drawImage(QRect(QPoint(0, 0), image.size()), image);
    return result;
}

int channelDifference(QRgb first, QRgb second)
{
    return std::max({std::abs(qRed(first) - qRed(second)), std::abs(qGreen(first) - qGreen(second)),
                     std::abs(qBlue(first) - qBlue(second))});
}

} // namespace

ToolOutcome runTool(const QString &program, const QStringList &arguments)
{
    constexpr int limit = 60'000; // milliseconds
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    ToolOutcome outcome;
    if (!process.waitForStarted(limit)) {
        outcome.errors = process.errorString().toUtf8();
        return outcome;
    }
    process.closeWriteChannel();
    if (!process.waitForFinished(limit)) {
        process.kill();
        process.waitForFinished();
        outcome.errors = program.toUtf8() + " was killed at its time limit";
        return outcome;
    }
    outcome.output = process.readAllStandardOutput();
    outcome.errors = process.readAllStandardError();
    if (process.exitStatus() == QProcess::NormalExit)
        outcome.exitCode = process.exitCode();
    return outcome;
}

QString writeFile(const QString &folder, const QString &name, const QByteArray &bytes)
{
    QString path = QDir(folder).filePath(name);
    QFile file(path);
    const bool written = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
    EXPECT_TRUE(written) << path.toStdString() << ": " << file.errorString().toStdString();
    return path;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString() << ": " << file.errorString().toStdString();
    return file.readAll();
}

std::optional<std::vector<int>> pdfRotations(const QString &path)
{
    const ToolOutcome outcome = runTool(QStringLiteral("pdfinfo"), {QStringLiteral("-f"), QStringLiteral("1"),
                                                                    QStringLiteral("-l"), QStringLiteral("-1"), path});
    if (!outcome.succeeded())
        return std::nullopt;
    static const QRegularExpression rotation(QStringLiteral("^Page +\\d+ rot: +(\\d+)"),
                                             QRegularExpression::MultilineOption);
    std::vector<int> rotations;
    for (auto page = rotation.globalMatch(QString::fromUtf8(outcome.output)); page.hasNext();)
        rotations.push_back(page.next().captured(1).toInt());
    return rotations;
}

QImage renderWithPdftoppm(const QString &path, int page, double dotsPerInch, const QString &password)
{
    const QStringList options{QStringLiteral("-png"), QStringLiteral("-cropbox"), QStringLiteral("-r"),
                              QString::number(dotsPerInch)};
    const ToolOutcome outcome =
        runTool(QStringLiteral("pdftoppm"), options + pageOptions(page) + passwordOption(password) + QStringList{path});
    return QImage::fromData(outcome.output, "PNG");
}

QString pdfText(const QString &path, int page)
{
    return QString::fromUtf8(
        runTool(QStringLiteral("pdftotext"), pageOptions(page) + QStringList{path, QStringLiteral("-")}).output);
}

std::vector<ListedImage> pdfImages(const QString &path, const QString &password)
{
    const ToolOutcome outcome = runTool(QStringLiteral("pdfimages"), QStringList{QStringLiteral("-list")} +
                                                                         passwordOption(password) + QStringList{path});
    std::vector<ListedImage> images;
    // page num type width height color comp bpc enc interp object generation ...
    for (const QString &line : QString::fromUtf8(outcome.output).split(u'\n')) {
        const QStringList fields = line.simplified().split(u' ');
        if (fields.size() > 10 && fields[0] != QLatin1String("page"))
            images.push_back({fields[2], fields[8], fields[10].toInt()});
    }
    return images;
}

std::vector<QImage> pdfImagePixels(const QString &path)
{
    const QTemporaryDir folder;
    const ToolOutcome outcome =
        runTool(QStringLiteral("pdfimages"), {QStringLiteral("-png"), path, folder.filePath(QStringLiteral("image"))});
    EXPECT_TRUE(outcome.succeeded()) << outcome.errors.toStdString();
    std::vector<QImage> images;
    for (const QString &name : QDir(folder.path()).entryList(QDir::Files, QDir::Name))
        images.emplace_back(folder.filePath(name));
    return images;
}

QString qpdfCheck(const QString &path, const QString &password)
{
    QStringList arguments{QStringLiteral("--check"), path};
    if (!password.isEmpty())
        arguments.prepend(QStringLiteral("--password=") + password);
    const ToolOutcome outcome = runTool(QStringLiteral("qpdf"), arguments);
    if (outcome.succeeded())
        return {};
    return QString::fromUtf8(outcome.output + outcome.errors);
}

QRect findInkBounds(const QImage &image, const QColor &color, int tolerance)
{
    const QImage pixels = onWhite(image);
    QRect bounds;
    for (int y = 0; y < pixels.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(pixels.constScanLine(y));
        for (int x = 0; x < pixels.width(); ++x) {
            if (channelDifference(line[x], color.rgb()) <= tolerance)
                bounds |= QRect(x, y, 1, 1);
        }
    }
    return bounds;
}

int largestDifference(const QImage &first, const QImage &second)
{
    if (first.size() != second.size())
        return 255;
    const QImage one = onWhite(first);
    const QImage other = onWhite(second);
    int largest = 0;
    for (int y = 0; y < one.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(one.constScanLine(y));
        const auto *otherLine = reinterpret_cast<const QRgb *>(other.constScanLine(y));
        for (int x = 0; x < one.width(); ++x)
            largest = std::max(largest, channelDifference(line[x], otherLine[x]));
    }
    return largest;
}

void expectNear(const QRectF &found, const QRectF &expected, double tolerance)
{
    EXPECT_NEAR(found.x(), expected.x(), tolerance);
    EXPECT_NEAR(found.y(), expected.y(), tolerance);
    EXPECT_NEAR(found.width(), expected.width(), tolerance);
    EXPECT_NEAR(found.height(), expected.height(), tolerance);
}

LogCatcher::LogCatcher()
{
    setLogListener([this](const QString &line) {
        const QMutexLocker lock(&m_mutex);
        m_lines.append(line); // NOLINT(clang-analyzer-core.CallAndMessage): it takes the captured "this" for null
    });
}

LogCatcher::~LogCatcher()
{
    setLogListener({});
}

QStringList LogCatcher::lines() const
{
    const QMutexLocker lock(&m_mutex);
    return m_lines;
}

bool LogCatcher::contains(const QString &part) const
{
    const QStringList all = lines();
    return std::any_of(all.begin(), all.end(), [&](const QString &line) { return line.contains(part); });
}

} // namespace inkory::test
