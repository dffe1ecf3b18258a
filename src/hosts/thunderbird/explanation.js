// Tells the user when the program is not there: once by itself, and again whenever the button is pressed in vain.

const toldKey = "toldThatTheProgramIsMissing";

// Thunderbird's own words for a program that is not installed, or not for this add-on.
const missing = /no such native application|does not exist|not executable|permission to use native|not installed/iu;

export class Explanation {
  #tabId = -1;
  #telling = false;

  // The reason is Thunderbird's own text.
  async programEnded(reason) {
    if (this.#telling || !missing.test(reason)) {
      return;
    }
    this.#telling = true; // The process is tried again before a slow start of Thunderbird has come to an end.
    const { [toldKey]: told } = await browser.storage.local.get(toldKey);
    if (!told) {
      await this.show(reason);
      await browser.storage.local.set({ [toldKey]: true });
    }
    this.#telling = false;
  }

  // The program is there: should it go one day, that is news.
  forget() {
    browser.storage.local.remove(toldKey);
  }

  // For a user who asked.
  async showInFront(reason) {
    const tab = await this.show(reason);
    await browser.windows.update(tab.windowId, { focused: true });
  }

  // Opens the page, or brings its tab to the front of its window, and gives the tab. The reason is as for programEnded.
  async show(reason) {
    const shown = {
      url: browser.runtime.getURL(`explanation.html?${missing.test(reason) ? "missing" : "ended"}`),
      active: true,
    };
    try {
      return await browser.tabs.update(this.#tabId, shown);
    } catch {
      const tab = await browser.tabs.create(shown); // There was none, or it has been closed.
      this.#tabId = tab.id;
      return tab;
    }
  }
}
