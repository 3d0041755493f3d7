#include "V1/library/ImageStampCollection.h"

#include "V1/library/NSFileManager+DirectoryLocations.h"
#include "V1/library/SignatureFiles.h"
#include "V1/library/SignatureListStore.h"
#include "platform/core/DisplayText.h"
#include "platform/core/DurableFile.h"
#include "platform/core/Log.h"
#include "platform/widgets/Alert.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPlainTextEdit>

#include <optional>

using inkory::displayable;
using inkory::Image;
using inkory::ImagePtr;
using inkory::logLine;
using inkory::newSignaturePath;
using inkory::signatureKey;

namespace
{

constexpr unsigned onlyForTheOwner = 0600;
constexpr QLatin1String signaturesFolderName("signatures");
constexpr QLatin1String formerSignaturesFolder("/library/application support/inkory/signatures/");
constexpr QSize noticeSize(400, 100);

/// What the class itself remembers for the life of the process.
struct ClassState
{
    std::optional<QUrl> signaturesUrl;
    std::unique_ptr<ImageStampCollection> shared;
};

ClassState &classState()
{
    static ClassState state;
    return state;
}

QUrl findSignaturesUrl()
{
    const auto support = inkory::applicationSupportDirectory();
    return support ? QUrl::fromLocalFile(*support + QLatin1Char('/') + signaturesFolderName + QLatin1Char('/'))
                   : QUrl();
}

/// Without the slash at its end.
QString signaturesPath()
{
    return ImageStampCollection::applicationSupportSignaturesUrl().adjusted(QUrl::StripTrailingSlash).toLocalFile();
}

inkory::SignatureListStore listStore()
{
    const QString path = signaturesPath();
    return inkory::SignatureListStore(path.isEmpty() ? QString() : path + QStringLiteral(".json"));
}

std::unique_ptr<QWidget> makeNoticeText()
{
    auto text = std::make_unique<QPlainTextEdit>();
    text->setReadOnly(true);
    text->setFrameShape(QFrame::NoFrame);
    text->viewport()->setAutoFillBackground(false);
    text->setFixedSize(noticeSize);
    text->setTabChangesFocus(true);
    const QStringList paragraphs{
        ImageStampCollection::tr(
            "Inkory has been upgraded to support Apple's application sandbox guidelines for increased security."),
        ImageStampCollection::tr(
            "As a result, Inkory cannot access files on your hard drive without your explicit approval. Your signature "
            "files can be re-added safely to Inkory by using the \"Add Image from Disk\" option in the signature "
            "selection "
            "window."),
        ImageStampCollection::tr("(this message will be only displayed once)")};
    text->setPlainText(paragraphs.join(QStringLiteral("\n\n")));
    return text;
}

void showNotice()
{
    inkory::Alert alert;
    alert.style = inkory::Alert::Style::Informational;
    alert.messageText = ImageStampCollection::tr("Notice about signature files");
    alert.buttons = {ImageStampCollection::tr("OK")};
    alert.accessoryView = makeNoticeText;
    alert.runModal();
}

} // namespace

ImageStampCollection &ImageStampCollection::sharedImageStampCollection()
{
    auto &shared = classState().shared;
    if (!shared) {
        shared.reset(new ImageStampCollection);
        shared->load(); // after it is in place: the notice runs the event loop
    }
    return *shared;
}

ImageStampCollection::ImageStampCollection() = default;
ImageStampCollection::~ImageStampCollection() = default;

void ImageStampCollection::forgetSharedState()
{
    classState() = {};
}

const QStringList &ImageStampCollection::stampViewFileTypes()
{
    static const QStringList types = Image::fileExtensions();
    return types;
}

bool ImageStampCollection::validateImageUrl(const QUrl &url)
{
    const QFileInfo file(url.toLocalFile());
    return url.isLocalFile() && file.isFile() && stampViewFileTypes().contains(file.suffix());
}

