#pragma once

#include "platform/pdf/PageSource.h"
#include "platform/widgets/TextGeometry.h"

#include <QObject>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace inkory
{

/// The texts and links of a document's pages, read in the background and kept for as long as somebody wants them. Pages
/// are counted in the file's own order. What cannot be read counts as empty until it is asked for anew. Owned by the
/// view. Main thread only.
class PageTexts : public QObject
{
    Q_OBJECT

public:
    /// None while there is no document.
    using Source = std::function<PageSource *()>;
    /// What of a page is wanted: its text alone, or all that a pointer needs.
    enum class Detail { TextOnly, Everything };

    explicit PageTexts(Source source, QObject *parent = nullptr);
    ~PageTexts() override;

    /// Forgets everything. Before the source goes away or another one comes.
    void clear();

    /// Starts to read what is not known of the page; asked more urgently for what is being read, it is asked for anew.
    void fetch(int page, Detail detail, DrawPriority priority);
    /// Forgets all but these pages, and of those in the second list all but the text. What is being read urgently is
    /// not forgotten.
    void forgetAllBut(const std::set<int> &near, const std::vector<int> &textsOnly);

    /// Forgets what could not be read of the page, a few times: the next fetch() tries again.
    void forgetFailed(int page);

    /// Whether all the text that the page has is known.
    bool isWhole(int page) const;
    /// None while it is not known.
    const QString *text(int page) const;
    const TextGeometry *geometry(int page) const;
    /// Empty while they are not known.
    const std::vector<PageLink> &links(int page) const;

Q_SIGNALS:
    /// The page's text, or its links, are known now.
    void textArrived(int page);
    void linksArrived(int page);

private:
    struct Request
    {
        DrawToken token = 0;
        DrawPriority priority = DrawPriority::Ahead;
    };
    struct Page
    {
        std::optional<TextGeometry> geometry;
        std::optional<QString> text; // where the geometry is not kept
        std::optional<std::vector<PageLink>> links;
        bool wantsGeometry = false;
        bool isWhole = false; // the text
        bool haveLinksFailed = false;
        bool hasTextFailed = false;
        int retries = 0;
        Request textRequest;
        Request linksRequest;
    };

    bool isToAsk(Request &request, DrawPriority priority);
    void keepText(int page, const Result<PageText> &text);
    void keepLinks(int page, const Result<std::vector<PageLink>> &links);
    void cancel(Request &request);

    Source m_source;
    std::map<int, Page> m_pages;
};

} // namespace inkory
