// What the user has chosen, kept by Thunderbird.

const onButtonKey = "panelOpensOnTheButton";

// Whether the panel waits for the button or the shortcut.
export async function panelOpensOnButton() {
  const { [onButtonKey]: onButton } = await browser.storage.local.get(onButtonKey);
  return onButton === true;
}

export async function setPanelOpensOnButton(onButton) {
  await browser.storage.local.set({ [onButtonKey]: onButton });
}
