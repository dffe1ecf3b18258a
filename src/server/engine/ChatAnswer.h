#pragma once

#include "server/store/ThreadMessage.h"

#include <QString>

#include <string>
#include <vector>

namespace quillmate::server
{

/// Answers a question with the sentences of the text that fit it best, at most three, in the question's language. What
/// was said earlier in the chat (oldest first) counts: a question without content of its own asks on about the last one
/// with some, and one that was answered before gets what was not quoted yet. Says so where nothing fits, and where the
/// text is empty. Time grows with the sizes of all three; of the text the first 5,000 sentences are looked at.
QString chatAnswer(const QString& text, const std::vector<ThreadMessage>& earlier, const std::string& question);

} // namespace quillmate::server
