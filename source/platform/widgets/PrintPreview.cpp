#include "platform/widgets/PrintPreview.h"

#include "platform/pdf/PDFDocument.h"
#include "platform/pdf/PrintDrawingContext.h"
#include "platform/pdf/PrintOperation.h"
#include "platform/widgets/PDFView.h"
#include "platform/widgets/PageImageStore.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <QtMath>

#include <algorithm>

namespace inkory
{

namespace
{

constexpr int margin = 16;
constexpr QSize dialogSize(620, 760);

/// One sheet of paper with its page, as large as there is room.
class SheetView : public QWidget
{
    Q_DECLARE_TR_FUNCTIONS(PrintPreview)

public:
    SheetView(PDFDocument &document, const PrintInfo &info, QWidget *parent)
        : QWidget(parent), m_info(info), m_pages(pagesToPrint(info, document.pageCount()))
    {
        m_images.setDocument(&document);
        connect(&m_images, &PageImageStore::pieceArrived, this, qOverload<>(&QWidget::update));
        setMinimumSize(200, 200);
        setObjectName(QStringLiteral("sheet"));
        setAccessibleName(tr("Sheet"));
    }

    int sheetCount() const { return static_cast<int>(m_pages.size()); }

    void showSheet(int sheet)
    {
        m_sheet = std::clamp(sheet, 0, std::max(sheetCount() - 1, 0));
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        if (m_info.colors == PrintColors::Gray) {
            QImage picture(size() * devicePixelRatioF(), QImage::Format_RGB32);
            picture.setDevicePixelRatio(devicePixelRatioF());
            QPainter onPicture(&picture);
            paintAll(onPicture);
            onPicture.end();
            painter.drawImage(0, 0, picture.convertToFormat(QImage::Format_Grayscale8));
        } else {
            paintAll(painter);
        }
        m_images.cancelStaleRequests();
    }

private:
    void paintAll(QPainter &painter)
    {
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        painter.fillRect(rect(), palette().color(QPalette::Mid));
        PDFPage *page = m_images.document() && m_sheet < sheetCount()
                            ? m_images.document()->pageAtIndex(m_pages[static_cast<std::size_t>(m_sheet)])
                            : nullptr;
        if (page)
            paintSheet(painter, *page);
    }

    void paintSheet(QPainter &painter, PDFPage &page)
    {
        const SheetPlacement placement = placeOnSheet(page.shownSize(), m_info);
        const QSizeF room = QSizeF(size()) - QSizeF(2 * margin, 2 * margin);
        const double zoom =
            std::min(room.width() / placement.paperSize.width(), room.height() / placement.paperSize.height());
        if (zoom <= 0)
            return;
        const QSizeF paper = placement.paperSize * zoom;
        const QRectF sheet(std::round((width() - paper.width()) / 2), std::round((height() - paper.height()) / 2),
                           paper.width(), paper.height());
        painter.fillRect(sheet, Qt::white);
        painter.setPen(QPen(QColor(0, 0, 0, 90), 1));
        painter.drawRect(sheet.adjusted(-0.5, -0.5, 0.5, 0.5));
        painter.setClipRect(sheet);
        const QTransform toWidget = placement.toSheet * QTransform::fromScale(zoom, zoom) *
                                    QTransform::fromTranslate(sheet.left(), sheet.top());
        PrintDrawingContext context(painter, page.shownTransform() * toWidget,
                                    [&] { paintContent(painter, page, toWidget, placement.scale * zoom); });
        const DrawingContext::Scope scope(context);
        page.drawWithBox(DisplayBox::CropBox, context);
    }

    void paintContent(QPainter &painter, const PDFPage &page, const QTransform &toWidget, double pixelsPerPoint)
    {
        const double scale = pixelsPerPoint * devicePixelRatioF();
        const QSizeF size = page.shownSize();
        const QRectF target = toWidget.mapRect(QRectF(QPointF(0, 0), size));
        const QRectF seen = toWidget.inverted().mapRect(QRectF(rect())) & QRectF(QPointF(0, 0), size);
        const QRect needed = QRectF(seen.topLeft() * scale, seen.size() * scale).toAlignedRect() &
                             QRect(0, 0, qCeil(size.width() * scale), qCeil(size.height() * scale));
        if (const auto *piece = m_images.piece(page, scale, needed)) {
            const QRectF part(QPointF(piece->region.topLeft()) / scale, QSizeF(piece->region.size()) / scale);
            painter.drawImage(toWidget.mapRect(part), piece->image);
        } else {
            painter.setPen(Qt::darkGray);
            painter.drawText(target, Qt::AlignCenter,
                             m_images.hasFailed(page, scale, needed) ? tr("This page cannot be drawn.")
                                                                     : QStringLiteral("…"));
        }
    }

    PrintInfo m_info;
    std::vector<int> m_pages;
    PageImageStore m_images{DrawPriority::Visible};
    int m_sheet = 0;
};

class PreviewDialog : public QDialog
{
    Q_DECLARE_TR_FUNCTIONS(PrintPreview)

public:
    PreviewDialog(PDFDocument &document, const PrintInfo &info, QWidget *parent)
        : QDialog(parent), m_sheetView(new SheetView(document, info, this))
    {
        setWindowTitle(tr("Print Preview"));
        resize(dialogSize);
        auto *layout = new QVBoxLayout(this);
        layout->addWidget(m_sheetView, 1);
        layout->addLayout(makeBottomRow());
        showSheet(1);
        m_number->setFocus();
    }

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() == Qt::Key_PageDown)
            showSheet(m_number->value() + 1);
        else if (event->key() == Qt::Key_PageUp)
            showSheet(m_number->value() - 1);
        else
            QDialog::keyPressEvent(event);
    }

private:
    QHBoxLayout *makeBottomRow()
    {
        const int count = m_sheetView->sheetCount();
        m_number->setRange(1, std::max(count, 1));
        m_number->setAccessibleName(tr("Sheet"));
        m_number->setKeyboardTracking(false);
        auto *label = new QLabel(tr("&Sheet"), this);
        label->setBuddy(m_number);
        auto *buttons = new QDialogButtonBox(this);
        QPushButton *print = buttons->addButton(tr("&Print"), QDialogButtonBox::AcceptRole);
        print->setEnabled(count > 0);
        buttons->addButton(tr("&Back"), QDialogButtonBox::RejectRole);
        connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
        connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
        connect(m_number, &QSpinBox::valueChanged, this, [this](int number) { showSheet(number); });
        auto *row = new QHBoxLayout;
        row->addWidget(label);
        row->addWidget(m_number);
        row->addWidget(new QLabel(tr("of %1").arg(count), this));
        row->addStretch();
        row->addWidget(buttons);
        return row;
    }

    void showSheet(int number)
    {
        m_number->setValue(number);
        m_sheetView->showSheet(m_number->value() - 1);
    }

    SheetView *m_sheetView;
    QSpinBox *m_number = new QSpinBox(this);
};

} // namespace

bool runPrintPreview(PrintOperation &operation, PDFView &view)
{
    // On the heap, because it is destroyed with its parent window if that goes first.
    const QPointer<PreviewDialog> dialog =
        new PreviewDialog(*operation.document(), operation.printInfo(), view.window());
    const bool isAccepted = dialog->exec() == QDialog::Accepted && dialog;
    delete dialog.data();
    return isAccepted;
}

} // namespace inkory
