#pragma once

#include <QAbstractButton>
#include <QColor>

/// A swatch in the signature window: a square button that shows its colour, and nothing else. It is clicked, or pressed
/// with the space bar. Its owner says its accessible name, and which colour of its list it is.
class ColorSelectButtonCell : public QAbstractButton
{
    Q_OBJECT

public:
    explicit ColorSelectButtonCell(QWidget *parent = nullptr);

    /// White at first.
    QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor &color);

    int tag() const { return m_tag; }
    void setTag(int tag) { m_tag = tag; }

    /// 20 × 20, of which the colour fills 12 × 12.
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_backgroundColor = Qt::white;
    int m_tag = 0;
};
