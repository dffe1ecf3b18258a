// A message's headers: lower-case names with lists of values; null when Thunderbird does not have them.
export async function headersOf(id) {
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
