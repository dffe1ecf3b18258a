// Follows where a window is: Thunderbird tells of no move, so it is asked, often while the user may be moving it.

import { pause } from "./waiting.js";

const focusedPause = 100;
const otherPause = 500;
const mostLooks = 4;

// The outer frame of a window in CSS pixels, null while it is not on the screen.
export function frameOf(window) {
  const { left, top, width, height, state } = window;
  return state === "minimized" || width <= 1 || height <= 1 ? null : { left, top, width, height };
}

// The window's frame, as soon as it is on the screen; null when that is not wanted any more, and for a window that does not
// get ready: nobody knows where it will be.
export async function frameOnScreen(windowId, signal) {
  for (let looks = 1; !signal.aborted; ++looks) {
    const window = await browser.windows.get(windowId);
    const minimized = window.state === "minimized";
    const frame = frameOf(window);
    if (frame || (!minimized && looks === mostLooks)) {
      return frame;
    }
    await pause(minimized ? otherPause : focusedPause, signal);
  }
  return null;
}

export class WindowWatch {
  #windowId;
  #moved;
  #timer = null;
  #stopped = false;

  frame;

  // `moved` is called with each new frame.
  constructor(windowId, frame, moved) {
    this.#windowId = windowId;
    this.frame = frame;
    this.#moved = moved;
    this.#look();
  }

  stop() {
    this.#stopped = true;
    clearTimeout(this.#timer);
  }

  async #look() {
    let time = otherPause;
    try {
      const window = await browser.windows.get(this.#windowId);
      time = window.focused ? focusedPause : otherPause;
      const frame = frameOf(window);
      if (!this.#stopped && frame && JSON.stringify(frame) !== JSON.stringify(this.frame)) {
        this.frame = frame;
        this.#moved(frame);
      }
    } catch {
      // The window is going: its session ends by itself.
    }
    if (!this.#stopped) {
      this.#timer = setTimeout(() => this.#look(), time);
    }
  }
}
