#include "platform/engine/QpdfStructure.h"

#include "platform/core/Log.h"
#include "platform/engine/PageTree.h"
#include "platform/engine/Passwords.h"

#include <algorithm>
#include <cmath>

#include <qpdf/Pipeline.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFWriter.hh>

namespace inkory
{

namespace
{

constexpr double maxCoordinate = 1e9;

struct Span
{
    double start = 0;
    double length = 0;

    double end() const { return start + length; }
    bool contains(const Span &other) const { return start <= other.start && end() >= other.end(); }
};

// One that lies in the other stays as it is, to the last bit.
Span commonPart(const Span &a, const Span &b)
{
    if (a.contains(b))
        return b;
    if (b.contains(a))
        return a;
    const double start = std::max(a.start, b.start);
    return {start, std::min(a.end(), b.end()) - start};
}

// The part of a that lies in b; no area where they do not meet.
PageRect intersection(const PageRect &a, const PageRect &b)
{
    const Span across = commonPart({a.x, a.width}, {b.x, b.width});
    const Span upward = commonPart({a.y, a.height}, {b.y, b.height});
    return {across.start, upward.start, across.length, upward.length};
}

/// Collects what is written in one QByteArray.
class BytesPipeline : public Pipeline
{
public:
    BytesPipeline() : Pipeline("bytes", nullptr) {}

    void write(const unsigned char *data, std::size_t size) override
    {
        bytes.append(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    }
    void finish() override {}

    QByteArray bytes;
};

// Most warnings are about trifles that healthy files have too, such as a /Size that is too large. In these two cases
// the library looked for the objects, or for a stream's end, by itself. Its codes do not tell warnings apart.
bool tellsOfRepair(const QPDFExc &warning)
{
    const std::string &text = warning.getMessageDetail();
    return text.starts_with("Attempting to reconstruct cross-reference table") ||
           text.starts_with("recovered stream length");
}

bool hasArea(const PageRect &box)
{
    return box.width >= minPageSide && box.height >= minPageSide;
}

std::shared_ptr<QPDF> newDocument()
{
    auto document = QPDF::create();
    document->setSuppressWarnings(true);
    return document;
}

} // namespace

QpdfFile openWithQpdf(const QByteArray &bytes, const QByteArray &password)
{
    const std::vector<QByteArray> candidates = passwordCandidates(password);
    for (std::size_t i = 0;; ++i) {
        QpdfFile file{bytes, newDocument()};
        try {
            file.document->processMemoryFile("document", file.bytes.constData(),
                                             static_cast<std::size_t>(file.bytes.size()), candidates[i].constData());
            return file;
        } catch (const QPDFExc &exception) {
            if (exception.getErrorCode() != qpdf_e_password || i + 1 == candidates.size())
                throw;
        }
    }
}

std::optional<PageRect> boxFromObject(const QPDFObjectHandle &object)
{
    QPDFObjectHandle array = object;
    if (!array.isArray() || array.getArrayNItems() != 4)
        return std::nullopt;
    double numbers[4];
    for (int i = 0; i < 4; ++i) {
        QPDFObjectHandle item = array.getArrayItem(i);
        if (!item.isNumber())
            return std::nullopt;
        numbers[i] = item.getNumericValue();
        if (!std::isfinite(numbers[i]) || std::abs(numbers[i]) > maxCoordinate)
            return std::nullopt;
    }
    const auto [left, right] = std::minmax(numbers[0], numbers[2]);
    const auto [bottom, top] = std::minmax(numbers[1], numbers[3]);
    return PageRect{left, bottom, right - left, top - bottom};
}

PageGeometry cleanGeometry(const std::optional<PageRect> &mediaBox, const std::optional<PageRect> &cropBox,
                           long long rotation)
{
    PageGeometry geometry;
    if (mediaBox && hasArea(*mediaBox))
        geometry.mediaBox = *mediaBox;
    geometry.mediaBox.width = std::min(geometry.mediaBox.width, maxPageSide);
    geometry.mediaBox.height = std::min(geometry.mediaBox.height, maxPageSide);
    geometry.cropBox = cropBox ? intersection(geometry.mediaBox, *cropBox) : geometry.mediaBox;
    if (!hasArea(geometry.cropBox))
        geometry.cropBox = geometry.mediaBox;
    geometry.rotation = normalizedRotation(static_cast<int>(rotation % 360));
    return geometry;
}

bool forbidsChanges(QPDF &document)
{
    return document.isEncrypted() && !document.ownerPasswordMatched() && !document.allowModifyOther();
}

bool isRepaired(QPDF &document)
{
    const std::vector<QPDFExc> warnings = document.getWarnings();
    return std::any_of(warnings.begin(), warnings.end(), [](const QPDFExc &warning) { return tellsOfRepair(warning); });
}

OpenProblem readingProblem(const std::exception &exception)
{
    const auto *qpdfException = dynamic_cast<const QPDFExc *>(&exception);
    const qpdf_error_code_e code = qpdfException ? qpdfException->getErrorCode() : qpdf_e_damaged_pdf;
    if (code == qpdf_e_password)
        return OpenProblem::PasswordNeeded;
    return code == qpdf_e_unsupported ? OpenProblem::ProtectionUnknown : OpenProblem::Damaged;
}

void logFailure(const char *failure, const std::exception &exception)
{
    logLine(QStringLiteral("%1: %2").arg(QString::fromLatin1(failure), QString::fromLocal8Bit(exception.what())));
}

QByteArray writtenBytes(QPDF &document, qsizetype expectedSize, const std::string &minimumVersion)
{
    // Room that is not used costs no memory, while growing would copy all that is written so far.
    constexpr qsizetype roomForMore = 16'000'000;
    BytesPipeline output;
    output.bytes.reserve(expectedSize + roomForMore);
    QPDFWriter writer(document);
    writer.setOutputPipeline(&output);
    writer.setStreamDataMode(qpdf_s_preserve);
    writer.setObjectStreamMode(qpdf_o_preserve);
    if (!minimumVersion.empty())
        writer.setMinimumPDFVersion(minimumVersion);
    writer.write();
    return output.bytes;
}

RepairedDocument repairedDocument(const QByteArray &bytes, const QByteArray &password)
{
    try {
        const QpdfFile file = openWithQpdf(bytes, password);
        const std::vector<QpdfPage> pages = readPages(*file.document);
        if (pages.empty())
            return {};
        setPages(*file.document, pages);
        return {OpenProblem::None, writtenBytes(*file.document, bytes.size())};
    } catch (const std::exception &exception) {
        logFailure("the document cannot be repaired", exception);
        return {readingProblem(exception), {}};
    }
}

bool isProtectionUnknown(const QByteArray &bytes)
{
    try {
        openWithQpdf(bytes, {});
    } catch (const std::exception &exception) {
        return readingProblem(exception) == OpenProblem::ProtectionUnknown;
    }
    return false;
}

} // namespace inkory
