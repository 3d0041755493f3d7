#include "platform/engine/FontSubsets.h"

#include "platform/engine/ImageStream.h"

#include <QByteArray>
#include <QCryptographicHash>

#include <string>

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

namespace inkory
{

namespace
{

std::string decoded(QPDFObjectHandle stream)
{
    const auto bytes = stream.getStreamData(qpdf_dl_all);
    return {reinterpret_cast<const char *>(bytes->getBuffer()), bytes->getSize()};
}

std::string subsetTag(const std::string &program)
{
    constexpr int letters = 6;
    const QByteArray hash = QCryptographicHash::hash(
        QByteArray::fromRawData(program.data(), static_cast<qsizetype>(program.size())), QCryptographicHash::Sha256);
    std::string tag;
    for (int i = 0; i < letters; ++i)
        tag += static_cast<char>('A' + static_cast<unsigned char>(hash.at(i)) % 26);
    return tag + '+';
}

void addTag(QPDFObjectHandle dictionary, const char *key, const std::string &tag)
{
    QPDFObjectHandle name = dictionary.getKey(key);
    if (name.isName())
        dictionary.replaceKey(key, QPDFObjectHandle::newName('/' + tag + name.getName().substr(1)));
}

void tagSubset(QPDFObjectHandle font)
{
    QPDFObjectHandle descendants = font.getKey("/DescendantFonts");
    QPDFObjectHandle part = descendants.isArray() && descendants.getArrayNItems() == 1 ? descendants.getArrayItem(0)
                                                                                       : QPDFObjectHandle::newNull();
    QPDFObjectHandle descriptor = part.isDictionary() ? part.getKey("/FontDescriptor") : part;
    if (!descriptor.isDictionary())
        return;
    for (const char *key : {"/FontFile2", "/FontFile3", "/FontFile"}) {
        QPDFObjectHandle program = descriptor.getKey(key);
        if (!program.isStream())
            continue;
        const std::string tag = subsetTag(decoded(program));
        addTag(font, "/BaseFont", tag);
        addTag(part, "/BaseFont", tag);
        addTag(descriptor, "/FontName", tag);
        return;
    }
}

// In such a map, lists of characters stand in brackets; numbers of glyphs, which stay, do not.
std::string withSpacesForTabs(std::string map)
{
    const std::string tab = "<0009>";
    const std::string space = "<0020>";
    for (auto list = map.find('['); list != std::string::npos; list = map.find('[', list + 1)) {
        const auto end = map.find(']', list);
        for (auto at = map.find(tab, list); at < end; at = map.find(tab, at))
            map.replace(at, tab.size(), space);
    }
    return map;
}

void mendMap(QPDFObjectHandle font)
{
    QPDFObjectHandle map = font.getKey("/ToUnicode");
    if (map.isStream())
        map.replaceStreamData(deflated(withSpacesForTabs(decoded(map))), QPDFObjectHandle::newName("/FlateDecode"),
                              QPDFObjectHandle::newNull());
}

} // namespace

void finishFontSubsets(QPDF &overlay)
{
    for (QPDFObjectHandle &object : overlay.getAllObjects()) {
        if (!object.isDictionary() || !object.getKey("/Type").isNameAndEquals("/Font") ||
            !object.getKey("/Subtype").isNameAndEquals("/Type0"))
            continue;
        tagSubset(object);
        mendMap(object);
    }
}

} // namespace inkory
