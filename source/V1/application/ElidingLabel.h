#pragma once

#include <QLabel>

namespace inkory
{

/// One line of plain text that says with an ellipsis that it goes on. Its text does not widen the window.
class ElidingLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ElidingLabel(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace inkory
