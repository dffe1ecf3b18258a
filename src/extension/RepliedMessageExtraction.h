#pragma once

#include "state/ReplyEmailManager.h"

namespace quillmate
{

class MEComposeSession;

/// What the panel needs of the message being replied to: the session's own record. The same goes into the shared
/// record, which keeps its subject and its date where this message has none. Says in diagnostic lines what it could not
/// find, and starts the refresh of the user's details when a token is held. Runs to completion on the calling thread;
/// the refresh goes on by itself.
ReplyEmail extractRepliedMessage(const MEComposeSession& session);

} // namespace quillmate
