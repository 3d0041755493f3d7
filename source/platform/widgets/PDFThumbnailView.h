#pragma once

#include "platform/widgets/PageImageStore.h"
#include "platform/widgets/ScreenDrawingContext.h"
#include "platform/widgets/WaitingPages.h"

#include <QListView>
#include <QPointer>

namespace inkory
{

class PDFView;
class PDFPage;

/// The pages of a PDFView's document as small pictures, the current one marked; a click and the arrow keys go to a
/// page, Return hands the focus to the page view. Pictures are drawn in the background, only where they are visible. A
/// dot marks pages that draw something over their content.
class PDFThumbnailView : public QListView
{
    Q_OBJECT

public:
    explicit PDFThumbnailView(QWidget *parent = nullptr);
    ~PDFThumbnailView() override;

    /// Binds the list to the view; not owned.
    void setPDFView(PDFView *view);
    PDFView *pdfView() const { return m_view; }

    /// Letters are not for this list: they choose tools.
    void keyboardSearch(const QString &search) override;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    class Model;
    class Delegate;

    void reload();
    void noteAppearance(const PDFPage *page);
    void startRequests();
    void showCurrentPage();
    bool isStamped(int pageIndex) const;
    void paintThumbnail(QPainter &painter, const QRect &cell, PDFPage &page, bool isCurrent);

    QPointer<PDFView> m_view;
    PageImageStore m_images{DrawPriority::Thumbnail};
    ScaledImages m_stampImages;
    WaitingPages m_waitingPages;
    Model *m_model;
    bool m_mayRequest = false; // the page itself comes first
};

} // namespace inkory
