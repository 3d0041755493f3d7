#include "platform/engine/PageTree.h"

#include "platform/engine/QpdfStructure.h"

#include <optional>
#include <set>
#include <stdexcept>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>

namespace inkory
{

namespace
{

constexpr std::size_t maxTreeNodes = 200'000;
// The library walks the tree by recursion.
constexpr std::size_t maxTreeDepth = 2'000;

/// What a page tree node hands down.
struct Inherited
{
    std::optional<PageRect> mediaBox;
    std::optional<PageRect> cropBox;
    long long rotation = 0;
    QPDFObjectHandle resources;

    /// What holds below the node, or for the page.
    Inherited with(QPDFObjectHandle &node) const
    {
        Inherited result = *this;
        if (const auto box = boxFromObject(node.getKey("/MediaBox")))
            result.mediaBox = box;
        if (const auto box = boxFromObject(node.getKey("/CropBox")))
            result.cropBox = box;
        if (QPDFObjectHandle rotate = node.getKey("/Rotate"); rotate.isInteger())
            result.rotation = rotate.getIntValue();
        if (QPDFObjectHandle own = node.getKey("/Resources"); own.isDictionary())
            result.resources = own;
        return result;
    }
};

/// A page tree node whose kids are being walked.
struct OpenNode
{
    QPDFObjGen id;
    QPDFObjectHandle kids;
    int nextKid = 0;
    Inherited inherited;
};

// The library corrects a catalog that points into the middle of the tree in the same way.
QPDFObjectHandle pageTreeRoot(QPDF &document)
{
    QPDFObjectHandle node = document.getRoot().getKey("/Pages");
    std::set<QPDFObjGen> seen;
    while (node.isDictionary() && node.hasKey("/Parent") && seen.insert(node.getObjGen()).second)
        node = node.getKey("/Parent");
    return node;
}

class PageTreeWalk
{
public:
    explicit PageTreeWalk(QPDF &document)
    {
        QPDFObjectHandle root = pageTreeRoot(document);
        if (root.isDictionary() && root.hasKey("/Kids"))
            enter(root, {});
        while (!m_open.empty())
            step();
    }

    std::vector<Inherited> takePages() { return std::move(m_pages); }

private:
    void enter(QPDFObjectHandle &node, const Inherited &inherited)
    {
        if (!m_path.insert(node.getObjGen()).second)
            throw std::runtime_error("the page tree has a loop");
        if (m_open.size() >= maxTreeDepth || ++m_nodes > maxTreeNodes)
            throw std::runtime_error("the page tree is too deep");
        m_open.push_back({node.getObjGen(), node.getKey("/Kids"), 0, inherited.with(node)});
    }

    void step()
    {
        OpenNode &node = m_open.back();
        if (!node.kids.isArray() || node.nextKid >= node.kids.getArrayNItems()) {
            m_path.erase(node.id);
            m_open.pop_back();
            return;
        }
        QPDFObjectHandle kid = node.kids.getArrayItem(node.nextKid++);
        if (!kid.isDictionary())
            throw std::runtime_error("the page tree has a kid that is no page");
        if (kid.hasKey("/Kids")) {
            enter(kid, node.inherited);
            return;
        }
        if (m_pages.size() >= std::size_t{maxPageCount})
            throw std::runtime_error("the document has too many pages");
        m_pages.push_back(node.inherited.with(kid));
    }

    std::vector<OpenNode> m_open;
    std::set<QPDFObjGen> m_path;
    std::size_t m_nodes = 0;
    std::vector<Inherited> m_pages;
};

// What a page, or a node above it, says in vain keeps it from getting what it inherited.
void keepGeometry(const QpdfPage &page)
{
    QPDFObjectHandle object = *page.object;
    const PageGeometry &meant = page.geometry;
    if (!object.getKey("/Rotate").isInteger())
        object.replaceKey("/Rotate", QPDFObjectHandle::newInteger(meant.rotation));
    const PageGeometry said = cleanGeometry(boxFromObject(object.getKey("/MediaBox")),
                                            boxFromObject(object.getKey("/CropBox")), meant.rotation);
    if (said == meant)
        return;
    const auto objectOf = [](const PageRect &box) {
        return QPDFObjectHandle::newFromRectangle({box.x, box.y, box.maxX(), box.maxY()});
    };
    object.replaceKey("/MediaBox", objectOf(meant.mediaBox));
    object.replaceKey("/CropBox", objectOf(meant.cropBox));
}

} // namespace

std::vector<QpdfPage> readPages(QPDF &document)
{
    // First the walk that bounds what it does, then the library's, which does not.
    const std::vector<Inherited> walked = PageTreeWalk(document).takePages();
    const std::vector<QPDFObjectHandle> &objects = document.getAllPages();
    if (objects.size() != walked.size())
        throw std::runtime_error("the page tree is read in two ways");
    std::vector<QpdfPage> pages;
    pages.reserve(objects.size());
    for (std::size_t i = 0; i < objects.size(); ++i) {
        const Inherited &page = walked[i];
        pages.push_back({std::make_shared<QPDFObjectHandle>(objects[i]),
                         cleanGeometry(page.mediaBox, page.cropBox, page.rotation),
                         std::make_shared<QPDFObjectHandle>(page.resources)});
    }
    return pages;
}

void setPages(QPDF &document, const std::vector<QpdfPage> &pages)
{
    QPDFPageDocumentHelper(document).pushInheritedAttributesToPage();
    QPDFObjectHandle root = document.getRoot().getKey("/Pages");
    std::vector<QPDFObjectHandle> kids;
    for (const QpdfPage &page : pages) {
        page.object->replaceKey("/Parent", root);
        keepGeometry(page);
        kids.push_back(*page.object);
    }
    root.replaceKey("/Kids", QPDFObjectHandle::newArray(kids));
    root.replaceKey("/Count", QPDFObjectHandle::newInteger(static_cast<int>(kids.size())));
    document.updateAllPagesCache();
}

} // namespace inkory
