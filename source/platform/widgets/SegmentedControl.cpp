#include "platform/widgets/SegmentedControl.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QToolButton>

namespace inkory
{

namespace
{

constexpr int iconSize = 20;
constexpr int markHeight = 2;

/// A button whose chosen state is plain to see in every theme: some styles shade it by a few grey levels only.
class SegmentButton : public QToolButton
{
public:
    using QToolButton::QToolButton;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QToolButton::paintEvent(event);
        if (isChecked()) {
            QPainter painter(this);
            painter.fillRect(QRect(3, height() - markHeight, width() - 6, markHeight),
                             palette().color(QPalette::Highlight));
        }
    }
};

} // namespace

SegmentedControl::SegmentedControl(QWidget *parent) : QWidget(parent), m_layout(new QHBoxLayout(this))
{
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(2);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void SegmentedControl::addSegment(const QString &text, const QIcon &icon, int tag)
{
    auto *button = new SegmentButton(this);
    button->setIcon(icon);
    button->setIconSize({iconSize, iconSize});
    button->setToolTip(text);
    button->setAccessibleName(text);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    button->setText(text);
    button->setToolButtonStyle(icon.isNull() ? Qt::ToolButtonTextOnly : Qt::ToolButtonIconOnly);
    button->setCheckable(!m_momentary);
    const int segment = segmentCount();
    connect(button, &QToolButton::clicked, this, [this, segment] { choose(segment); });
    m_layout->addWidget(button);
    m_buttons.push_back(button);
    m_tags.push_back(tag);
}

void SegmentedControl::setSegmentIcon(int segment, const QIcon &icon)
{
    if (QToolButton *found = button(segment)) {
        found->setIcon(icon);
        found->setToolButtonStyle(icon.isNull() ? Qt::ToolButtonTextOnly : Qt::ToolButtonIconOnly);
    }
}

void SegmentedControl::setSegmentEnabled(int segment, bool enabled)
{
    if (QToolButton *found = button(segment))
        found->setEnabled(enabled);
}

void SegmentedControl::setSegmentVisible(int segment, bool visible)
{
    if (QToolButton *found = button(segment))
        found->setVisible(visible);
}

void SegmentedControl::setSelectedSegment(int segment)
{
    m_selected = button(segment) ? segment : -1;
    for (int i = 0; i < segmentCount(); ++i)
        button(i)->setChecked(!m_momentary && i == m_selected);
}

int SegmentedControl::tagForSegment(int segment) const
{
    return button(segment) ? m_tags[static_cast<std::size_t>(segment)] : -1;
}

QToolButton *SegmentedControl::button(int segment) const
{
    return segment >= 0 && segment < segmentCount() ? m_buttons[static_cast<std::size_t>(segment)] : nullptr;
}

void SegmentedControl::choose(int segment)
{
    setSelectedSegment(segment);
    Q_EMIT activated(this);
    if (m_momentary)
        setSelectedSegment(-1);
}

} // namespace inkory
