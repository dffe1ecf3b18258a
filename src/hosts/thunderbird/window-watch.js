// Follows where a window is: Thunderbird tells of no move, so it is asked, often while the user may be moving it.

const focusedPause = 100;
const otherPause = 500;

// The outer frame of a window in CSS pixels, null while it is not on the screen.
export function frameOf(window) {
  const { left, top, width, height, state } = window;
  return state === "minimized" || width <= 1 || height <= 1 ? null : { left, top, width, height };
}

// The window's frame, as soon as it is on the screen; null when it is not wanted any more.
export async function frameOnScreen(windowId, isStillWanted) {
  while (isStillWanted()) {
    const frame = frameOf(await browser.windows.get(windowId));
    if (frame) {
      return frame;
    }
    await new Promise((resolve) => setTimeout(resolve, otherPause));
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
    let pause = otherPause;
    try {
      const window = await browser.windows.get(this.#windowId);
      pause = window.focused ? focusedPause : otherPause;
      const frame = frameOf(window);
      if (!this.#stopped && frame && JSON.stringify(frame) !== JSON.stringify(this.frame)) {
        this.frame = frame;
        this.#moved(frame);
      }
    } catch {
      // The window is going: its session ends by itself.
    }
    if (!this.#stopped) {
      this.#timer = setTimeout(() => this.#look(), pause);
    }
  }
}
