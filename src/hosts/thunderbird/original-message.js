// What the process is told of the message that a compose window answers or forwards.

import { originalOfDraft } from "./draft.js";
import { headersOf } from "./headers.js";
import { readableSource } from "./readable-source.js";
import { endsWithin, pause } from "./waiting.js";

// A frame may have 256 MiB; base64 makes four bytes of three, and the rest of the frame wants some room.
const largestSource = 180 * 1024 * 1024;
const carriageReturn = 13;
const lineFeed = 10;

// So long nothing is shown while a compose window is not ready: it waits for the message, whose server may be away.
const windowMayTake = 1_200;
// So long the panel waits for the message, unless that is large.
const sourceMayTake = 300;
const largeMessage = 1024 * 1024;
// So long the panel says that the message is being read, and longer for each byte.
const loadingMayTake = 2_000;
const loadingMayTakePerByte = 1_000 / (2 * 1024 * 1024);
// Between attempts at a message that Thunderbird does not have.
const shortestPause = 5_000;
const longestPause = 60_000;

// What is known of the message that a compose window answers or forwards, in the form of the host link: first what is known
// soon, then each time more. Null for a window that has none: a new message, a draft of one, a template.
export async function* originalMessage(tabId, signal) {
  const asked = browser.compose.getComposeDetails(tabId); // Comes when the window is ready.
  if (!(await endsWithin(windowMayTake, asked, signal))) {
    yield { rawData: null, subject: "", fromAddress: { addressString: null }, headers: null };
  }
  let header = null;
  try {
    header = await originalOf(await asked);
  } catch (error) {
    console.error("Quillmate could not read what this window is about:", error);
  }
  if (header) {
    yield* statesOf(header, signal);
  } else {
    yield null;
  }
}

async function* statesOf(header, signal) {
  const head = {
    rawData: null,
    subject: header.subject ?? "",
    fromAddress: { addressString: await addressIn(header.author) },
    // What is kept about the message is kept under its identifier, from the start.
    headers: header.headerMessageId ? { "message-id": [`<${header.headerMessageId}>`] } : null,
  };
  const size = header.size ?? 0;
  let reading = wholeMessage(header.id, head);
  let shown = false;
  if (size > largeMessage || !(await endsWithin(sourceMayTake, reading, signal))) {
    yield { ...head, rawDataFollows: true };
    if (!(await endsWithin(loadingMayTake + size * loadingMayTakePerByte, reading, signal))) {
      yield head;
      shown = true;
    }
  }
  for (let time = shortestPause; !signal.aborted; time = Math.min(2 * time, longestPause)) {
    const message = await reading;
    if (message) {
      yield message;
      return;
    }
    if (!shown) {
      yield head;
      shown = true;
    }
    await pause(time, signal);
    reading = signal.aborted ? null : wholeMessage(header.id, head);
  }
}

// Null when Thunderbird does not have it, as with a server that is out of reach.
async function wholeMessage(id, head) {
  try {
    const [rawData, headers] = await Promise.all([source(id), headersOf(id)]);
    return {
      ...head,
      rawData,
      // Thunderbird's own word for it leaves out the "Re:" of an answer.
      subject: headers?.subject?.[0] ?? head.subject,
      headers: headers ?? head.headers,
    };
  } catch (error) {
    console.error("Quillmate could not read the message:", error);
    return null;
  }
}

// The message that is answered or forwarded, as Thunderbird lists it; null when there is none.
async function originalOf(details) {
  const { type, relatedMessageId } = details;
  if (["reply", "forward", "redirect"].includes(type)) {
    return relatedMessageId ? browser.messages.get(relatedMessageId) : null;
  }
  return type === "draft" ? originalOfDraft(details) : null;
}

// The bare address of an author as Thunderbird shows it; null when there is none.
export async function addressIn(author) {
  try {
    const [mailbox] = await browser.messengerUtilities.parseMailboxString(author ?? "");
    return mailbox?.email || null;
  } catch {
    return null;
  }
}

// The source in base64; null when there is nothing in it to read without a key, or too much.
async function source(id) {
  const file = await browser.messages.getRaw(id, { data_format: "File" });
  if (file.size > largestSource) {
    console.error(`Quillmate leaves out a message of ${file.size} bytes, which is too large for its program.`);
    return null;
  }
  const readable = readableSource(withBareLineFeeds(new Uint8Array(await file.arrayBuffer())));
  return readable && base64(readable);
}

// Sources come with the line ends of the account they are from; the process wants those of a message store. Works on the
// bytes themselves, line by line: a message of 25 MB has some hundred thousand lines.
function withBareLineFeeds(bytes) {
  let length = 0;
  let kept = 0; // All before it is in its place or dropped.
  for (let at = bytes.indexOf(carriageReturn); at >= 0; at = bytes.indexOf(carriageReturn, at + 1)) {
    if (bytes[at + 1] === lineFeed) {
      bytes.copyWithin(length, kept, at);
      length += at - kept;
      kept = at + 1;
    }
  }
  bytes.copyWithin(length, kept);
  return bytes.subarray(0, length + bytes.length - kept);
}

function base64(bytes) {
  // Since Thunderbird 133.
  if (bytes.toBase64) {
    return bytes.toBase64();
  }
  return new Promise((resolve, reject) => {
    const reader = new FileReader();
    reader.onload = () => resolve(reader.result.slice(reader.result.indexOf(",") + 1));
    reader.onerror = () => reject(reader.error);
    reader.readAsDataURL(new Blob([bytes]));
  });
}
