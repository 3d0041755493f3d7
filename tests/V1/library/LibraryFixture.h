#pragma once

#include "V1/library/ImageStampCollection.h"
#include "platform/core/Log.h"
#include "platform/core/UserDefaults.h"
#include "platform/widgets/Alert.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// An empty home folder and an empty library for each test; log lines and alerts are collected.
class LibraryFixture : public ::testing::Test
{
protected:
    LibraryFixture()
    {
        qputenv("XDG_DATA_HOME", path(QStringLiteral("data")).toLocal8Bit());
        qputenv("HOME", m_home.path().toLocal8Bit());
        inkory::setLogListener([this](const QString &line) { m_log.append(line); });
        inkory::Alert::setResponder([this](const inkory::Alert &alert) {
            m_alerts.append(alert);
            return 1;
        });
        restart();
    }

    ~LibraryFixture() override
    {
        inkory::Alert::setResponder({});
        inkory::setLogListener({});
        ImageStampCollection::forgetSharedState();
    }

    /// What a new process knows: the disk.
    void restart()
    {
        inkory::UserDefaults::setStandardFilePath(settingsPath());
        ImageStampCollection::forgetSharedState();
    }

    QString path(const QString &name) const { return m_home.filePath(name); }
    QString settingsPath() const { return path(QStringLiteral("settings.json")); }
    QString supportFolder() const { return path(QStringLiteral("data/inkory")); }
    QString signaturesFolder() const { return supportFolder() + QStringLiteral("/signatures"); }
    QStringList filesInLibrary() const { return QDir(signaturesFolder()).entryList(QDir::Files); }

    static QString key(const QString &file) { return QString::fromLatin1(QUrl::fromLocalFile(file).toEncoded()); }

    static QStringList storedList()
    {
        return inkory::UserDefaults::standard().stringList(QStringLiteral("IMAGE_STAMP_URL_LIST"));
    }

    static void store(const QStringList &keys, bool migrationDone)
    {
        inkory::UserDefaults &defaults = inkory::UserDefaults::standard();
        defaults.setStringList(QStringLiteral("IMAGE_STAMP_URL_LIST"), keys);
        if (migrationDone)
            defaults.setBoolean(QStringLiteral("STAMPS_SANDBOX_MIGRAION_DONE"), true);
        ASSERT_TRUE(defaults.synchronize());
    }

    /// A PNG file whose width tells it from others.
    QString makeImage(const QString &name, int width = 30) const
    {
        const QString file = path(name);
        QDir().mkpath(QFileInfo(file).path());
        QImage image(width, 10, QImage::Format_ARGB32);
        image.fill(QColor(20, 40, 120));
        EXPECT_TRUE(image.save(file, "PNG"));
        return file;
    }

    QString makeFile(const QString &name, const QByteArray &bytes) const
    {
        const QString file = path(name);
        QDir().mkpath(QFileInfo(file).path());
        QFile out(file);
        EXPECT_TRUE(out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size());
        return file;
    }

    static QByteArray bytesOf(const QString &file)
    {
        QFile in(file);
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }

    /// The widths of the library's images, in its order.
    static QList<int> widths()
    {
        QList<int> result;
        for (qsizetype i = 0; i < ImageStampCollection::count(); ++i)
            result.append(ImageStampCollection::stampImageAtIndex(i)->pixels().width());
        return result;
    }

    bool wasLogged(const QString &part) const { return !m_log.filter(part).isEmpty(); }

    QTemporaryDir m_home;
    QStringList m_log;
    QList<inkory::Alert> m_alerts;
};
