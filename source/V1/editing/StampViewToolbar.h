#pragma once

#include <QWidget>

/// The background of the strip of buttons just above the selected stamp. Its buttons are its children; their dynamic
/// property "tag" is their order. Presses on the background reach the editing view.
class StampViewToolbar : public QWidget
{
    Q_OBJECT

public:
    explicit StampViewToolbar(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};
