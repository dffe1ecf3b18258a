// The add-on's parts against a made-up Thunderbird. The first argument is the folder of the add-on.

import assert from "node:assert/strict";
import { cpSync, mkdtempSync, readFileSync, readdirSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, beforeEach, test } from "node:test";

import { fakeBrowser, later, letTimePass, settle } from "./fake_browser.mjs";

// Beside a note that its files are modules, which Thunderbird takes from elsewhere.
const folder = mkdtempSync(join(tmpdir(), "quillmate-addon-"));
after(() => rmSync(folder, { recursive: true }));
cpSync(process.env.QUILLMATE_ADDON, folder, { recursive: true });
writeFileSync(join(folder, "package.json"), '{"type": "module"}');
const { Program } = await import(join(folder, "program.js"));
const { ComposeSessions } = await import(join(folder, "compose-sessions.js"));
const { originalMessage } = await import(join(folder, "original-message.js"));
const { colourNewMail } = await import(join(folder, "new-mail.js"));
const { readStatus } = await import(join(folder, "status.js"));
const { chooseService, readService } = await import(join(folder, "service.js"));

// What is known first.
async function firstKnown(details) {
  browser.details.set(1, details);
  const ending = new AbortController();
  const { value } = await originalMessage(1, ending.signal).next();
  ending.abort();
  return value;
}

const realNow = Date.now;
const realError = console.error;

beforeEach(() => {
  globalThis.browser = fakeBrowser();
  Date.now = () => 0;
  console.error = () => {};
});
after(() => {
  Date.now = realNow;
  console.error = realError;
});

function startedProgram() {
  const program = new Program("quillmate");
  const sessions = new ComposeSessions(program);
  program.onStarted = () => sessions.beginAll();
  program.onEnded = () => sessions.programEnded();
  program.start();
  return { program, sessions };
}

// The whole add-on as Thunderbird loads it, with its process.
let loads = 0;
async function loadedAddOn() {
  await import(`${join(folder, "background.js")}?${++loads}`);
  await settle();
  return browser.ports.at(-1);
}

test("pauses grow up to a bound, and start anew after a process that has lived", () => {
  const program = new Program("quillmate");
  program.start();
  for (let ends = 0; ends < 12; ++ends) {
    browser.ports.at(-1).end("No such native application quillmate");
    if (ends % 2) {
      program.start(); // A compose window was opened.
    }
    program.alarmRang(browser.alarm);
  }
  assert.deepEqual(browser.pauses.slice(0, 4), [1_000, 2_000, 4_000, 8_000]);
  assert.equal(browser.pauses.at(-1), 300_000);
  Date.now = () => 60_000;
  browser.ports.at(-1).end();
  assert.equal(browser.pauses.at(-1), 1_000);

  const awakened = new Program("quillmate");
  awakened.alarmRang("start again after 16000");
  browser.ports.at(-1).end();
  assert.equal(browser.pauses.at(-1), 32_000);
});

test("hopeless is only a program that never answers", () => {
  for (const [answers, wanted] of [[false, [false, false, true, true]], [true, [false, false, false, false]]]) {
    globalThis.browser = fakeBrowser();
    const program = new Program("quillmate");
    const found = [];
    program.onEnded = (reason, hopeless) => found.push(hopeless);
    program.start();
    for (let start = 1; start <= 4; ++start) {
      assert.equal(browser.ports.length, start); // It goes on either way.
      if (answers) {
        browser.ports.at(-1).answer("Mars");
      }
      browser.ports.at(-1).end();
      program.alarmRang(browser.alarm);
    }
    assert.deepEqual(found, wanted);
  }
});

test("a page that wakes in the middle of a pause waits for its end", async () => {
  browser.alarm = "start again after 8000";
  await new Program("quillmate").startUnlessPausing();
  assert.equal(browser.ports.length, 0);
});

