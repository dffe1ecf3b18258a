// A session per compose window: begun with the message it is about, shown, moved along, and ended with the window.

import { WindowWatch, frameOnScreen } from "./window-watch.js";
import { originalMessage } from "./original-message.js";

const keptKey = "tabsWithSession";

export class ComposeSessions {
  #program;
  #sessions = new Map(); // by tab
  #nextNumber = 1;
  #changes = Promise.resolve();

  // Whether a compose window has its session without being asked.
  beginsByItself = async () => true;

  constructor(program) {
    this.#program = program;
  }

  // Reads what the compose window is about and shows the panel; nothing for a window that has one.
  async begin(tab) {
    if (this.#sessions.has(tab.id)) {
      return;
    }
    const session = {
      name: null,
      windowId: tab.windowId,
      handing: null, // ends what is under way for it
      watch: null,
      begun: false,
    };
    this.#sessions.set(tab.id, session);
    this.#keep((tabs) => tabs.add(tab.id));
    if (this.#program.running) {
      await this.#hand(tab.id, session);
    }
  }

  // Begins the sessions of all compose windows that have one or need none to be asked for: the process knows none yet.
  async beginAll() {
    for (const [tabId, session] of this.#sessions) {
      this.#hand(tabId, session);
    }
    const [all, kept] = await Promise.all([this.beginsByItself(), this.#keep()]);
    for (const tab of await browser.tabs.query({ type: "messageCompose" })) {
      if (all || kept.has(tab.id)) {
        this.begin(tab);
      }
    }
  }

  // Shows the session's panel again, with the keyboard on it; whether there is one.
  show(tabId) {
    const session = this.#sessions.get(tabId);
    if (!session?.begun || !this.#program.running) {
      return false;
    }
    this.#showPanel(session, session.watch.frame);
    return true;
  }

  end(tabId) {
    this.#keep((tabs) => tabs.delete(tabId)); // This page may have been put to sleep and have forgotten its session.
    const session = this.#sessions.get(tabId);
    if (!session) {
      return;
    }
    this.#sessions.delete(tabId);
    session.handing?.abort();
    session.watch?.stop();
    if (session.begun) {
      this.#program.post({ type: "composeSessionDidEnd", session: session.name });
    }
  }

  programEnded() {
    for (const session of this.#sessions.values()) {
      session.handing?.abort();
      session.begun = false;
      session.watch?.stop();
      session.watch = null;
    }
  }

  // The tabs that have a session, kept as long as Thunderbird runs; changes them, one change after the other.
  #keep(change) {
    this.#changes = this.#changes.then(async () => {
      const { [keptKey]: kept } = await browser.storage.session.get(keptKey);
      const tabs = new Set(kept);
      if (change) {
        change(tabs);
        await browser.storage.session.set({ [keptKey]: [...tabs] });
      }
      return tabs;
    }).catch((error) => {
      console.error("Quillmate could not keep which windows have a panel:", error);
      return new Set();
    });
    return this.#changes;
  }

  async #hand(tabId, session) {
    const name = `compose ${this.#nextNumber++}`;
    session.name = name;
    // The window may go meanwhile, or the process, and then this session is handed to another one.
    session.handing?.abort();
    session.handing = new AbortController();
    const { signal } = session.handing;
    for await (const message of originalMessage(tabId, signal)) {
      const frame = session.begun ? null : await this.#frameOf(session.windowId, signal);
      if (signal.aborted) {
        return;
      }
      this.#program.post({ type: "composeSessionDidBegin", session: name, originalMessage: message });
      if (session.begun) {
        continue; // Its panel is about this message now.
      }
      // In one go: the panel is about the message that came last.
      this.#showPanel(session, frame);
      session.begun = true;
      session.watch = new WindowWatch(session.windowId, frame, (moved) =>
        this.#program.post({ type: "composeSessionFrameDidChange", session: name, frame: moved }),
      );
    }
  }

  async #frameOf(windowId, signal) {
    try {
      return await frameOnScreen(windowId, signal);
    } catch (error) {
      console.error("Quillmate could not find out where this window is:", error);
      return null;
    }
  }

  #showPanel(session, frame) {
    this.#program.post({ type: "viewControllerForSession", session: session.name, ...(frame ? { frame } : {}) });
  }
}
