// Thunderbird's side of the add-on, as far as the add-on uses it.

import assert from "node:assert/strict";

class Event {
  listeners = [];
  addListener(listener) {
    this.listeners.push(listener);
  }
  fire(...values) {
    this.listeners.forEach((listener) => listener(...values));
  }
}

export class Port {
  posted = [];
  onMessage = new Event();
  onDisconnect = new Event();
  postMessage(frame) {
    this.posted.push(frame);
  }
  // The frames about compose sessions, as "what session".
  get sessions() {
    return this.posted.filter((frame) => frame.session).map((frame) => `${frame.type} ${frame.session}`);
  }
  disconnect() {
    this.disconnected = true;
  }
  end(message) {
    this.error = message ? { message } : null;
    this.onDisconnect.fire(this);
  }
  // Answers the questions there are: a red background for a subject with that word.
  answer(word) {
    for (const frame of this.posted.splice(0).filter((each) => each.message)) {
      const red = frame.message.subject.includes(word);
      const decision = red ? { action: "setBackgroundColor", color: 4 } : null;
      this.onMessage.fire({ type: "messageActionDecision", request: frame.request, decision });
    }
  }
}

// A promise with its end in hand.
export function later() {
  let resolve;
  let reject;
  const promise = new Promise((...ends) => ([resolve, reject] = ends));
  return { promise, resolve, reject };
}

// Lets everything happen that waits for nothing but its turn.
export async function settle() {
  for (let turn = 0; turn < 50; ++turn) {
    await Promise.resolve();
  }
}

// Time stands still for the add-on: what it puts off happens when a test lets time pass, and holds no test program up.
globalThis.setTimeout = (callback) => {
  const timer = { callback };
  browser.timers.push(timer);
  return timer;
};
globalThis.clearTimeout = (timer) => {
  browser.timers = browser.timers.filter((each) => each !== timer);
};
export async function letTimePass() {
  browser.timers.splice(0).forEach((timer) => timer.callback());
  await settle();
}

// One of the areas of the storage, on its way through JSON as in Thunderbird.
function storageArea() {
  const kept = {};
  const onChanged = new Event();
  return {
    kept,
    onChanged,
    get: async (key) => (key in kept ? { [key]: JSON.parse(kept[key]) } : {}),
    async set(values) {
      for (const [key, value] of Object.entries(values)) {
        kept[key] = JSON.stringify(value);
        onChanged.fire({ [key]: { newValue: value } });
      }
    },
    async remove(key) {
      delete kept[key];
    },
  };
}

export function fakeBrowser() {
  return {
    timers: [],
    ports: [],
    alarm: null, // the name of the one to come
    pauses: [], // of the alarms, in milliseconds
    messagesById: new Map(),
    updates: [],
    pages: [],
    details: new Map(), // by tab; a promise holds the add-on up
    window: {}, // what is different about every window
    badge: "",
    title: null,
    pagesShown: [], // their addresses, a "!" before one whose window was brought to the front

    i18n: { getMessage: (key) => `the text ${key}` },
    storage: { local: storageArea(), session: storageArea() },
    composeAction: {
      onClicked: new Event(),
      setBadgeText: ({ text }) => (browser.badge = text),
      setBadgeBackgroundColor() {},
      setTitle: ({ title }) => (browser.title = title),
    },
    runtime: {
      getURL: (path) => path,
      onMessage: new Event(),
      sendMessage: (message) => browser.runtime.onMessage.listeners.map((listener) => listener(message)).find(Boolean),
      connectNative() {
        browser.ports.push(new Port());
        return browser.ports.at(-1);
      },
    },
    alarms: {
      onAlarm: new Event(),
      clearAll() {
        browser.alarm = null;
      },
      create(name, { when }) {
        assert.equal(browser.alarm, null, "There is one alarm at a time.");
        browser.alarm = name;
        browser.pauses.push(when - Date.now());
      },
      getAll: async () => (browser.alarm ? [{ name: browser.alarm }] : []),
    },
    tabs: {
      onCreated: new Event(),
      onRemoved: new Event(),
      query: async () => [...browser.details.keys()].map((id) => ({ id, windowId: id, type: "messageCompose" })),
      async create({ url }) {
        browser.pagesShown.push(url);
        return { id: 100, windowId: 100 };
      },
      async update(id, { url }) {
        if (id !== 100) {
          throw new Error("no such tab");
        }
        return this.create({ url });
      },
    },
    windows: {
      get: async (id) => ({ left: id, top: 2, width: 300, height: 400, state: "normal", focused: false, ...browser.window }),
      async update(id, { focused }) {
        if (focused) {
          browser.pagesShown.push(`!${browser.pagesShown.pop()}`);
        }
      },
    },
    compose: { getComposeDetails: async (tabId) => browser.details.get(tabId) },
    messages: {
      onNewMailReceived: new Event(),
      async get(id) {
        const message = browser.messagesById.get(id);
        if (!message) {
          throw new Error("gone");
        }
        return { id, ...message };
      },
      getFull: async (id) => ({ headers: browser.messagesById.get(id).headers }),
      async getRaw(id) {
        const { source } = browser.messagesById.get(id);
        if (source instanceof Error) {
          throw source;
        }
        return source;
      },
      update: async (id, change) => browser.updates.push([id, change]),
      async query({ headerMessageId, folderId }) {
        const fits = (each) => (folderId ? each.folder?.id === folderId : each.headerMessageId === headerMessageId);
        return { id: null, messages: [...browser.messagesById.values()].filter(fits) };
      },
      continueList: async () => browser.pages.shift(),
    },
    folders: { query: async () => [{ id: "drafts" }] },
    messengerUtilities: {
      parseMailboxString: async (text) => [{ email: text.match(/<(.*)>/u)?.[1] ?? "" }],
    },
  };
}

globalThis.FileReader = class {
  async readAsDataURL(blob) {
    this.result = `data:;base64,${Buffer.from(await blob.arrayBuffer()).toString("base64")}`;
    this.onload();
  }
};
