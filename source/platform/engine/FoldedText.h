#pragma once

#include <QString>

#include <vector>

namespace inkory
{

/// A text as finding compares it, with the way back to the text itself. Folding takes away what makes no difference:
/// case; accents; ligatures and other ways of writing the same characters; the kind and the amount of white space (one
/// space remains); invisible characters, and the line feed after a soft hyphen with them.
class FoldedText
{
public:
    /// Units of the text itself, the end not included.
    struct Range
    {
        qsizetype begin = 0;
        qsizetype end = 0;

        bool operator==(const Range &) const = default;
    };

    /// What a hyphen and the line feed behind it are read as.
    enum class DividedWord { InTwo, WithHyphen, WithoutHyphen };

    explicit FoldedText(QStringView text, DividedWord divided = DividedWord::InTwo);

    /// One that is seen.
    static bool isHyphen(char32_t character) { return character == U'-' || character == 0x2010; }

    const QString &folded() const { return m_folded; }

    /// Whether nothing but white space is left.
    bool isBlank() const;

    /// Where the query occurs in the text, from its beginning on; no two share a character. A blank query does not
    /// occur. At most so many.
    std::vector<Range> occurrencesOf(const FoldedText &query, qsizetype most) const;

private:
    void add(QChar unit, qsizetype origin);
    void removeLast();
    qsizetype endOfCharacter(qsizetype index) const;

    QString m_folded;
    // For each unit of the folded text, and for its end, where in the text itself the character begins that it is of.
    std::vector<qsizetype> m_origins;
    qsizetype m_size;
};

} // namespace inkory
