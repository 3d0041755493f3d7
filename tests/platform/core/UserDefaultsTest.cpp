#include "platform/core/UserDefaults.h"

#include "support/Tools.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace inkory;

namespace
{

class UserDefaultsTest : public ::testing::Test
{
protected:
    void write(const QByteArray &bytes) const
    {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(m_path).path()));
        test::writeFile({}, m_path, bytes);
    }

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath(u"config/settings.json"_qs);
    test::LogCatcher m_log;
};

TEST_F(UserDefaultsTest, EveryKindSurvivesARestart)
{
    const QUrl url = QUrl::fromLocalFile(u"/home/ü/my file #1%.png"_qs);
    UserDefaults defaults(m_path);
    defaults.setBoolean(u"b"_qs, true);
    defaults.setNumber(u"fraction"_qs, -0.1);
    defaults.setString(u"s"_qs, u"Grüße \"\n"_qs);
    defaults.setStringList(u"l"_qs, {u"a"_qs, u""_qs, u"ß"_qs});
    defaults.setUrl(u"u"_qs, url);
    ASSERT_TRUE(defaults.synchronize());

    const UserDefaults again(m_path);
    EXPECT_TRUE(again.boolean(u"b"_qs));
    EXPECT_EQ(again.number(u"fraction"_qs), -0.1);
    EXPECT_EQ(again.string(u"s"_qs), u"Grüße \"\n"_qs);
    EXPECT_EQ(again.stringList(u"l"_qs), QStringList({u"a"_qs, u""_qs, u"ß"_qs}));
    EXPECT_EQ(again.url(u"u"_qs), url);
    EXPECT_TRUE(again.storedStringList(u"l"_qs));
    EXPECT_FALSE(again.storedStringList(u"u"_qs));
    EXPECT_EQ(again.string(u"u"_qs), u"file:///home/%C3%BC/my%20file%20%231%25.png"_qs);
    EXPECT_EQ(QFile::permissions(m_path) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

TEST_F(UserDefaultsTest, UnreadableFilesCountAsEmptyAndAreKeptAside)
{
    const QByteArray unreadable[] = {QByteArray("\x00\xff\x93random\x01", 10), "", "{\"a\": true, \"b", "[true]",
                                     R"({"a": true})" + QByteArray(4 << 20, ' ')};
    for (const QByteArray &bytes : unreadable) {
        QFile::remove(m_path + u".damaged"_qs);
        write(bytes);
        const qsizetype logged = m_log.lines().size();
        UserDefaults defaults(m_path);
        EXPECT_FALSE(defaults.hasStoredValue(u"a"_qs));
        EXPECT_EQ(m_log.lines().size(), logged + 1);

        defaults.setNumber(u"n"_qs, 4);
        ASSERT_TRUE(defaults.synchronize());
        EXPECT_EQ(UserDefaults(m_path).number(u"n"_qs), 4);
        EXPECT_EQ(test::readFile(m_path + u".damaged"_qs), bytes);
    }
}

TEST_F(UserDefaultsTest, WritingKeepsWhatOthersWroteAndWhatItDoesNotKnow)
{
    write(R"({"newer": {"deep": [1, "x"]}, "removed": 1})");
    UserDefaults one(m_path);
    UserDefaults other(m_path);
    other.setNumber(u"theirs"_qs, 2);
    other.remove(u"removed"_qs);
    ASSERT_TRUE(other.synchronize());
    one.setNumber(u"ours"_qs, 3);
    one.refresh();
    EXPECT_EQ(one.number(u"theirs"_qs), 2);
    ASSERT_TRUE(one.synchronize());

    const UserDefaults both(m_path);
    EXPECT_EQ(both.number(u"theirs"_qs), 2);
    EXPECT_EQ(both.number(u"ours"_qs), 3);
    EXPECT_FALSE(both.hasStoredValue(u"removed"_qs));
    EXPECT_TRUE(test::readFile(m_path).simplified().replace(' ', "").contains(R"("newer":{"deep":[1,"x"]})"));
}

} // namespace
