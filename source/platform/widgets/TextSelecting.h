#pragma once

#include "platform/widgets/PageTexts.h"
#include "platform/widgets/TextSelection.h"

#include <QObject>

#include <optional>
#include <vector>

namespace inkory
{

/// A point on a page of the file, in the space of PageText; the page counted in the file's own order.
struct PageSpot
{
    int page = 0;
    QPointF point;
};

/// Selects the text of a document's pages as the pointer moves over them, and copies it. Where a page's text is not
/// known yet it is asked for, and what was done takes effect when it comes. A part of PDFView, which leads from the
/// pointer to pages and paints what is selected.
class TextSelecting : public QObject
{
    Q_OBJECT

public:
    using Unit = TextSelection::Unit;
    using PageOf = std::function<int(int place)>;

    /// A selection reaches no further.
    static constexpr int mostPages = 500;

    /// `placeOf` leads from a page of the file to its place in the document, `pageOf` back. `texts` has to outlive
    /// this.
    TextSelecting(PageTexts &texts, TextSelection::PlaceOf placeOf, PageOf pageOf, QObject *parent = nullptr);

    /// A press that begins a selection; the former one is gone.
    void begin(const PageSpot &spot, Unit unit);
    /// A press that moves the end of the selection there is, by its units. Without one, begins one by characters.
    void extend(const PageSpot &spot);
    /// The pointer moved on, its button being held.
    void moveTo(const PageSpot &spot);
    /// The button was released: what is selected can be pasted with the middle button, where the system has that.
    void finish();
    void selectPage(int page);
    void clear();

    bool hasSelection() const;
    /// Not more than so many UTF-16 units.
    QString selectedText(qsizetype most = TextSelection::mostUnits) const;
    /// To the clipboard, as soon as it is clear what is selected, and the texts of all selected pages are known.
    void copy();

    /// What is to be painted on the page, in the space of PageText.
    std::vector<QRectF> areasOn(int page) const;
    /// The pages whose texts are needed, in the order of the document.
    std::vector<int> pages() const;
    /// The order of the pages changed: other pages may be needed.
    void fetchPages();

Q_SIGNALS:
    void changed();
    /// After copy(): all of it, or as much as could be read.
    void copied(bool isWhole);

private:
    /// A selection being made; its spots become places when the texts are known.
    struct Drag
    {
        std::optional<PageSpot> anchor; // none: the selection's own
        PageSpot end;
        Unit unit = Unit::Character;
        bool isFinished = false;
    };

    void textArrived(int page);
    void follow();
    bool resolve(const Drag &drag);
    std::optional<TextPlace> placeAt(const PageSpot &spot, Unit unit) const;
    bool isBesideWords(const PageSpot &spot, Unit unit) const;
    TextPlace withinReach(const TextSelection &selection) const;
    void set(std::optional<TextSelection> selection);
    bool isComplete() const;
    bool isWhole() const;
    void putOnClipboards();

    PageTexts &m_texts;
    TextSelection::PlaceOf m_placeOf;
    PageOf m_pageOf;
    std::optional<TextSelection> m_selection;
    std::optional<Drag> m_drag;
    bool m_copies = false;        // to be put on the clipboard when all is known
    bool m_copiesPrimary = false; // the same for pasting with the middle button
};

} // namespace inkory
