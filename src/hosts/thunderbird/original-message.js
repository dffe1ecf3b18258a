// What the process is told of the message that a compose window answers or forwards.

import { readableSource } from "./readable-source.js";

// A frame may have 256 MiB; base64 makes four bytes of three, and the rest of the frame wants some room.
const largestSource = 180 * 1024 * 1024;
const carriageReturn = 13;
const lineFeed = 10;

// The message in the form of the host link; null for a window that has none: a new message, a draft, a template.
export async function originalMessage(details) {
  const answers = details.type === "reply" || details.type === "forward" || details.type === "redirect";
  if (!answers || !details.relatedMessageId) {
    return null;
  }
  const id = details.relatedMessageId;
  const header = await browser.messages.get(id);
  const headers = await headersOf(id);
  return {
    rawData: await source(id),
    // Thunderbird's own word for it leaves out the "Re:" of an answer.
    subject: headers?.subject?.[0] ?? header.subject ?? "",
    fromAddress: { addressString: await addressIn(header.author) },
    headers,
  };
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

async function headersOf(id) {
  try {
    // Since Thunderbird 147; before that all parts are decoded on the way, which takes seconds with 25 MB.
    if (browser.messages.getHeaders) {
      return await browser.messages.getHeaders(id);
    }
    return (await browser.messages.getFull(id)).headers ?? null;
  } catch (error) {
    console.error("Quillmate could not read the message's headers:", error);
    return null;
  }
}

// The source in base64; null when Thunderbird cannot have it, as for a message on a server that is out of reach, and when
// there is nothing in it to read without a key.
async function source(id) {
  try {
    const file = await browser.messages.getRaw(id, { data_format: "File" });
    if (file.size > largestSource) {
      console.error(`Quillmate leaves out a message of ${file.size} bytes, which is too large for its program.`);
      return null;
    }
    const readable = readableSource(withBareLineFeeds(new Uint8Array(await file.arrayBuffer())));
    return readable && (await base64(new Blob([readable])));
  } catch (error) {
    console.error("Quillmate could not read the message:", error);
    return null;
  }
}

// Sources come with the line ends of the account they are from; the process wants those of a message store.
function withBareLineFeeds(bytes) {
  if (!bytes.includes(carriageReturn)) {
    return bytes;
  }
  const kept = new Uint8Array(bytes.length);
  let length = 0;
  for (let i = 0; i < bytes.length; ++i) {
    if (bytes[i] !== carriageReturn || bytes[i + 1] !== lineFeed) {
      kept[length++] = bytes[i];
    }
  }
  return kept.subarray(0, length);
}

function base64(blob) {
  return new Promise((resolve, reject) => {
    const reader = new FileReader();
    reader.onload = () => resolve(reader.result.slice(reader.result.indexOf(",") + 1));
    reader.onerror = () => reject(reader.error);
    reader.readAsDataURL(blob);
  });
}
