#pragma once

#include "platform/pdf/PDFPage.h"

#include <memory>
#include <vector>

class KRStamp;

/// A page that owns stamps and draws them over its content, in list order, wherever the page is drawn: on the screen,
/// to a printer and into the saved file. Made by KRPDFDocument.
class KRPDFPage : public inkory::PDFPage
{
public:
    using StampList = std::vector<std::shared_ptr<KRStamp>>;

    using PDFPage::PDFPage;
    ~KRPDFPage() override;

    /// The stamps in drawing order: the last one lies on top. Each at most once.
    const StampList &stamps() const { return m_stamps; }

    /// Appends the stamp, unless it is in the list already (then it keeps its place). Called by stamps only, and never
    /// while the page is being drawn.
    void addStamp(const std::shared_ptr<KRStamp> &stamp);
    /// Does nothing if the stamp is not in the list. Called by stamps only.
    void removeStamp(const KRStamp *stamp);

    /// Draws content and stamps into the current context. An exception while stamps are drawn is logged, and the page
    /// then shows the stamps drawn before it.
    void drawWithBox(inkory::DisplayBox box) override;
    /// Draws content and, from platform version 1504 on, stamps into the given context, which is the current one
    /// meanwhile.
    void drawWithBox(inkory::DisplayBox box, inkory::DrawingContext &context) override;

private:
    void internalDrawPageWithBox(inkory::DisplayBox box);

    StampList m_stamps;
};
