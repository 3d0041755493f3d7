#pragma once

#include <set>
#include <string>
#include <vector>

class QPDFObjectHandle;

namespace inkory
{

/// What a page's content leaves behind for whatever is drawn after it.
struct ContentBalance
{
    /// How often it restores a graphics state that it has not saved. Viewers ignore that.
    int unmatchedRestores = 0;
    /// How many states it saves and does not restore.
    int openSaves = 0;
    /// Whether it ends inside a text object.
    bool isTextOpen = false;
    /// Whether what is written after it is read as it is meant: false where there is a token that is none, or where a
    /// string, an array, a dictionary or an inline image is not closed.
    bool isSound = true;
};

ContentBalance contentBalance(const std::string &content);

/// The content without the restores that match no save: it draws the same, and may be put between a save and a restore.
std::string withoutUnmatchedRestores(const std::string &content);

/// Every name in the content, with its slash: whatever resource is not among them is not used by it.
std::set<std::string> namesInContent(const std::string &content);

/// A page's content, as a viewer gets to see it.
struct DecodedContent
{
    std::string bytes;
    /// False where a part could not be decoded to its end; the bytes are what came before. Also false, and without any
    /// bytes, for content beyond 256 megabytes, which nobody but a viewer shall have to decode.
    bool isComplete = true;
};

/// The page's content streams; entries that are none are left out.
std::vector<QPDFObjectHandle> contentStreams(const QPDFObjectHandle &page);

DecodedContent decodedContent(const QPDFObjectHandle &page);

} // namespace inkory
