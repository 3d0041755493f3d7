#include "platform/pdf/DocumentWriter.h"
#include "platform/pdf/EngineProcess.h"
#include "platform/pdf/PageSourceFixture.h"
#include "support/Helpers.h"
#include "support/PdfSamples.h"

#include <QThread>

#include <algorithm>
#include <csignal>

using namespace inkory;
using test::wholeFirstPage;

namespace
{

using DrawEngine = test::PageSourceFixture;

TEST_F(DrawEngine, DoesNotAnswerWhatWasCancelledNorOnceItIsDestroyed)
{
    open(test::manyPages(40));
    int answers = 0;
    const auto count = [&answers](const auto &) { ++answers; };
    for (int page = 0; page < 40; ++page)
        m_source->cancel(m_source->draw({page, 0, 2, {0, 0, 1224, 1584}}, DrawPriority::Thumbnail, count));
    m_source->cancel(0);
    ASSERT_TRUE(draw({0, 0, 1, {0, 0, 10, 10}}, DrawPriority::Ahead)); // comes after whatever was running
    EXPECT_EQ(answers, 0);

    for (int page = 0; page < 40; ++page)
        m_source->draw({page, 0, 2, {0, 0, 1224, 1584}}, DrawPriority::Visible, count);
    QThread::msleep(30); // some answers are on their way
    m_source.reset();
    QTest::qWait(30);
    EXPECT_EQ(answers, 0);
}

TEST_F(DrawEngine, DrawsFromThePrivateCopyOnceItExists)
{
    ASSERT_EQ(open(test::threePages()).state, OpenOutcome::State::Open);
    const Result<QImage> before = draw(wholeFirstPage);
    ASSERT_TRUE(m_file->makePrivateCopy());
    // Written into, not replaced: what was opened is this very file.
    test::writeFile(m_folder.path(), QStringLiteral("a.pdf"), "nothing");
    const Result<QImage> after = draw(wholeFirstPage);
    ASSERT_TRUE(before && after);
    EXPECT_EQ(*before, *after);
}

TEST_F(DrawEngine, SaysThatAPageCannotBeDrawnOnlyWhenHelpersKeepDyingOverIt)
{
    ASSERT_EQ(open(test::threePages()).state, OpenOutcome::State::Open);
    std::optional<Result<QImage>> answer;
    m_source->draw(wholeFirstPage, DrawPriority::Visible, [&answer](const Result<QImage> &image) { answer = image; });
    while (!answer) {
        test::signalHelpers(SIGKILL);
        QTest::qWait(1);
    }
    ASSERT_FALSE(*answer);
    EXPECT_EQ(answer->error().message, QStringLiteral("This page cannot be drawn."));
    EXPECT_TRUE(draw(wholeFirstPage)) << "asked for once more";
}

TEST_F(DrawEngine, ReplacesAHelperThatDoesNotGiveUpForAVisiblePage)
{
    ASSERT_EQ(open(test::threePages()).state, OpenOutcome::State::Open);
    const pid_t stuck = test::helperProcesses().at(0);
    kill(stuck, SIGSTOP); // as one operator that takes for ever
    std::vector<DrawToken> tokens;
    for (int page = 0; page < 3; ++page)
        tokens.push_back(m_source->draw({page, 0, 1, {0, 0, 612, 792}}, DrawPriority::Thumbnail,
                                        [](const auto &) { ADD_FAILURE() << "cancelled"; }));
    QTest::qWait(50);
    for (const DrawToken token : tokens)
        m_source->cancel(token);
    EXPECT_TRUE(draw(wholeFirstPage));
    EXPECT_EQ(test::helperProcesses().size(), 1U);
    EXPECT_NE(test::helperProcesses().at(0), stuck);
}

TEST_F(DrawEngine, WhatNobodyWaitsForMakesRoomForEverythingElse)
{
    ASSERT_EQ(open(test::threePages()).state, OpenOutcome::State::Open);
    QString answers;
    const auto note = [&answers](char name) {
        return [&answers, name](const auto &) { answers += QLatin1Char(name); };
    };
    kill(test::helperProcesses().at(0), SIGSTOP); // as over a page that takes long
    m_source->draw(wholeFirstPage, DrawPriority::Idle, note('i'));
    QTest::qWait(50);
    m_source->find({QStringLiteral("e"), 0, 3}, note('f'));
    m_source->readText(0, DrawPriority::Ahead, note('t'));
    EXPECT_TRUE(QTest::qWaitFor([&] { return answers.size() == 3; }, 10'000));
    EXPECT_EQ(answers, QStringLiteral("tfi"));
}

TEST_F(DrawEngine, HasASecondHelperReadyForAVisiblePage)
{
    ASSERT_EQ(open(test::threePages()).state, OpenOutcome::State::Open);
    ASSERT_TRUE(draw(wholeFirstPage) && draw(wholeFirstPage));
    ASSERT_TRUE(QTest::qWaitFor([] { return test::helperProcesses().size() == 2; }, 5'000));
    QTest::qWait(200); // it opens the document
    const std::vector<pid_t> helpers = test::helperProcesses();
    const pid_t first = std::min(helpers[0], helpers[1]);
    kill(first, SIGSTOP);
    const auto refuse = [](const auto &) { ADD_FAILURE() << "cancelled"; };
    const DrawToken token = m_source->draw(wholeFirstPage, DrawPriority::Visible, refuse);
    QTest::qWait(20);
    m_source->cancel(token);
    EXPECT_TRUE(draw(wholeFirstPage));
    EXPECT_EQ(test::helperProcesses(), helpers) << "nobody was in the way, so nobody had to go";
}

TEST_F(DrawEngine, ASpareHelperThatHasDiedIsNotUsed)
{
    ASSERT_TRUE(QTest::qWaitFor([] { return test::helperProcesses().empty(); }, 5'000)); // of former tests
    EngineProcess::prepareSpare();
    ASSERT_TRUE(QTest::qWaitFor([] { return test::helperProcesses().size() == 1; }, 5'000));
    const pid_t spare = test::helperProcesses().at(0);
    kill(spare, SIGKILL);
    ASSERT_TRUE(QTest::qWaitFor([] { return test::helperProcesses().empty(); }, 5'000));
    const auto file = DocumentFile::open(test::writeFile(m_folder.path(), QStringLiteral("b.pdf"), test::threePages()));
    const SurveyOutcome outcome = surveyDocument(**file, {}, false);
    EngineProcess::dropSpare();
    EXPECT_EQ(outcome.failure, QString());
    EXPECT_EQ(outcome.survey.structure.pages.size(), 3U);
}

TEST_F(DrawEngine, LeavesNoHelperBehind)
{
    ASSERT_EQ(open(test::threePages()).state, OpenOutcome::State::Open);
    kill(test::helperProcesses().at(0), SIGSTOP);
    m_source->draw(wholeFirstPage, DrawPriority::Visible, [](const auto &) {});
    QTest::qWait(20);
    m_source.reset();
    EXPECT_TRUE(QTest::qWaitFor([] { return test::helperProcesses().empty(); }, 2'000));
}

} // namespace
