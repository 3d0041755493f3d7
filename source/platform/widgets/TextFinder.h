#pragma once

#include "platform/pdf/PDFDocument.h"
#include "platform/widgets/PDFView.h"

#include <QObject>
#include <QPointer>

#include <deque>
#include <optional>
#include <unordered_map>
#include <vector>

namespace inkory
{

/// Looks for a text in all pages of a document, a few pages at a time: from a place on to the end, and then from the
/// first page to that place. Knows one of the hits as the current one. Hits are counted in the document's present order
/// of pages, from 0. Shows nothing; main thread only.
class TextFinder : public QObject
{
    Q_OBJECT

public:
    /// A search ends when it has found so many.
    static constexpr int mostHits = 50'000;

    enum class State { Idle, Searching, Finished };

    explicit TextFinder(QObject *parent = nullptr);
    ~TextFinder() override;

    /// Forgets what was found in the former one. The source reads its pages; none: the document's own. Neither is
    /// owned.
    void setDocument(PDFDocument *document, PageSource *source = nullptr);

    /// Forgets what was found and begins anew at the place (one outside the document: at its beginning). A text without
    /// anything but space ends in Idle. The hit at the place, or else the first one after it, becomes the current one,
    /// as soon as it is found.
    void search(const QString &text, const PDFView::Place &start);
    /// Stops and forgets what was found.
    void cancel();
    /// Stops, and keeps what was found until the search goes on.
    void pause() { stop(); }
    void resume();

    const QString &text() const { return m_text; }
    State state() const { return m_state; }
    /// There may be more hits: not all of the text was searched, as there was too much of it or mostHits were found.
    bool isCut() const { return m_isCut; }
    /// Pages that could not be searched.
    int failedPageCount() const { return m_failedPageCount; }
    /// All pages were searched, and none has any text.
    bool documentLacksText() const { return m_state == State::Finished && m_failedPageCount == 0 && !m_hasText; }

    int hitCount() const { return m_hitCount; }
    /// In the document's order.
    std::vector<FindHit> hits() const;
    /// None until there is a hit.
    const FindHit *currentHit() const;
    /// -1 without one.
    int currentIndex() const;
    /// From the last hit to the first, and back.
    void goToNext();
    void goToPrevious();

    /// Pages may have another order now.
    void notePageOrder();

Q_SIGNALS:
    /// Hits, their order, or the state.
    void changed();
    /// Another hit is the current one; of what else changed with it, nothing is said.
    void currentChanged();

private:
    /// Pages that follow each other in the file as in the document.
    struct Run
    {
        int first = 0;
        int end = 0;
    };
    struct Current
    {
        int page = 0; // of the file
        int number = 0;
    };

    PageSource *pageSource() const;
    void stop();
    void planPages(const PDFView::Place &start);
    void searchOn();
    void answered(const FindRequest &request, const Result<FindReply> &reply);
    void takeHits(const FindRequest &request, const FindReply &reply);
    const PDFPage *pageOfStart() const;
    void chooseCurrent(const FindHit &added, const PDFPage *startPage);
    void finish();
    std::vector<int> pageOrder() const;
    const std::vector<FindHit> &hitsOnPage(int page) const;
    void moveCurrent(int step);

    QPointer<PDFDocument> m_document;
    PageSource *m_givenSource = nullptr;
    QString m_text;
    State m_state = State::Idle;
    std::vector<int> m_order; // the file's number of each page of the document
    std::deque<Run> m_runs;   // still to be searched
    DrawToken m_token = 0;
    int m_startPage = 0; // of the file
    PagePoint m_startPoint;
    std::unordered_map<int, std::vector<FindHit>> m_hits;
    int m_hitCount = 0;
    int m_failedPageCount = 0;
    std::optional<Current> m_current;
    bool m_hasText = false; // on one of the pages that were searched
    bool m_isCut = false;
    bool m_hasMetStart = false; // the current hit stands where the search began
};

} // namespace inkory
