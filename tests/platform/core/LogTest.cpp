#include "platform/core/Log.h"

#include "platform/core/LocalizedStrings.h"
#include "platform/core/PlatformVersion.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QStringList>
#include <QTranslator>

#include <gtest/gtest.h>

namespace inkory
{
namespace
{

TEST(Log, LineHasTimeProcessAndMessageAsItIs)
{
    ::testing::internal::CaptureStderr();
    logLine(u"50 %1 of\nthe file"_qs);
    const QString line = QString::fromStdString(::testing::internal::GetCapturedStderr());

    const QString pattern =
        u"^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} inkory\\[%1\\] 50 %1 of\nthe file\n$"_qs;
    const QRegularExpression expected(
        QString(pattern).replace(u"[%1"_qs, u"["_qs + QString::number(QCoreApplication::applicationPid())));
    EXPECT_TRUE(expected.match(line).hasMatch()) << line.toStdString();
}

TEST(Log, ListenerHearsUntilItIsTakenAwayAndMayLogItself)
{
    QStringList heard;
    setLogListener([&](const QString &message) {
        heard << message;
        if (heard.size() == 1)
            logLine(u"second"_qs);
    });
    logLine(u"first"_qs);
    setLogListener({});
    logLine(u"third"_qs);
    EXPECT_EQ(heard, QStringList({u"first"_qs, u"second"_qs}));
}

TEST(PlatformVersion, IsAboveAllReleasesUntilATestSetsAnother)
{
    const double before = platformVersion();
    EXPECT_EQ(before, 2000);
    setPlatformVersion(1343.5);
    EXPECT_EQ(platformVersion(), 1343.5);
    setPlatformVersion(before);
}

class OneWordTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char *context, const char *source, const char *, int) const override
    {
        const bool known =
            QLatin1String(context) == QLatin1String("Localizable") && QLatin1String(source) == QLatin1String("Rotate");
        return known ? u"Drehen"_qs : QString();
    }
};

TEST(LocalizedStrings, TranslationIsUsedAndTheKeyWhereThereIsNone)
{
    EXPECT_EQ(localizedString("Rotate"), u"Rotate"_qs);
    OneWordTranslator translator;
    QCoreApplication::installTranslator(&translator);
    EXPECT_EQ(localizedString("Rotate"), u"Drehen"_qs);
    EXPECT_EQ(localizedString("Add/Delete Stamp"), u"Add/Delete Stamp"_qs);
    QCoreApplication::removeTranslator(&translator);
}

} // namespace
} // namespace inkory
