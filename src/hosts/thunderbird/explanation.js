// Tells the user when the program is not there or its service cannot be reached: once by itself, and again whenever the
// button is pressed in vain.

const toldKey = "toldThatTheProgramIsMissing";

// Thunderbird's own words for a program that is not installed, or not for this add-on.
const missing = /no such native application|permission to use native/iu;

export class Explanation {
  #tabId = -1;
  #telling = false;
  #wanted = false;

  // The user asks for the panel: should the program not come up, the reason is wanted at once.
  wanted() {
    this.#wanted = true;
  }

  // As the program tells it.
  async programEnded(reason, hopeless) {
    const wanted = this.#wanted;
    if (this.#telling || !(wanted || hopeless || missing.test(reason))) {
      return;
    }
    this.#wanted = false;
    this.#telling = true; // The process is tried again before a slow start of Thunderbird has come to an end.
    try {
      const { [toldKey]: told } = await browser.storage.local.get(toldKey);
      if (wanted || !told) {
        const tab = await this.#show(missing.test(reason) ? "missing" : "ended");
        if (wanted) {
          await browser.windows.update(tab.windowId, { focused: true });
        }
        await browser.storage.local.set({ [toldKey]: true });
      }
    } catch (error) {
      console.error("Quillmate could not show why its program is not there:", error);
    } finally {
      this.#telling = false;
    }
  }

  // The program is there: should it go one day, that is news.
  forget() {
    this.#wanted = false;
    browser.storage.local.remove(toldKey);
  }

  // Told once per outage, and whenever the user wants to know. By itself the page does not take the keyboard from a window
  // in which the user may be typing.
  async serviceUnreachable({ wanted = false } = {}) {
    try {
      const tab = await this.#show("unreachable");
      await browser.windows.update(tab.windowId, wanted ? { focused: true } : { drawAttention: true });
    } catch (error) {
      console.error("Quillmate could not show why its service cannot be reached:", error);
    }
  }

  // Opens the page, or brings its tab to the front of its window, and gives the tab.
  async #show(section) {
    const shown = { url: browser.runtime.getURL(`explanation.html?${section}`), active: true };
    try {
      return await browser.tabs.update(this.#tabId, shown);
    } catch {
      const tab = await browser.tabs.create(shown); // There was none, or it has been closed.
      this.#tabId = tab.id;
      return tab;
    }
  }
}
