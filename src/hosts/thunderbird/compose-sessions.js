// A session per compose window: begun with the message it is about, shown, moved along, and ended with the window.

import { WindowWatch, frameOf, frameOnScreen } from "./window-watch.js";
import { originalMessage } from "./original-message.js";

export class ComposeSessions {
  #program;
  #sessions = new Map(); // by tab
  #nextNumber = 1;

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
      watch: null,
      begun: false,
    };
    this.#sessions.set(tab.id, session);
    if (this.#program.running) {
      await this.#hand(tab.id, session);
    }
  }

  // Begins the sessions of all compose windows that have one or need none to be asked for: the process knows none yet.
  async beginAll() {
    for (const [tabId, session] of this.#sessions) {
      this.#hand(tabId, session);
    }
    if (!(await this.beginsByItself())) {
      return;
    }
    for (const tab of await browser.tabs.query({ type: "messageCompose" })) {
      this.begin(tab);
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
    const session = this.#sessions.get(tabId);
    if (!session) {
      return;
    }
    this.#sessions.delete(tabId);
    session.watch?.stop();
    if (session.begun) {
      this.#program.post({ type: "composeSessionDidEnd", session: session.name });
    }
  }

  programEnded() {
    for (const session of this.#sessions.values()) {
      session.begun = false;
      session.watch?.stop();
      session.watch = null;
    }
  }

  async #hand(tabId, session) {
    const name = `compose ${this.#nextNumber++}`;
    session.name = name;
    // The window may go meanwhile, or the process, and then this session is handed to another one.
    const isStillWanted = () => this.#sessions.get(tabId) === session && session.name === name && this.#program.running;
    let frame = null;
    let message = null;
    try {
      // Waits until the window is ready; before that its frame is not right either.
      const details = await browser.compose.getComposeDetails(tabId);
      frame = await frameOnScreen(session.windowId, isStillWanted);
      message = await originalMessage(details);
      frame = frameOf(await browser.windows.get(session.windowId)) ?? frame; // Reading a long message takes seconds.
    } catch (error) {
      console.error("Quillmate could not read what this window is about:", error);
    }
    if (!isStillWanted()) {
      return;
    }
    // In one go: the panel is about the message that came last.
    this.#program.post({ type: "composeSessionDidBegin", session: name, originalMessage: message });
    this.#showPanel(session, frame);
    session.begun = true;
    session.watch = new WindowWatch(session.windowId, frame, (moved) =>
      this.#program.post({ type: "composeSessionFrameDidChange", session: name, frame: moved }),
    );
  }

  #showPanel(session, frame) {
    this.#program.post({ type: "viewControllerForSession", session: session.name, ...(frame ? { frame } : {}) });
  }
}