test("the message as the process wants it", async (context) => {
  const bytes = (text) => new Blob([text]);
  const headers = { subject: ["Re: Plans"], "message-id": ["<m@a.example>"] };
  const message = { author: "Ana <ana@a.example>", subject: "Plans", headers, source: bytes("A: b\n\nc") };
  const rows = [
    ["bare line feeds stay", {}, { rawData: "A: b\n\nc" }],
    ["line ends of the network", { source: bytes("A: b\r\n\r\nc\r\r\nd\re\r") }, { rawData: "A: b\n\nc\r\nd\re\r" }],
    ["any bytes", { source: new Blob([Uint8Array.of(0xff, 0, 13, 10, 0x80)]) }, { bytes: [0xff, 0, 10, 0x80] }],
    ["an empty source", { source: bytes("") }, { rawData: "" }],
    ["out of reach", { source: new Error("offline") }, { rawData: null }],
    ["too large for a frame", { source: { size: 2e8, arrayBuffer: async () => new ArrayBuffer(1) } }, { rawData: null }],
    ["the subject with its Re:", {}, { subject: "Re: Plans" }],
    ["no headers", { headers: undefined }, { subject: "Plans", headers: null }],
    ["no address", { author: "Ana" }, { address: null }],
    ["an address", {}, { address: "ana@a.example" }],
  ];
  for (const [name, change, wanted] of rows) {
    await context.test(name, async () => {
      browser.messagesById.set(7, { ...message, ...change });
      const told = await firstKnown({ type: "reply", relatedMessageId: 7 });
      const source = told.rawData === null ? null : Buffer.from(told.rawData, "base64");
      const found = {
        rawData: source?.toString("latin1") ?? null,
        bytes: source ? [...source] : null,
        subject: told.subject,
        headers: told.headers,
        address: told.fromAddress.addressString,
      };
      for (const [field, value] of Object.entries(wanted)) {
        assert.deepEqual(found[field], value);
      }
    });
  }
  for (const details of [{ type: "new" }, { type: "reply" }]) {
    assert.equal(await firstKnown(details), null);
  }
});

