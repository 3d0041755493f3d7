#include "platform/engine/ContentBalance.h"

#include <stdexcept>

#include <qpdf/Pipeline.hh>
#include <qpdf/Pl_QPDFTokenizer.hh>
#include <qpdf/Pl_String.hh>
#include <qpdf/QPDFObjectHandle.hh>

namespace inkory
{

namespace
{

using Token = QPDFTokenizer::Token;

// A few bytes can be made to decode to a thousand times as many, several times over.
constexpr std::size_t maxContentSize = 256'000'000;

/// Collects what is decoded, up to the limit.
class BoundedPipeline : public Pipeline
{
public:
    explicit BoundedPipeline(std::string &bytes) : Pipeline("content", nullptr), m_bytes(bytes) {}

    void write(const unsigned char *data, std::size_t size) override
    {
        isFull = isFull || size > maxContentSize - m_bytes.size();
        if (isFull)
            throw std::runtime_error("a page's content is too large"); // for the decoder, which stops then
        m_bytes.append(reinterpret_cast<const char *>(data), size);
    }
    void finish() override {}

    bool isFull = false;

private:
    std::string &m_bytes;
};

/// Follows saves, restores, text objects and whatever else is opened and closed, token by token.
class BalanceFilter : public QPDFObjectHandle::TokenFilter
{
public:
    void handleToken(const Token &token) override
    {
        followNesting(token.getType());
        if (token.getType() != QPDFTokenizer::tt_space)
            ++tokenCount;
        if (token.getType() == QPDFTokenizer::tt_word && isUnmatched(token.getValue()))
            return;
        writeToken(token);
    }

    int tokenCount = 0;

    ContentBalance balance() const
    {
        ContentBalance balance = m_balance;
        balance.isSound = m_balance.isSound && m_awaitedEnds.empty() && !m_isInImage;
        return balance;
    }

private:
    void followNesting(QPDFTokenizer::token_type_e type)
    {
        const bool isEnd = type == QPDFTokenizer::tt_array_close || type == QPDFTokenizer::tt_dict_close;
        if (type == QPDFTokenizer::tt_array_open) {
            m_awaitedEnds.push_back(QPDFTokenizer::tt_array_close);
        } else if (type == QPDFTokenizer::tt_dict_open) {
            m_awaitedEnds.push_back(QPDFTokenizer::tt_dict_close);
        } else if (isEnd && !m_awaitedEnds.empty() && m_awaitedEnds.back() == type) {
            m_awaitedEnds.pop_back();
        } else if (isEnd || type == QPDFTokenizer::tt_bad || (type == QPDFTokenizer::tt_inline_image && !m_isInImage)) {
            m_balance.isSound = false;
        }
    }

    bool isUnmatched(const std::string &word)
    {
        if (word == "q") {
            ++m_balance.openSaves;
        } else if (word == "Q" && m_balance.openSaves > 0) {
            --m_balance.openSaves;
        } else if (word == "Q") {
            ++m_balance.unmatchedRestores;
            return true;
        } else if (word == "BT" || word == "ET") {
            m_balance.isTextOpen = word == "BT";
        } else if (word == "BI" || word == "EI") {
            m_isInImage = word == "BI";
        }
        return false;
    }

    ContentBalance m_balance;
    std::vector<QPDFTokenizer::token_type_e> m_awaitedEnds;
    bool m_isInImage = false;
};

class NameFilter : public QPDFObjectHandle::TokenFilter
{
public:
    void handleToken(const Token &token) override
    {
        if (token.getType() == QPDFTokenizer::tt_name)
            names.insert(token.getValue());
    }

    std::set<std::string> names;
};

void run(const std::string &content, QPDFObjectHandle::TokenFilter &filter, Pipeline *output = nullptr)
{
    Pl_QPDFTokenizer tokenizer("content", &filter, output);
    tokenizer.writeString(content);
    tokenizer.finish();
}

} // namespace

ContentBalance contentBalance(const std::string &content)
{
    BalanceFilter filter;
    run(content, filter);
    ContentBalance balance = filter.balance();
    if (balance.unmatchedRestores == 0)
        return balance;
    // Where an inline image ends is a guess by what follows it, and may come out otherwise without the restores.
    BalanceFilter cleaned;
    run(withoutUnmatchedRestores(content), cleaned);
    const ContentBalance after = cleaned.balance();
    balance.isSound = balance.isSound && after.isSound && after.unmatchedRestores == 0 &&
                      after.openSaves == balance.openSaves && after.isTextOpen == balance.isTextOpen &&
                      cleaned.tokenCount == filter.tokenCount - balance.unmatchedRestores;
    return balance;
}

std::string withoutUnmatchedRestores(const std::string &content)
{
    std::string result;
    Pl_String output("content", nullptr, result);
    BalanceFilter filter;
    run(content, filter, &output);
    return result;
}

std::set<std::string> namesInContent(const std::string &content)
{
    NameFilter filter;
    run(content, filter);
    return filter.names;
}

std::vector<QPDFObjectHandle> contentStreams(const QPDFObjectHandle &page)
{
    QPDFObjectHandle contents = QPDFObjectHandle(page).getKey("/Contents");
    std::vector<QPDFObjectHandle> streams;
    if (contents.isStream())
        return {contents};
    if (!contents.isArray())
        return {};
    for (int i = 0; i < contents.getArrayNItems(); ++i) {
        QPDFObjectHandle item = contents.getArrayItem(i);
        if (item.isStream())
            streams.push_back(item);
    }
    return streams;
}

DecodedContent decodedContent(const QPDFObjectHandle &page)
{
    DecodedContent content;
    for (QPDFObjectHandle &stream : contentStreams(page)) {
        const std::size_t sizeBefore = content.bytes.size();
        BoundedPipeline output(content.bytes);
        bool isFiltered = false;
        const bool isWhole = stream.pipeStreamData(&output, &isFiltered, 0, qpdf_dl_specialized, true);
        if (output.isFull)
            return {{}, false};
        content.isComplete = content.isComplete && isWhole && isFiltered;
        if (!isFiltered)
            content.bytes.resize(sizeBefore); // still encoded, in a way that viewers do not know either
        content.bytes += '\n';                // tokens do not run on from one stream into the next
    }
    return content;
}

} // namespace inkory
