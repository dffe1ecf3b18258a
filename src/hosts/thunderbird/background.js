// Wires Thunderbird's events to the parts. Listeners are added at once, as the page must be woken by them.

import { ComposeSessions } from "./compose-sessions.js";
import { Explanation } from "./explanation.js";
import { colourNewMail } from "./new-mail.js";
import { Program } from "./program.js";

const explanation = new Explanation();
const program = new Program("quillmate");
const sessions = new ComposeSessions(program);

program.onStarted = () => sessions.beginAll();
program.onAlive = () => explanation.forget();
program.onEnded = (reason, hopeless) => {
  sessions.programEnded();
  explanation.programEnded(reason, hopeless);
};

browser.tabs.onCreated.addListener((tab) => {
  if (tab.type === "messageCompose") {
    program.start();
    sessions.begin(tab);
  }
});
browser.tabs.onRemoved.addListener((tabId) => sessions.end(tabId));
browser.alarms.onAlarm.addListener((alarm) => program.alarmRang(alarm.name));
browser.messages.onNewMailReceived.addListener((folder, list) => colourNewMail(program, list));
browser.composeAction.onClicked.addListener((tab) => {
  // Where nothing is wrong the panel comes by itself, as soon as the message has been read.
  if (!sessions.show(tab.id) && !program.alive) {
    explanation.wanted();
    program.start();
  }
});

program.startUnlessPausing();
