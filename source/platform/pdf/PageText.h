#pragma once

#include <QRectF>
#include <QString>

#include <optional>
#include <vector>

// What can be read on pages, as values. Places are in points of the page as its file shows it (its own rotation
// applied, not what the person has turned since): origin at the upper left corner of the crop box, y downward. PDFPage
// leads from there to page space. Texts are a stranger's: see displayable().

namespace inkory
{

/// Shows only where a word is divided at the end of its line.
inline constexpr char16_t softHyphen = 0x00AD;

/// The text of one page in reading order.
struct PageText
{
    /// UTF-16 units; what stands behind them is left out.
    static constexpr qsizetype mostCharacters = 100'000;

    /// Words are separated by a space, lines by a line feed.
    QString text;
    /// For each UTF-16 unit of the text where it stands; empty for separators, and for all but the first unit of what
    /// is one character on the page.
    std::vector<QRectF> boxes;
    /// Whether something was left out.
    bool isCut = false;

    bool operator==(const PageText &) const = default;
};

/// A place inside the document.
struct PageDestination
{
    /// From 0, in the file's own order.
    int page = 0;
    /// What comes to the view's upper edge, from the top of the page; none: the page's top.
    std::optional<double> top;

    bool operator==(const PageDestination &) const = default;
};

/// An area of a page that leads somewhere: to a destination or to an address, never both.
struct PageLink
{
    static constexpr int mostPerPage = 5'000;
    static constexpr qsizetype longestAddress = 2'048;
    /// Of all addresses of a page together.
    static constexpr qsizetype mostAddressCharacters = 1'000'000;

    QRectF area;
    std::optional<PageDestination> destination;
    /// http, https or mailto; others do not leave the engine.
    QString address;

    bool operator==(const PageLink &) const = default;
};

/// One line of the document's outline; the lines come in their order, each followed by its children.
struct OutlineItem
{
    static constexpr int mostItems = 20'000;
    static constexpr qsizetype longestTitle = 500;
    /// Of all titles together.
    static constexpr qsizetype mostTitleCharacters = 1'000'000;
    static constexpr int deepestLevel = 31;

    QString title;
    /// 0 for the topmost; at most one more than that of the item before.
    int level = 0;
    std::optional<PageDestination> destination;
    /// Whether its children are shown at first.
    bool isOpen = false;

    bool operator==(const OutlineItem &) const = default;
};

/// Looks for a text on some pages.
struct FindRequest
{
    static constexpr qsizetype longestText = 1'000;

    /// Case, accents, ligatures and the kind of white space (line ends too) make no difference.
    QString text;
    /// The pages to search, in the file's own order: this one, and as many after it as the engine gets through in about
    /// 50 ms, but no page from `endPage` on.
    int firstPage = 0;
    int endPage = 0;

    bool operator==(const FindRequest &) const = default;
};

/// One occurrence of the text.
struct FindHit
{
    int page = 0;
    /// One for each line that it covers; at least one.
    std::vector<QRectF> areas;

    bool operator==(const FindHit &) const = default;
};

struct FindReply
{
    static constexpr int mostHitsPerPage = 10'000;
    /// With more areas than this, the engine does not begin with a further page.
    static constexpr std::size_t enoughAreas = 10'000;

    /// In reading order.
    std::vector<FindHit> hits;
    /// The first page that was not searched: at least one page always is.
    int nextPage = 0;
    /// Whether one of the pages has text.
    bool hasText = false;
    /// Whether the pages may have more hits: of a page with too many of them, or too much text, the rest is left out.
    bool isCut = false;

    bool operator==(const FindReply &) const = default;
};

/// Whether the rectangle has an area, and is where a page can be: its numbers are finite and not absurd.
bool isPlace(const QRectF &rectangle);

/// Whether a link may lead there: http, https or mailto, and not too long.
bool isLinkAddress(const QString &address);

/// At most so many units from the text's beginning, without halves of surrogate pairs.
QString withoutTornPairs(const QString &text, qsizetype most);

/// Whether the request can be searched for at all: a text that is not too long, and at least one page.
bool isFindable(const FindRequest &request);

} // namespace inkory
