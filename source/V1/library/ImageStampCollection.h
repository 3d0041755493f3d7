#pragma once

#include "platform/core/Image.h"

#include <QCoreApplication>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <memory>

/// The person's library of signature images: files in a private folder, the list of those that belong to the library,
/// and every image in memory from the first use on. Used only through the class's own operations, which forward to one
/// instance for the whole process; the selection dialog edits the library, the signature window saves into it.
///
/// Several processes may change the library at the same time: each change takes in what others have added and removed.
///
/// Main thread only. Files are read on other threads; while the first use or a change waits for them, an event loop
/// keeps the windows painted and input waits. Failures are logged; problems() tells the person about those of the last
/// change.
class ImageStampCollection
{
    Q_DECLARE_TR_FUNCTIONS(ImageStampCollection)

public:
    /// Loads the library when it is first called; this may show the one-time notice to people who come from early
    /// versions.
    static ImageStampCollection &sharedImageStampCollection();

    ~ImageStampCollection();
    ImageStampCollection(const ImageStampCollection &) = delete;
    ImageStampCollection &operator=(const ImageStampCollection &) = delete;

    /// The file name extensions of images that can be read, each in lower and in upper case. Loads nothing.
    static const QStringList &stampViewFileTypes();
    /// Whether the URL names an existing regular file with exactly one of these extensions. Loads nothing.
    static bool validateImageUrl(const QUrl &url);
    /// The folder that holds the library's files; no URL while there is no usable Application Support folder.
    static QUrl applicationSupportSignaturesUrl();

    static qsizetype count();
    /// The image at a position below count(); none at others.
    static inkory::ImagePtr stampImageAtIndex(qsizetype index);
    /// Takes the image out of the library and deletes its file if it lies in the library's folder. Does nothing for an
    /// index that is no position.
    static void removeStampImageAtIndex(qsizetype index);
    /// Copies image files into the library, at its end. Answers the position of the last one that was added, or -1 when
    /// none was. What cannot be read as an image is skipped.
    static int addImages(const QList<QUrl> &urls);
    static int addImages(const QStringList &paths);
    /// Writes the image as a new PNG file and adds this very object to the library. Answers it, or none on failure.
    static inkory::ImagePtr saveImageToUserData(const inkory::ImagePtr &image);

    /// What the last change could not do, a sentence for the person each; empty when it all went well.
    static QStringList problems();

    /// The images by key, which is the fully percent-encoded URL of the file.
    const QHash<QString, inkory::ImagePtr> &imageStampList() const { return m_imageStampList; }
    /// The keys in the order in which the images were added.
    const QStringList &imageStampListIndex() const { return m_imageStampListIndex; }

    /// For tests: forgets what the process knows of the library, as a restart does. The disk is untouched.
    static void forgetSharedState();

private:
    ImageStampCollection();

    void load();
    bool migrateEntry(const QString &storedString, QUrl &url, QList<QUrl> &filesToAddAgain) const;

    void removeEntry(qsizetype index);
    int addFiles(const QList<QUrl> &urls);
    inkory::ImagePtr saveImage(const inkory::ImagePtr &image);
    bool ensureSignaturesDirectory();

    void reportNotAdded(const QString &reason);
    void insert(const QString &key, const inkory::ImagePtr &image);
    void takeIn(const QStringList &keys);
    void persist();

    QHash<QString, inkory::ImagePtr> m_imageStampList;
    QStringList m_imageStampListIndex;
    QStringList m_storedList; // as this process last read or wrote it
    QStringList m_problems;
};
