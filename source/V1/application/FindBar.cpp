#include "V1/application/FindBar.h"

#include "V1/application/ElidingLabel.h"
#include "platform/widgets/NamedImages.h"
#include "platform/widgets/PDFView.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include <chrono>

namespace inkory
{

namespace
{

constexpr std::chrono::milliseconds typingPause(150);
// Thousands of answers come in; showing every one of them would take longer than searching.
constexpr std::chrono::milliseconds refreshPause(200);
constexpr qsizetype longestSelection = 100; // characters
constexpr int leastFieldWidth = 70;
constexpr int mostFieldWidth = 320;
constexpr int leastCountWidth = 62;

void announce(QWidget *widget)
{
    QAccessibleEvent alert(widget, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

} // namespace

FindBar::FindBar(QWidget *parent)
    : QFrame(parent), m_field(new QLineEdit(this)),
      m_previousButton(makeButton("findPreviousButton", tr("Previous (Shift+F3)"))),
      m_nextButton(makeButton("findNextButton", tr("Next (F3)"))),
      m_closeButton(makeButton("closeFindButton", tr("Close (Esc)"))), m_count(new ElidingLabel(this)),
      m_note(new QLabel(this))
{
    setAutoFillBackground(true);
    m_field->setObjectName(QStringLiteral("findField"));
    m_field->setPlaceholderText(tr("Find in document"));
    m_field->setAccessibleName(tr("Find in document"));
    m_field->setMaxLength(static_cast<int>(FindRequest::longestText));
    m_field->installEventFilter(this);
    m_count->setObjectName(QStringLiteral("findCount"));
    m_note->setObjectName(QStringLiteral("findNote"));
    m_note->setTextFormat(Qt::PlainText);
    m_note->setWordWrap(true);
    arrange();
    applyIcons();
    m_typingPause.setSingleShot(true);
    m_typingPause.setInterval(typingPause);
    m_refreshPause.setSingleShot(true);
    m_refreshPause.setInterval(refreshPause);
    connect(m_field, &QLineEdit::textChanged, &m_typingPause, qOverload<>(&QTimer::start));
    connect(&m_typingPause, &QTimer::timeout, this, [this] { searchFrom(m_view->place()); });
    connect(&m_refreshPause, &QTimer::timeout, this, &FindBar::showHits);
    connect(m_previousButton, &QToolButton::clicked, this, &FindBar::findPrevious);
    connect(m_nextButton, &QToolButton::clicked, this, &FindBar::findNext);
    connect(m_closeButton, &QToolButton::clicked, this, &FindBar::dismiss);
    connect(&m_finder, &TextFinder::changed, this, &FindBar::hitsChanged);
    connect(&m_finder, &TextFinder::currentChanged, this, &FindBar::showCurrentHit);
    hide();
}

QToolButton *FindBar::makeButton(const char *name, const QString &text)
{
    auto *button = new QToolButton(this);
    button->setObjectName(QLatin1String(name));
    button->setAutoRaise(true);
    button->setToolTip(text);
    button->setAccessibleName(text);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

void FindBar::arrange()
{
    m_field->setMinimumWidth(leastFieldWidth);
    m_field->setMaximumWidth(mostFieldWidth);
    m_count->setMinimumWidth(leastCountWidth);
    auto *row = new QHBoxLayout;
    row->setSpacing(4);
    row->addWidget(m_field, 3);
    row->addWidget(m_previousButton);
    row->addWidget(m_nextButton);
    row->addSpacing(4);
    row->addWidget(m_count, 1);
    row->addWidget(m_closeButton);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(8, 4, 6, 4);
    column->setSpacing(4);
    column->addLayout(row);
    column->addWidget(m_note);
    m_note->hide();
}

void FindBar::applyIcons()
{
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    const QColor line = palette().color(QPalette::ButtonText);
    m_previousButton->setIcon(iconNamed(QStringLiteral("find-previous"), line));
    m_nextButton->setIcon(iconNamed(QStringLiteral("find-next"), line));
    m_closeButton->setIcon(iconNamed(QStringLiteral("close"), line));
    for (QToolButton *button : {m_previousButton, m_nextButton, m_closeButton})
        button->setIconSize({size, size});
}

void FindBar::changeEvent(QEvent *event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        applyIcons();
}

void FindBar::setPDFView(PDFView *view)
{
    m_view = view;
    m_finder.setDocument(view->document());
    connect(view, &PDFView::pageAppearanceChanged, this, [this](const PDFPage *page) {
        if (!page)
            m_finder.notePageOrder();
    });
}

void FindBar::open()
{
    const QString selected = m_field->hasFocus() ? QString() : m_view->selectedText(longestSelection + 1);
    const bool takesSelection =
        !selected.trimmed().isEmpty() && selected.size() <= longestSelection && !selected.contains(u'\n');
    if (takesSelection)
        m_field->setText(selected);
    const bool wasHidden = isHidden();
    show();
    m_field->setFocus(Qt::ShortcutFocusReason);
    m_field->selectAll();
    if (takesSelection)
        searchFrom(m_view->selectedPlace().value_or(m_view->place()));
    else if (wasHidden || m_typingPause.isActive())
        searchFrom(m_view->place());
}

void FindBar::dismiss()
{
    if (isHidden())
        return;
    m_typingPause.stop();
    m_refreshPause.stop();
    Q_EMIT dismissed(); // first, so that the keyboard does not go to any other part of the window
    hide();
    m_finder.pause();
    m_view->setFindMarks({}, -1);
}

void FindBar::searchFrom(const PDFView::Place &place)
{
    m_typingPause.stop();
    m_finder.search(m_field->text(), place);
}

// Otherwise they are being looked for now, and the first one of them comes by itself.
bool FindBar::showsHitsOfField()
{
    if (m_field->text().isEmpty()) {
        open();
        return false;
    }
    const bool hasThem = m_finder.text() == m_field->text() && m_finder.state() != TextFinder::State::Idle;
    show();
    if (hasThem) {
        m_typingPause.stop();
        m_finder.resume();
    } else {
        searchFrom(m_view->place());
    }
    return hasThem;
}

void FindBar::findNext()
{
    if (showsHitsOfField())
        m_finder.goToNext();
}

void FindBar::findPrevious()
{
    if (showsHitsOfField())
        m_finder.goToPrevious();
}

void FindBar::hitsChanged()
{
    if (m_finder.state() != TextFinder::State::Searching)
        showHits();
    else if (!m_refreshPause.isActive())
        m_refreshPause.start();
}

void FindBar::showHits()
{
    m_refreshPause.stop();
    if (isHidden())
        return;
    m_view->setFindMarks(m_finder.hits(), m_finder.currentIndex());
    m_previousButton->setEnabled(m_finder.hitCount() > 0);
    m_nextButton->setEnabled(m_finder.hitCount() > 0);
    m_count->setText(countText());
    m_count->setToolTip(m_count->text());
    const QString note = noteText();
    const bool isNewNote = m_note->text() != note;
    m_note->setText(note);
    m_note->setVisible(!note.isEmpty());
    if (m_finder.state() == TextFinder::State::Finished && m_finder.hitCount() == 0)
        announce(isNewNote && !note.isEmpty() ? m_note : m_count);
}

void FindBar::showCurrentHit()
{
    showHits();
    const FindHit *hit = isHidden() ? nullptr : m_finder.currentHit();
    const PDFPage *page = hit ? m_view->pageForSourceIndex(hit->page) : nullptr;
    if (page)
        m_view->scrollToVisible(page->rectFromFileSpace(hit->areas.front()), page);
}

QString FindBar::countText() const
{
    if (m_finder.state() == TextFinder::State::Idle)
        return {};
    const bool isSearching = m_finder.state() == TextFinder::State::Searching;
    if (m_finder.hitCount() == 0)
        return isSearching ? tr("Searching…") : tr("Not found");
    const QString form = isSearching ? tr("%L1 of %L2…") : tr("%L1 of %L2");
    return form.arg(m_finder.currentIndex() + 1).arg(m_finder.hitCount());
}

QString FindBar::noteText() const
{
    if (m_finder.documentLacksText())
        return tr("This document has no text to search. Its pages may be scanned pictures.");
    if (m_finder.isCut())
        return tr("There may be more: there is too much text to search all of it.");
    if (m_finder.failedPageCount() > 0)
        return tr("Pages that could not be searched: %L1").arg(m_finder.failedPageCount());
    return {};
}

void FindBar::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        dismiss();
    else
        QFrame::keyPressEvent(event);
}

bool FindBar::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_field || event->type() != QEvent::KeyPress)
        return QFrame::eventFilter(watched, event);
    const auto *key = static_cast<QKeyEvent *>(event);
    if (key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter)
        return false;
    if (key->modifiers().testFlag(Qt::ShiftModifier))
        findPrevious();
    else
        findNext();
    return true;
}

} // namespace inkory
