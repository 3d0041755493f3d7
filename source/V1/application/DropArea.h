#pragma once

#include <QWidget>

namespace inkory
{

/// The ground on which files can be dropped: a dashed, rounded outline that lights up while acceptable files hover over
/// the window. It takes no drops itself, its window does.
class DropArea : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    enum class Look { Hidden, Quiet, Inviting };

    Look look() const { return m_look; }
    void setLook(Look look);

private:
    void paintEvent(QPaintEvent *event) override;

    Look m_look = Look::Quiet;
};

} // namespace inkory
