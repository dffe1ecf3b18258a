// A message's source in the form in which its text can be read without decoding: a single text part in UTF-8.

const lineFeed = 10;
const largestHeader = 1024 * 1024;
// How far a message of several parts is looked into.
const partsLookedAt = 64 * 1024;
const encryptedTypes = new Set([
  "multipart/encrypted", "application/pkcs7-mime", "application/x-pkcs7-mime", "application/pgp-encrypted",
]);
const plainCharsets = new Set(["us-ascii", "ascii", "ansi_x3.4-1968"]);
// Names in mail that a browser does not know.
const otherCharsetNames = { cp932: "shift_jis", cp936: "gbk", cp949: "euc-kr", cp950: "big5", utf8mb4: "utf-8" };

// The source, with bare line feeds, with its text decoded where it is a single part of text; one of several parts is not
// changed. Null for one that only the holder of a key can read.
export function readableSource(bytes) {
  const header = headerBlock(bytes, 0, largestHeader);
  if (!header) {
    return bytes;
  }
  const type = header.contentType;
  if (isEncrypted(type) || (type.name.startsWith("multipart/") && hasEncryptedParts(bytes, header))) {
    return null;
  }
  if (!type.name.startsWith("text/")) {
    return bytes;
  }
  const body = bytes.subarray(header.end);
  const decoded = decodedText(body, header.encoding, type.parameters.get("charset")?.value.toLowerCase() ?? "");
  if (startsEncrypted(decoded ?? latin(body.subarray(0, partsLookedAt)))) {
    return null;
  }
  return decoded === null ? bytes : withText(bytes, header, decoded);
}

// The fields that matter, and where the block ends; null when there is no end of it before the limit.
function headerBlock(bytes, start, limit) {
  let line = start;
  while (bytes[line] !== lineFeed) {
    const end = bytes.indexOf(lineFeed, line);
    if (end < 0 || end - start > limit) {
      return null;
    }
    line = end + 1;
  }
  const text = latin(bytes.subarray(start, line));
  const fields = { "content-type": [], "content-transfer-encoding": [] };
  const field = /(?<![^\n])(content-type|content-transfer-encoding)[ \t]*:([^\n]*(?:\n[ \t][^\n]*)*)\n/giu;
  for (const { 0: whole, 1: name, 2: value, index } of text.matchAll(field)) {
    const from = start + index;
    const end = from + whole.length;
    fields[name.toLowerCase()].push({ from, end, value, valueFrom: end - 1 - value.length });
  }
  return {
    start,
    fieldsEnd: line,
    end: line + 1,
    fields,
    contentType: contentType(fields["content-type"][0]?.value ?? ""),
    encoding: /[\w-]+/u.exec(fields["content-transfer-encoding"][0]?.value ?? "")?.[0].toLowerCase() ?? "",
  };
}

