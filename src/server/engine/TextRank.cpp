#include "server/engine/TextRank.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace quillmate::server
{

namespace
{

constexpr double damping = 0.85;
constexpr double tolerance = 1e-6;
constexpr int iterationLimit = 200;
// The first sentence counts half as much again as the last.
constexpr double leadWeight = 0.5;

using WordSet = std::vector<int>;

std::vector<WordSet> numbered(const std::vector<QStringList>& sentenceWords)
{
    QHash<QString, int> numbers;
    std::vector<WordSet> sets;
    for (const QStringList& words : sentenceWords) {
        WordSet set;
        for (const QString& word : words) {
            auto found = numbers.find(word);
            if (found == numbers.end()) {
                found = numbers.insert(word, static_cast<int>(numbers.size()));
            }
            set.push_back(found.value());
        }
        std::sort(set.begin(), set.end());
        set.erase(std::unique(set.begin(), set.end()), set.end());
        sets.push_back(std::move(set));
    }
    return sets;
}

double similarity(const WordSet& left, const WordSet& right)
{
    std::size_t shared = 0;
    for (auto a = left.begin(), b = right.begin(); a != left.end() && b != right.end();) {
        if (*a == *b) {
            ++shared;
            ++a;
            ++b;
        } else if (*a < *b) {
            ++a;
        } else {
            ++b;
        }
    }
    if (shared == 0) {
        return 0;
    }
    // One more than the length keeps the sum above zero for sentences of one word.
    const double lengths =
        std::log(static_cast<double>(left.size()) + 1) + std::log(static_cast<double>(right.size()) + 1);
    return static_cast<double>(shared) / lengths;
}

} // namespace

std::vector<double> textRank(const std::vector<QStringList>& sentenceWords)
{
    const std::vector<WordSet> sets = numbered(sentenceWords);
    const std::size_t count = sets.size();
    std::vector<double> weights(count * count, 0);
    std::vector<double> sums(count, 0);
    for (std::size_t row = 0; row < count; ++row) {
        for (std::size_t column = row + 1; column < count; ++column) {
            const double weight = similarity(sets[row], sets[column]);
            weights[row * count + column] = weight;
            weights[column * count + row] = weight;
            sums[row] += weight;
            sums[column] += weight;
        }
    }
    std::vector<double> ranks(count, 1);
    for (int iteration = 0; iteration < iterationLimit; ++iteration) {
        std::vector<double> next(count, 1 - damping);
        for (std::size_t from = 0; from < count; ++from) {
            if (sums[from] <= 0) {
                continue;
            }
            const double share = damping * ranks[from] / sums[from];
            for (std::size_t to = 0; to < count; ++to) {
                next[to] += share * weights[from * count + to];
            }
        }
        double change = 0;
        for (std::size_t index = 0; index < count; ++index) {
            change = std::max(change, std::abs(next[index] - ranks[index]));
        }
        ranks = std::move(next);
        if (change < tolerance) {
            break;
        }
    }
    return ranks;
}

std::vector<std::size_t> bestSentences(const std::vector<QStringList>& sentenceWords, std::size_t count,
                                       const std::vector<double>& ownWeights)
{
    std::vector<double> scores = textRank(sentenceWords);
    for (std::size_t index = 0; index < scores.size(); ++index) {
        const double late = static_cast<double>(index) / static_cast<double>(scores.size());
        scores[index] *= 1 + leadWeight * (1 - late);
        // The root, so that a few sentences that are all about one thing do not outweigh every sign.
        scores[index] = std::sqrt(scores[index]);
        scores[index] += index < ownWeights.size() ? ownWeights[index] : 0;
    }
    std::vector<std::size_t> order(scores.size());
    std::iota(order.begin(), order.end(), std::size_t(0));
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return scores[a] > scores[b]; });
    std::vector<std::size_t> chosen;
    for (const std::size_t candidate : order) {
        const bool repeated = std::any_of(chosen.begin(), chosen.end(), [&](std::size_t other) {
            return sentenceWords[other] == sentenceWords[candidate];
        });
        if (chosen.size() < count && !repeated) {
            chosen.push_back(candidate);
        }
    }
    std::sort(chosen.begin(), chosen.end());
    return chosen;
}

} // namespace quillmate::server
