#include "V1/library/SignatureFiles.h"

#include "V1/library/ImageStampCollection.h"
#include "platform/core/DurableFile.h"
#include "platform/core/Log.h"
#include "platform/pdf/ImageFile.h"

#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QThreadPool>
#include <QUuid>

#include <atomic>
#include <functional>

namespace inkory
{

namespace
{

constexpr unsigned onlyForTheOwner = 0600;
constexpr qint64 largestFileMegabytes = 256;
constexpr int mostThreads = 2; // each may hold a large image while it is decoded

/// Calls the task once for each number below the count, on other threads.
void runOnWorkers(std::size_t count, const std::function<void(std::size_t)> &task)
{
    if (count == 0)
        return;
    std::atomic<std::size_t> unfinished = count;
    QEventLoop loop;
    QThreadPool pool; // last, so that it waits for its threads before anything else goes, also when the program quits
    pool.setMaxThreadCount(mostThreads);
    for (std::size_t index = 0; index < count; ++index) {
        pool.start([&, index] {
            task(index);
            if (--unfinished == 0)
                QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
        });
    }
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

Result<QByteArray> readWhole(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Error{file.errorString()};
    if (file.size() > largestFileMegabytes * 1024 * 1024)
        return Error{ImageStampCollection::tr("The file is larger than %1 MB.").arg(largestFileMegabytes)};
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError || bytes.isEmpty())
        return Error{file.error() != QFileDevice::NoError ? file.errorString()
                                                          : ImageStampCollection::tr("The file is empty.")};
    return bytes;
}

Error refusal(const QUrl &url)
{
    const QFileInfo file(url.toLocalFile());
    if (url.isLocalFile() && file.isDir())
        return {ImageStampCollection::tr("This is a folder.")};
    if (!url.isLocalFile() || !file.exists())
        return {ImageStampCollection::tr("There is no such file.")};
    return {ImageStampCollection::tr("This is not an image file that can be read.")};
}

Result<ImagePtr> readSignature(const QUrl &url)
{
    if (!ImageStampCollection::validateImageUrl(url))
        return refusal(url);
    auto image = readImageFile(url.toLocalFile());
    if (!image)
        logLine(QStringLiteral("Unable to read image %1. error:\n%2").arg(signatureKey(url), image.error().message));
    return image;
}

Result<CopiedSignature> copySignature(const QUrl &url, const QString &folder)
{
    const auto image = readSignature(url);
    if (!image)
        return image.error();
    const QString source = url.toLocalFile();
    const QString destination = newSignaturePath(folder, QFileInfo(source).suffix());
    const QString key = signatureKey(QUrl::fromLocalFile(destination));
    const auto bytes = readWhole(source);
    const auto copied = bytes ? replaceFileDurably(destination, *bytes, onlyForTheOwner) : bytes.error();
    if (!copied) {
        logLine(QStringLiteral("Unable to copy image %1 to user Application Support Directory (%2). error:\n%3")
                    .arg(signatureKey(url), key, copied.error().message));
        QFile::remove(destination); // it may be complete but not known to be on the disk
        return copied.error();
    }
    return CopiedSignature{key, *image};
}

} // namespace

QString signatureKey(const QUrl &url)
{
    return QString::fromLatin1(url.toEncoded());
}

QString newSignaturePath(const QString &folder, const QString &extension)
{
    return QStringLiteral("%1/%2.%3").arg(folder, QUuid::createUuid().toString(QUuid::WithoutBraces), extension);
}

std::vector<ImagePtr> readSignatures(const QList<QUrl> &urls)
{
    std::vector<ImagePtr> images(static_cast<std::size_t>(urls.size()));
    runOnWorkers(images.size(), [&](std::size_t index) {
        if (const auto image = readSignature(urls.at(static_cast<qsizetype>(index))))
            images[index] = *image;
    });
    return images;
}

std::vector<Result<CopiedSignature>> copySignatures(const QList<QUrl> &urls, const QString &folder)
{
    std::vector<Result<CopiedSignature>> copies(static_cast<std::size_t>(urls.size()), Error{});
    runOnWorkers(copies.size(), [&](std::size_t index) {
        copies[index] = copySignature(urls.at(static_cast<qsizetype>(index)), folder);
    });
    return copies;
}

} // namespace inkory
