#include "platform/widgets/PageNotes.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QPainter>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace inkory
{

namespace
{

constexpr int margin = 8;
constexpr int gap = 12;
constexpr int manyLines = 10'000;
constexpr int wrapped = Qt::AlignCenter | Qt::TextWordWrap;
// A sentence cut to fewer characters says nothing.
constexpr int fewestCharacters = 8;
const QColor textColor(0x60, 0x60, 0x60); // the page is white in every theme

QSize wrappedSize(const QFontMetrics &metrics, const QString &text, int width)
{
    return metrics.boundingRect(QRect(0, 0, width, manyLines), wrapped, text).size();
}

} // namespace

PageNotes::PageNotes(QAbstractScrollArea &view, std::function<void(int)> retry)
    : m_view(view), m_retry(std::move(retry))
{
    QObject::connect(&m_waitingPages, &WaitingPages::becameOverdue, &m_waitingPages,
                     [this] { m_view.viewport()->update(); });
}

QString PageNotes::failureSentence()
{
    return tr("This page cannot be drawn.");
}

PageNotes::Places PageNotes::placesOn(const Page &page) const
{
    const QRect inner = page.area.adjusted(margin, margin, -margin, -margin);
    const auto found = m_buttons.find(page.index);
    if (found == m_buttons.end())
        return {inner, {}};
    const QSize button = found->second->sizeHint();
    const QSize text = wrappedSize(m_view.viewport()->fontMetrics(), failureSentence(), inner.width());
    const int height = text.height() + gap + button.height();
    if (height > inner.height() || std::max(text.width(), button.width()) > inner.width())
        return {inner, {}};
    const int top = inner.y() + (inner.height() - height) / 2;
    const QPoint corner(inner.x() + (inner.width() - button.width()) / 2, top + text.height() + gap);
    return {{inner.x(), top, inner.width(), text.height()}, {corner, button}};
}

void PageNotes::paintFailure(QPainter &painter, const Page &page) const
{
    paintSentence(painter, placesOn(page).text, failureSentence());
}

void PageNotes::paintWaiting(QPainter &painter, const Page &page)
{
    if (m_waitingPages.isOverdue(page.index))
        paintSentence(painter, placesOn(page).text, tr("Drawing this page…"));
}

void PageNotes::paintSentence(QPainter &painter, const QRect &place, const QString &sentence) const
{
    const QFontMetrics metrics = m_view.viewport()->fontMetrics();
    painter.setPen(textColor);
    const QSize whole = wrappedSize(metrics, sentence, place.width());
    if (whole.width() <= place.width() && whole.height() <= place.height())
        painter.drawText(place, wrapped, sentence);
    else if (metrics.height() <= place.height() && metrics.averageCharWidth() * fewestCharacters <= place.width())
        painter.drawText(place, Qt::AlignCenter, metrics.elidedText(sentence, Qt::ElideRight, place.width()));
}

void PageNotes::showButtons(const std::vector<Page> &failedPages)
{
    const auto former = m_buttons;
    for (const auto &[index, button] : former) {
        const auto isFailed = [wanted = index](const Page &page) { return page.index == wanted; };
        if (std::none_of(failedPages.begin(), failedPages.end(), isFailed))
            removeButton(index);
    }
    QWidget *before = &m_view;
    for (const Page &page : failedPages) {
        const auto found = m_buttons.find(page.index);
        QPushButton *button = found != m_buttons.end() ? found->second : addButton(page.index);
        if (found == m_buttons.end())
            QWidget::setTabOrder(before, button);
        before = button;
        const QRect place = placesOn(page).button;
        if (place.isEmpty() && button->hasFocus())
            m_view.setFocus();
        if (!place.isEmpty())
            button->setGeometry(place);
        button->setVisible(!place.isEmpty());
    }
}

QPushButton *PageNotes::addButton(int pageIndex)
{
    auto *button = new QPushButton(tr("Try Again"), m_view.viewport());
    button->setObjectName(QStringLiteral("drawAgainButton"));
    button->setAccessibleName(tr("Try Again: page %1 cannot be drawn.").arg(pageIndex + 1));
    button->setAutoDefault(true); // Return presses it
    button->setCursor(Qt::ArrowCursor);
    QObject::connect(button, &QPushButton::clicked, button, [this, pageIndex] { pressed(pageIndex); });
    m_buttons[pageIndex] = button;
    return button;
}

void PageNotes::pressed(int pageIndex)
{
    m_pressedPlace = m_buttons.at(pageIndex)->geometry();
    m_sincePress.start();
    m_retry(pageIndex);
}

bool PageNotes::isSecondPress(const QPoint &position) const
{
    return m_sincePress.isValid() && !m_sincePress.hasExpired(QApplication::doubleClickInterval()) &&
           m_pressedPlace.contains(position);
}

void PageNotes::removeButton(int pageIndex)
{
    QPushButton *button = m_buttons.extract(pageIndex).mapped();
    if (button->hasFocus())
        m_view.setFocus(); // otherwise it would go to any other part of the window
    button->hide();
    button->deleteLater(); // it may be the one being pressed
}

} // namespace inkory
