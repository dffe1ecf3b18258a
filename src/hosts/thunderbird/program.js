// Quillmate's program, reached by native messaging: started, and started again with growing pauses when it ends.

const alarmPrefix = "start again after ";
const shortestPause = 1_000;
const longestPause = 5 * 60_000;
// Reached with the third attempt.
const hopelessPause = 2_000;
// A program that has run this long did not end because of how it was started.
const settledAfter = 60_000;

export class Program {
  #name;
  #port = null;
  #startedAt = 0;
  #pause = 0;
  #alive = false;
  #questions = new Map();
  #nextRequest = 1;
  #waiting = [];

  // The frames that follow reach the process that has just been started.
  onStarted = () => {};
  // The process has answered: it is there and works.
  onAlive = () => {};
  // A frame about the program itself and its service.
  onStatus = () => {};
  // The process could not do something, and says what.
  onError = () => {};
  // The process has ended or could not be started. The reason is Thunderbird's own text, empty when there is none;
  // hopeless: it has been tried several times and has not answered once.
  onEnded = (reason, hopeless) => {};
  // The process is ended so that another takes its place.
  onReplaced = () => {};

  constructor(name) {
    this.#name = name;
  }

  get running() {
    return this.#port !== null;
  }

  // Whether it runs and has answered.
  get alive() {
    return this.#alive;
  }

  // Starts the process unless it runs. Whether it could be started shows only later.
  start() {
    if (this.#port) {
      return;
    }
    this.#startedAt = Date.now();
    this.#alive = false;
    const port = browser.runtime.connectNative(this.#name);
    this.#port = port;
    port.onMessage.addListener((frame) => this.#received(frame));
    port.onDisconnect.addListener(() => this.#ended(port));
    this.onStarted();
    for (const question of this.#waiting.splice(0)) {
      this.#send(question);
    }
    // Any question would do: its answer shows that the process is there.
    this.decide("", null);
    // The add-on and the program may be of different packages after an update.
    this.post({ type: "programVersion", request: this.#nextRequest++ });
  }

  // Starts the process, but not in the middle of a pause: after that the alarm does.
  async startUnlessPausing() {
    const alarms = await browser.alarms.getAll();
    if (!alarms.some((alarm) => alarm.name.startsWith(alarmPrefix))) {
      this.start();
    }
  }

  // The pause is in the alarm's name, as this page may have been put to sleep and have forgotten it.
  alarmRang(name) {
    if (name.startsWith(alarmPrefix) && !this.#port) {
      this.#pause = Number(name.slice(alarmPrefix.length)) || 0;
      this.start();
    }
  }

  // Ends the process and starts another, at once: the user has changed what it reads at its start.
  restart() {
    const port = this.#port;
    if (port) {
      this.#forget();
      this.onReplaced();
      port.disconnect(); // Thunderbird does not tell us of an end of our own making.
    }
    this.start();
  }

  post(frame) {
    this.#port?.postMessage(frame);
  }

  // Puts a question to the process: the frame that answers it, which may be an error, or null when the process is not there
  // or goes meanwhile.
  ask(question) {
    return new Promise((resolve) => {
      if (this.#port) {
        this.#send({ frame: { ...question, request: this.#nextRequest++ }, resolve });
      } else {
        resolve(null);
      }
    });
  }

  // What to do with a message of that subject and sender: the action, or null. Waits for the process; a pause so long that
  // this page is put to sleep ends the wait without an answer.
  decide(subject, address) {
    return new Promise((resolve) => {
      const message = { rawData: null, subject, fromAddress: { addressString: address }, headers: null };
      const frame = { type: "decideActionForMessage", request: this.#nextRequest++, message };
      const question = { frame, resolve: (answer) => resolve(answer?.type === "messageActionDecision" ? answer.decision : null) };
      if (this.#port) {
        this.#send(question);
      } else {
        this.#waiting.push(question);
        this.startUnlessPausing();
      }
    });
  }

  #send(question) {
    this.#questions.set(question.frame.request, question);
    this.post(question.frame);
  }

  #received(frame) {
    if (!this.#alive) {
      this.#alive = true;
      this.onAlive();
    }
    const question = this.#questions.get(frame.request);
    if (question) {
      this.#questions.delete(frame.request);
      question.resolve(frame);
    }
    if (frame.type === "error") {
      console.error(`quillmate-extension: ${frame.message}`);
      this.onError(frame.message);
    } else if (frame.type === "status" || frame.type === "programVersion") {
      this.onStatus(frame);
    }
  }

  #ended(port) {
    if (this.#port !== port) {
      return;
    }
    const hopeless = !this.#alive && this.#pause >= hopelessPause;
    const reason = port.error?.message ?? "";
    this.#forget();
    if (Date.now() - this.#startedAt >= settledAfter) {
      this.#pause = 0;
    }
    const pause = Math.min(Math.max(this.#pause * 2, shortestPause), longestPause);
    this.#pause = pause;
    browser.alarms.clearAll(); // There is one when it was started in the middle of a pause.
    browser.alarms.create(alarmPrefix + pause, { when: Date.now() + pause });
    console.error(`Quillmate's program has ended and is started again in ${pause / 1000} s. ${reason}`);
    this.onEnded(reason, hopeless);
  }

  // The process is no more. Its questions are not asked again: one may be what ended it.
  #forget() {
    this.#port = null;
    this.#alive = false;
    for (const question of this.#questions.values()) {
      question.resolve(null);
    }
    this.#questions.clear();
  }
}
