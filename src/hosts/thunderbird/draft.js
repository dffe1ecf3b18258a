// A reply that was saved as a draft: the message it answers is found by what the draft's headers say.

import { headersOf } from "./headers.js";

const draftUse = "drafts";
// Copies there are not what somebody answers.
const otherUses = [draftUse, "templates", "trash", "junk"];

// The message that a draft answers, as Thunderbird lists it; null when there is none.
export async function originalOfDraft(details) {
  const related = details.relatedMessageId ? await browser.messages.get(details.relatedMessageId) : null;
  if (related && !isUsedFor(related, draftUse)) {
    return related; // Thunderbird still knows it.
  }
  // Compose details have no word of the headers.
  const draft = related ?? (await newestDraft(details.subject ?? ""));
  const identifier = answeredIdentifier((draft && (await headersOf(draft.id))) ?? {});
  if (!identifier) {
    return null;
  }
  const { messages } = await browser.messages.query({ headerMessageId: identifier });
  return messages.find((message) => !isUsedFor(message, ...otherUses)) ?? messages[0] ?? null;
}

// Whether the message's folder has one of these uses.
function isUsedFor({ folder }, ...uses) {
  return uses.some((use) => folder?.specialUse?.includes(use));
}

// Without the angle brackets.
function answeredIdentifier(headers) {
  const identifiers = (name) => (headers[name] ?? []).join(" ").match(/(?<=<)[^<>\s]+(?=>)/gu);
  return identifiers("in-reply-to")?.at(0) ?? identifiers("references")?.at(-1) ?? null;
}

// Thunderbird does not tell which draft it is: the newest with that subject, which is the one just saved or opened.
async function newestDraft(subject) {
  const bare = (text) => text.replace(/^(?:\s*re\s*:)+\s*/iu, "").trim();
  const found = [];
  for (const folder of await browser.folders.query({ specialUse: [draftUse] })) {
    const { messages } = await browser.messages.query({ folderId: folder.id, subject: bare(subject) });
    found.push(...messages.filter((message) => bare(message.subject ?? "") === bare(subject)));
  }
  return found.sort((one, other) => other.date - one.date)[0] ?? null;
}