test("the source in a form that can be read", async (context) => {
  const readable = "Content-Type: text/plain; charset=utf-8\nContent-Transfer-Encoding: 8bit\n";
  const encoded = (type, encoding, body) =>
    (type && `Content-Type: ${type}\n`) + (encoding && `Content-Transfer-Encoding: ${encoding}\n`) + `\n${body}`;
  const quoted = (body) => encoded("text/plain; charset=utf-8", "quoted-printable", body);
  const parts = (type, ...bodies) => `Content-Type: ${type}; boundary="b c"\n\n` + bodies.map((body) => `--b c\n${body}\n`).join("") + "--b c--\n";
  const pgp = "-----BEGIN PGP MESSAGE-----\n\nhQ==\n-----END PGP MESSAGE-----\n";
  const key = Symbol("needs a key");
  const same = Symbol("not changed");
  const rows = [
    ["quoted-printable", quoted("Gr=C3=BC=c3=9Fe, n=\numbers, b= \t\nreak, a=3Db, snake_case\n"), `${readable}\nGrüße, numbers, break, a=b, snake_case\n`],
    ["broken quoted-printable", quoted("50 = 5=0X =C3=A4 =\n\n="), `${readable}\n50 = 5=0X ä \n`],
    ["base64 in lines, with a list's footer", encoded("text/plain; charset=utf-8", "BASE64", "R3LD\nvMOf*\r\nZQ0KeA0K\nZQ==\n____\nfooter"), `${readable}\nGrüße\nx\ne`],
    ["a byte order mark", quoted("=EF=BB=BFa"), `${readable}\na`],
    ["ISO-8859-1", encoded("text/plain; charset=ISO-8859-1", "8bit", "Gr\xfc\xdfe"), `${readable}\nGrüße`],
    ["windows-1250", encoded("text/plain; charset=windows-1250", "quoted-printable", "=80 =F8"), `${readable}\n€ ř`],
    ["ISO-2022-JP", encoded("text/plain; charset=ISO-2022-JP", "7bit", "\x1b$B8+@Q\x1b(B"), `${readable}\n見積`],
    ["GB18030", encoded("text/plain; charset=GB18030", "base64", "xOO6ww=="), `${readable}\n你好`],
    ["Microsoft's name for a charset", encoded("text/plain; charset=cp932", "base64", "jKk="), `${readable}\n見`],
    ["an unknown charset", encoded("text/plain; charset=x-own", "base64", "w7w="), `${readable}\nü`],
    ["neither type nor charset", encoded("", "quoted-printable", "=FC"), "Content-Transfer-Encoding: 8bit\nContent-Type: text/plain; charset=utf-8\n\nü"],
    ["nothing said of bytes", "Subject: a\n\n\xc3\xbc", `Subject: a\n${readable}\nü`],
    ["a type without charset", encoded("text/html", "base64", "PGI+"), `${readable.replace("plain", "html")}\n<b>`],
    ["no valid type", encoded("text", "base64", "YQ=="), `${readable}\na`],
    [
      "the rest of the header, byte by byte",
      'X-A: \xfc\n  folded\ncontent-type: text/plain;\n\tCHARSET="iso-8859-1";\n\tformat=flowed; x="a;charset=b"\nX-B:\nContent-Transfer-Encoding:\n quoted-printable\nSubject: a\n\n=FC',
      Buffer.from("X-A: \xfc\n  folded\ncontent-type: text/plain;\n\tCHARSET=utf-8;\n\tformat=flowed; x=\"a;charset=b\"\nX-B:\nContent-Transfer-Encoding: 8bit\nSubject: a\n\n\xc3\xbc", "latin1"),
    ],
    ["line ends of the network", quoted("a=\nb\nc").replaceAll("\n", "\r\n"), `${readable}\nab\nc`],
    ["readable as it is", encoded("text/plain; charset=utf-8", "8bit", "\xc3\xbc =41"), same],
    ["ASCII", encoded("text/plain; charset=us-ascii", "7bit", "a"), same],
    ["an encoding nobody knows", encoded("text/plain; charset=iso-8859-1", "x-uuencode", "a"), same],
    ["a picture", encoded("image/png", "base64", "YQ=="), same],
    ["several parts", parts("multipart/mixed", encoded("text/plain", "base64", "YQ==")), same],
    ["a signed message", parts("multipart/signed", encoded("text/plain", "", "a"), encoded("application/pgp-signature", "", "b")), same],
    ["a signed text", encoded("text/plain", "", "-----BEGIN PGP SIGNED MESSAGE-----\n"), same],
    ["a text about encryption", encoded("text/plain", "", `See:\n${pgp}`), same],
    ["no end of the header", "Content-Type: multipart/encrypted", same],
    ["PGP/MIME", parts("Multipart/Encrypted; protocol=\"application/pgp-encrypted\"", "a"), key],
    ["S/MIME", encoded("application/pkcs7-mime; smime-type=enveloped-data; name=smime.p7m", "base64", "YQ=="), key],
    ["S/MIME of old, signed", encoded("application/x-pkcs7-mime;\n smime-type=signed-data", "base64", "YQ=="), key],
    ["S/MIME by its name", encoded('application/octet-stream; name="smime.p7m"', "base64", "YQ=="), key],
    ["PGP in a text", encoded("text/plain", "", `\n \n${pgp}`), key],
    ["PGP in an encoded text", encoded("text/plain", "base64", Buffer.from(pgp).toString("base64")), key],
    ["encrypted, from a list", parts("multipart/mixed", "Content-Type: multipart/encrypted; boundary=x\n\n--x--", "\nfooter"), key],
    ["taken apart by a server", parts("multipart/mixed", encoded("text/plain", "", ""), encoded("application/pgp-encrypted", "", "Version: 1")), key],
    ["PGP in a text with attachments", parts("multipart/mixed", encoded("text/plain", "", pgp), "\nx"), key],
  ];
  for (const [name, source, wanted] of rows) {
    await context.test(name, async () => {
      const bytes = Buffer.from(source, "latin1");
      browser.messagesById.set(7, { author: "Ana <ana@a.example>", subject: "a", headers: {}, source: new Blob([bytes]) });
      const told = await firstKnown({ type: "reply", relatedMessageId: 7 });
      if (wanted === key) {
        assert.equal(told.rawData, null);
        assert.equal(told.fromAddress.addressString, "ana@a.example");
        return;
      }
      assert.equal(
        Buffer.from(told.rawData, "base64").toString("latin1"),
        (wanted === same ? bytes : Buffer.from(wanted)).toString("latin1"),
      );
    });
  }
});

// The messages that the process was told of, in short.
function told(port) {
  const inShort = (message) => {
    if (!message) {
      return "none";
    }
    const text = message.rawData && Buffer.from(message.rawData, "base64").toString();
    return [message.subject || "unknown", text ?? (message.rawDataFollows ? "follows" : "no text")].join(": ");
  };
  return port.posted.filter((each) => each.type === "composeSessionDidBegin").map((each) => inShort(each.originalMessage));
}

