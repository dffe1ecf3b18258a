// The options page: each choice holds at once.

import { localize, message } from "./localize.js";
import { panelOpensOnButton, setPanelOpensOnButton } from "./options.js";
import { chooseService, readService } from "./service.js";
import { readStatus, watchStatus } from "./status.js";

const command = "_execute_compose_action";
const addOnVersion = browser.runtime.getManifest().version;
const element = (id) => document.getElementById(id);

async function showPanelChoice() {
  const chosen = (await panelOpensOnButton()) ? "button" : "itself";
  for (const choice of document.getElementsByName("opens")) {
    choice.checked = choice.value === chosen;
    choice.addEventListener("change", () => setPanelOpensOnButton(choice.value === "button"));
  }
}

function hintOn(service) {
  if (!service) {
    return message("serviceUnknown");
  }
  if (service.problem !== undefined) {
    return message("serviceRefused", service.problem);
  }
  return message(service.fixed ? "serviceFixed" : service.offered ? "serviceHint" : "serviceOnlyLocal");
}

// Shows what the program says of its service; what cannot be chosen is shown, and why.
function showService(service) {
  for (const choice of document.getElementsByName("asks")) {
    choice.checked = choice.value === service?.choice;
    choice.disabled = !service || service.fixed || (choice.value === "remote" && !service.offered);
  }
  const known = service?.offered || service?.choice === "remote";
  element("serviceRemote").textContent = known ? message("serviceRemote", service.host) : message("serviceNoRemote");
  element("serviceHint").textContent = hintOn(service);
}

async function showServiceChoice() {
  for (const choice of document.getElementsByName("asks")) {
    choice.addEventListener("change", async () => showService(await chooseService(choice.value)));
  }
  showService(await readService());
}

async function showShortcut() {
  const commands = await browser.commands.getAll();
  element("shortcut").value = commands.find((each) => each.name === command)?.shortcut ?? "";
}

// Says how it went; Thunderbird refuses what is no shortcut.
async function changeShortcut(change) {
  const wanted = element("shortcut").value.trim();
  try {
    await change(wanted);
    element("shortcutOutcome").textContent = message("shortcutDone");
    await showShortcut();
  } catch {
    element("shortcutOutcome").textContent = message("shortcutRefused", wanted);
  }
}

function lines({ version, running, reachable, reason, events }) {
  return [
    `Quillmate add-on ${addOnVersion}, program ${version ?? "unknown"}, ${running ? "running" : "not running"}`,
    `service ${reachable === null ? "not asked" : reachable ? "reachable" : `unreachable: ${reason}`}`,
    ...events.map(({ time, text }) => `${new Date(time).toISOString()} ${text}`),
  ];
}

async function showStatus() {
  const status = await readStatus();
  const { version, running, reachable, events } = status;
  element("addOnVersion").textContent = addOnVersion;
  element("programVersion").textContent = version ?? message("versionUnknown");
  element("mismatch").hidden = version === null || version === addOnVersion;
  element("program").textContent = message(running ? "programRuns" : "programGone");
  element("service").hidden = reachable === null;
  element("service").textContent = message(reachable ? "serviceReachable" : "serviceUnreachable");
  element("eventsIntro").textContent = message(events.length ? "eventsIntro" : "eventsNone");
  element("events").hidden = !events.length;
  element("events").textContent = lines(status).join("\n");
}

async function copy() {
  try {
    await navigator.clipboard.writeText(`${element("events").textContent}\n`);
    element("copyOutcome").textContent = message("copied");
  } catch {
    element("copyOutcome").textContent = message("copyRefused");
  }
}

localize();
element("shortcutForm").addEventListener("submit", (event) => {
  event.preventDefault();
  changeShortcut((shortcut) => browser.commands.update({ name: command, shortcut }));
});
element("shortcutReset").addEventListener("click", () => changeShortcut(() => browser.commands.reset(command)));
element("copy").addEventListener("click", copy);
watchStatus(showStatus);
showServiceChoice(); // It waits for the program, which may not be there.
await Promise.all([showPanelChoice(), showShortcut(), showStatus()]);
if (location.hash === "#wrong") {
  element("wrong").scrollIntoView(); // The page was empty when its address was followed.
}
