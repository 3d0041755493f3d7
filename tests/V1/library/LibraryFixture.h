#pragma once

#include "V1/library/ImageStampCollection.h"
#include "platform/core/UserDefaults.h"
#include "platform/widgets/Alert.h"
#include "support/Tools.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

/// An empty home folder and an empty library for each test; log lines and alerts are collected.
class LibraryFixture : public ::testing::Test
{
protected:
    LibraryFixture()
    {
        qputenv("XDG_DATA_HOME", path(u"data"_qs).toLocal8Bit());
        qputenv("HOME", m_home.path().toLocal8Bit());
        inkory::Alert::setResponder([this](const inkory::Alert &alert) {
            m_alerts.append(alert);
            return 1;
        });
        restart();
    }

    ~LibraryFixture() override
    {
        inkory::Alert::setResponder({});
        ImageStampCollection::forgetSharedState();
    }

    /// What a new process knows: the disk.
    void restart()
    {
        inkory::UserDefaults::setStandardFilePath(path(u"settings.json"_qs));
        ImageStampCollection::forgetSharedState();
    }

    QString path(const QString &name) const { return m_home.filePath(name); }
    QString signaturesFolder() const { return path(u"data/inkory/signatures"_qs); }
    QStringList filesInLibrary() const { return QDir(signaturesFolder()).entryList(QDir::Files); }

    static QString key(const QString &file) { return QString::fromLatin1(QUrl::fromLocalFile(file).toEncoded()); }

    static QStringList storedList() { return inkory::UserDefaults::standard().stringList(u"IMAGE_STAMP_URL_LIST"_qs); }

    static void store(const QStringList &keys, bool migrationDone)
    {
        inkory::UserDefaults &defaults = inkory::UserDefaults::standard();
        defaults.setStringList(u"IMAGE_STAMP_URL_LIST"_qs, keys);
        defaults.setBoolean(u"STAMPS_SANDBOX_MIGRAION_DONE"_qs, migrationDone);
        ASSERT_TRUE(defaults.synchronize());
    }

    QString makeFile(const QString &name, const QByteArray &bytes) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        return inkory::test::writeFile(m_home.path(), name, bytes);
    }

    /// A PNG file whose width tells it from others.
    QString makeImage(const QString &name, int width = 30) const
    {
        const QString file = makeFile(name, {});
        QImage image(width, 10, QImage::Format_ARGB32);
        image.fill(QColor(20, 40, 120));
        EXPECT_TRUE(image.save(file, "PNG"));
        return file;
    }

    /// One signature for each width.
    void addSignatures(const QList<int> &someWidths) const
    {
        for (const int width : someWidths)
            ASSERT_GE(ImageStampCollection::addImages(QStringList{makeImage(u"a.png"_qs, width)}), 0);
    }

    /// The widths of the library's images, in its order.
    static QList<int> widths()
    {
        QList<int> result;
        for (int i = 0; i < ImageStampCollection::count(); ++i)
            result.append(ImageStampCollection::stampImageAtIndex(i)->pixels().width());
        return result;
    }

    QTemporaryDir m_home;
    inkory::test::LogCatcher m_log;
    QList<inkory::Alert> m_alerts;
};
