// What the program tells of itself and of its service: shown at the button, and kept for the pages while Thunderbird runs.

const statusKey = "status";
const mostEvents = 20;
const longestText = 200;
const badgeColour = "#c50000";

// What is known when nothing has been told.
const nothing = { running: false, version: null, reachable: null, reason: "" };

// For the pages: what is known, and the latest events, the newest first.
export async function readStatus() {
  const { [statusKey]: status } = await browser.storage.session.get(statusKey);
  return { ...nothing, events: [], ...status };
}

// Calls with each change.
export function watchStatus(changed) {
  browser.storage.session.onChanged.addListener((changes) => {
    if (statusKey in changes) {
      changed();
    }
  });
}

export class Status {
  #unreachable = false;
  #changes = Promise.resolve();

  // The service cannot be reached any more; the pages find the reason.
  onOutage = () => {};

  get unreachable() {
    return this.#unreachable;
  }

  programStarted() {
    this.#setUnreachable(false);
    return this.#change(nothing);
  }

  programAnswered() {
    return this.#change({ running: true });
  }

  programEnded(reason) {
    this.#setUnreachable(false);
    return this.#change(nothing, `program ended: ${reason || "no reason given"}`);
  }

  // A frame of the type "status"; a field that is missing says nothing new.
  async told({ version, serviceReachable, reason }) {
    const change = typeof version === "string" ? { version: inShort(version) } : {};
    if (typeof serviceReachable !== "boolean") {
      await this.#change(change);
      return;
    }
    const begins = !serviceReachable && !this.#unreachable;
    this.#setUnreachable(!serviceReachable);
    const why = serviceReachable ? "" : inShort(reason);
    const event = serviceReachable ? "service reachable" : `service unreachable: ${why}`;
    await this.#change({ ...change, reachable: serviceReachable, reason: why }, event);
    if (begins && this.#unreachable) {
      this.onOutage();
    }
  }

  // The text of a frame of the type "error".
  failed(text) {
    return this.#change({}, `error: ${text}`);
  }

  #setUnreachable(unreachable) {
    this.#unreachable = unreachable;
    const title = browser.i18n.getMessage(unreachable ? "titleUnreachable" : "showPanel");
    browser.composeAction.setTitle({ title });
    browser.composeAction.setBadgeText({ text: unreachable ? "!" : "" });
    browser.composeAction.setBadgeBackgroundColor({ color: badgeColour });
  }

  // One after the other, each upon what is kept: this page may have been put to sleep and have forgotten it.
  #change(change, event) {
    const time = Date.now();
    this.#changes = this.#changes.then(async () => {
      try {
        const status = { ...(await readStatus()), ...change };
        if (event) {
          status.events = [{ time, text: inShort(event) }, ...status.events].slice(0, mostEvents);
        }
        await browser.storage.session.set({ [statusKey]: status });
      } catch (error) {
        console.error("Quillmate could not keep what its program told:", error);
      }
    });
    return this.#changes;
  }
}

// One line to show and to pass on: nothing long enough to be a token or the text of a message.
function inShort(text) {
  const line = String(text ?? "").replace(/\s+/gu, " ").trim();
  const clean = line.replace(/bearer \S+/giu, "Bearer …").replace(/[\w+-]{32,}/gu, "…");
  return clean.length > longestText ? `${clean.slice(0, longestText - 1)}…` : clean;
}
