#pragma once

namespace quillmate
{

class MEComposeSession;

/// Copies what the panel needs of the message being replied to into the shared record, says in diagnostic lines what it
/// could not find, and starts the refresh of the user's details when a token is held. Runs to completion on the calling
/// thread; the refresh goes on by itself.
void extractRepliedMessage(const MEComposeSession& session);

} // namespace quillmate
