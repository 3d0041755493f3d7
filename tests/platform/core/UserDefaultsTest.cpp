#include "platform/core/UserDefaults.h"

#include "platform/core/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace inkory
{
namespace
{

class UserDefaultsTest : public ::testing::Test
{
protected:
    UserDefaultsTest()
    {
        setLogListener([this](const QString &message) { m_log << message; });
    }
    ~UserDefaultsTest() override { setLogListener({}); }

    void write(const QByteArray &bytes) const
    {
        QFile file(m_path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath(u"config/settings.json"_qs);
    QStringList m_log;
};

TEST_F(UserDefaultsTest, EveryKindSurvivesARestart)
{
    const QUrl url = QUrl::fromLocalFile(u"/home/ü/my file #1%.png"_qs);
    UserDefaults defaults(m_path);
    defaults.setBoolean(u"b"_qs, true);
    defaults.setNumber(u"n"_qs, 3);
    defaults.setNumber(u"fraction"_qs, -0.1);
    defaults.setString(u"s"_qs, u"Grüße \"\n"_qs);
    defaults.setStringList(u"l"_qs, {u"a"_qs, u""_qs, u"ß"_qs});
    defaults.setStringList(u"emptyList"_qs, {});
    defaults.setUrl(u"u"_qs, url);
    ASSERT_TRUE(defaults.synchronize());

    const UserDefaults again(m_path);
    EXPECT_TRUE(again.boolean(u"b"_qs));
    EXPECT_EQ(again.number(u"n"_qs), 3);
    EXPECT_EQ(again.number(u"fraction"_qs), -0.1);
    EXPECT_EQ(again.string(u"s"_qs), u"Grüße \"\n"_qs);
    EXPECT_EQ(again.stringList(u"l"_qs), QStringList({u"a"_qs, u""_qs, u"ß"_qs}));
    EXPECT_TRUE(again.hasStoredValue(u"emptyList"_qs));
    EXPECT_EQ(again.url(u"u"_qs), url);
    EXPECT_EQ(again.string(u"u"_qs), u"file:///home/%C3%BC/my%20file%20%231%25.png"_qs);
    EXPECT_EQ(QFile::permissions(m_path) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

TEST_F(UserDefaultsTest, RegisteredDefaultsHoldWhereNothingIsStoredAndAreNotWritten)
{
    UserDefaults defaults(m_path);
    defaults.registerDefaults({{u"b"_qs, true}, {u"n"_qs, 5}, {u"s"_qs, u"x"_qs}});
    EXPECT_TRUE(defaults.boolean(u"b"_qs));
    EXPECT_EQ(defaults.number(u"n"_qs), 5);
    EXPECT_FALSE(defaults.hasStoredValue(u"n"_qs));
    defaults.setNumber(u"n"_qs, 6);
    EXPECT_EQ(defaults.number(u"n"_qs), 6);
    defaults.remove(u"n"_qs);
    EXPECT_EQ(defaults.number(u"n"_qs), 5);
    defaults.setString(u"s"_qs, u"y"_qs);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_FALSE(read(m_path).contains("\"b\""));
    EXPECT_TRUE(read(m_path).contains("\"y\""));
}

TEST_F(UserDefaultsTest, WhatIsMissingOrOfAnotherKindIsThatKindsNothing)
{
    UserDefaults defaults(m_path);
    defaults.setString(u"s"_qs, u"1"_qs);
    defaults.setNumber(u"n"_qs, 1);
    for (const QString &name : {u"missing"_qs, u"n"_qs})
        EXPECT_FALSE(defaults.boolean(name) || !defaults.string(name).isEmpty() || defaults.url(name).has_value() ||
                     !defaults.stringList(name).isEmpty());
    EXPECT_EQ(defaults.number(u"s"_qs), 0);
    defaults.setNumber(u"n"_qs, std::numeric_limits<double>::infinity());
    EXPECT_EQ(defaults.number(u"n"_qs), 1);
}

TEST_F(UserDefaultsTest, AValueCanChangeItsKindEvenWhereTheKindsCompareEqual)
{
    UserDefaults defaults(m_path);
    defaults.setBoolean(u"x"_qs, true);
    defaults.setNumber(u"x"_qs, 1);
    EXPECT_FALSE(defaults.boolean(u"x"_qs));
    EXPECT_EQ(defaults.number(u"x"_qs), 1);
}

struct BadFile
{
    const char *name;
    QByteArray bytes;
};

class UnreadableSettings : public UserDefaultsTest, public ::testing::WithParamInterface<BadFile>
{
};

TEST_P(UnreadableSettings, CountAsEmptyAndAreKeptAside)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(m_path).path()));
    write(GetParam().bytes);
    UserDefaults defaults(m_path);
    EXPECT_FALSE(defaults.hasStoredValue(u"a"_qs));
    EXPECT_EQ(m_log.size(), 1);
    EXPECT_EQ(read(m_path + u".damaged"_qs), GetParam().bytes);

    defaults.setNumber(u"n"_qs, 4);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(UserDefaults(m_path).number(u"n"_qs), 4);
    EXPECT_EQ(read(m_path + u".damaged"_qs), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(All, UnreadableSettings,
                         ::testing::Values(BadFile{"random", QByteArray("\x00\xff\x93random\x01", 10)},
                                           BadFile{"empty", {}}, BadFile{"cut", "{\"a\": true, \"b"},
                                           BadFile{"list", "[true]"}),
                         [](const auto &each) { return each.param.name; });

TEST_F(UserDefaultsTest, AFolderInThePlaceOfTheFileIsMovedAside)
{
    ASSERT_TRUE(QDir().mkpath(m_path));
    UserDefaults defaults(m_path);
    defaults.setNumber(u"n"_qs, 4);
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_TRUE(QFileInfo(m_path + u".damaged"_qs).isDir());
}

TEST_F(UserDefaultsTest, AFailedWriteKeepsTheValuesForTheNextTry)
{
    const QString folder = QFileInfo(m_path).path();
    QFile inTheWay(folder);
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    UserDefaults defaults(m_path);
    defaults.setNumber(u"n"_qs, 4);
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_EQ(m_log.size(), 1);
    EXPECT_EQ(defaults.number(u"n"_qs), 4);

    ASSERT_TRUE(inTheWay.remove());
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(UserDefaults(m_path).number(u"n"_qs), 4);
}

TEST_F(UserDefaultsTest, TwoProcessesDoNotUndoEachOthersChanges)
{
    UserDefaults one(m_path);
    one.setNumber(u"removed"_qs, 1);
    ASSERT_TRUE(one.synchronize());
    UserDefaults other(m_path);
    other.setNumber(u"theirs"_qs, 2);
    other.remove(u"removed"_qs);
    ASSERT_TRUE(other.synchronize());
    one.setNumber(u"ours"_qs, 3);
    ASSERT_TRUE(one.synchronize());

    const UserDefaults both(m_path);
    EXPECT_EQ(both.number(u"theirs"_qs), 2);
    EXPECT_EQ(both.number(u"ours"_qs), 3);
    EXPECT_FALSE(both.hasStoredValue(u"removed"_qs));
}

TEST_F(UserDefaultsTest, WhatItDoesNotKnowStaysInTheFile)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(m_path).path()));
    write(R"({"newer": {"deep": [1, "x"]}})");
    UserDefaults defaults(m_path);
    defaults.setNumber(u"n"_qs, 4);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_TRUE(read(m_path).simplified().replace(' ', "").contains(R"("newer":{"deep":[1,"x"]})"));
}

TEST_F(UserDefaultsTest, NothingIsWrittenWithoutAChange)
{
    UserDefaults defaults(m_path);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_FALSE(QFile::exists(m_path));
}

TEST_F(UserDefaultsTest, StandardForgetsWhatItReadButNotWhatIsRegistered)
{
    UserDefaults::setStandardFilePath(m_path);
    UserDefaults &standard = UserDefaults::standard();
    standard.registerDefaults({{u"registered"_qs, true}});
    standard.setNumber(u"n"_qs, 4);
    UserDefaults::setStandardFilePath(m_folder.filePath(u"other.json"_qs));
    EXPECT_EQ(standard.number(u"n"_qs), 0);
    EXPECT_TRUE(standard.boolean(u"registered"_qs));
    EXPECT_EQ(&standard, &UserDefaults::standard());
}

} // namespace
} // namespace inkory