test("a message that is not there at once", async (context) => {
  const message = { id: 7, subject: "Plans", author: "", headers: { subject: ["Re: Plans"] }, headerMessageId: "m@a.example" };
  const step = (happens) => async () => {
    happens();
    // Reading goes through the file's own promises, which need more than a turn.
    await new Promise((resolve) => setImmediate(resolve));
    await settle();
  };
  const waits = step(letTimePass);
  const begin = ["Plans: follows"];
  const whole = "Re: Plans: a";
  const rows = [
    ["there soon", {}, ({ source }) => [source], [whole]],
    ["there late", {}, ({ source }) => [waits, source], [...begin, whole]],
    ["there very late", {}, ({ source }) => [waits, waits, source], [...begin, "Plans: no text", whole]],
    ["large", { size: 2e7 }, ({ source }) => [source], [...begin, whole]],
    ["refused, and there later", {}, ({ refuse, source }) => [refuse, waits, source], ["Plans: no text", whole]],
    ["refused after a while", {}, ({ refuse }) => [waits, refuse], [...begin, "Plans: no text"]],
    ["its window is closed", {}, ({ close, source }) => [waits, close, source, waits], begin],
    ["the window gets ready late", { details: later() }, ({ ready, source }) => [waits, ready, source], ["unknown: no text", whole]],
    ["and is closed before", { details: later() }, ({ ready, source, close }) => [waits, close, ready, source], ["unknown: no text"]],
    ["it was for a new message", { details: later() }, ({ renew }) => [waits, renew], ["unknown: no text", "none"]],
  ];
  for (const [name, { details, ...change }, steps, wanted] of rows) {
    await context.test(name, async () => {
      globalThis.browser = fakeBrowser();
      const { sessions } = startedProgram();
      let reading = later();
      browser.messagesById.set(7, { ...message, ...change });
      browser.messages.getRaw = () => reading.promise;
      const reply = { type: "reply", relatedMessageId: 7 };
      browser.details.set(1, details?.promise ?? reply);
      const actions = {
        source: step(() => reading.resolve(new Blob(["a"]))),
        refuse: step(() => {
          const refused = reading;
          reading = later();
          refused.reject(new Error("offline"));
        }),
        ready: step(() => details.resolve(reply)),
        renew: step(() => details.resolve({ type: "new" })),
        close: step(() => sessions.end(1)),
      };
      await step(() => sessions.begin({ id: 1, windowId: 1 }))();
      for (const action of steps(actions)) {
        await action();
      }
      assert.deepEqual(told(browser.ports[0]), wanted);
      assert.equal(browser.ports[0].sessions.filter((frame) => frame.startsWith("viewController")).length, 1);
      sessions.end(1);
      await settle();
      assert.deepEqual(browser.timers, []);
    });
  }
});

test("a draft of a reply is about what it answers", async (context) => {
  const rows = [
    ["its original told of by Thunderbird", { relatedMessageId: 7 }, {}, 7],
    ["told of by Thunderbird", { relatedMessageId: 8 }, { "in-reply-to": ["<m@a.example>"] }, 7],
    ["found by its subject", {}, { "in-reply-to": ["<m@a.example>"] }, 7],
    ["by its references", {}, { references: ["<x@a.example>\n <m@a.example>"] }, 7],
    ["what it answers is gone", {}, { "in-reply-to": ["<gone@a.example>"] }, null],
    ["of a new message", {}, {}, null],
  ];
  for (const [name, details, headers, wanted] of rows) {
    await context.test(name, async () => {
      const draft = { id: 8, subject: "Plans", date: new Date(2), headers, folder: { id: "drafts", specialUse: ["drafts"] } };
      const other = { id: 9, subject: "Plans", date: new Date(1), headers: {}, folder: { id: "drafts" } };
      const copy = { id: 6, subject: "6", source: new Blob([]), headers: {}, headerMessageId: "m@a.example" };
      browser.messagesById = new Map([
        [9, other],
        [8, draft],
        [6, { ...copy, folder: { specialUse: ["trash"] } }],
        [7, { ...copy, id: 7, subject: "7", folder: { specialUse: ["inbox"] } }],
      ]);
      const message = await firstKnown({ type: "draft", subject: "Re: Plans", ...details });
      assert.equal(message?.subject ?? null, wanted && String(wanted));
    });
  }
});

