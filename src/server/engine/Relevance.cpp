#include "server/engine/Relevance.h"

#include "server/engine/ContentWords.h"

#include <QHash>

#include <cmath>

namespace quillmate::server
{

namespace
{

using Vector = QHash<QString, double>;

constexpr qsizetype stemLength = 5;

/// Words by their beginning, so that "deliver" finds "delivery" and "Lieferung" finds "Lieferungen".
Vector counted(const QStringList& words)
{
    Vector vector;
    for (const QString& word : words) {
        vector[word.left(stemLength)] += 1;
    }
    return vector;
}

double length(const Vector& vector)
{
    double sum = 0;
    for (const double value : vector) {
        sum += value * value;
    }
    return std::sqrt(sum);
}

} // namespace

std::vector<Match> relevantSentences(const QStringList& sentences, const QStringList& words)
{
    std::vector<Vector> vectors;
    QHash<QString, int> holders;
    for (const QString& sentence : sentences) {
        vectors.push_back(counted(contentWords(sentence)));
        for (auto word = vectors.back().keyBegin(); word != vectors.back().keyEnd(); ++word) {
            ++holders[*word];
        }
    }
    const auto weighted = [&](Vector& vector) {
        for (auto entry = vector.begin(); entry != vector.end(); ++entry) {
            entry.value() *= std::log(1 + static_cast<double>(sentences.size()) / (1.0 + holders.value(entry.key())));
        }
    };
    Vector asked = counted(words);
    weighted(asked);
    const double askedLength = length(asked);

    std::vector<Match> found;
    for (std::size_t index = 0; index < vectors.size(); ++index) {
        weighted(vectors[index]);
        double product = 0;
        for (auto entry = asked.cbegin(); entry != asked.cend(); ++entry) {
            product += entry.value() * vectors[index].value(entry.key());
        }
        if (product > 0) {
            found.push_back({static_cast<qsizetype>(index), product / (askedLength * length(vectors[index]))});
        }
    }
    return found;
}

} // namespace quillmate::server
