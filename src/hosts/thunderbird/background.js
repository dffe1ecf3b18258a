// Wires Thunderbird's events to the parts. Listeners are added at once, as the page must be woken by them.

import { ComposeSessions } from "./compose-sessions.js";
import { Explanation } from "./explanation.js";
import { colourNewMail } from "./new-mail.js";
import { panelOpensOnButton } from "./options.js";
import { Program } from "./program.js";
import { answerServicePage } from "./service.js";
import { Status } from "./status.js";

const explanation = new Explanation();
const program = new Program("quillmate");
const sessions = new ComposeSessions(program);
const status = new Status();

sessions.beginsByItself = async () => !(await panelOpensOnButton());
program.onStarted = () => {
  status.programStarted();
  sessions.beginAll();
};
program.onAlive = () => {
  status.programAnswered();
  explanation.forget();
};
program.onStatus = (frame) => status.told(frame);
program.onError = (text) => status.failed(text);
program.onEnded = (reason, hopeless) => {
  status.programEnded(reason);
  sessions.programEnded();
  explanation.programEnded(reason, hopeless);
};
program.onReplaced = () => sessions.programEnded();
status.onOutage = () => explanation.serviceUnreachable();

browser.tabs.onCreated.addListener(async (tab) => {
  if (tab.type === "messageCompose") {
    program.start();
    if (await sessions.beginsByItself()) {
      sessions.begin(tab);
    }
  }
});
browser.tabs.onRemoved.addListener((tabId) => sessions.end(tabId));
browser.alarms.onAlarm.addListener((alarm) => program.alarmRang(alarm.name));
browser.runtime.onMessage.addListener((message) => answerServicePage(message, program));
browser.messages.onNewMailReceived.addListener((folder, list) => colourNewMail(program, list));
browser.composeAction.onClicked.addListener((tab) => {
  if (status.unreachable) {
    explanation.serviceUnreachable({ wanted: true });
  }
  if (sessions.show(tab.id)) {
    return;
  }
  if (!program.alive) {
    explanation.wanted();
    program.start();
  }
  // Where it has begun, the panel comes by itself as soon as the message has been read.
  sessions.begin(tab);
});

program.startUnlessPausing();
