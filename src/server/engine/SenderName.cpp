#include "server/engine/SenderName.h"

#include "mail/QuotedText.h"
#include "server/engine/SignOff.h"

#include <QStringList>

#include <algorithm>
#include <vector>

namespace quillmate::server
{

namespace
{

// A confidentiality notice may stand below the name.
constexpr qsizetype lookedAtLines = 60;
constexpr qsizetype shortLine = 50;

/// The lines that are not empty, each with what a paragraph's end needs.
struct Line {
    QString text;
    bool afterBlank = false;
};

std::vector<Line> linesOf(const QStringList& lines)
{
    std::vector<Line> kept;
    bool blank = true;
    for (const QString& line : lines) {
        const QString text = line.trimmed();
        if (!text.isEmpty()) {
            kept.push_back({text, blank});
        }
        blank = text.isEmpty();
    }
    return kept;
}

/// The name on one of the lines from `first`, the `count` of them that may hold it.
std::optional<PersonName> nameIn(const std::vector<Line>& lines, std::size_t first, std::size_t count,
                                 NameEvidence evidence)
{
    const std::size_t end = std::min(lines.size(), first + count);
    for (std::size_t index = first; index < end && lines[index].text.size() < 2 * shortLine; ++index) {
        if (auto name = readName(lines[index].text, evidence)) {
            return name;
        }
    }
    return std::nullopt;
}

std::optional<PersonName> nameBySignOff(const std::vector<Line>& lines)
{
    // The first line addresses the reader: "Thanks, Tom" there names Tom.
    for (std::size_t index = lines.size(); index > 1; --index) {
        const auto beside = signOff(lines[index - 1].text);
        if (!beside) {
            continue;
        }
        // In small letters it may be any word ("best wishes always").
        const bool readable = !beside->isEmpty() && !beside->at(0).isLower();
        if (auto name = readable ? readName(*beside, NameEvidence::Signed) : std::nullopt) {
            return name;
        }
        if (auto name = nameIn(lines, index, 2, NameEvidence::Signed)) {
            return name;
        }
    }
    return std::nullopt;
}

/// A telephone number or an address.
bool isContactLine(const QString& line)
{
    constexpr int numberLength = 6;
    const auto digits = std::count_if(line.begin(), line.end(), [](QChar character) { return character.isDigit(); });
    return digits >= numberLength || line.contains(u'@');
}

/// A name in the last paragraph: the only line, or below a line that closes in words not known here, or a whole name
/// above what belongs to a signature.
std::optional<PersonName> nameAtEnd(const std::vector<Line>& lines)
{
    std::size_t start = lines.size();
    while (start > 0 && !lines[--start].afterBlank) {
    }
    const std::size_t count = lines.size() - start;
    const auto first = lines.begin() + static_cast<std::ptrdiff_t>(start);
    const auto isLong = [](const Line& line) { return line.text.size() > shortLine; };
    const auto isContact = [](const Line& line) { return isContactLine(line.text); };
    if (start == 0 || std::any_of(first, lines.end(), isLong) || lines[start - 1].text.endsWith(u':')) {
        return std::nullopt;
    }
    if (count == 2 && first->text.endsWith(u',')) {
        return readName(lines.back().text, NameEvidence::Alone);
    }
    auto name = readName(first->text, NameEvidence::Alone);
    const bool signature = name && !name->family.isEmpty() && std::any_of(first + 1, lines.end(), isContact);
    return count == 1 || signature ? name : std::nullopt;
}

} // namespace

std::optional<PersonName> senderName(const QString& text)
{
    const QStringList all = ownLinesAndSignature(text);
    const auto mark = std::find_if(all.begin(), all.end(), isSignatureMark);
    const QStringList body(all.begin(), mark);
    const std::vector<Line> bodyLines = linesOf(body.mid(std::max<qsizetype>(0, body.size() - lookedAtLines)));
    const std::vector<Line> signature = linesOf(QStringList(mark == all.end() ? mark : mark + 1, all.end()));
    // A formula may be the last thing above the mark, its name the first below.
    std::vector<Line> both = bodyLines;
    both.insert(both.end(), signature.begin(), signature.begin() + std::min<std::ptrdiff_t>(std::ssize(signature), 3));
    if (auto name = nameBySignOff(both)) {
        return name;
    }
    if (auto name = nameAtEnd(bodyLines)) {
        return name;
    }
    return nameIn(signature, 0, 2, NameEvidence::Alone);
}

} // namespace quillmate::server