test("a session is told and shown in one go, and ended", async () => {
  const { sessions } = startedProgram();
  const [port] = browser.ports;
  const slow = later();
  browser.details.set(1, slow.promise);
  browser.details.set(2, { type: "new" });
  sessions.begin({ id: 1, windowId: 1 });
  sessions.begin({ id: 2, windowId: 2 });
  sessions.begin({ id: 2, windowId: 2 }); // told of twice
  await settle();
  assert.equal(sessions.show(1), false);
  slow.resolve({ type: "new" });
  await settle();
  assert.equal(sessions.show(1), true);
  sessions.begin({ id: 1, windowId: 1 }); // told of again, late
  await settle();
  sessions.end(1);
  sessions.end(2);
  sessions.end(3);
  assert.deepEqual(port.sessions.map((frame) => frame.split(" ")[0]), [
    "composeSessionDidBegin",
    "viewControllerForSession",
    "composeSessionDidBegin",
    "viewControllerForSession",
    "viewControllerForSession",
    "composeSessionDidEnd",
    "composeSessionDidEnd",
  ]);
  const frame = port.posted.find((each) => each.type === "viewControllerForSession").frame;
  assert.deepEqual(frame, { left: 2, top: 2, width: 300, height: 400 });
});

test("what happens while a message is read", async () => {
  const { program, sessions } = startedProgram();
  for (const id of [1, 2]) {
    browser.details.set(id, later());
  }
  const [closed, kept] = [...browser.details.values()];
  browser.details = new Map([[1, closed.promise], [2, kept.promise]]);
  sessions.begin({ id: 1, windowId: 1 });
  sessions.begin({ id: 2, windowId: 2 });
  sessions.end(1); // The window is closed.
  browser.details.delete(1);
  browser.ports[0].end(); // The process ends, and there is another one.
  program.alarmRang(browser.alarm);
  await settle();
  closed.resolve({ type: "new" });
  kept.resolve({ type: "new" });
  await settle();
  assert.deepEqual(browser.ports[0].sessions, []);
  assert.equal(browser.ports[1].sessions.length, 2);
  browser.ports[1].end();
  assert.equal(sessions.show(2), false);
  sessions.end(2);
});

test("a window is followed while it is on the screen", async () => {
  const { sessions } = startedProgram();
  const [port] = browser.ports;
  const lefts = () => port.posted.filter((each) => each.frame).map((each) => [each.type, each.frame.left]);
  browser.details.set(1, { type: "new" });
  browser.window = { left: -9, state: "minimized" };
  sessions.begin({ id: 1, windowId: 1 });
  await settle();
  await letTimePass();
  assert.deepEqual(lefts(), []);
  for (const window of [{ left: 3 }, { left: 4 }, { left: -9, state: "minimized" }, { left: 4 }, { left: 5 }]) {
    browser.window = window;
    await letTimePass();
  }
  assert.deepEqual(lefts(), [
    ["viewControllerForSession", 3],
    ["composeSessionFrameDidChange", 4],
    ["composeSessionFrameDidChange", 5],
  ]);
  sessions.end(1);
  assert.deepEqual(browser.timers, []);
});

test("new mail", async () => {
  const { program } = startedProgram();
  browser.ports[0].posted = [];
  const mail = (id, subject, tags) => {
    const message = { id, subject, author: "Ana <ana@a.example>", tags };
    browser.messagesById.set(id, message);
    return message;
  };
  const first = { id: "list", messages: [mail(1, "Mars", ["later"]), mail(2, "Moon", []), mail(3, "Mars", ["$label1"])] };
  browser.pages = [{ id: null, messages: [mail(4, "Mars moved", []), mail(5, "Mars", [])] }];
  browser.messagesById.delete(4);
  let done = false;
  const all = colourNewMail(program, first).finally(() => (done = true));
  for (let answers = 0; !done && answers < 20; ++answers) {
    await settle();
    browser.ports[0].answer("Mars");
  }
  assert(done);
  await all;
  assert.deepEqual(browser.updates, [
    [1, { tags: ["later", "$label1"] }],
    [5, { tags: ["$label1"] }],
  ]);
});

