#pragma once

#include "platform/pdf/DocumentFile.h"
#include "platform/pdf/PageSource.h"
#include "support/Tools.h"

namespace inkory::test
{

const DrawRequest wholeFirstPage{0, 0, 1, {0, 0, 612, 792}};

/// A page source with real helpers.
struct PageSourceFixture : testing::Test
{
    template <typename Answer> static Answer awaited(const auto &start, const Answer &none)
    {
        std::optional<Answer> answer;
        start([&answer](const Answer &given) { answer = given; });
        EXPECT_FALSE(answer) << "answers come from the event loop";
        EXPECT_TRUE(QTest::qWaitFor([&] { return answer.has_value(); }, 10'000));
        return answer.value_or(none);
    }

    /// Opens a file with these bytes, which stays reachable as m_file.
    OpenOutcome open(const QByteArray &bytes)
    {
        const auto opened = DocumentFile::open(writeFile(m_folder.path(), QStringLiteral("a.pdf"), bytes));
        m_file = opened ? *opened : nullptr;
        return awaited([this](auto done) { m_source->open(m_file, {}, done); }, OpenOutcome());
    }

    Result<QImage> draw(const DrawRequest &request, DrawPriority priority = DrawPriority::Visible)
    {
        return awaited([&](auto done) { m_source->draw(request, priority, done); }, Result<QImage>(Error()));
    }

    QTemporaryDir m_folder;
    std::shared_ptr<DocumentFile> m_file;
    std::unique_ptr<PageSource> m_source = makePageSource();
};

} // namespace inkory::test
