// Colours new mail as the process decides: a red background becomes the tag "Important", which Thunderbird shows in red.

import { addressIn } from "./original-message.js";

const red = 4;
const important = "$label1";

export async function colourNewMail(program, list) {
  for (;;) {
    for (const message of list.messages) {
      await colour(program, message);
    }
    if (!list.id) {
      return;
    }
    list = await browser.messages.continueList(list.id);
  }
}

async function colour(program, message) {
  try {
    // Without the source: the process would take the message for the one that a panel is about.
    const decision = await program.decide(message.subject ?? "", await addressIn(message.author));
    if (decision?.action !== "setBackgroundColor" || decision.color !== red) {
      return;
    }
    const { tags } = await browser.messages.get(message.id);
    if (!tags.includes(important)) {
      await browser.messages.update(message.id, { tags: [...tags, important] });
    }
  } catch (error) {
    console.error("Quillmate could not mark a new message:", error); // Moved or deleted meanwhile, say.
  }
}