QUrl ImageStampCollection::applicationSupportSignaturesUrl()
{
    auto &url = classState().signaturesUrl;
    if (!url)
        url = findSignaturesUrl();
    return *url;
}

qsizetype ImageStampCollection::count()
{
    return sharedImageStampCollection().m_imageStampListIndex.size();
}

ImagePtr ImageStampCollection::stampImageAtIndex(qsizetype index)
{
    const auto &shared = sharedImageStampCollection();
    return shared.m_imageStampList.value(shared.m_imageStampListIndex.value(index));
}

void ImageStampCollection::removeStampImageAtIndex(qsizetype index)
{
    sharedImageStampCollection().removeEntry(index);
}

int ImageStampCollection::addImages(const QList<QUrl> &urls)
{
    return sharedImageStampCollection().addFiles(urls);
}

int ImageStampCollection::addImages(const QStringList &paths)
{
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls.append(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()));
    return sharedImageStampCollection().addFiles(urls);
}

ImagePtr ImageStampCollection::saveImageToUserData(const ImagePtr &image)
{
    return sharedImageStampCollection().saveImage(image);
}

QStringList ImageStampCollection::problems()
{
    return sharedImageStampCollection().m_problems;
}

void ImageStampCollection::load()
{
    const auto stored = listStore().read().value_or(inkory::SignatureListStore::Contents());
    QList<QUrl> urls;
    QList<QUrl> filesToAddAgain;
    for (const QString &storedString : stored.urls) {
        QUrl url(storedString);
        if ((stored.migrationDone || migrateEntry(storedString, url, filesToAddAgain)) && !urls.contains(url))
            urls.append(url);
    }
    const auto images = inkory::readSignatures(urls);
    for (std::size_t i = 0; i < images.size(); ++i) {
        if (images[i])
            insert(signatureKey(urls.at(static_cast<qsizetype>(i))), images[i]);
    }
    m_storedList = stored.urls;
    if (!filesToAddAgain.isEmpty())
        showNotice();
    persist();
}

/// Whether the entry of an early version stays; its URL then names the file in today's folder.
bool ImageStampCollection::migrateEntry(const QString &storedString, QUrl &url, QList<QUrl> &filesToAddAgain) const
{
    const QString path = url.path(QUrl::FullyDecoded);
    if (!path.toLower().contains(formerSignaturesFolder)) {
        if (QFileInfo::exists(path))
            filesToAddAgain.append(url);
        return false;
    }
    const QString name = storedString.mid(storedString.lastIndexOf(QLatin1Char('/')) + 1);
    url = QUrl(signatureKey(applicationSupportSignaturesUrl()) + name);
    return QFileInfo::exists(url.toLocalFile());
}

int ImageStampCollection::addFiles(const QList<QUrl> &urls)
{
    m_problems.clear();
    if (!ensureSignaturesDirectory())
        return -1;
    const auto copies = inkory::copySignatures(urls, signaturesPath());
    QString lastKey;
    for (std::size_t i = 0; i < copies.size(); ++i) {
        if (copies[i]) {
            lastKey = copies[i]->key;
            insert(lastKey, copies[i]->image);
            continue;
        }
        const QUrl url = urls.at(static_cast<qsizetype>(i)).adjusted(QUrl::StripTrailingSlash);
        m_problems.append(
            tr("“%1” could not be added: %2").arg(displayable(url.fileName()), copies[i].error().message));
    }
    persist();
    return static_cast<int>(m_imageStampListIndex.indexOf(lastKey));
}

ImagePtr ImageStampCollection::saveImage(const ImagePtr &image)
{
    m_problems.clear();
    if (!image || !ensureSignaturesDirectory())
        return nullptr;
    const QString path = newSignaturePath(signaturesPath(), QStringLiteral("png"));
    const auto bytes = image->pngBytes();
    const auto written = bytes ? inkory::replaceFileDurably(path, *bytes, onlyForTheOwner) : bytes.error();
    if (!written) {
        logLine(QStringLiteral("Unable to save image to '%1'").arg(displayable(path)));
        reportNotAdded(written.error().message);
        return nullptr;
    }
    insert(signatureKey(QUrl::fromLocalFile(path)), image);
    persist();
    return image;
}

