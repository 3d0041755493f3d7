#pragma once

#include <QIcon>
#include <QString>
#include <QWidget>

#include <vector>

class QHBoxLayout;
class QToolButton;

namespace inkory
{

/// A row of joined buttons, each with a tag: either one of them is the chosen one (selecting), or each is a command
/// that is given anew at every click (momentary). Qt has no such control. Has no selected segment at first.
class SegmentedControl : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(bool momentary READ isMomentary WRITE setMomentary)

public:
    explicit SegmentedControl(QWidget *parent = nullptr);

    bool isMomentary() const { return m_momentary; }
    void setMomentary(bool momentary) { m_momentary = momentary; }

    /// Appends a segment. The text is its tool tip and its name for screen readers; it is shown where the icon is none.
    void addSegment(const QString &text, const QIcon &icon, int tag);
    int segmentCount() const { return static_cast<int>(m_buttons.size()); }
    void setSegmentIcon(int segment, const QIcon &icon);
    void setSegmentEnabled(int segment, bool enabled);
    void setSegmentVisible(int segment, bool visible);

    /// -1: none. Setting does not emit activated(); a segment that is not there selects none.
    int selectedSegment() const { return m_selected; }
    void setSelectedSegment(int segment);
    int tagForSegment(int segment) const;

    QToolButton *button(int segment) const;

Q_SIGNALS:
    /// A person chose a segment, which is the selected one meanwhile.
    void activated(inkory::SegmentedControl *sender);

private:
    void choose(int segment);

    QHBoxLayout *m_layout;
    std::vector<QToolButton *> m_buttons;
    std::vector<int> m_tags;
    int m_selected = -1;
    bool m_momentary = false;
};

} // namespace inkory
