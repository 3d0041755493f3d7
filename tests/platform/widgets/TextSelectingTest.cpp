#include "platform/widgets/TextSelecting.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QSignalSpy>

#include <gmock/gmock.h>

using namespace inkory;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

/// Answers for texts when it is told to; nothing else is asked of it.
class SlowSource : public PageSource
{
public:
    using TextDone = std::function<void(const Result<PageText> &)>;

    void open(std::shared_ptr<DocumentFile>, const SecretBytes &, std::function<void(const OpenOutcome &)>) override {}
    void callAfterFirstPage(std::function<void()>) override {}
    DrawToken draw(const DrawRequest &, DrawPriority, std::function<void(const Result<QImage> &)>) override
    {
        return 0;
    }
    DrawToken readText(int page, DrawPriority priority, TextDone done) override
    {
        asked[++m_last] = {page, priority, std::move(done)};
        return m_last;
    }
    DrawToken readLinks(int, DrawPriority, std::function<void(const Result<std::vector<PageLink>> &)>) override
    {
        return ++m_last;
    }
    DrawToken readOutline(std::function<void(const Result<std::vector<OutlineItem>> &)>) override { return 0; }
    DrawToken find(const FindRequest &, std::function<void(const Result<FindReply> &)>) override { return 0; }
    void cancel(DrawToken token) override { asked.erase(token); }

    std::vector<int> askedPages() const
    {
        std::vector<int> pages;
        for (const auto &[token, request] : asked)
            pages.push_back(request.page);
        return pages;
    }

    void answer(int page, const Result<PageText> &text)
    {
        for (auto request = asked.begin(); request != asked.end(); ++request) {
            if (request->second.page == page) {
                const TextDone done = asked.extract(request).mapped().done;
                done(text);
                return;
            }
        }
        ADD_FAILURE() << "page " << page << " was not asked for";
    }

    struct Asked
    {
        int page = 0;
        DrawPriority priority = DrawPriority::Ahead;
        TextDone done;
    };
    std::map<DrawToken, Asked> asked;

private:
    DrawToken m_last = 0;
};

/// One line at the page's top, each character 10 wide.
PageText line(const QString &text)
{
    PageText made{text, {}};
    for (int i = 0; i < text.size(); ++i)
        made.boxes.emplace_back(10 * i, 0, 10, 12);
    return made;
}

class Selecting : public ::testing::Test
{
protected:
    using Unit = TextSelection::Unit;

    SlowSource source;
    PageTexts texts{[this] { return &source; }};
    TextSelecting selecting{texts, [](int page) { return page; }, [](int place) { return place; }};
};

TEST_F(Selecting, ADragTakesEffectWhenTheTextsCome)
{
    QSignalSpy changes(&selecting, &TextSelecting::changed);
    selecting.begin({0, {61, 5}}, Unit::Character);
    selecting.moveTo({2, {29, 5}});
    selecting.finish();
    EXPECT_FALSE(selecting.hasSelection());
    source.answer(2, line(QStringLiteral("last page")));
    EXPECT_EQ(changes.count(), 0);
    source.answer(0, line(QStringLiteral("first page")));
    EXPECT_TRUE(selecting.hasSelection());
    EXPECT_GE(changes.count(), 1);
    EXPECT_THAT(source.askedPages(), ElementsAre(1)) << "between them";
    EXPECT_THAT(selecting.areasOn(0), ElementsAre(QRectF(60, 0, 40, 12)));

    QGuiApplication::clipboard()->clear();
    selecting.copy();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QString()) << "not all of it is known";
    QSignalSpy copies(&selecting, &TextSelecting::copied);
    source.answer(1, Error{QStringLiteral("no")});
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("page\n\nlas"));
    EXPECT_EQ(copies, QList<QVariantList>({{false}})) << "a page is missing";
    selecting.clear();
    EXPECT_THAT(selecting.areasOn(0), IsEmpty());
}

TEST_F(Selecting, ASelectionReachesNoFurtherThanItMay)
{
    selecting.begin({1000, {0, 5}}, Unit::Character);
    selecting.moveTo({5000, {9, 5}});
    source.answer(1000, line(QStringLiteral("a")));
    source.answer(5000, line(QStringLiteral("b")));
    EXPECT_EQ(selecting.pages().size(), 500U);
    EXPECT_EQ(source.askedPages().size(), 499U);
    EXPECT_THAT(selecting.areasOn(5000), IsEmpty());
}

TEST_F(Selecting, PagesFarAwayAreForgottenButForTheSelectedText)
{
    for (int page = 0; page < 3; ++page) {
        texts.fetch(page, PageTexts::Detail::Everything, DrawPriority::Ahead);
        texts.fetch(page, PageTexts::Detail::Everything, DrawPriority::Ahead);
        source.answer(page, line(QStringLiteral("text")));
    }
    EXPECT_THAT(source.askedPages(), IsEmpty()) << "each was asked for once";
    texts.forgetAllBut({2}, {1});
    EXPECT_EQ(texts.text(0), nullptr);
    EXPECT_TRUE(texts.text(1) && !texts.geometry(1));
    EXPECT_TRUE(texts.geometry(2));
    texts.fetch(1, PageTexts::Detail::Everything, DrawPriority::Ahead);
    texts.fetch(1, PageTexts::Detail::Everything, DrawPriority::Visible);
    ASSERT_THAT(source.askedPages(), ElementsAre(1));
    EXPECT_EQ(source.asked.begin()->second.priority, DrawPriority::Visible);
    texts.clear();
    EXPECT_THAT(source.askedPages(), IsEmpty()) << "cancelled";
}

} // namespace
