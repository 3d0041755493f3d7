#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QMetaObject>

#include <optional>

namespace inkory
{

/// A button that shows a colour and opens the shared colour panel to choose another one. Text and drawing share the
/// panel; what is chosen for a drawing does not become the colour of new texts.
class CaptureColorWell : public QAbstractButton
{
    Q_OBJECT

public:
    explicit CaptureColorWell(QWidget *parent = nullptr);
    ~CaptureColorWell() override;

    /// Black at first.
    QColor color() const { return m_color; }
    /// Shows the colour, also in the panel where that is open for this well; emits nothing.
    void setColor(const QColor &color);
    /// Closes the panel; what texts had there is theirs again.
    void closePanel();

    QSize sizeHint() const override;

Q_SIGNALS:
    /// The person chose another colour.
    void colorPicked(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void openPanel();
    void takeColor(const QColor &color);

    QColor m_color = Qt::black;
    QMetaObject::Connection m_panel; // while it is open for this well
    QColor m_textColor;              // that the panel had before
};

} // namespace inkory
