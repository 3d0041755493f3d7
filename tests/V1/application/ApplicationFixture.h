#pragma once

#include "V1/application/AppDelegate.h"
#include "V1/application/KRDocumentController.h"
#include "V1/application/PDFDocumentModel.h"
#include "V1/application/WelcomeWindowController.h"
#include "platform/core/PlatformVersion.h"
#include "platform/core/UserDefaults.h"
#include "platform/widgets/Alert.h"
#include "platform/widgets/FileChooser.h"
#include "platform/widgets/ModalSession.h"
#include "support/PdfSamples.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace inkory::test
{

/// A folder that is also the person's home, and a person who answers questions. Without answers it is the first button.
class ApplicationFixture : public ::testing::Test
{
protected:
    ApplicationFixture()
    {
        qputenv("XDG_DATA_HOME", folder.path().toLocal8Bit());
        UserDefaults::setStandardFilePath(folder.filePath(QStringLiteral("settings.json")));
        Alert::setResponder([this](const Alert &alert) {
            alerts.append(alert);
            return answers.isEmpty() ? 1 : answers.takeFirst();
        });
    }
    ~ApplicationFixture() override
    {
        Alert::setResponder({});
        OpenPanel::setResponder({});
        SavePanel::setResponder({});
        setPlatformVersion(2000);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    QUrl makeFile(const QString &name, const QByteArray &bytes = textPages({"one"}))
    {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return QUrl::fromLocalFile(file.fileName());
    }
    static QByteArray content(const QUrl &url)
    {
        QFile file(url.toLocalFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QStringList questions() const
    {
        QStringList texts;
        for (const Alert &alert : alerts)
            texts.append(alert.messageText);
        return texts;
    }

    QTemporaryDir folder;
    QList<Alert> alerts;
    QList<int> answers;
};

} // namespace inkory::test