// The type in small letters, text/plain when there is none, and the parameters with their places in the value.
function contentType(value) {
  const type = /^\s*[^\s;/]+\/[^\s;]+/u.exec(value);
  const parameters = new Map();
  for (const match of value.matchAll(/;\s*([^\s=;"]+)\s*=\s*("(?:[^"\\]|\\[^])*"|[^\s;]*)/gu)) {
    const [whole, name, raw] = match;
    const end = match.index + whole.length;
    const found = { value: raw.replace(/^"|"$/gu, "").replace(/\\([^])/gu, "$1"), from: end - raw.length, end };
    if (!parameters.has(name.toLowerCase())) {
      parameters.set(name.toLowerCase(), found);
    }
  }
  return { name: type?.[0].trim().toLowerCase() ?? "text/plain", end: type?.[0].length ?? null, parameters };
}

function isEncrypted({ name, parameters }) {
  const mangled = name === "application/octet-stream" && /\.p7m$/iu.test(parameters.get("name")?.value ?? "");
  return encryptedTypes.has(name) || mangled;
}

function startsEncrypted(text) {
  return /^\s*-----BEGIN PGP MESSAGE-----/u.test(text);
}

// Lists wrap an encrypted message, and some servers take it apart and put an empty text before it.
function hasEncryptedParts(bytes, header) {
  const boundary = header.contentType.parameters.get("boundary")?.value;
  if (!boundary) {
    return false;
  }
  const beginning = bytes.subarray(header.end, header.end + partsLookedAt);
  const delimiter = `\n--${boundary}`;
  const text = `\n${latin(beginning)}`; // One ahead of the bytes.
  for (let at = text.indexOf(delimiter); at >= 0; ) {
    const line = text.indexOf("\n", at + delimiter.length);
    const part = line < 0 ? null : headerBlock(beginning, line, partsLookedAt);
    if (!part) {
      return false;
    }
    const next = text.indexOf(delimiter, part.end);
    const content = text.slice(part.end + 1, next < 0 ? undefined : next);
    if (isEncrypted(part.contentType) || startsEncrypted(content)) {
      return true;
    }
    if (content.trim() !== "") {
      return false;
    }
    at = next;
  }
  return false;
}

// The text of a single part; null when it can be read as it is.
function decodedText(body, encoding, charset) {
  const decode = { "quoted-printable": fromQuotedPrintable, base64: fromBase64 }[encoding];
  if (!decode && !["", "7bit", "8bit", "binary"].includes(encoding)) {
    return null;
  }
  const bytes = decode ? decode(body) : body;
  const marked = bytes[0] === 0xef && bytes[1] === 0xbb && bytes[2] === 0xbf;
  const declared = marked ? "utf-8" : (otherCharsetNames[charset] ?? charset);
  const decoder = plainCharsets.has(declared) ? null : decoderFor(declared);
  if (!decode && !marked && (decoder ? decoder.encoding === "utf-8" : !bytes.some((byte) => byte > 127))) {
    return null;
  }
  const text = decoder ? decoder.decode(bytes) : undeclaredText(bytes);
  return text.includes("\r") ? text.replaceAll("\r\n", "\n") : text;
}

function decoderFor(charset) {
  try {
    return new TextDecoder(charset);
  } catch {
    return null;
  }
}

function undeclaredText(bytes) {
  try {
    return new TextDecoder("utf-8", { fatal: true }).decode(bytes);
  } catch {
    return latin(bytes);
  }
}

// One character for each byte.
function latin(bytes) {
  return new TextDecoder("windows-1252").decode(bytes);
}

// The source with that text; all of its header but what says how the text is encoded stays, byte by byte.
function withText(bytes, header, text) {
  const [type, ...otherTypes] = header.fields["content-type"];
  const [encoding, ...otherEncodings] = header.fields["content-transfer-encoding"];
  const { end: typeEnd, parameters } = header.contentType;
  const changes = [...otherTypes, ...otherEncodings].map(({ from, end }) => ({ from, end, text: "" }));
  const charset = parameters.get("charset");
  if (type && typeEnd !== null) {
    const { from, end, value } = charset
      ? { ...charset, value: "utf-8" }
      : { from: typeEnd, end: typeEnd, value: "; charset=utf-8" };
    changes.push({ from: type.valueFrom + from, end: type.valueFrom + end, text: value });
  } else {
    const { from, end } = type ?? { from: header.fieldsEnd, end: header.fieldsEnd };
    changes.push({ from, end, text: "Content-Type: text/plain; charset=utf-8\n" });
  }
  const { from, end } = encoding ?? { from: header.fieldsEnd, end: header.fieldsEnd };
  changes.push({ from, end, text: "Content-Transfer-Encoding: 8bit\n" });

  const encoder = new TextEncoder();
  const pieces = [];
  let kept = 0;
  for (const change of changes.sort((one, other) => one.from - other.from)) {
    pieces.push(bytes.subarray(kept, change.from), encoder.encode(change.text));
    kept = change.end;
  }
  pieces.push(bytes.subarray(kept, header.end), encoder.encode(text));
  return joined(pieces);
}

function joined(pieces) {
  const all = new Uint8Array(pieces.reduce((length, piece) => length + piece.length, 0));
  let length = 0;
  for (const piece of pieces) {
    all.set(piece, length);
    length += piece.length;
  }
  return all;
}

const hexadecimal = digits("0123456789ABCDEF");
"abcdef".split("").forEach((letter, index) => (hexadecimal[letter.charCodeAt(0)] = 10 + index));
const sixBits = digits("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");

// What each byte stands for, -1 for none.
function digits(alphabet) {
  const values = new Int8Array(256).fill(-1);
  [...alphabet].forEach((digit, value) => (values[digit.charCodeAt(0)] = value));
  return values;
}

// Keeps what is no encoding.
function fromQuotedPrintable(encoded) {
  const bytes = new Uint8Array(encoded.length);
  let length = 0;
  for (let i = 0; i < encoded.length; ++i) {
    if (encoded[i] !== 61) { // =
      bytes[length++] = encoded[i];
      continue;
    }
    let after = i + 1;
    while (encoded[after] === 32 || encoded[after] === 9) { // Blanks that were added on the way.
      ++after;
    }
    if (after >= encoded.length || encoded[after] === lineFeed) {
      i = after;
      continue;
    }
    const high = hexadecimal[encoded[i + 1]];
    const low = hexadecimal[encoded[i + 2]];
    if (high >= 0 && low >= 0) {
      bytes[length++] = high * 16 + low;
      i += 2;
    } else {
      bytes[length++] = encoded[i];
    }
  }
  return bytes.subarray(0, length);
}

// Up to the end that it names, as what lists put below a message is not encoded; skips what is no digit.
function fromBase64(encoded) {
  const bytes = new Uint8Array(Math.ceil(encoded.length * 0.75));
  let length = 0;
  let bits = 0;
  let count = 0;
  for (let i = 0; i < encoded.length && encoded[i] !== 61; ++i) {
    const digit = sixBits[encoded[i]];
    if (digit < 0) {
      continue;
    }
    bits = ((bits << 6) | digit) & 0xffff;
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes[length++] = bits >> count;
    }
  }
  return bytes.subarray(0, length);
}
