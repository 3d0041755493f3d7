#include "platform/engine/OverlayForms.h"

#include "platform/engine/ContentBalance.h"
#include "platform/engine/FontSubsets.h"
#include "platform/engine/ImageStream.h"
#include "platform/engine/PageTree.h"
#include "platform/engine/QpdfStructure.h"
#include "platform/engine/TextPieces.h"

#include <map>
#include <set>
#include <stdexcept>
#include <string>

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

namespace inkory
{

namespace
{

constexpr int noMarker = -1;

// The image that a 1 x 1 picture stands for, or noMarker.
int markedImage(QPDFObjectHandle object)
{
    if (!object.isStream())
        return noMarker;
    QPDFObjectHandle dictionary = object.getDict();
    const auto isOne = [&dictionary](const char *key) {
        QPDFObjectHandle value = dictionary.getKey(key);
        return value.isInteger() && value.getIntValue() == 1;
    };
    if (!dictionary.getKey("/Subtype").isNameAndEquals("/Image") || !isOne("/Width") || !isOne("/Height"))
        return noMarker;
    const auto pixel = object.getStreamData(qpdf_dl_all);
    const unsigned char *bytes = pixel->getBuffer();
    if (pixel->getSize() == 1)
        return bytes[0] << 16 | bytes[0] << 8 | bytes[0];
    return pixel->getSize() == 3 ? bytes[0] << 16 | bytes[1] << 8 | bytes[2] : noMarker;
}

// Adds what is named. QPdfWriter lists colour spaces, states and patterns whether they are used or not; it gives names
// that mean the same on all pages of its file. The result's dictionaries are its own, so that they may be changed.
void addUsedResources(QPDFObjectHandle result, QPDFObjectHandle resources, const std::set<std::string> &names)
{
    if (!resources.isDictionary())
        return;
    for (const std::string &kind : resources.getKeys()) {
        QPDFObjectHandle all = resources.getKey(kind);
        if (!all.isDictionary())
            continue;
        for (const std::string &name : all.getKeys()) {
            if (!names.contains(name))
                continue;
            if (!result.hasKey(kind))
                result.replaceKey(kind, QPDFObjectHandle::newDictionary());
            result.getKey(kind).replaceKey(name, all.getKey(name));
        }
    }
}

} // namespace

struct OverlayForms::Parts
{
    QPDF &document;
    std::vector<ImagePtr> images;
    QpdfFile overlay;
    std::vector<QpdfPage> pages;
    std::map<int, QPDFObjectHandle> imageObjects;

    const QpdfPage &pageOf(const OverlayPiece &piece) const;
    QPDFObjectHandle importResources(QPDFObjectHandle resources);
    QPDFObjectHandle imageObject(int index);
};

OverlayForms::OverlayForms(QPDF &document, const QByteArray &overlays, std::vector<ImagePtr> images)
    : m_parts(new Parts{document, std::move(images), {}, {}, {}})
{
    if (overlays.isEmpty())
        return;
    m_parts->overlay = openWithQpdf(overlays, {});
    finishFontSubsets(*m_parts->overlay.document);
    m_parts->pages = readPages(*m_parts->overlay.document);
}

OverlayForms::~OverlayForms() = default;

int OverlayForms::pageCount() const
{
    return static_cast<int>(m_parts->pages.size());
}

QPDFObjectHandle OverlayForms::makeForm(const std::vector<OverlayPiece> &pieces)
{
    const PageRect box = m_parts->pageOf(pieces.front()).geometry.mediaBox;
    std::string bytes;
    QPDFObjectHandle used = QPDFObjectHandle::newDictionary();
    for (const OverlayPiece &piece : pieces) {
        const QpdfPage &page = m_parts->pageOf(piece);
        const DecodedContent content = decodedContent(*page.object);
        if (!content.isComplete)
            throw std::runtime_error("an overlay cannot be read");
        const std::string drawing = pieceContent(piece, content.bytes, *page.resources);
        if (!drawing.empty())
            addUsedResources(used, *page.resources, namesInContent(drawing));
        bytes += drawing;
    }
    QPDFObjectHandle form = m_parts->document.newStream();
    QPDFObjectHandle dictionary = form.getDict();
    dictionary.replaceKey("/Type", QPDFObjectHandle::newName("/XObject"));
    dictionary.replaceKey("/Subtype", QPDFObjectHandle::newName("/Form"));
    dictionary.replaceKey("/BBox", QPDFObjectHandle::newFromRectangle({box.x, box.y, box.maxX(), box.maxY()}));
    dictionary.replaceKey("/Resources", m_parts->importResources(used));
    form.replaceStreamData(deflated(bytes), QPDFObjectHandle::newName("/FlateDecode"), QPDFObjectHandle::newNull());
    return form;
}

const QpdfPage &OverlayForms::Parts::pageOf(const OverlayPiece &piece) const
{
    return pages.at(static_cast<std::size_t>(piece.overlayPage));
}

QPDFObjectHandle OverlayForms::Parts::importResources(QPDFObjectHandle resources)
{
    // Markers are taken out before the rest is copied, so that they do not come along.
    std::map<std::string, int> marked;
    QPDFObjectHandle pictures = resources.getKey("/XObject");
    if (pictures.isDictionary()) {
        for (const std::string &name : pictures.getKeys()) {
            const int index = markedImage(pictures.getKey(name));
            if (index >= 0 && index < static_cast<int>(images.size()))
                marked.emplace(name, index);
        }
        for (const auto &[name, index] : marked)
            pictures.removeKey(name);
    }
    const QPDFObjectHandle source = overlay.document->makeIndirectObject(resources);
    QPDFObjectHandle result = document.copyForeignObject(source).shallowCopy();
    for (const auto &[name, index] : marked)
        result.getKey("/XObject").replaceKey(name, imageObject(index));
    return result;
}

QPDFObjectHandle OverlayForms::Parts::imageObject(int index)
{
    auto known = imageObjects.find(index);
    if (known == imageObjects.end()) {
        const ImagePtr &image = images[static_cast<std::size_t>(index)];
        if (!image)
            throw std::runtime_error("an image is missing");
        known = imageObjects.emplace(index, addImageObject(document, *image)).first;
    }
    return known->second;
}

} // namespace inkory
