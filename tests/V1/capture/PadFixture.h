#pragma once

#include "V1/capture/PadImage.h"
#include "V1/capture/SignaturePadView.h"
#include "V1/capture/SignatureTrimming.h"

#include <QMouseEvent>
#include <QPointingDevice>
#include <QTest>
#include <QWindow>

#include <gtest/gtest.h>

using namespace inkory;

/// A pad of 200 × 100 that draws black lines of 10 points, at (30, 20) of a shown window; its image has a density of 1.
/// Positions are in the pad, with y downward.
class PadFixture : public ::testing::Test
{
protected:
    PadFixture()
    {
        m_window.resize(260, 140);
        m_pad.setGeometry(30, 20, 200, 100);
        m_pad.awakeFromNib();
        m_pad.setColor(Qt::black);
        m_pad.setThickness(10);
        startEmpty(1);
        m_window.show();
        m_window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_window));
    }

    void startEmpty(double ratio) { m_pad.setImage(emptyPadImage(m_pad.size(), ratio)); }
    QWindow *handle() { return m_window.windowHandle(); }
    QPoint inWindow(QPoint position) const { return position + m_pad.pos(); }
    QTest::QTouchEventSequence fingers() { return QTest::touchEvent(handle(), m_screen.get()); }

    /// Through the window, with fractions of a pixel, which QTest cannot send.
    void mouse(QEvent::Type type, QPointF position, Qt::MouseButtons held = {})
    {
        const QPointF at = position + QPointF(m_pad.pos());
        QMouseEvent event(type, at, at, m_window.mapToGlobal(at),
                          type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, held, Qt::NoModifier);
        QCoreApplication::sendEvent(handle(), &event);
    }
    void drag(const std::vector<QPointF> &positions)
    {
        mouse(QEvent::MouseButtonPress, positions.front(), Qt::LeftButton);
        for (std::size_t i = 1; i < positions.size(); ++i)
            mouse(QEvent::MouseMove, positions[i], Qt::LeftButton);
        mouse(QEvent::MouseButtonRelease, positions.back());
    }
    QRect drawn() const { return drawnPixels(m_pad.image()); }

    QWidget m_window;
    SignaturePadView m_pad{&m_window};
    const std::unique_ptr<QPointingDevice> m_screen{QTest::createTouchDevice()};
};
