#pragma once

#include <QWidget>

#include <cstdint>

/// The values are the positions in the signature window's list of backgrounds.
enum SignaturePadBackgroundStyle : std::int32_t {
    SignaturePadBackgroundStyleRuled = 0,
    SignaturePadBackgroundStyleGrid = 1,
    SignaturePadBackgroundStyleYellowRuled = 2,
    SignaturePadBackgroundStyleYellowGrid = 3,
    SignaturePadBackgroundStylePlain = 4,
    SignaturePadBackgroundStyleGray = 5,
    SignaturePadBackgroundStyleDark = 6,
};

/// The paper behind the signature pad: a tinted sheet, ruled or not. It guides the hand and is never part of the
/// signature. The pad lies over it, as its child or its sibling.
class SignaturePadBackgroundView : public QWidget
{
    Q_OBJECT

public:
    explicit SignaturePadBackgroundView(QWidget *parent = nullptr);

    /// Ruled at first.
    SignaturePadBackgroundStyle signaturePadBackgroundStyle() const { return m_signaturePadBackgroundStyle; }
    /// A style that is none of the seven is drawn as the first one.
    void setSignaturePadBackgroundStyle(SignaturePadBackgroundStyle style);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    SignaturePadBackgroundStyle m_signaturePadBackgroundStyle = SignaturePadBackgroundStyleRuled;
};
