#include "platform/engine/OverlayForms.h"

#include "platform/engine/ContentBalance.h"
#include "platform/engine/ImageStream.h"
#include "platform/engine/PageTree.h"
#include "platform/engine/QpdfStructure.h"

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

// What the content uses of the resources: QPdfWriter lists colour spaces, states and patterns whether they are used or
// not. A dictionary of its own, in which dictionaries of each kind may be changed.
QPDFObjectHandle usedResources(QPDFObjectHandle resources, const std::set<std::string> &names)
{
    QPDFObjectHandle result = QPDFObjectHandle::newDictionary();
    if (!resources.isDictionary())
        return result;
    for (const std::string &kind : resources.getKeys()) {
        QPDFObjectHandle all = resources.getKey(kind);
        if (!all.isDictionary())
            continue;
        QPDFObjectHandle used = QPDFObjectHandle::newDictionary();
        for (const std::string &name : all.getKeys()) {
            if (names.contains(name))
                used.replaceKey(name, all.getKey(name));
        }
        if (!used.getKeys().empty())
            result.replaceKey(kind, used);
    }
    return result;
}

} // namespace

struct OverlayForms::Parts
{
    QPDF &document;
    std::vector<ImagePtr> images;
    QpdfFile overlay;
    std::vector<QpdfPage> pages;
    std::map<int, QPDFObjectHandle> forms;
    std::map<int, QPDFObjectHandle> imageObjects;

    QPDFObjectHandle makeForm(const QpdfPage &page);
    QPDFObjectHandle importResources(QPDFObjectHandle resources);
    QPDFObjectHandle imageObject(int index);
};

OverlayForms::OverlayForms(QPDF &document, const QByteArray &overlays, std::vector<ImagePtr> images)
    : m_parts(new Parts{document, std::move(images), {}, {}, {}, {}})
{
    if (overlays.isEmpty())
        return;
    m_parts->overlay = openWithQpdf(overlays, {});
    m_parts->pages = readPages(*m_parts->overlay.document);
}

OverlayForms::~OverlayForms() = default;

int OverlayForms::pageCount() const
{
    return static_cast<int>(m_parts->pages.size());
}

QPDFObjectHandle OverlayForms::form(int overlayPage)
{
    auto known = m_parts->forms.find(overlayPage);
    if (known == m_parts->forms.end()) {
        const QpdfPage &page = m_parts->pages.at(static_cast<std::size_t>(overlayPage));
        known = m_parts->forms.emplace(overlayPage, m_parts->makeForm(page)).first;
    }
    return known->second;
}

QPDFObjectHandle OverlayForms::Parts::makeForm(const QpdfPage &page)
{
    const DecodedContent content = decodedContent(*page.object);
    if (!content.isComplete)
        throw std::runtime_error("an overlay cannot be read");
    const PageRect box = page.geometry.mediaBox;
    QPDFObjectHandle form = document.newStream();
    QPDFObjectHandle dictionary = form.getDict();
    dictionary.replaceKey("/Type", QPDFObjectHandle::newName("/XObject"));
    dictionary.replaceKey("/Subtype", QPDFObjectHandle::newName("/Form"));
    dictionary.replaceKey("/BBox", QPDFObjectHandle::newFromRectangle({box.x, box.y, box.maxX(), box.maxY()}));
    const QPDFObjectHandle used = usedResources(*page.resources, namesInContent(content.bytes));
    dictionary.replaceKey("/Resources", importResources(used));
    form.replaceStreamData(deflated(content.bytes), QPDFObjectHandle::newName("/FlateDecode"),
                           QPDFObjectHandle::newNull());
    return form;
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
