#pragma once

#include <QString>

namespace quillmate::server
{

/// A reply to a message's text, ready to be sent once its places in brackets are filled in: in the message's language
/// and tone, to the person who signed it, with at most five of its questions (or what it mainly says) quoted. Of what
/// the user thinks it says nothing. Signed with the name unless that is empty.
QString replyDraft(const QString& text, const QString& userName);

} // namespace quillmate::server
