// The pages' texts in the language of Thunderbird.

// Stands in a text for the page's element with that number: for private use, so that no text has it of its own.
const firstMark = 0xe000;

export function message(key, ...values) {
  return browser.i18n.getMessage(key, values);
}

// Gives every element with data-message that text, around the elements in it: the first stands for $1, and so on. What
// is in a text is never taken for markup.
export function localize() {
  document.documentElement.lang = message("language");
  document.documentElement.dir = browser.i18n.getMessage("@@bidi_dir");
  for (const element of document.querySelectorAll("[data-message]")) {
    const inner = [...element.children];
    const text = message(element.dataset.message, ...inner.map((_, i) => String.fromCharCode(firstMark + i)));
    const pieces = text.split(/([\ue000-\ue008])/u);
    element.replaceChildren(...pieces.map((piece, i) => (i % 2 ? inner[piece.charCodeAt(0) - firstMark] : piece)));
  }
}
