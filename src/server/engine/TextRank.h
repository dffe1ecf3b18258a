#pragma once

#include <QStringList>

#include <vector>

namespace quillmate::server
{

/// The TextRank weight of each sentence (Mihalcea and Tarau, 2004): sentences recommend each other by the number of
/// words they share over the sum of their lengths' logarithms; damping 0.85; iterated until no weight moves by more
/// than 1e-6. Time and memory grow with the square of the count: bound it before.
std::vector<double> textRank(const std::vector<QStringList>& sentenceWords);

/// The indices, in order, of the `count` best sentences: the root of TextRank weighted by position (an early sentence
/// of a message says more), plus the sentence's own weight (none counts 0), a sentence that repeats a chosen one left
/// out.
std::vector<std::size_t> bestSentences(const std::vector<QStringList>& sentenceWords, std::size_t count,
                                       const std::vector<double>& ownWeights = {});

} // namespace quillmate::server