test("questions outlive neither their process nor a pause", async () => {
  const program = new Program("quillmate");
  const waiting = program.decide("Mars", null);
  await settle();
  assert.equal(browser.ports.length, 1); // It is started for a question.
  browser.ports[0].end();
  assert.equal(await waiting, null);
});

test("an outage of the service is told once, and at the button", async () => {
  const port = await loadedAddOn();
  browser.details.set(1, { type: "new" });
  browser.tabs.onCreated.fire({ id: 1, windowId: 1, type: "messageCompose" });
  const status = (frame) => () => port.onMessage.fire({ type: "status", ...frame });
  const press = () => browser.composeAction.onClicked.fire({ id: 1 });
  const page = "explanation.html?unreachable";
  const rows = [
    ["nothing said of the service", status({ version: "1.2.3" }), "", [], ""],
    ["reachable from the start", status({ serviceReachable: true }), "", [], ""],
    ["an outage", status({ serviceReachable: false, reason: "<b>refused</b>" }), "!", [page], "<b>refused</b>"],
    ["another reason", status({ serviceReachable: false, reason: "timed\nout" }), "!", [], "timed out"],
    ["nothing new said", status({}), "!", [], "timed out"],
    ["the button", press, "!", [`!${page}`], "timed out"],
    ["its end", status({ serviceReachable: true }), "", [], ""],
    ["the button again", press, "", [], ""],
    ["the next outage", status({ serviceReachable: false }), "!", [page], ""],
    ["the program's end", () => port.end("gone"), "", [], ""],
  ];
  await settle();
  for (const [name, happens, badge, pages, reason] of rows) {
    browser.pagesShown = [];
    happens();
    await settle();
    const { reason: kept } = await readStatus();
    const title = `the text ${badge ? "titleUnreachable" : "showPanel"}`;
    assert.deepEqual([browser.badge, browser.title, browser.pagesShown, kept], [badge, title, pages, reason], name);
  }
  assert.equal(port.sessions.filter((frame) => frame.startsWith("viewController")).length, 3); // The panel too, each time.
});

test("the service is chosen, and the program reads the choice", async () => {
  const first = await loadedAddOn();
  browser.details.set(1, { type: "new" });
  browser.tabs.onCreated.fire({ id: 1, windowId: 1, type: "messageCompose" });
  await settle();
  const told = { type: "service", host: "mail.corp.example", fixed: false, offered: true };
  const answer = async (port, frame) => {
    await settle();
    const { request, type, choice } = port.posted.at(-1);
    port.onMessage.fire({ request, ...frame });
    await settle();
    return choice ?? type;
  };

  const read = readService();
  assert.equal(await answer(first, { ...told, choice: "local" }), "service");
  assert.equal((await read).choice, "local");

  const refused = chooseService("remote");
  assert.equal(await answer(first, { type: "error", message: "no room" }), "remote");
  assert.equal(await answer(first, { ...told, choice: "local" }), "service");
  const { choice, problem } = await refused;
  assert.deepEqual([choice, problem, browser.ports.length], ["local", "no room", 1]);

  const chosen = chooseService("remote");
  assert.equal(await answer(first, { ...told, choice: "remote" }), "remote");
  assert.equal((await chosen).choice, "remote");
  assert.deepEqual([first.disconnected, browser.ports.length, browser.alarm], [true, 2, null]);
  assert(browser.ports[1].sessions.some((frame) => frame.startsWith("viewController"))); // The panel is there again.

  const unanswered = readService();
  await settle();
  browser.ports[1].end("gone");
  assert.equal(await unanswered, null);
});

test("the panel waits for the button where the user wants that", async () => {
  await browser.storage.local.set({ panelOpensOnTheButton: true });
  browser.details = new Map([[1, { type: "new" }], [2, { type: "new" }]]);
  const first = await loadedAddOn();
  const open = (id) => browser.tabs.onCreated.fire({ id, windowId: id, type: "messageCompose" });
  const begun = (port) => port.sessions.filter((frame) => frame.startsWith("composeSessionDidBegin")).length;
  open(1);
  open(2);
  await settle();
  assert.deepEqual(first.sessions, []);
  browser.composeAction.onClicked.fire({ id: 2, windowId: 2 });
  await settle();
  assert.equal(begun(first), 1);
  first.end(); // Its panel comes again with the next process, and no other.
  browser.alarms.onAlarm.fire({ name: browser.alarm });
  await settle();
  assert.equal(begun(browser.ports.at(-1)), 1);
  await browser.storage.local.set({ panelOpensOnTheButton: false });
  open(1);
  await settle();
  assert.equal(begun(browser.ports.at(-1)), 2);
});