void ImageStampCollection::removeEntry(qsizetype index)
{
    m_problems.clear();
    if (index < 0 || index >= m_imageStampListIndex.size())
        return;
    const QString key = m_imageStampListIndex.at(index);
    const QString path = QDir::cleanPath(QUrl(key).toLocalFile());
    const QString folder = signaturesPath();
    if (!folder.isEmpty() && path.startsWith(folder + QLatin1Char('/'), Qt::CaseInsensitive)) {
        QFile file(path);
        if (!file.remove()) {
            logLine(QStringLiteral("error removing image file:\n %1").arg(file.errorString()));
            m_problems.append(
                tr("The image file “%1” could not be deleted: %2").arg(displayable(path), file.errorString()));
        }
    }
    m_imageStampList.remove(key);
    m_imageStampListIndex.removeAt(index);
    persist();
}

bool ImageStampCollection::ensureSignaturesDirectory()
{
    auto &url = classState().signaturesUrl;
    if (!url || url->isEmpty()) // what was in the way when the process started may be gone now
        url = findSignaturesUrl();
    if (url->isEmpty()) {
        reportNotAdded(tr("The folder for signatures cannot be created."));
        return false;
    }
    const QString path = signaturesPath();
    if (QFileInfo(path).isDir())
        return true;
    if (QFileInfo::exists(path)) {
        logLine(
            QStringLiteral("Unable to save image to user Application Support Directory. Location '%1' exists but isn't "
                           "a directory!")
                .arg(displayable(path)));
        reportNotAdded(tr("“%1” is in the way: it is a file, not a folder.").arg(displayable(path)));
        return false;
    }
    if (const auto made = inkory::createPrivateDirectory(path); !made) {
        logLine(QStringLiteral("Unable to create signatures directory in Application Support '%1'! error:\n%2")
                    .arg(displayable(path), made.error().message));
        reportNotAdded(made.error().message);
        return false;
    }
    return true;
}

void ImageStampCollection::reportNotAdded(const QString &reason)
{
    m_problems.append(tr("The signature could not be added: %1").arg(reason));
}

void ImageStampCollection::insert(const QString &key, const ImagePtr &image)
{
    m_imageStampList.insert(key, image);
    m_imageStampListIndex.append(key);
}

/// Reads the images that other processes have added; they get no position by this.
void ImageStampCollection::takeIn(const QStringList &keys)
{
    QList<QUrl> urls;
    for (const QString &key : keys) {
        if (!m_imageStampList.contains(key) && !m_storedList.contains(key))
            urls.append(QUrl(key));
    }
    const auto images = inkory::readSignatures(urls);
    for (std::size_t i = 0; i < images.size(); ++i) {
        if (images[i])
            m_imageStampList.insert(signatureKey(urls.at(static_cast<qsizetype>(i))), images[i]);
    }
}

void ImageStampCollection::persist()
{
    const auto store = listStore();
    if (const auto stored = store.read())
        takeIn(stored->urls); // before anything changes: this runs the event loop
    QStringList list = m_imageStampListIndex;
    const auto written = store.writeChange(m_storedList, list);
    if (!written)
        m_problems.append(tr("The list of signatures could not be saved: %1").arg(written.error().message));

    // What could not be read just now stays in the stored list; the next start looks at it again.
    list.removeIf([this](const QString &key) { return !m_imageStampList.contains(key); });
    m_imageStampListIndex = list;
    m_imageStampList.removeIf([&list](const auto &each) { return !list.contains(each.key()); });
    if (written)
        m_storedList = list;
}
