#include "platform/pdf/QpdfStructure.h"

#include "platform/pdf/DocumentFile.h"
#include "platform/pdf/PageTree.h"
#include "platform/pdf/Passwords.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <cmath>

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFWriter.hh>

namespace inkory
{

namespace
{

constexpr double maxSide = 14'400;
constexpr double maxCoordinate = 1e9;

// The part of a that lies in b; no area where they do not meet.
PageRect intersection(const PageRect &a, const PageRect &b)
{
    const double left = std::max(a.x, b.x);
    const double bottom = std::max(a.y, b.y);
    return {left, bottom, std::min(a.maxX(), b.maxX()) - left, std::min(a.maxY(), b.maxY()) - bottom};
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
    if (mediaBox && !mediaBox->isEmpty())
        geometry.mediaBox = *mediaBox;
    geometry.mediaBox.width = std::min(geometry.mediaBox.width, maxSide);
    geometry.mediaBox.height = std::min(geometry.mediaBox.height, maxSide);
    geometry.cropBox = cropBox ? intersection(geometry.mediaBox, *cropBox) : geometry.mediaBox;
    if (geometry.cropBox.isEmpty())
        geometry.cropBox = geometry.mediaBox;
    geometry.rotation = normalizedRotation(static_cast<int>(rotation % 360));
    return geometry;
}

QString changeRefusal(QPDF &document)
{
    if (!document.isEncrypted() || document.ownerPasswordMatched() || document.allowModifyOther())
        return {};
    return QCoreApplication::translate("DocumentWriter", "The author of this document does not allow changes to it.");
}

QByteArray repairedDocument(const QByteArray &bytes, const QByteArray &password)
{
    try {
        const QpdfFile file = openWithQpdf(bytes, password);
        std::vector<QPDFObjectHandle> pages;
        for (const QpdfPage &page : readPages(*file.document))
            pages.push_back(*page.object);
        if (pages.empty())
            return {};
        setPages(*file.document, pages);
        QPDFWriter writer(*file.document);
        writer.setOutputMemory();
        writer.setStreamDataMode(qpdf_s_preserve);
        writer.write();
        const auto buffer = writer.getBufferSharedPointer();
        return QByteArray(reinterpret_cast<const char *>(buffer->getBuffer()),
                          static_cast<qsizetype>(buffer->getSize()));
    } catch (const std::exception &) {
        return {}; // beyond repair, which the caller tells the person
    }
}

bool isProtectionUnknown(const DocumentFile &file)
{
    try {
        if (file.hasPrivateCopy())
            openWithQpdf(file.bytes(), {});
        else
            newDocument()->processFile(QFile::encodeName(file.descriptorPath()).constData());
    } catch (const QPDFExc &exception) {
        return exception.getErrorCode() == qpdf_e_unsupported;
    } catch (const std::exception &) {
        return false; // damaged in some other way, which is not what was asked
    }
    return false;
}

} // namespace inkory