test("windows keep their panels when the page was put to sleep", async () => {
  await browser.storage.local.set({ panelOpensOnTheButton: true });
  browser.details = new Map([1, 2, 3].map((id) => [id, { type: "new" }]));
  await loadedAddOn();
  for (const id of [1, 3]) {
    browser.composeAction.onClicked.fire({ id, windowId: id });
  }
  await settle();
  browser.tabs.onRemoved.fire(3);
  browser.details.delete(3);
  await settle();
  const port = await loadedAddOn();
  await settle();
  assert.deepEqual(port.sessions.map((frame) => frame.split(" ")[0]), ["composeSessionDidBegin", "viewControllerForSession"]);
});

test("the latest events are kept, short and without what must not be passed on", async () => {
  const port = await loadedAddOn();
  port.onMessage.fire({ type: "status", version: "1.2.3" });
  const token = "0123456789abcdefABCDEF0123456789_-";
  for (const message of ["first", `refused: Bearer ab.c ${token}`, "word ".repeat(90), null]) {
    port.onMessage.fire({ type: "error", message });
  }
  await settle();
  await settle();
  assert.deepEqual([(await readStatus()).version, (await readStatus()).running], ["1.2.3", true]);
  const texts = (await readStatus()).events.map((event) => event.text);
  assert.deepEqual([texts[0], texts[2], texts[3]], ["error: null", "error: refused: Bearer … …", "error: first"]);
  assert.equal(texts[1].length, 200);
  for (let times = 0; times < 30; ++times) {
    port.onMessage.fire({ type: "error", message: times });
    await settle();
  }
  port.end();
  await settle();
  const { events, version, running } = await readStatus();
  assert.deepEqual([events.length, events[0].text, version, running], [20, "program ended: no reason given", null, false]);
});

test("every language has every text, and every text is there", () => {
  const read = (...path) => readFileSync(join(folder, ...path), "utf8");
  const texts = (locale) => JSON.parse(read("_locales", locale, "messages.json"));
  const placeholdersIn = ({ message, placeholders = {} }) => {
    const used = (message.match(/\$\w+\$/gu) ?? []).map((name) => name.slice(1, -1).toLowerCase());
    assert.deepEqual(used.sort(), Object.keys(placeholders).sort(), message);
    return placeholders;
  };
  const english = texts("en");
  assert.deepEqual(readdirSync(join(folder, "_locales")).sort(), ["ar", "de", "en", "es", "fr", "ja"]);
  for (const locale of readdirSync(join(folder, "_locales"))) {
    const found = texts(locale);
    assert.deepEqual(Object.keys(found).sort(), Object.keys(english).sort(), locale);
    for (const [key, text] of Object.entries(found)) {
      assert.deepEqual(placeholdersIn(text), placeholdersIn(english[key]), `${locale} ${key}`);
      assert(text.message.trim(), `${locale} ${key}`);
    }
    assert.equal(found.language.message, locale);
  }
  const wanted = new Set();
  for (const file of readdirSync(folder).filter((name) => /\.(?:js|html|json)$/u.test(name))) {
    for (const [, key] of read(file).matchAll(/(?:__MSG_|data-message=")(\w+?)(?:__|")/gu)) {
      wanted.add(key);
    }
    for (const [, values] of read(file).matchAll(/essage\(([^()]*)\)/gu)) {
      [...values.matchAll(/"(\w+)"/gu)].forEach(([, key]) => wanted.add(key));
    }
  }
  assert.deepEqual([...wanted].sort(), Object.keys(english).sort());
});

test("the permissions are those of their page", () => {
  const page = readFileSync(new URL("../../../docs/permissions.md", import.meta.url), "utf8");
  const { permissions } = JSON.parse(readFileSync(join(folder, "manifest.json"), "utf8"));
  assert.deepEqual([...page.matchAll(/^\| `(\w+)` \|/gmu)].map(([, name]) => name), permissions);
});
