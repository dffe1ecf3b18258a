// A reply that was saved as a draft: the message it answers is found by what the draft's headers say.

import { headersOf } from "./headers.js";

// Copies there are not what somebody answers.
const otherUses = new Set(["drafts", "templates", "trash", "junk"]);

// The message that a draft answers, as Thunderbird lists it; null when there is none.
export async function originalOfDraft(details) {
  const identifier = answeredIdentifier((await headersOfDraft(details)) ?? {});
  if (!identifier) {
    return null;
  }
  const { messages } = await browser.messages.query({ headerMessageId: identifier });
  return messages.find(({ folder }) => !folder?.specialUse?.some((use) => otherUses.has(use))) ?? messages[0] ?? null;
}

// Without the angle brackets.
function answeredIdentifier(headers) {
  const identifiers = (name) => (headers[name] ?? []).join(" ").match(/(?<=<)[^<>\s]+(?=>)/gu);
  return identifiers("in-reply-to")?.at(0) ?? identifiers("references")?.at(-1) ?? null;
}

// Compose details have no word of these headers.
async function headersOfDraft(details) {
  if (details.relatedMessageId) {
    return headersOf(details.relatedMessageId);
  }
  const draft = await newestDraft(details.subject ?? "");
  return draft && headersOf(draft.id);
}

// Thunderbird does not tell which draft it is: the newest with that subject, which is the one just saved or opened.
async function newestDraft(subject) {
  const bare = (text) => text.replace(/^(?:\s*re\s*:)+\s*/iu, "").trim();
  const found = [];
  for (const folder of await browser.folders.query({ specialUse: ["drafts"] })) {
    const { messages } = await browser.messages.query({ folderId: folder.id, subject: bare(subject) });
    found.push(...messages.filter((message) => bare(message.subject ?? "") === bare(subject)));
  }
  return found.sort((one, other) => other.date - one.date)[0] ?? null;
}
