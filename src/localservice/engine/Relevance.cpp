#include "localservice/engine/Relevance.h"

#include "localservice/engine/Words.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace quillmate::localservice
{

namespace
{

using Vector = QHash<QString, double>;

// A sentence that fits far worse than the best one is no answer.
constexpr double worstShare = 0.4;
constexpr qsizetype stemLength = 5;

/// Words by their beginning, so that "deliver" finds "delivery" and "Lieferung" finds "Lieferungen".
Vector counted(const QString& text)
{
    Vector vector;
    const QStringList words = contentWords(text);
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

QStringList relevantSentences(const QStringList& sentences, const QString& question, qsizetype count)
{
    std::vector<Vector> vectors;
    QHash<QString, int> holders;
    for (const QString& sentence : sentences) {
        vectors.push_back(counted(sentence));
        for (auto word = vectors.back().keyBegin(); word != vectors.back().keyEnd(); ++word) {
            ++holders[*word];
        }
    }
    const auto weighted = [&](Vector& vector) {
        for (auto entry = vector.begin(); entry != vector.end(); ++entry) {
            entry.value() *= std::log(1 + static_cast<double>(sentences.size()) / (1.0 + holders.value(entry.key())));
        }
    };
    Vector asked = counted(question);
    weighted(asked);
    const double askedLength = length(asked);

    std::vector<std::pair<double, qsizetype>> scores;
    for (std::size_t index = 0; index < vectors.size(); ++index) {
        weighted(vectors[index]);
        double product = 0;
        for (auto entry = asked.cbegin(); entry != asked.cend(); ++entry) {
            product += entry.value() * vectors[index].value(entry.key());
        }
        if (product > 0) {
            scores.emplace_back(product / (askedLength * length(vectors[index])), static_cast<qsizetype>(index));
        }
    }
    std::stable_sort(scores.begin(), scores.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    std::vector<qsizetype> chosen;
    for (const auto& [score, index] : scores) {
        if (static_cast<qsizetype>(chosen.size()) < count && score >= worstShare * scores.front().first) {
            chosen.push_back(index);
        }
    }
    std::sort(chosen.begin(), chosen.end());
    QStringList result;
    for (const qsizetype index : chosen) {
        result.append(sentences[index]);
    }
    return result;
}

} // namespace quillmate::localservice
