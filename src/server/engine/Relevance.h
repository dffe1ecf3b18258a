#pragma once

#include <QStringList>

#include <vector>

namespace quillmate::server
{

/// A sentence, by its place in a list, and how well it fits: above 0, at most 1.
struct Match {
    qsizetype index = 0;
    double score = 0;
};

/// The sentences that share a word with `words` (as `contentWords` gives them; one that is repeated weighs more), in
/// their order: cosine of the TF-IDF vectors over the sentences' words.
std::vector<Match> relevantSentences(const QStringList& sentences, const QStringList& words);

} // namespace quillmate::server
